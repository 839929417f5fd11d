#pragma once
// Small helpers on narrow text that the term parsers share.

#include <string>
#include <string_view>
#include <vector>

namespace Lumivale::DataModule {

// The text without leading and trailing " \t\r\n".
std::string_view TrimBlanks(std::string_view text);

// True when every byte is ASCII (below 0x80).
bool IsAscii(std::string_view text);

// Per-byte ASCII case folding (bytes above 0x7F are left as they are).
std::string ToLowerAscii(std::string_view text);
std::string ToUpperAscii(std::string_view text);

// Split at every separator, keeping empty fields: "a::b" gives "a", "", "b"; "" gives one empty field.
std::vector<std::string> SplitKeepingEmpty(std::string_view text, char separator);

}  // namespace Lumivale::DataModule
