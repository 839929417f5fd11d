#pragma once
// Whole-file reads and writes, and a scratch folder of this process, for the tests that work on files.

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <vector>

namespace TestFiles {

inline std::vector<std::uint8_t> ReadBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline std::string ReadText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void WriteBytes(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// An empty folder "name-<process id>" (ctest runs each case in a process of its own), removed with
// its content at the end.
struct ScratchDirectory {
    explicit ScratchDirectory(const std::string& name,
                              const std::filesystem::path& base = std::filesystem::temp_directory_path())
        : path(base / (name + "-" + std::to_string(::getpid()))) {
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path);
    }
    ~ScratchDirectory() { std::filesystem::remove_all(path); }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;
    const std::filesystem::path path;
};

}  // namespace TestFiles
