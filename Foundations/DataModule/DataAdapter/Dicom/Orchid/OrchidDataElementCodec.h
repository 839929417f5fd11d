#pragma once
// The element codec of this program, working on one element of a data set tree.

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataElementCodec.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSetElement.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// Codec over an element (null: every operation does nothing). The VM comes from the dictionary.
class OrchidDataElementCodec : public DicomDataElementCodec {
public:
    // Work on element, which must outlive the codec.
    explicit OrchidDataElementCodec(DicomDataSetElement* element) noexcept : element_(element), target_(element) {}
    // Fetch from element, which must outlive the codec; every store does nothing and returns false.
    explicit OrchidDataElementCodec(const DicomDataSetElement* element) noexcept : element_(element) {}

    bool StoreCharacters(std::string_view bytes) override;
    bool FetchCharacters(std::string& bytes) const override;
    bool StoreText(std::u16string_view text, const MultiCharSetDataType& charset) override;
    bool FetchText(std::u16string& text, const MultiCharSetDataType& charset) const override;
    bool StoreTexts(const std::vector<std::string>& values) override;
    bool FetchTexts(std::vector<std::string>& values) const override;
    bool StoreIntegers(std::span<const std::int64_t> values) override;
    bool FetchIntegers(std::vector<std::int64_t>& values) const override;
    bool StoreDoubles(std::span<const double> values) override;
    bool FetchDoubles(std::vector<double>& values) const override;
    bool StoreUID(std::string_view uid) override;
    bool FetchUID(std::string& uid) const override;
    bool StoreBinary(std::span<const std::uint8_t> bytes) override;
    bool FetchBinary(std::vector<std::uint8_t>& bytes) const override;

private:
    bool AcceptsMultiValuedNumbers() const noexcept;
    void Replace(std::vector<std::uint8_t> bytes);

    const DicomDataSetElement* element_;  // fetched from
    DicomDataSetElement* target_ = nullptr;  // stored into: the same element, or null when read-only
};

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
