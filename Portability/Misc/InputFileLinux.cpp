// The Linux side of InputFile: a pipe, a process substitution or a character device is copied
// into a scratch file.

#include "Portability/Misc/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace Portability {

InputFile::Status InputFile::CopyStream(const std::string& path, std::uint64_t max_size) {
    const int source = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (source < 0) return Status::unreadable;
    struct Closer {
        int fd;
        ~Closer() { ::close(fd); }
    } closer{source};
    struct stat info {};
    if (::fstat(source, &info) != 0 || S_ISDIR(info.st_mode)) return Status::unreadable;
    std::shared_ptr<OpenFile> copy = OpenFile::OpenTemporary();
    if (!copy) return Status::unreadable;
    std::vector<char> buffer(1 << 16);
    for (;;) {
        const ssize_t got = ::read(source, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0 || !copy->Append(buffer.data(), static_cast<std::size_t>(got))) return Status::unreadable;
        size_ = copy->Size();
        if (size_ > max_size) return Status::too_large;
        if (got == 0) break;
    }
    file_ = std::move(copy);
    return Status::opened;
}

}  // namespace Portability
