#pragma once

#include <string_view>

namespace LibCommon {

// "help", "--help" and "-h", compared exactly (case-sensitive).
inline bool IsHelpWord(std::string_view word) {
    return word == "help" || word == "--help" || word == "-h";
}

}  // namespace LibCommon
