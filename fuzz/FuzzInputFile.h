#pragma once
// Fuzz inputs for readers that take a path: the bytes are written to a file of this process in
// /dev/shm (memory-backed, so a run does not wear the disk) and the file is removed afterwards.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include <unistd.h>

namespace DicapsuleFuzz {

// A file holding one input for the lifetime of the object.
class FuzzInputFile {
public:
    // Write bytes to a per-process file named after the target; extension chooses the file's suffix.
    FuzzInputFile(const std::uint8_t* data, std::size_t size, const std::string& target, const std::string& extension)
        : path_("/dev/shm/dicapsule-fuzz-" + target + "-" + std::to_string(::getpid()) + extension) {
        if (std::FILE* file = std::fopen(path_.c_str(), "wb")) {
            written_ = size == 0 || std::fwrite(data, 1, size, file) == size;
            written_ = std::fclose(file) == 0 && written_;
        }
    }
    ~FuzzInputFile() { std::remove(path_.c_str()); }
    FuzzInputFile(const FuzzInputFile&) = delete;
    FuzzInputFile& operator=(const FuzzInputFile&) = delete;

    // The file's path.
    const std::string& Path() const noexcept { return path_; }
    // False when the file could not be written (the input is then skipped).
    bool Written() const noexcept { return written_; }

private:
    std::string path_;
    bool written_ = false;
};

}  // namespace DicapsuleFuzz
