#pragma once
// The program's only conversions between wide text (UTF-16, how text attributes are held) and
// narrow text (always UTF-8: paths, option values, payload texts, trace strings).

#include <optional>
#include <string>
#include <string_view>

namespace Lumivale::DataModule {

// Wide text: UTF-16 code units.
using WString = std::u16string;

// Encode UTF-16 text as UTF-8. Throws std::runtime_error "Cannot encode to UTF-8 string."
// when the input holds an unpaired surrogate.
std::string ToUtf8(std::u16string_view wide);

// Decode UTF-8 text into UTF-16. Throws std::runtime_error "Cannot decode UTF-8 string." on
// ill-formed input: stray or missing continuation bytes, overlong forms, surrogates, values
// above U+10FFFF. Nothing is ever substituted.
WString FromUtf8(std::string_view utf8);

// The same conversions for layers that report failure by their result rather than by throwing:
// nullopt where ToUtf8 and FromUtf8 throw.
std::optional<std::string> TryToUtf8(std::u16string_view wide);
std::optional<WString> TryFromUtf8(std::string_view utf8);

// True when the text is well-formed UTF-8 (the test FromUtf8 applies, without building the result).
bool IsValidUtf8(std::string_view utf8) noexcept;

}  // namespace Lumivale::DataModule
