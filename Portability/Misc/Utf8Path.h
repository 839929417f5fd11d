#pragma once
// Paths to and from the program's narrow text, which is UTF-8 on every platform. A plain
// std::filesystem::path(std::string) would read the bytes in the system's code page on Windows.

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace Portability {

// The path named by UTF-8 text.
std::filesystem::path PathFromUtf8(std::string_view text);

// The path's text in UTF-8.
std::string Utf8FromPath(const std::filesystem::path& path);

// fopen for a file named in UTF-8 (the wide-path _wfopen on Windows); null when it cannot be opened.
std::FILE* OpenUtf8File(const std::string& path, const char* mode);

}  // namespace Portability
