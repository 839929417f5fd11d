#pragma once
// The Patient's Sex (0010,0040) defined terms.

#include "Foundations/DataModule/Values/CodedStringDataType.h"

#include <cstdint>
#include <span>

namespace Lumivale::DataModule {

struct Sex {
    enum Enum : std::uint32_t {
        unknown = 0,
        M = 1,  // male
        F = 2,  // female
        O = 3,  // other
    };
    // Number of members, unknown included.
    static constexpr std::uint32_t count = O + 1;
};

// Term table of Sex (row i is member i).
template <>
struct CodedStringTraits<Sex::Enum> : TableCodedStringTraits<Sex::Enum> {
    static std::span<const CodedTerm> Table();
};

// The Patient's Sex attribute value.
using SexDataType = CodedStringDataType<Sex::Enum>;

}  // namespace Lumivale::DataModule
