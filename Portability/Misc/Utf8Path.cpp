#include "Portability/Misc/Utf8Path.h"

#ifdef _WIN32
#include "Portability/Misc/win32/WideText.h"
#endif

namespace Portability {

std::filesystem::path PathFromUtf8(std::string_view text) {
    // char8_t text is UTF-8 by definition, on every platform.
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

std::string Utf8FromPath(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

std::FILE* OpenUtf8File(const std::string& path, const char* mode) {
#ifdef _WIN32
    std::wstring widePath;
    std::wstring wideMode;
    if (!WideFromUtf8(path, widePath) || !WideFromUtf8(mode, wideMode)) return nullptr;
    return ::_wfopen(widePath.c_str(), wideMode.c_str());
#else
    return std::fopen(path.c_str(), mode);
#endif
}

}  // namespace Portability
