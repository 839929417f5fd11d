#pragma once
// The Photometric Interpretation (0028,0004) defined terms.

#include "Foundations/DataModule/Values/CodedStringDataType.h"

#include <cstdint>
#include <span>

namespace Lumivale::DataModule {

struct PhotometricInterpretation {
    enum Enum : std::uint32_t {
        unknown = 0,  // "??"
        MONOCHROME1, MONOCHROME2, PALETTE_COLOR, RGB, HSV, ARGB, CMYK, YBR_FULL, YBR_FULL_422,
        YBR_PARTIAL_422, YBR_PARTIAL_420, YBR_ICT, YBR_RCT,
    };
    // Number of members, unknown included.
    static constexpr std::uint32_t count = YBR_RCT + 1;
};

// Term table of PhotometricInterpretation (row i is member i).
template <>
struct CodedStringTraits<PhotometricInterpretation::Enum> : TableCodedStringTraits<PhotometricInterpretation::Enum> {
    static std::span<const CodedTerm> Table();
};

// The Photometric Interpretation attribute value.
using PhotometricInterpretationDataType = CodedStringDataType<PhotometricInterpretation::Enum>;

}  // namespace Lumivale::DataModule
