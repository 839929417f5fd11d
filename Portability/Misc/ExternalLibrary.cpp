#include "Portability/Misc/ExternalLibrary.h"

#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/Sha256.h"

#include <filesystem>
#include <fstream>
#include <vector>

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

namespace {

constexpr const char* kModule = "ExternalLibrary";

const char* Describe(ModuleCheck check) {
    switch (check) {
        case ModuleCheck::usable: return "the loader refused it";
        case ModuleCheck::missing: return "no such file";
        case ModuleCheck::not_regular: return "not a regular file";
        case ModuleCheck::unreadable: return "cannot be read";
        case ModuleCheck::wrong_size: return "not the size of the module this program was built with";
        case ModuleCheck::wrong_digest: return "not the SHA-256 of the module this program was built with";
    }
    return "?";
}

std::filesystem::path PathOf(const std::string& utf8) { return std::filesystem::path(std::u8string(utf8.begin(), utf8.end())); }

}  // namespace

ModuleCheck CheckModuleFile(const std::string& path, const ModuleIdentity& identity) {
    const std::filesystem::path file = PathOf(path);
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found) return ModuleCheck::missing;
    if (error) {
        LV_TRACE(kModule, "Cannot query %s: %s", path.c_str(), error.message().c_str());
        return ModuleCheck::unreadable;
    }
    if (status.type() != std::filesystem::file_type::regular) return ModuleCheck::not_regular;
    std::ifstream in(file, std::ios::binary);
    if (!in) return ModuleCheck::unreadable;
    // The size first: a truncated or grown file is refused without reading it.
    in.seekg(0, std::ios::end);
    const std::streamoff size = in.tellg();
    if (size < 0) return ModuleCheck::unreadable;
    if (static_cast<std::uint64_t>(size) != identity.size) {
        LV_TRACE(kModule, "%s has %lld bytes, the module %s has %llu", path.c_str(), static_cast<long long>(size),
                 identity.file_name, static_cast<unsigned long long>(identity.size));
        return ModuleCheck::wrong_size;
    }
    in.seekg(0, std::ios::beg);
    Sha256 hash;
    std::vector<char> buffer(1 << 16);
    std::uint64_t total = 0;
    while (in) {
        in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        const std::streamsize got = in.gcount();
        hash.Update(buffer.data(), static_cast<std::size_t>(got));
        total += static_cast<std::uint64_t>(got);
    }
    Sha256::Digest digest{};
    if (in.bad() || total != identity.size || !hash.Finish(digest)) return ModuleCheck::unreadable;
    if (ToHex(digest) != identity.sha256) {
        LV_TRACE(kModule, "%s has SHA-256 %s, the module %s has %s", path.c_str(), ToHex(digest).c_str(),
                 identity.file_name, identity.sha256);
        return ModuleCheck::wrong_digest;
    }
    return ModuleCheck::usable;
}

bool ExternalLibrary::OpenModule(const ModuleIdentity& identity) {
    refused_.clear();
    const std::string directory = ExecutableDirectory();
    if (directory.empty()) {
        LV_TRACE(kModule, "Module %s not loaded: the executable's directory is unknown", identity.file_name);
        return false;
    }
    const char separator = static_cast<char>(std::filesystem::path::preferred_separator);
    const std::string installed = directory + ".." + separator + "lib" + separator + "dicapsule" + separator;
    for (const std::string& folder : {directory, installed}) {
        const auto normal = PathOf(folder + identity.file_name).lexically_normal().u8string();
        const std::string candidate(normal.begin(), normal.end());
        const ModuleCheck check = CheckModuleFile(candidate, identity);
        if (check == ModuleCheck::missing) {
            LV_TRACE(kModule, "Module %s: no file at %s", identity.file_name, candidate.c_str());
            continue;
        }
        if (check == ModuleCheck::usable && Open(candidate)) return true;
        LV_TRACE(kModule, "Module %s: %s refused, %s", identity.file_name, candidate.c_str(), Describe(check));
        if (refused_.empty()) refused_ = candidate;
    }
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
