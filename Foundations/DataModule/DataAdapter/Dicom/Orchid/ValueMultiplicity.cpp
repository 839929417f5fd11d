#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/ValueMultiplicity.h"

#include <array>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {
namespace {

constexpr int kN = kVMUnbounded;
constexpr std::array<ValueMultiplicityRow, kValueMultiplicityCount> kRows{{
    {"_1", 1, 1, "1"},
    {"_1_2", 1, 2, "1-2"},
    {"_1_3", 1, 3, "1-3"},
    {"_1_8", 1, 8, "1-8"},
    {"_1_32", 1, 32, "1-32"},
    {"_1_99", 1, 99, "1-99"},
    {"_1_n", 1, kN, "1-n"},
    {"_2", 2, 2, "2"},
    {"_2_n", 2, kN, "2-n"},
    {"_2_2n", 2, kVMUnboundedEven, "2-2n"},
    {"_3", 3, 3, "3"},
    {"_3_n", 3, kN, "3-n"},
    {"_3_3n", 3, kVMUnboundedTriple, "3-3n"},
    {"_4", 4, 4, "4"},
    {"_6", 6, 6, "6"},
    {"_6_n", 6, kN, "6-n"},
    {"_8", 8, 8, "8"},
    {"_9", 9, 9, "9"},
    {"_16", 16, 16, "16"},
}};

}  // namespace

const ValueMultiplicityRow& VMRow(ValueMultiplicity vm) noexcept {
    const auto index = static_cast<std::size_t>(vm);
    return index < kRows.size() ? kRows[index] : kRows[0];
}

int VMMaximum(ValueMultiplicity vm) noexcept { return VMRow(vm).maximum; }
bool VMIsMultiValued(ValueMultiplicity vm) noexcept { return VMRow(vm).maximum != 1; }

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
