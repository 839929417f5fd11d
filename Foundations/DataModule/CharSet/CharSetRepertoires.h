#pragma once
// The coded character sets behind each DICOM term, and how a declared Specific Character Set
// resolves into the repertoires that the text encoder and decoder walk through.

#include "Foundations/DataModule/CharSet/CharSetEscapeSequences.h"
#include "Foundations/DataModule/CharSet/IconvConverter.h"
#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Lumivale::DataModule {

// One coded character set that can sit in G0 or G1, and the iconv set that holds its characters.
struct CodeElement {
    CharSet::Enum term;          // the ISO 2022 term whose escape sequence designates it
    GraphicSet set;              // where it is designated
    const char* iconvName;       // iconv set holding its characters (the EUC form for Japanese/Korean)
    std::string_view prefix;     // bytes before each character in the iconv form (EUC single shifts)
    std::uint8_t bytesPerChar;   // 1 or 2
    std::uint8_t lowest;         // range of each byte in the iconv form (high bit set, except ISO 646)
    std::uint8_t highest;

    // True for ISO 646 and JIS X 0201 Romaji, whose bytes are taken as ASCII directly.
    bool IsAscii() const { return lowest == 0; }

    // The designating escape sequence.
    std::string_view Escape() const;

    // Append the element's bytes (high bit clear in G0, set in G1) for one character, given as its
    // UTF-16 code units; false when the element has no such character.
    bool Encode(std::u16string_view character, IconvConverters& converters, std::string& bytes) const;

    // Append the character written by `bytes` (bytesPerChar bytes in the element's own form) to
    // `text`; false when they name no character of the element.
    bool Decode(std::string_view bytes, IconvConverters& converters, std::u16string& text) const;
};

// The element that an escape designation names, or nullptr.
const CodeElement* FindCodeElement(const EscapeDesignation& designation);

// One declared term: the elements it designates into G0 and G1 (either may be absent).
struct Repertoire {
    CharSet::Enum term = CharSet::Unknown;
    const CodeElement* g0 = nullptr;
    const CodeElement* g1 = nullptr;
};

// A Specific Character Set resolved for encoding or decoding.
struct ResolvedCharSets {
    // UTF-8 and GB18030 convert a whole value at once; every other set goes element by element.
    const char* wholeValueIconvName = nullptr;
    // Declared order; the first one's elements are active at the start of each value and after
    // each delimiter.
    std::vector<Repertoire> repertoires;
    // True when escape sequences may switch elements inside a value (any ISO 2022 form).
    bool codeExtensions = false;
};

// Resolve the declared terms. A term this program cannot use (Unknown, or UTF-8/GB18030 after the
// first value) fails for encoding; for decoding it is traced and read as the default repertoire.
bool ResolveCharSets(const MultiCharSetDataType& charset, bool forDecoding, ResolvedCharSets& resolved);

}  // namespace Lumivale::DataModule
