#pragma once
// A shared library loaded at run time, for optional features whose dependencies are too heavy to
// load in every process start.

#include <string>

namespace Portability {

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
    // Load one of the program's own modules by file name: beside the executable, else in
    // <executable directory>/../lib/dicapsule/ (the installed layout), else at buildPath (where
    // the build wrote it, for a tool run from its build tree). False when none loads.
    bool OpenModule(const std::string& fileName, const std::string& buildPath);
    // True when a library is loaded.
    bool IsOpen() const { return handle_ != nullptr; }
    // Address of the exported symbol `name`, or null.
    void* Symbol(const char* name) const;

private:
    void* handle_ = nullptr;
};

// Directory (with a trailing separator) of the running executable; empty when unknown.
std::string ExecutableDirectory();

}  // namespace Portability
