#pragma once
// A shared library loaded at run time, for optional features whose dependencies are too heavy to
// load in every process start.

#include <cstdint>
#include <string>

namespace Portability {

// One of the program's own modules as the build made it: a module is loaded only when its file
// has exactly this size and SHA-256, so a truncated, damaged or foreign file is never mapped.
struct ModuleIdentity {
    const char* file_name;  // "dicapsule_imaging.so"
    std::uint64_t size;     // bytes
    const char* sha256;     // 64 lower-case hexadecimal characters
};

// Why a module file was not taken.
enum class ModuleCheck { usable, missing, not_regular, unreadable, wrong_size, wrong_digest };

// Check the file at path (UTF-8) against identity, reading it whole once its size matches.
ModuleCheck CheckModuleFile(const std::string& path, const ModuleIdentity& identity);

// Owns one loaded library and releases it when destroyed; on Linux its code and static data stay
// mapped until the process ends (what it allocated may still be referenced then).
class ExternalLibrary {
public:
    ExternalLibrary() = default;
    ExternalLibrary(const ExternalLibrary&) = delete;
    ExternalLibrary& operator=(const ExternalLibrary&) = delete;
    ~ExternalLibrary();

    // Load the library file at path (UTF-8); false, with a trace line, when it cannot be loaded.
    bool Open(const std::string& path);
    // Load one of the program's own modules: beside the executable, else in
    // <executable directory>/../lib/dicapsule/ (the installed layout), the first file there that
    // passes CheckModuleFile. Nowhere else, and never relative to the working directory. False,
    // with a trace line for every place tried, when none loads; refused() then names the file
    // that was found but refused (empty when none was found).
    bool OpenModule(const ModuleIdentity& identity);
    // True when a library is loaded.
    bool IsOpen() const { return handle_ != nullptr; }
    // Address of the exported symbol `name`, or null.
    void* Symbol(const char* name) const;
    // The module file OpenModule found and refused last, or empty.
    const std::string& refused() const { return refused_; }

private:
    void* handle_ = nullptr;
    std::string refused_;
};

// Directory (with a trailing separator) of the running executable; empty when unknown.
std::string ExecutableDirectory();

}  // namespace Portability
