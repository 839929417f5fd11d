#pragma once
// Text values as the bytes of a DICOM element under a declared Specific Character Set, and back.

#include "Foundations/DataModule/CharSet/MultiCharSetDataType.h"

#include <string>
#include <string_view>

namespace Lumivale::DataModule {

// Where ISO 2022 text returns to the first declared character set. Every kind returns at CR, LF,
// FF and TAB, and at the end of the value.
enum class TextValueKind {
    SingleValued,  // LT, ST, UT: the backslash is an ordinary character
    MultiValued,   // the other text VRs: also at each "\" between values
    PersonName,    // PN: also at each "\", "=" between component groups and "^" between components
};

// Write `text` in the declared character set. Each character goes to the first declared set that
// holds it, with escape sequences only where the active set changes. False, with a trace line,
// when a character has no declared set or a declared term cannot be used; `bytes` is then empty.
bool EncodeText(std::u16string_view text, const MultiCharSetDataType& charset, TextValueKind kind,
                std::string& bytes);

// Read bytes written in the declared character set. False, with a trace line, on malformed bytes
// (bytes outside the active sets, unknown or misplaced escape sequences, truncated characters);
// `text` is then empty. Terms that cannot be used are traced and read as the default repertoire.
bool DecodeText(std::string_view bytes, const MultiCharSetDataType& charset, TextValueKind kind,
                std::u16string& text);

// What DecodeTextLeniently had to do beyond DecodeText.
enum class DecodeFallback {
    None,                 // the bytes were valid in the declared sets
    UndeclaredAsLatin1,   // bytes above 0x7F where no set was declared for them, read as ISO_IR 100
    Replaced,             // bytes invalid in their declared set, read as U+FFFD
};

// Read bytes as DecodeText does, but never fail: where no set is declared for bytes above 0x7F
// they are read as ISO_IR 100 (as the common toolkits do), and bytes invalid under their declared
// set become the replacement character U+FFFD, one per byte or per malformed character.
DecodeFallback DecodeTextLeniently(std::string_view bytes, const MultiCharSetDataType& charset, TextValueKind kind,
                                   std::u16string& text);

}  // namespace Lumivale::DataModule
