#include "Foundations/DataModule/Enumerations/Sex.h"

#include <array>

namespace Lumivale::DataModule {

namespace {

constexpr std::array<CodedTerm, Sex::count> kSexTerms = {{
    {"", "Unknown Sex"},
    {"M", "Male"},
    {"F", "Female"},
    {"O", "Other"},
}};

}  // namespace

std::span<const CodedTerm> CodedStringTraits<Sex::Enum>::Table() { return kSexTerms; }

}  // namespace Lumivale::DataModule
