#pragma once
// The DICOM defined terms of the Specific Character Set attribute, with their readable descriptions.

#include <cstdint>
#include <string>
#include <string_view>

namespace Lumivale::DataModule {

struct CharSet {
    enum Enum : std::uint32_t {
        Unknown = 0,            // a term that is not in the table
        DefaultRepertoire = 1,  // the empty term: ISO 646 only
        ISO_IR_13 = 2,
        ISO_IR_100 = 3,
        ISO_IR_101 = 4,
        ISO_IR_109 = 5,
        ISO_IR_110 = 6,
        ISO_IR_126 = 7,
        ISO_IR_127 = 8,
        ISO_IR_138 = 9,
        ISO_IR_144 = 10,
        ISO_IR_148 = 11,
        ISO_IR_166 = 12,
        ISO_2022_IR_6 = 13,
        ISO_2022_IR_13 = 14,
        ISO_2022_IR_100 = 15,
        ISO_2022_IR_101 = 16,
        ISO_2022_IR_109 = 17,
        ISO_2022_IR_110 = 18,
        ISO_2022_IR_126 = 19,
        ISO_2022_IR_127 = 20,
        ISO_2022_IR_138 = 21,
        ISO_2022_IR_144 = 22,
        ISO_2022_IR_148 = 23,
        ISO_2022_IR_166 = 24,
        ISO_2022_IR_87 = 25,
        ISO_2022_IR_149 = 26,
        ISO_2022_IR_159 = 27,
        ISO_IR_192 = 28,
        GB18030 = 29,
    };
    // Number of enumeration values, Unknown included.
    static constexpr std::uint32_t Count = 30;
};

// Trim " \t\r\n", upper-case per byte and compare exactly with the terms: "" gives
// DefaultRepertoire; the common non-standard terms "ISO_IR 6" and "GBK" give DefaultRepertoire and
// GB18030, the sets that hold their text; any other text not in the table gives Unknown.
CharSet::Enum CharSetFromTerm(std::string_view term);

// The term of a value ("" for DefaultRepertoire), or `fallback` for Unknown and out-of-range values.
std::string_view CharSetTerm(CharSet::Enum value, std::string_view fallback = {});

// "'term' (name - elements)"; "Unknown Character Set - N/a" for values outside the enumeration.
std::string CharSetDescription(CharSet::Enum value);

// True for the "ISO 2022 ..." terms, the ones that allow escape sequences inside a value.
bool IsIso2022CharSet(CharSet::Enum value);

// The ISO 2022 form of a single-valued term: "ISO_IR 100" behaves as "ISO 2022 IR 100" without
// escape sequences, and the default repertoire as "ISO 2022 IR 6". Other values are their own.
CharSet::Enum Iso2022Counterpart(CharSet::Enum value);

}  // namespace Lumivale::DataModule
