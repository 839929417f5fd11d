// The Linux side of InputFile: the path is opened once; a regular file is kept open where it is,
// and a pipe, a process substitution or a character device is copied into a scratch file.

#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/InputFileStream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace Portability {

InputFile::Status InputFile::Open(const std::string& path, std::uint64_t max_size) {
    file_.reset();
    size_ = 0;
    const int source = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (source < 0) {
        LV_TRACE("InputFile", "Cannot open %s: %s", path.c_str(), std::strerror(errno));
        return Status::unreadable;
    }
    struct stat info {};
    if (::fstat(source, &info) == 0 && S_ISREG(info.st_mode)) {
        return Keep(OpenFile::Adopt(source, path, static_cast<std::uint64_t>(info.st_size)), max_size);
    }
    struct Closer {
        int fd;
        ~Closer() { ::close(fd); }
    } closer{source};
    if (S_ISDIR(info.st_mode)) return Status::unreadable;
    return CopyStream(
        [source](char* data, std::size_t size) -> long long {
            for (;;) {
                const ssize_t got = ::read(source, data, size);
                if (got >= 0 || errno != EINTR) return got;
            }
        },
        max_size);
}

}  // namespace Portability
