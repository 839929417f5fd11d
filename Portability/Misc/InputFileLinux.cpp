// The Linux side of InputFile: a regular file stays open where it is; other inputs are copied into
// a temporary file. Both are reached again through /proc/self/fd.

#include "Portability/Misc/InputFile.h"

#include "Portability/Misc/TemporaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace Portability {

struct InputFile::Handle {
    int fd = -1;
    ~Handle() {
        if (fd >= 0) ::close(fd);
    }
};

namespace {

// Copy everything readable from source into target, at most max_size + 1 bytes.
InputFile::Status CopyStream(int source, int target, std::uint64_t max_size, std::uint64_t& copied) {
    std::vector<char> buffer(1 << 16);
    copied = 0;
    for (;;) {
        const ssize_t got = ::read(source, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return InputFile::Status::unreadable;
        if (got == 0) return InputFile::Status::opened;
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = ::write(target, buffer.data() + done, static_cast<std::size_t>(got - done));
            if (put < 0 && errno == EINTR) continue;
            if (put <= 0) return InputFile::Status::unreadable;
            done += put;
        }
        copied += static_cast<std::uint64_t>(got);
        if (copied > max_size) return InputFile::Status::too_large;
    }
}

}  // namespace

InputFile::InputFile() = default;
InputFile::~InputFile() = default;

InputFile::Status InputFile::Open(const std::string& path, std::uint64_t max_size) {
    handle_.reset();
    readable_path_.clear();
    size_ = 0;
    auto source = std::make_unique<Handle>();
    source->fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat info {};
    if (source->fd < 0 || ::fstat(source->fd, &info) != 0 || S_ISDIR(info.st_mode)) return Status::unreadable;
    if (S_ISREG(info.st_mode)) {
        // One byte read proves the permission is real (some file systems grant the open only).
        char probe = 0;
        if (info.st_size > 0 && ::pread(source->fd, &probe, 1, 0) != 1) return Status::unreadable;
        size_ = static_cast<std::uint64_t>(info.st_size);
        if (size_ > max_size) return Status::too_large;
        // Read later through the open descriptor, so a file renamed or replaced meanwhile cannot
        // change what is packed; without /proc, through the path.
        const std::string self = "/proc/self/fd/" + std::to_string(source->fd);
        readable_path_ = ::access(self.c_str(), R_OK) == 0 ? self : path;
        handle_ = std::move(source);
        return Status::opened;
    }
    auto copy = std::make_unique<Handle>();
    std::string copy_path;
    copy->fd = CreateTemporaryFile(copy_path);
    if (copy->fd < 0) return Status::unreadable;
    const Status status = CopyStream(source->fd, copy->fd, max_size, size_);
    if (status != Status::opened) return status;
    readable_path_ = std::move(copy_path);
    handle_ = std::move(copy);
    return Status::opened;
}

}  // namespace Portability
