#include "Foundations/DataModule/CharSet/OutputEncoding.h"

#include "Foundations/DataModule/Common/TextUtils.h"

namespace Lumivale::DataModule {

namespace {

constexpr OutputEncodingRow kRows[] = {
    {OutputEncoding::ascii, "ascii", "ISO_IR 6", "ISO 2022 IR 6", "ISO_IR 6", CharSet::DefaultRepertoire,
     CharSet::Unknown},
    {OutputEncoding::chinese, "chinese", "GB18030", "", "GB18030", CharSet::GB18030, CharSet::Unknown},
    {OutputEncoding::hebrew, "hebrew", "ISO_IR 138", "ISO 2022 IR 138", "ISO_IR 138", CharSet::ISO_IR_138,
     CharSet::Unknown},
    {OutputEncoding::japanese, "japanese", "ISO 2022 IR 13\\ISO 2022 IR 87", "", "ISO_IR 87", CharSet::ISO_2022_IR_13,
     CharSet::ISO_2022_IR_87},
    {OutputEncoding::korean, "korean", "\\ISO 2022 IR 149", "ISO 2022 IR 149", "ISO 2022 IR 149",
     CharSet::DefaultRepertoire, CharSet::ISO_2022_IR_149},
    {OutputEncoding::unicode, "unicode", "ISO_IR 192", "", "ISO_IR 192", CharSet::ISO_IR_192, CharSet::Unknown},
    {OutputEncoding::western, "western", "ISO_IR 100", "ISO 2022 IR 100", "ISO_IR 100", CharSet::ISO_IR_100,
     CharSet::Unknown},
};

}  // namespace

std::span<const OutputEncodingRow> OutputEncodingRows() { return kRows; }

const OutputEncodingRow* FindOutputEncodingRow(OutputEncoding::Enum encoding) {
    for (const OutputEncodingRow& row : kRows) {
        if (row.encoding == encoding) return &row;
    }
    return nullptr;
}

OutputEncoding::Enum OutputEncodingFromWord(std::string_view word) {
    const std::string folded = ToLowerAscii(TrimBlanks(word));
    for (const OutputEncodingRow& row : kRows) {
        if (folded == row.word) return row.encoding;
    }
    return OutputEncoding::unknown;
}

OutputEncoding::Enum OutputEncodingFromTerm(std::string_view term) {
    const std::string folded = ToUpperAscii(TrimBlanks(term));
    for (const OutputEncodingRow& row : kRows) {
        if (folded == row.term || (!row.otherTerm.empty() && folded == row.otherTerm)) return row.encoding;
    }
    return OutputEncoding::unknown;
}

}  // namespace Lumivale::DataModule
