#pragma once
// The tool's choice of output character set, named by the --encoding word.

#include "Foundations/DataModule/CharSet/CharSet.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace Lumivale::DataModule {

struct OutputEncoding {
    enum Enum : std::uint32_t {
        unknown = 0,  // not given (or not recognised): keep the metadata's character set
        ascii = 1,
        chinese = 2,
        hebrew = 3,
        japanese = 4,
        korean = 5,
        unicode = 6,
        western = 7,
    };
};

// Everything the tool knows of one encoding; adding an encoding adds its enumeration value and its row.
struct OutputEncodingRow {
    OutputEncoding::Enum encoding;
    std::string_view word;         // the --encoding word
    std::string_view term;         // the Specific Character Set the tool writes, as a file holds it
    std::string_view otherTerm;    // another spelling of it read as this encoding (the ISO 2022 form of a
                                   // single-byte term, the single-valued Korean term); "" when none
    std::string_view helpTerm;     // the term the option's help shows beside the word
    CharSet::Enum first;           // the character set written at position 0
    CharSet::Enum second;          // at position 1; Unknown when there is none
};

// The rows of the encodings, unknown excepted.
std::span<const OutputEncodingRow> OutputEncodingRows();

// The row of an encoding; null for unknown and values outside the enumeration.
const OutputEncodingRow* FindOutputEncodingRow(OutputEncoding::Enum encoding);

// Trim " \t\r\n", lower-case, and compare with the encoding words; any other word gives unknown.
OutputEncoding::Enum OutputEncodingFromWord(std::string_view word);

// The encoding whose Specific Character Set a (0008,0005) value names, as a file holds it: a
// single term ("ISO_IR 100", "GB18030", "ISO_IR 6" for the default repertoire) or the ISO 2022
// multi-valued forms the encodings are written in ("ISO 2022 IR 13\ISO 2022 IR 87",
// "\ISO 2022 IR 149"). Blanks around it and letter case do not matter; any other value gives unknown.
OutputEncoding::Enum OutputEncodingFromTerm(std::string_view term);

}  // namespace Lumivale::DataModule
