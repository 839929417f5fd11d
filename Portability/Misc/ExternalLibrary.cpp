#include "Portability/Misc/ExternalLibrary.h"

#include "Portability/Misc/DebugTrace.h"

#include <filesystem>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#include <sys/auxv.h>
#endif

namespace Portability {

ExternalLibrary::~ExternalLibrary() {
    if (handle_ == nullptr) return;
#if defined(_WIN32)
    FreeLibrary(static_cast<HMODULE>(handle_));
#else
    dlclose(handle_);
#endif
}

bool ExternalLibrary::Open(const std::string& path) {
    if (handle_ != nullptr) return false;
#if defined(_WIN32)
    const std::filesystem::path file(std::u8string(path.begin(), path.end()));
    handle_ = LoadLibraryW(file.wstring().c_str());
    if (handle_ == nullptr) LV_TRACE("ExternalLibrary", "Cannot load %s: error %lu", path.c_str(), GetLastError());
#else
    // Local binding: the library's own dependencies must not resolve symbols of this program.
    // Never unloaded: what a library keeps in its static data stays valid until the process ends.
    handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (handle_ == nullptr) LV_TRACE("ExternalLibrary", "Cannot load %s: %s", path.c_str(), dlerror());
#endif
    return handle_ != nullptr;
}

bool ExternalLibrary::OpenModule(const std::string& fileName, const std::string& buildPath) {
    const std::string directory = ExecutableDirectory();
    const char separator = static_cast<char>(std::filesystem::path::preferred_separator);
    // Without a known executable directory nothing is looked up relative to the working directory.
    const std::string installed = directory + ".." + separator + "lib" + separator + "dicapsule" + separator + fileName;
    const std::string candidates[] = {directory.empty() ? std::string() : directory + fileName,
                                      directory.empty() ? std::string() : installed, buildPath};
    for (const std::string& candidate : candidates) {
        std::error_code error;
        const std::filesystem::path path(std::u8string(candidate.begin(), candidate.end()));
        if (!candidate.empty() && std::filesystem::is_regular_file(path, error) && Open(candidate)) return true;
    }
    LV_TRACE("ExternalLibrary", "Module %s not found", fileName.c_str());
    return false;
}

void* ExternalLibrary::Symbol(const char* name) const {
    if (handle_ == nullptr) return nullptr;
#if defined(_WIN32)
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
#else
    return dlsym(handle_, name);
#endif
}

std::string ExecutableDirectory() {
#if defined(_WIN32)
    wchar_t buffer[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, buffer, MAX_PATH);
    if (length == 0 || length == MAX_PATH) return {};
    const std::filesystem::path executable(std::wstring(buffer, length));
#else
    std::error_code error;
    std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        // No /proc (a bare chroot or container): the name the program was started by, as the kernel
        // passed it to the process, with its links resolved as /proc would have.
        const char* started = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
        if (started == nullptr) return {};
        executable = std::filesystem::canonical(started, error);
        if (error) return {};
    }
#endif
    const auto text = executable.parent_path().u8string();
    return std::string(text.begin(), text.end()) + static_cast<char>(std::filesystem::path::preferred_separator);
}

}  // namespace Portability
