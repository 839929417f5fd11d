#pragma once
// Fuzz inputs for readers that take a path: the bytes are written to a file of this process in
// /dev/shm (memory-backed, so a run does not wear the disk) and the file is removed afterwards.
// An input that cannot be written stops the run: a replay that skipped its inputs would pass
// having checked nothing.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <unistd.h>

namespace DicapsuleFuzz {

// A file holding one input for the lifetime of the object.
class FuzzInputFile {
public:
    // Write bytes to a per-process file named after the target; extension chooses the file's suffix.
    FuzzInputFile(const std::uint8_t* data, std::size_t size, const std::string& target, const std::string& extension)
        : path_("/dev/shm/dicapsule-fuzz-" + target + "-" + std::to_string(::getpid()) + extension) {
        bool written = false;
        if (std::FILE* file = std::fopen(path_.c_str(), "wb")) {
            written = size == 0 || std::fwrite(data, 1, size, file) == size;
            written = std::fclose(file) == 0 && written;
        }
        if (!written) {
            std::fprintf(stderr, "cannot write the fuzz input to %s\n", path_.c_str());
            std::remove(path_.c_str());
            std::abort();
        }
    }
    ~FuzzInputFile() { std::remove(path_.c_str()); }
    FuzzInputFile(const FuzzInputFile&) = delete;
    FuzzInputFile& operator=(const FuzzInputFile&) = delete;

    // The file's path.
    const std::string& Path() const noexcept { return path_; }

private:
    std::string path_;
};

}  // namespace DicapsuleFuzz
