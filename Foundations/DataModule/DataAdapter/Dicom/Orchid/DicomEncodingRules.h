#pragma once
// Facts about the three stream encodings shared by the stream (which writes the bytes) and the
// tree (which predicts their count for defined sequence lengths).

#include <cstdint>

#include "Foundations/DataModule/DataAdapter/Dicom/Core/ValueRepresentation.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// The encoding of a stream or a data set.
enum class StreamEncoding : std::uint8_t {
    ImplicitLittleEndian = 0,  // implicit VR, little endian
    ExplicitLittleEndian = 1,  // explicit VR, little endian
    ExplicitBigEndian = 2,     // explicit VR, big endian
};

// The value length meaning "undefined, delimited by a delimitation item".
inline constexpr std::uint32_t kUndefinedLength = 0xFFFFFFFFu;

// Byte count of an item or delimitation header: tag and 32-bit length.
inline constexpr std::uint64_t kItemHeaderSize = 8;

// The VR code written for an element: the ambiguous and unknown VRs, which have no code in
// the standard, are written as the standard VR that holds their bytes.
constexpr ValueRepresentation WireVR(ValueRepresentation vr) noexcept {
    switch (vr) {
        case ValueRepresentation::Unknown: return ValueRepresentation::UN;
        case ValueRepresentation::XS: return ValueRepresentation::US;
        case ValueRepresentation::SW: return ValueRepresentation::US;
        case ValueRepresentation::OX: return ValueRepresentation::OB;
        default: return vr;
    }
}

// True when an explicit-VR header of this VR is written with two reserved bytes and a 32-bit length.
inline bool HasLongLengthField(ValueRepresentation vr) noexcept {
    return VRLengthForm(WireVR(vr)) != ExplicitLengthForm::Short;
}

// True when an explicit-VR header of this VR, read with the 16-bit field shortField, has two
// reserved bytes and a 32-bit length: always for the long form, only for a zero field for the
// tolerant one, never for the short one.
inline bool ReadsLongLengthField(ValueRepresentation vr, std::uint16_t shortField) noexcept {
    switch (VRLengthForm(vr)) {
        case ExplicitLengthForm::Long: return true;
        case ExplicitLengthForm::LongOrShort: return shortField == 0;
        case ExplicitLengthForm::Short: break;
    }
    return false;
}

// True for the explicit-VR encodings.
constexpr bool IsExplicit(StreamEncoding encoding) noexcept {
    return encoding != StreamEncoding::ImplicitLittleEndian;
}

// Byte count of an element header (tag, VR, length field) written in this encoding.
inline std::uint64_t ElementHeaderSize(ValueRepresentation vr, StreamEncoding encoding) noexcept {
    if (!IsExplicit(encoding)) return 8;
    return HasLongLengthField(vr) ? 12 : 8;
}

// A value length rounded up to even, as written.
constexpr std::uint64_t EvenLength(std::uint64_t length) noexcept { return length + (length & 1u); }

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
