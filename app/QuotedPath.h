#pragma once

#include <string>
#include <string_view>

namespace Dicapsule {

// A path as messages show it: between double quotes, with "&" put before every double quote or
// "&" inside it ("a\"b&c" becomes "\"a&\"b&&c\"").
std::string QuotedPath(std::string_view path);

}  // namespace Dicapsule
