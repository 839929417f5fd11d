#include "app/QuotedPath.h"

namespace Dicapsule {

std::string QuotedPath(std::string_view path) {
    std::string quoted = "\"";
    for (const char c : path) {
        if (c == '"' || c == '&') quoted += '&';
        quoted += c;
    }
    quoted += '"';
    return quoted;
}

}  // namespace Dicapsule
