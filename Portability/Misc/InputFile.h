#pragma once
// An input opened for reading whole, kept open until the caller is done with it. A regular file
// is used where it is; anything else that can be read (a pipe, a process substitution, a
// character device) is first copied into an unnamed temporary file, so the caller always gets a
// regular file of known size that can be read at any offset and more than once. A regular file
// that reports a size of 0 (the files of /proc and /sys) is copied too, read to its end.

#include <cstdint>
#include <memory>
#include <string>

#include "Portability/Misc/OpenFile.h"

namespace Portability {

class InputFile {
public:
    enum class Status {
        opened,
        unreadable,  // missing, no permission, a directory, or a read error while copying
        too_large,   // more than the caller's limit
        no_temporary_space,  // a stream to copy filled the temporary directory (TemporaryDirectory())
    };

    InputFile();
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // Open path; a copied input is read up to max_size bytes (one more byte fails as too_large).
    Status Open(const std::string& path, std::uint64_t max_size);
    // The same for the process's standard input, which stays open for the process; name is the
    // name the input goes by in traces.
    Status OpenStandardInput(const std::string& name, std::uint64_t max_size);
    // The input, open for reading (null unless Open succeeded); shared with whatever keeps reading
    // it after this object is gone.
    const std::shared_ptr<OpenFile>& File() const noexcept { return file_; }
    // Size in bytes (of what was read when the input was too large).
    std::uint64_t Size() const noexcept { return size_; }

private:
    struct Source;  // the platform's handle of an input being opened
    // Keep or copy an input just opened (or failed to open) by Open or OpenStandardInput.
    Status OpenSource(const Source& source, const std::string& path, std::uint64_t max_size);
    // Keep a regular file, once one byte of it could be read and its size is within max_size.
    Status Keep(std::shared_ptr<OpenFile> file, std::uint64_t max_size);
    // Copy a stream (a pipe, a console) into a scratch file through read, which gives the count of
    // bytes it put into its buffer, 0 at the end, or -1 on a failure.
    template <typename Read>
    Status CopyStream(Read read, std::uint64_t max_size);

    std::shared_ptr<OpenFile> file_;
    std::uint64_t size_ = 0;
};

}  // namespace Portability
