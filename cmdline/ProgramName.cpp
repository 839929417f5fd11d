#include "cmdline/ProgramName.h"

#include <string_view>

namespace LibCommon {

std::string ProgramName(const char* argv0) {
    if (argv0 == nullptr) return {};
    const std::string_view path = argv0;
    const std::size_t separator = path.find_last_of("/\\");
    return std::string(separator == std::string_view::npos ? path : path.substr(separator + 1));
}

}  // namespace LibCommon
