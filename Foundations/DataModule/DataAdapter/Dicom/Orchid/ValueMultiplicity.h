#pragma once
// Value multiplicities (VMs) of DICOM attributes and the fixed table of their bounds.

#include <cstdint>
#include <string_view>

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// The 19 VMs of the dictionary, by table index.
enum class ValueMultiplicity : std::uint8_t {
    _1, _1_2, _1_3, _1_8, _1_32, _1_99, _1_n, _2, _2_n, _2_2n,
    _3, _3_n, _3_3n, _4, _6, _6_n, _8, _9, _16,
};
using VM = ValueMultiplicity;

// Maximum counts that mean "unbounded": n, 2n (even count) and 3n (multiple of three).
inline constexpr int kVMUnbounded = -1;
inline constexpr int kVMUnboundedEven = -2;
inline constexpr int kVMUnboundedTriple = -3;

// One row of the VM table.
struct ValueMultiplicityRow {
    std::string_view name;  // enumerator name, e.g. "_1_n"
    int minimum;            // smallest number of values
    int maximum;            // largest number of values, or one of the kVMUnbounded* codes
    std::string_view text;  // display text, e.g. "1-n"
};

// Number of rows in the VM table.
inline constexpr int kValueMultiplicityCount = 19;

// The row of a VM; an index outside the table yields the row of _1.
const ValueMultiplicityRow& VMRow(ValueMultiplicity vm) noexcept;
// Largest number of values, or a negative kVMUnbounded* code.
int VMMaximum(ValueMultiplicity vm) noexcept;
// True when the VM allows more than one value (its maximum is not 1).
bool VMIsMultiValued(ValueMultiplicity vm) noexcept;

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
