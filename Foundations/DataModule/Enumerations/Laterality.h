#pragma once
// The Laterality (0020,0060) and Image Laterality (0020,0062) defined terms.

#include "Foundations/DataModule/Values/CodedStringDataType.h"

#include <cstdint>
#include <span>

namespace Lumivale::DataModule {

struct Laterality {
    enum Enum : std::uint32_t {
        unknown = 0,
        R = 1,  // right
        L = 2,  // left
        U = 3,  // unpaired (Image Laterality only)
        B = 4,  // both left and right (Image Laterality only)
    };
    // Number of members, unknown included.
    static constexpr std::uint32_t count = B + 1;
};

// Term table of Laterality (row i is member i).
template <>
struct CodedStringTraits<Laterality::Enum> : TableCodedStringTraits<Laterality::Enum> {
    static std::span<const CodedTerm> Table();
};

// The Laterality attribute value.
using LateralityDataType = CodedStringDataType<Laterality::Enum>;

}  // namespace Lumivale::DataModule
