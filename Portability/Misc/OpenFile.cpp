#include "Portability/Misc/OpenFile.h"

#include "Portability/Misc/DebugTrace.h"

#include "Portability/Misc/TemporaryFile.h"
#include "Portability/Misc/Utf8Path.h"

#ifdef _WIN32
#include "Portability/Misc/win32/PosixFiles.h"
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace Portability {

namespace {

// Reads and writes go by pieces of at most this many bytes (the Windows calls take 32-bit counts).
constexpr std::uint64_t kPiece = std::uint64_t{1} << 30;

}  // namespace

OpenFile::OpenFile(std::string path, int descriptor, std::uint64_t size)
    : path_(std::move(path)), descriptor_(descriptor), size_(size) {}

OpenFile::~OpenFile() { ::close(descriptor_); }

std::shared_ptr<OpenFile> OpenFile::Open(const std::string& path) {
    const int descriptor = ::open(PathFromUtf8(path).c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        LV_TRACE("OpenFile", "Cannot open %s: %s", path.c_str(), std::strerror(errno));
        return nullptr;
    }
    struct stat info {};
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        LV_TRACE("OpenFile", "%s is not a regular file", path.c_str());
        ::close(descriptor);
        return nullptr;
    }
    std::shared_ptr<OpenFile> file(new OpenFile(path, descriptor, static_cast<std::uint64_t>(info.st_size)));
    file->TakeStamp();
    return file;
}

std::shared_ptr<OpenFile> OpenFile::Adopt(int descriptor, std::string path, std::uint64_t size) {
    std::shared_ptr<OpenFile> file(new OpenFile(std::move(path), descriptor, size));
    file->TakeStamp();
    return file;
}

std::shared_ptr<OpenFile> OpenFile::OpenTemporary() {
    std::string path;
    const int descriptor = CreateTemporaryFile(path);
    if (descriptor < 0) return nullptr;
    return std::shared_ptr<OpenFile>(new OpenFile(std::move(path), descriptor, 0));
}

bool OpenFile::ReadAt(void* data, std::uint64_t size, std::uint64_t offset) const {
    auto* bytes = static_cast<unsigned char*>(data);
    while (size > 0) {
        const auto got = ::pread(descriptor_, bytes, static_cast<std::size_t>(std::min(size, kPiece)),
                                 static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) {
            if (got < 0) {
                LV_TRACE("OpenFile", "Cannot read %s at offset %llu: %s", path_.c_str(),
                         static_cast<unsigned long long>(offset), std::strerror(errno));
            } else {
                LV_TRACE("OpenFile", "%s ends before offset %llu", path_.c_str(),
                         static_cast<unsigned long long>(offset + size));
            }
            return false;
        }
        bytes += got;
        size -= static_cast<std::uint64_t>(got);
        offset += static_cast<std::uint64_t>(got);
    }
    return true;
}

bool OpenFile::Unchanged() const {
    if (!stamped_) return true;
    FileStamp now;
    return ReadFileStamp(descriptor_, now) && now == stamp_;
}

bool OpenFile::Append(const void* data, std::size_t size) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (size > 0) {
        const auto written = ::pwrite(descriptor_, bytes, static_cast<std::size_t>(std::min<std::uint64_t>(size, kPiece)),
                                      static_cast<off_t>(size_));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            const int error = written < 0 ? errno : ENOSPC;
            LV_TRACE("OpenFile", "Cannot write %s at offset %llu: %s", path_.c_str(),
                     static_cast<unsigned long long>(size_), std::strerror(error));
            errno = error;
            return false;
        }
        bytes += written;
        size -= static_cast<std::size_t>(written);
        size_ += static_cast<std::uint64_t>(written);
    }
    return true;
}

}  // namespace Portability
