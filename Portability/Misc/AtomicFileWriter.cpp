#include "Portability/Misc/AtomicFileWriter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>
#include <vector>

namespace Portability {

namespace {

// The permissions a plain open(O_CREAT, 0666) would give, since mkstemp makes files private.
mode_t DefaultFileMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

std::string DirectoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string FileNameOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool CopyBuffered(int source_fd, std::uint64_t offset, std::uint64_t length, int target_fd) {
    constexpr std::size_t kChunk = 1 << 20;
    std::vector<char> buffer(static_cast<std::size_t>(std::min<std::uint64_t>(kChunk, length)));
    while (length > 0) {
        const std::size_t want = static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), length));
        const ssize_t got = ::pread(source_fd, buffer.data(), want, static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = ::write(target_fd, buffer.data() + done, static_cast<std::size_t>(got - done));
            if (put < 0 && errno == EINTR) continue;
            if (put <= 0) return false;
            done += put;
        }
        offset += static_cast<std::uint64_t>(got);
        length -= static_cast<std::uint64_t>(got);
    }
    return true;
}

}  // namespace

AtomicFileWriter::AtomicFileWriter(std::string target) : target_(std::move(target)) {}

AtomicFileWriter::~AtomicFileWriter() { Discard(); }

bool AtomicFileWriter::Open() {
    Discard();
    std::string pattern = DirectoryOf(target_) + "/." + FileNameOf(target_) + ".XXXXXX";
    fd_ = ::mkstemp(pattern.data());
    if (fd_ < 0) return false;
    temporary_ = pattern;
    size_ = 0;
    if (::fchmod(fd_, DefaultFileMode()) != 0) {
        Discard();
        return false;
    }
    return true;
}

bool AtomicFileWriter::Write(const void* data, std::size_t size) {
    if (fd_ < 0) return false;
    const char* bytes = static_cast<const char*>(data);
    for (std::size_t done = 0; done < size;) {
        const ssize_t put = ::write(fd_, bytes + done, size - done);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        done += static_cast<std::size_t>(put);
    }
    size_ += size;
    return true;
}

bool AtomicFileWriter::CopyFrom(int source_fd, std::uint64_t offset, std::uint64_t length) {
    if (fd_ < 0) return false;
    std::uint64_t remaining = length;
    loff_t source_offset = static_cast<loff_t>(offset);
    while (remaining > 0) {
        const std::size_t chunk = static_cast<std::size_t>(std::min<std::uint64_t>(remaining, 1u << 30));
        const ssize_t copied = ::copy_file_range(source_fd, &source_offset, fd_, nullptr, chunk, 0);
        if (copied < 0 && errno == EINTR) continue;
        if (copied <= 0) {
            // Not supported between these files (or a short source): copy the rest through a buffer.
            if (!CopyBuffered(source_fd, static_cast<std::uint64_t>(source_offset), remaining, fd_)) return false;
            break;
        }
        remaining -= static_cast<std::uint64_t>(copied);
    }
    size_ += length;
    return true;
}

bool AtomicFileWriter::Commit() {
    if (fd_ < 0) return false;
    const int fd = std::exchange(fd_, -1);
    const bool closed = ::close(fd) == 0;
    if (!closed || std::rename(temporary_.c_str(), target_.c_str()) != 0) {
        ::unlink(temporary_.c_str());
        temporary_.clear();
        return false;
    }
    temporary_.clear();
    return true;
}

void AtomicFileWriter::Discard() noexcept {
    if (fd_ >= 0) ::close(std::exchange(fd_, -1));
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
    temporary_.clear();
}

}  // namespace Portability
