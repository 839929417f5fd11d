#include "Foundations/DataModule/Enumerations/PhotometricInterpretation.h"

#include <array>

namespace Lumivale::DataModule {

namespace {

constexpr std::array<CodedTerm, PhotometricInterpretation::count> kPhotometricInterpretationTerms = {{
    {"??", "Unknown Photometric Interpretation"},
    {"MONOCHROME1", "Monochrome, minimum sample value shown white"},
    {"MONOCHROME2", "Monochrome, minimum sample value shown black"},
    {"PALETTE COLOR", "Palette color"},
    {"RGB", "Red, green and blue"},
    {"HSV", "Hue, saturation and value (retired)"},
    {"ARGB", "Alpha, red, green and blue (retired)"},
    {"CMYK", "Cyan, magenta, yellow and black (retired)"},
    {"YBR_FULL", "Luminance and chrominance, full range"},
    {"YBR_FULL_422", "Luminance and chrominance, full range, horizontal 4:2:2"},
    {"YBR_PARTIAL_422", "Luminance and chrominance, partial range, horizontal 4:2:2 (retired)"},
    {"YBR_PARTIAL_420", "Luminance and chrominance, partial range, 4:2:0"},
    {"YBR_ICT", "Irreversible color transformation"},
    {"YBR_RCT", "Reversible color transformation"},
}};

}  // namespace

std::span<const CodedTerm> CodedStringTraits<PhotometricInterpretation::Enum>::Table() { return kPhotometricInterpretationTerms; }

}  // namespace Lumivale::DataModule
