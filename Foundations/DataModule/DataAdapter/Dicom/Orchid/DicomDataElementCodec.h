#pragma once
// Turns values into the raw value bytes of one element according to its VR and VM, and back.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// The operations every element codec offers. Stores build the whole value and replace the
// element's value with it; fetches read it back. Each returns false when it did nothing.
class DicomDataElementCodec {
public:
    virtual ~DicomDataElementCodec() = default;

    // Store text bytes already in the element's character set (padded to even length).
    virtual bool StoreCharacters(std::string_view bytes) = 0;
    // Fetch the value as text bytes, trailing padding removed.
    virtual bool FetchCharacters(std::string& bytes) const = 0;
    // Store wide text, encoded through charset when the VR's character set applies.
    virtual bool StoreText(std::u16string_view text, const MultiCharSetDataType& charset) = 0;
    // Fetch wide text, decoded through charset when the VR's character set applies.
    virtual bool FetchText(std::u16string& text, const MultiCharSetDataType& charset) const = 0;
    // Store several text values joined with "\".
    virtual bool StoreTexts(const std::vector<std::string>& values) = 0;
    // Fetch the text values split at "\".
    virtual bool FetchTexts(std::vector<std::string>& values) const = 0;
    // Store integers by VR (IS, SL, SS, US, XS) into a multi-valued numeric element.
    virtual bool StoreIntegers(std::span<const std::int64_t> values) = 0;
    // Fetch integers by VR (IS, SL, SS, US, XS, UL).
    virtual bool FetchIntegers(std::vector<std::int64_t>& values) const = 0;
    // Store doubles by VR (DS, FL, FD) into a multi-valued numeric element.
    virtual bool StoreDoubles(std::span<const double> values) = 0;
    // Fetch doubles by VR (DS, FL, FD).
    virtual bool FetchDoubles(std::vector<double>& values) const = 0;
    // Store a UID (NUL-padded to even length).
    virtual bool StoreUID(std::string_view uid) = 0;
    // Fetch a UID without its padding.
    virtual bool FetchUID(std::string& uid) const = 0;
    // Store bytes as they are (padded with the VR's pad byte when odd).
    virtual bool StoreBinary(std::span<const std::uint8_t> bytes) = 0;
    // Fetch the value's bytes (loading a value left in the file).
    virtual bool FetchBinary(std::vector<std::uint8_t>& bytes) const = 0;
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
