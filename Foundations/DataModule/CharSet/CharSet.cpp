#include "Foundations/DataModule/CharSet/CharSet.h"

#include "Foundations/DataModule/Common/TextUtils.h"

#include <array>

namespace Lumivale::DataModule {

namespace {

struct CharSetRow {
    std::string_view term;
    std::string_view name;
    std::string_view elements;
};

constexpr std::string_view kSingleByteElements = "ISO 646 (G0), ISO 8859 Supplementary Set (G1)";
constexpr std::string_view kJisX0201Elements = "JIS X 0201: Romaji (G0), JIS X 0201: Katakana (G1)";
constexpr std::string_view kThaiElements = "ISO 646 (G0), TIS 620-2533 (1990) (G1)";

// Indexed by CharSet::Enum. Row 0's term is never shown: the caller's fallback replaces it.
constexpr std::array<CharSetRow, CharSet::Count> kCharSets = {{
    {"", "Unknown Character Set", "N/a"},
    {"", "Default Repertoire", "ISO 646 (G0)"},
    {"ISO_IR 13", "Japanese", kJisX0201Elements},
    {"ISO_IR 100", "Latin alphabet No. 1", kSingleByteElements},
    {"ISO_IR 101", "Latin alphabet No. 2", kSingleByteElements},
    {"ISO_IR 109", "Latin alphabet No. 3", kSingleByteElements},
    {"ISO_IR 110", "Latin alphabet No. 4", kSingleByteElements},
    {"ISO_IR 126", "Greek", kSingleByteElements},
    {"ISO_IR 127", "Arabic", kSingleByteElements},
    {"ISO_IR 138", "Hebrew", kSingleByteElements},
    {"ISO_IR 144", "Cyrillic", kSingleByteElements},
    {"ISO_IR 148", "Latin alphabet No. 5", kSingleByteElements},
    {"ISO_IR 166", "Thai", kThaiElements},
    {"ISO 2022 IR 6", "Default Repertoire", "ISO 646 (G0)"},
    {"ISO 2022 IR 13", "Japanese", kJisX0201Elements},
    {"ISO 2022 IR 100", "Latin alphabet No. 1", kSingleByteElements},
    {"ISO 2022 IR 101", "Latin alphabet No. 2", kSingleByteElements},
    {"ISO 2022 IR 109", "Latin alphabet No. 3", kSingleByteElements},
    {"ISO 2022 IR 110", "Latin alphabet No. 4", kSingleByteElements},
    {"ISO 2022 IR 126", "Greek", kSingleByteElements},
    {"ISO 2022 IR 127", "Arabic", kSingleByteElements},
    {"ISO 2022 IR 138", "Hebrew", kSingleByteElements},
    {"ISO 2022 IR 144", "Cyrillic", kSingleByteElements},
    {"ISO 2022 IR 148", "Latin alphabet No. 5", kSingleByteElements},
    {"ISO 2022 IR 166", "Thai", kThaiElements},
    {"ISO 2022 IR 87", "Japanese", "JIS X 0208: Kanji (G0)"},
    {"ISO 2022 IR 149", "Korean", "KS X 1001: Hangul and Hanja (G1)"},
    {"ISO 2022 IR 159", "Japanese", "JIS X 0212: Kanji Supplementary Set (G0)"},
    {"ISO_IR 192", "Unicode in UTF-8", "ISO 10646 (UTF-8)"},
    {"GB18030", "GB18030", "GB18030"},
}};

// Terms outside the standard's table that common writers use, read as the set that holds their
// text: "ISO_IR 6" names the default repertoire itself, and GBK is a subset of GB18030.
struct CharSetAlias {
    std::string_view term;
    CharSet::Enum value;
};
constexpr CharSetAlias kAliases[] = {{"ISO_IR 6", CharSet::DefaultRepertoire}, {"GBK", CharSet::GB18030}};

}  // namespace

CharSet::Enum CharSetFromTerm(std::string_view term) {
    const std::string folded = ToUpperAscii(TrimBlanks(term));
    for (const CharSetAlias& alias : kAliases) {
        if (folded == alias.term) return alias.value;
    }
    // Start at 1 so that the empty text finds the default repertoire, never Unknown.
    for (std::uint32_t value = CharSet::DefaultRepertoire; value < CharSet::Count; ++value) {
        if (folded == kCharSets[value].term) return static_cast<CharSet::Enum>(value);
    }
    return CharSet::Unknown;
}

std::string_view CharSetTerm(CharSet::Enum value, std::string_view fallback) {
    if (value == CharSet::Unknown || value >= CharSet::Count) return fallback;
    return kCharSets[value].term;
}

std::string CharSetDescription(CharSet::Enum value) {
    if (value >= CharSet::Count) return "Unknown Character Set - N/a";
    const CharSetRow& row = kCharSets[value];
    std::string text = "'";
    text.append(row.term).append("' (").append(row.name).append(" - ").append(row.elements).append(")");
    return text;
}

bool IsIso2022CharSet(CharSet::Enum value) {
    return value >= CharSet::ISO_2022_IR_6 && value <= CharSet::ISO_2022_IR_159;
}

}  // namespace Lumivale::DataModule
