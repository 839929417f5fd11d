#pragma once
// Byte builders for codec tests: each returns the bytes of one element, item or delimiter, so a
// test reads like the file it builds: Cat(Element(enc, 0x0010, 0x0010, "PN", "DOE^JOHN"), ...).

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataSet.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomEncodingRules.h"

namespace DicomTestBytes {

using Lumivale::DataModule::DataAdapterModule::DicomCodecModule::StreamEncoding;
using Bytes = std::vector<std::uint8_t>;

inline constexpr std::uint32_t kUndefined = 0xFFFFFFFFu;

inline Bytes Cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& part : parts) out.insert(out.end(), part.begin(), part.end());
    return out;
}

inline Bytes Text(std::string_view text) { return Bytes(text.begin(), text.end()); }

inline std::uint32_t Len(const Bytes& bytes) { return static_cast<std::uint32_t>(bytes.size()); }

// An unsigned integer of `size` bytes in the encoding's byte order.
inline Bytes Number(StreamEncoding enc, std::uint32_t value, int size) {
    Bytes out;
    const bool big = enc == StreamEncoding::ExplicitBigEndian;
    for (int i = 0; i < size; ++i) out.push_back(static_cast<std::uint8_t>(value >> 8 * (big ? size - 1 - i : i)));
    return out;
}

inline Bytes TagBytes(StreamEncoding enc, std::uint16_t group, std::uint16_t element) {
    return Cat({Number(enc, group, 2), Number(enc, element, 2)});
}

// True for the VRs with reserved bytes and a 32-bit length in explicit encodings (PS3.5 Table
// 7.1-1), spelled out here rather than taken from the codec so that the tests check its table.
inline bool LongForm(std::string_view vr) {
    constexpr std::string_view kLong[] = {"OB", "OD", "OF", "OL", "OV", "OW", "SQ", "SV", "UC", "UN", "UR", "UT", "UV"};
    return std::find(std::begin(kLong), std::end(kLong), vr) != std::end(kLong);
}

// An explicit-VR header in the short form (16-bit length) whatever the VR, as some writers made
// for the VRs that take the long form.
inline Bytes ShortHeader(StreamEncoding enc, std::uint16_t group, std::uint16_t element, std::string_view vr,
                         std::uint16_t length) {
    return Cat({TagBytes(enc, group, element), Text(vr), Number(enc, length, 2)});
}

// An element header with an explicit length (e.g. kUndefined); implicit encodings ignore vr.
inline Bytes Header(StreamEncoding enc, std::uint16_t group, std::uint16_t element, std::string_view vr,
                    std::uint32_t length) {
    if (enc == StreamEncoding::ImplicitLittleEndian) return Cat({TagBytes(enc, group, element), Number(enc, length, 4)});
    if (LongForm(vr)) return Cat({TagBytes(enc, group, element), Text(vr), Bytes{0, 0}, Number(enc, length, 4)});
    return ShortHeader(enc, group, element, vr, static_cast<std::uint16_t>(length));
}

// A whole element: header with the value's length, then the value bytes as given (no padding added).
inline Bytes Element(StreamEncoding enc, std::uint16_t group, std::uint16_t element, std::string_view vr,
                     const Bytes& value) {
    return Cat({Header(enc, group, element, vr, Len(value)), value});
}
inline Bytes Element(StreamEncoding enc, std::uint16_t group, std::uint16_t element, std::string_view vr,
                     std::string_view text) {
    return Element(enc, group, element, vr, Text(text));
}

// An item header (FFFE,E000) with a length; the item (E00D) and sequence (E0DD) delimitations.
inline Bytes Item(StreamEncoding enc, std::uint32_t length) {
    return Cat({TagBytes(enc, 0xFFFE, 0xE000), Number(enc, length, 4)});
}
inline Bytes ItemEnd(StreamEncoding enc) { return Cat({TagBytes(enc, 0xFFFE, 0xE00D), Number(enc, 0, 4)}); }
inline Bytes SequenceEnd(StreamEncoding enc) { return Cat({TagBytes(enc, 0xFFFE, 0xE0DD), Number(enc, 0, 4)}); }

// A data set node of a dictionary attribute (its tag and VR) holding text.
inline auto Node(Lumivale::DataModule::DataAdapterModule::DicomCodecModule::Tag tag, std::string_view text) {
    using namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule;
    return std::make_unique<DicomDataSetElement>(tag, TagVR(tag), Text(text));
}

}  // namespace DicomTestBytes
