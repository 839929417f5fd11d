#pragma once
// An input opened for reading whole, kept open until the caller is done with it. A regular file
// is used where it is; anything else that can be read (a pipe, a process substitution, a
// character device) is first copied into an unnamed temporary file, so the caller always gets a
// regular file of known size that can be read at any offset and more than once.

#include <cstdint>
#include <memory>
#include <string>

namespace Portability {

class InputFile {
public:
    enum class Status {
        opened,
        unreadable,  // missing, no permission, a directory, or a read error while copying
        too_large,   // more than the caller's limit
    };

    InputFile();
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // Open path; a copied input is read up to max_size bytes (one more byte fails as too_large).
    Status Open(const std::string& path, std::uint64_t max_size);
    // A path that opens the same file while this object lives, even if the input's own name has
    // meanwhile been renamed or replaced (where the platform allows).
    const std::string& ReadablePath() const noexcept { return readable_path_; }
    // Size in bytes.
    std::uint64_t Size() const noexcept { return size_; }

private:
    struct Handle;  // the platform's open file
    std::unique_ptr<Handle> handle_;
    std::string readable_path_;
    std::uint64_t size_ = 0;
};

}  // namespace Portability
