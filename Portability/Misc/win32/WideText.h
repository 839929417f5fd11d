#pragma once
// UTF-8 and UTF-16 through the Windows code-page functions with the UTF-8 code page (65001).
// Both refuse ill-formed input instead of substituting characters.

#ifndef _WIN32
#error "WideText.h is for Windows builds only"
#endif

#include <string>
#include <string_view>

namespace Portability {

// UTF-8 text as UTF-16 into out; false (out cleared) on ill-formed input.
bool WideFromUtf8(std::string_view text, std::wstring& out);

// UTF-16 text as UTF-8; lone surrogates become U+FFFD rather than stopping the program.
std::string Utf8FromWide(std::wstring_view text);

}  // namespace Portability
