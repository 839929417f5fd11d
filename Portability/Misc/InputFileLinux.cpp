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

struct InputFile::Source {
    int descriptor;  // -1 when the input could not be opened
};

InputFile::Status InputFile::Open(const std::string& path, std::uint64_t max_size) {
    return OpenSource({::open(path.c_str(), O_RDONLY | O_CLOEXEC)}, path, max_size);
}

InputFile::Status InputFile::OpenStandardInput(const std::string& name, std::uint64_t max_size) {
    // A descriptor of its own, so that what keeps the input open never closes the process's.
    return OpenSource({::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)}, name, max_size);
}

InputFile::Status InputFile::OpenSource(const Source& opened, const std::string& path, std::uint64_t max_size) {
    file_.reset();
    size_ = 0;
    const int source = opened.descriptor;
    if (source < 0) {
        LV_TRACE("InputFile", "Cannot open %s: %s", path.c_str(), std::strerror(errno));
        return Status::unreadable;
    }
    struct stat info {};
    // A regular file of size 0 may still have content that only reading shows (/proc, /sys).
    if (::fstat(source, &info) == 0 && S_ISREG(info.st_mode) && info.st_size > 0) {
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
