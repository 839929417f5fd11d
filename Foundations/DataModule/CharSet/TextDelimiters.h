#pragma once
// The characters at which ISO 2022 text returns to its first declared character set.

#include "Foundations/DataModule/CharSet/EncodedText.h"

namespace Lumivale::DataModule {

// True for CR, LF, FF and TAB, and for the value and name delimiters of `kind`.
constexpr bool IsTextDelimiter(char16_t c, TextValueKind kind) {
    switch (c) {
        case u'\r': case u'\n': case u'\f': case u'\t': return true;
        case u'\\': return kind != TextValueKind::SingleValued;
        case u'^': case u'=': return kind == TextValueKind::PersonName;
        default: return false;
    }
}

}  // namespace Lumivale::DataModule
