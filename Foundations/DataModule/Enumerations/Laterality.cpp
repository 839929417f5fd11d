#include "Foundations/DataModule/Enumerations/Laterality.h"

#include <array>

namespace Lumivale::DataModule {

namespace {

constexpr std::array<CodedTerm, Laterality::count> kLateralityTerms = {{
    {"", "Unknown Laterality"},
    {"R", "Right"},
    {"L", "Left"},
    {"U", "Unpaired"},
    {"B", "Both left and right"},
}};

}  // namespace

std::span<const CodedTerm> CodedStringTraits<Laterality::Enum>::Table() { return kLateralityTerms; }

}  // namespace Lumivale::DataModule
