#include "Foundations/DataModule/CharSet/CharSet.h"

#include "Foundations/DataModule/Common/TextUtils.h"

#include <array>

namespace Lumivale::DataModule {

namespace {

struct CharSetRow {
    std::string_view term;
    std::string_view name;
    std::string_view elements;
    CharSet::Enum iso2022;  // the "ISO 2022 ..." term of the same repertoire; the value itself when none
};

constexpr std::string_view kSingleByteElements = "ISO 646 (G0), ISO 8859 Supplementary Set (G1)";
constexpr std::string_view kJisX0201Elements = "JIS X 0201: Romaji (G0), JIS X 0201: Katakana (G1)";
constexpr std::string_view kThaiElements = "ISO 646 (G0), TIS 620-2533 (1990) (G1)";

// Indexed by CharSet::Enum. Row 0's term is never shown: the caller's fallback replaces it.
constexpr std::array<CharSetRow, CharSet::Count> kCharSets = {{
    {"", "Unknown Character Set", "N/a", CharSet::Unknown},
    {"", "Default Repertoire", "ISO 646 (G0)", CharSet::ISO_2022_IR_6},
    {"ISO_IR 13", "Japanese", kJisX0201Elements, CharSet::ISO_2022_IR_13},
    {"ISO_IR 100", "Latin alphabet No. 1", kSingleByteElements, CharSet::ISO_2022_IR_100},
    {"ISO_IR 101", "Latin alphabet No. 2", kSingleByteElements, CharSet::ISO_2022_IR_101},
    {"ISO_IR 109", "Latin alphabet No. 3", kSingleByteElements, CharSet::ISO_2022_IR_109},
    {"ISO_IR 110", "Latin alphabet No. 4", kSingleByteElements, CharSet::ISO_2022_IR_110},
    {"ISO_IR 126", "Greek", kSingleByteElements, CharSet::ISO_2022_IR_126},
    {"ISO_IR 127", "Arabic", kSingleByteElements, CharSet::ISO_2022_IR_127},
    {"ISO_IR 138", "Hebrew", kSingleByteElements, CharSet::ISO_2022_IR_138},
    {"ISO_IR 144", "Cyrillic", kSingleByteElements, CharSet::ISO_2022_IR_144},
    {"ISO_IR 148", "Latin alphabet No. 5", kSingleByteElements, CharSet::ISO_2022_IR_148},
    {"ISO_IR 166", "Thai", kThaiElements, CharSet::ISO_2022_IR_166},
    {"ISO 2022 IR 6", "Default Repertoire", "ISO 646 (G0)", CharSet::ISO_2022_IR_6},
    {"ISO 2022 IR 13", "Japanese", kJisX0201Elements, CharSet::ISO_2022_IR_13},
    {"ISO 2022 IR 100", "Latin alphabet No. 1", kSingleByteElements, CharSet::ISO_2022_IR_100},
    {"ISO 2022 IR 101", "Latin alphabet No. 2", kSingleByteElements, CharSet::ISO_2022_IR_101},
    {"ISO 2022 IR 109", "Latin alphabet No. 3", kSingleByteElements, CharSet::ISO_2022_IR_109},
    {"ISO 2022 IR 110", "Latin alphabet No. 4", kSingleByteElements, CharSet::ISO_2022_IR_110},
    {"ISO 2022 IR 126", "Greek", kSingleByteElements, CharSet::ISO_2022_IR_126},
    {"ISO 2022 IR 127", "Arabic", kSingleByteElements, CharSet::ISO_2022_IR_127},
    {"ISO 2022 IR 138", "Hebrew", kSingleByteElements, CharSet::ISO_2022_IR_138},
    {"ISO 2022 IR 144", "Cyrillic", kSingleByteElements, CharSet::ISO_2022_IR_144},
    {"ISO 2022 IR 148", "Latin alphabet No. 5", kSingleByteElements, CharSet::ISO_2022_IR_148},
    {"ISO 2022 IR 166", "Thai", kThaiElements, CharSet::ISO_2022_IR_166},
    {"ISO 2022 IR 87", "Japanese", "JIS X 0208: Kanji (G0)", CharSet::ISO_2022_IR_87},
    {"ISO 2022 IR 149", "Korean", "KS X 1001: Hangul and Hanja (G1)", CharSet::ISO_2022_IR_149},
    {"ISO 2022 IR 159", "Japanese", "JIS X 0212: Kanji Supplementary Set (G0)", CharSet::ISO_2022_IR_159},
    {"ISO_IR 192", "Unicode in UTF-8", "ISO 10646 (UTF-8)", CharSet::ISO_IR_192},
    {"GB18030", "GB18030", "GB18030", CharSet::GB18030},
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
    return value < CharSet::Count && kCharSets[value].term.starts_with("ISO 2022 ");
}

CharSet::Enum Iso2022Counterpart(CharSet::Enum value) {
    return value < CharSet::Count ? kCharSets[value].iso2022 : value;
}

}  // namespace Lumivale::DataModule
