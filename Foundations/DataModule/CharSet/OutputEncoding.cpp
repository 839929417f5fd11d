#include "Foundations/DataModule/CharSet/OutputEncoding.h"

#include "Foundations/DataModule/Common/TextUtils.h"

#include <array>

namespace Lumivale::DataModule {

namespace {
constexpr std::array<std::string_view, 8> kWords = {
    "unknown", "ascii", "chinese", "hebrew", "japanese", "korean", "unicode", "western",
};

struct TermOfEncoding {
    std::string_view term;
    OutputEncoding::Enum encoding;
};

// Each encoding's Specific Character Set as it is written; beside it, the single-valued term the
// option's help names for Korean, and the ISO 2022 form of each single-byte term.
constexpr std::array<TermOfEncoding, 11> kTerms = {{
    {"ISO_IR 6", OutputEncoding::ascii},
    {"ISO 2022 IR 6", OutputEncoding::ascii},
    {"GB18030", OutputEncoding::chinese},
    {"ISO_IR 138", OutputEncoding::hebrew},
    {"ISO 2022 IR 138", OutputEncoding::hebrew},
    {"ISO 2022 IR 13\\ISO 2022 IR 87", OutputEncoding::japanese},
    {"\\ISO 2022 IR 149", OutputEncoding::korean},
    {"ISO 2022 IR 149", OutputEncoding::korean},
    {"ISO_IR 192", OutputEncoding::unicode},
    {"ISO_IR 100", OutputEncoding::western},
    {"ISO 2022 IR 100", OutputEncoding::western},
}};
}  // namespace

OutputEncoding::Enum OutputEncodingFromWord(std::string_view word) {
    const std::string folded = ToLowerAscii(TrimBlanks(word));
    for (std::size_t i = 0; i < kWords.size(); ++i) {
        if (folded == kWords[i]) return static_cast<OutputEncoding::Enum>(i);
    }
    return OutputEncoding::unknown;
}

OutputEncoding::Enum OutputEncodingFromTerm(std::string_view term) {
    const std::string folded = ToUpperAscii(TrimBlanks(term));
    for (const TermOfEncoding& entry : kTerms) {
        if (folded == entry.term) return entry.encoding;
    }
    return OutputEncoding::unknown;
}

}  // namespace Lumivale::DataModule
