// The Linux side of AtomicFileWriter: an unnamed O_TMPFILE file linked into place on Commit, or,
// on file systems without O_TMPFILE, a short hidden name that a signal handler removes when the
// process is interrupted. Targets that are not files to replace are opened and written through.

#include "Portability/Misc/AtomicFileWriter.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/HashingPipeline.h"
#include "Portability/Misc/InterruptCleanup.h"
#include "Portability/Misc/Progress.h"
#include "Portability/Misc/Sha256.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace Portability {

struct AtomicFileWriter::Temporary {
    int fd = -1;
    std::string name;                 // empty while the file has no name
    InterruptCleanup::Entry cleanup;  // removes name if the process is interrupted
    bool through = false;             // fd is the target itself, written through
};

namespace {

constexpr const char* kModule = "AtomicFileWriter";
constexpr int kNameAttempts = 64;
constexpr int kMaxLinks = 40;  // the kernel's own limit on links followed in one lookup

void TraceError(const char* what, const std::string& path, int error) {
    LV_TRACE(kModule, "%s %s: %s", what, path.c_str(), std::strerror(error));
}

// What an errno says about the target's file system, for the caller's message.
WriteFailure FailureOf(int error) {
    switch (error) {
        case ENOSPC:
        case EDQUOT:
            return WriteFailure::no_space;
        case EROFS:
            return WriteFailure::read_only;
        default:
            return WriteFailure::io;
    }
}

std::string DirectoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// The descriptor N that path names as /dev/fd/N, /proc/self/fd/N, /proc/thread-self/fd/N or
// /proc/<this process>/fd/N, directly or through symbolic links (/dev/stdout); -1 otherwise.
int DescriptorNamed(std::string path) {
    const std::string own = "/proc/" + std::to_string(::getpid()) + "/fd/";
    for (int hop = 0; hop <= kMaxLinks; ++hop) {
        for (const std::string prefix : {"/dev/fd/", "/proc/self/fd/", "/proc/thread-self/fd/", own.c_str()}) {
            if (path.size() <= prefix.size() || path.compare(0, prefix.size(), prefix) != 0) continue;
            const std::string digits = path.substr(prefix.size());
            if (digits.size() > 9 || digits.find_first_not_of("0123456789") != std::string::npos) return -1;
            return std::stoi(digits);
        }
        char link[4096];
        const ssize_t length = ::readlink(path.c_str(), link, sizeof link);
        if (length <= 0 || static_cast<std::size_t>(length) == sizeof link) return -1;
        const std::string next(link, static_cast<std::size_t>(length));
        path = next.front() == '/' ? next : DirectoryOf(path) + "/" + next;
    }
    return -1;
}

// A stream connection to the Unix socket at path; -1 with errno set when none.
int ConnectSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return -1;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return -1;
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return fd;
    const int error = errno;
    ::close(fd);
    errno = error;
    return -1;
}

// Whether target is written through; when it is, fd receives its open descriptor, or -1 with
// errno set when it cannot be opened.
bool OpenThrough(const std::string& target, bool replacing, int& fd) {
    fd = -1;
    if (const int descriptor = DescriptorNamed(target); descriptor >= 0) {
        fd = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
        return true;
    }
    struct stat info {};
    if (::stat(target.c_str(), &info) != 0) return false;
    if (S_ISSOCK(info.st_mode)) {
        fd = ConnectSocket(target);
        return true;
    }
    if (!S_ISCHR(info.st_mode) && !S_ISFIFO(info.st_mode) && !(replacing && S_ISBLK(info.st_mode))) return false;
    fd = ::open(target.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
    return true;
}

// ".dcp" and six random characters: ten bytes, short enough for any directory the target fits in.
std::string RandomSiblingName(const std::string& directory) {
    static constexpr char kAlphabet[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    unsigned char random[6] = {};
    if (::getrandom(random, sizeof random, 0) != static_cast<ssize_t>(sizeof random)) {
        static unsigned counter = 0;
        const unsigned seed = static_cast<unsigned>(::getpid()) * 2654435761u + ++counter;
        for (std::size_t i = 0; i < sizeof random; ++i) random[i] = static_cast<unsigned char>(seed >> (i * 5));
    }
    std::string name = directory + "/.dcp";
    for (unsigned char byte : random) name += kAlphabet[byte % (sizeof kAlphabet - 1)];
    return name;
}

// Give a fresh name beside the target to what `make` creates there; the name is armed for removal
// on interruption before it exists. `make` returns 0, or the errno of its failure.
template <typename Make>
bool ClaimSiblingName(const std::string& directory, WriteFailure& failure, std::string& name,
                      InterruptCleanup::Entry& cleanup, Make make) {
    for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
        std::string candidate = RandomSiblingName(directory);
        InterruptCleanup::Entry entry(candidate);
        const int error = make(candidate);
        if (error == 0) {
            name = std::move(candidate);
            cleanup = std::move(entry);
            return true;
        }
        if (error != EEXIST) {
            TraceError("Cannot create the temporary file", candidate, error);
            failure = FailureOf(error);
            return false;
        }
    }
    LV_TRACE(kModule, "No free temporary name in %s", directory.c_str());
    failure = WriteFailure::io;
    return false;
}

// Writes all size bytes at `at`, or at the file's position when `at` is negative; 0, or the
// errno of the failure (ENOSPC for a write that makes no progress).
int WriteAll(int fd, const void* data, std::size_t size, off_t at = -1) {
    const char* bytes = static_cast<const char*>(data);
    for (std::size_t done = 0; done < size;) {
        const ssize_t put = at < 0 ? ::write(fd, bytes + done, size - done)
                                   : ::pwrite(fd, bytes + done, size - done, at + static_cast<off_t>(done));
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return put < 0 ? errno : ENOSPC;
        done += static_cast<std::size_t>(put);
    }
    return 0;
}

// Copy through a buffer; false with the failure's kind in failure.
bool CopyBuffered(int source_fd, std::uint64_t offset, std::uint64_t length, int target_fd, WriteFailure& failure) {
    constexpr std::size_t kChunk = 1 << 20;
    std::vector<char> buffer(static_cast<std::size_t>(std::min<std::uint64_t>(kChunk, length)));
    while (length > 0) {
        const std::size_t want = static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), length));
        const ssize_t got = ::pread(source_fd, buffer.data(), want, static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) {
            if (got == 0) {
                LV_TRACE(kModule, "The source ends at offset %llu, %llu bytes short of the copy",
                         static_cast<unsigned long long>(offset), static_cast<unsigned long long>(length));
            } else {
                LV_TRACE(kModule, "Cannot read the source at offset %llu: %s", static_cast<unsigned long long>(offset),
                         std::strerror(errno));
            }
            failure = WriteFailure::source;
            return false;
        }
        if (const int error = WriteAll(target_fd, buffer.data(), static_cast<std::size_t>(got))) {
            LV_TRACE(kModule, "Cannot write the output: %s", std::strerror(error));
            failure = FailureOf(error);
            return false;
        }
        offset += static_cast<std::uint64_t>(got);
        length -= static_cast<std::uint64_t>(got);
    }
    return true;
}

// Direct reading: a cloned range is not in the page cache, and reading it through the cache
// would cost a copy and the cache's bookkeeping for pages nobody reads again.
constexpr std::uint64_t kDirectAlignment = HashingPipeline::kAlignment;

// fd's file opened again for direct reading; -1 where the file system does not have it.
int OpenDirect(int fd) {
    const std::string path = "/proc/self/fd/" + std::to_string(fd);
    return ::open(path.c_str(), O_RDONLY | O_DIRECT | O_CLOEXEC);
}

// Feeds `length` bytes of fd from `offset` to digest, each piece hashed on a second thread while
// the next is read. False when a read fails or the file ends early.
bool HashStoredRange(int fd, std::uint64_t offset, std::uint64_t length, Sha256& digest) {
    HashingPipeline pipeline(digest, HashingPipeline::PieceFor(length));
    int direct = offset % kDirectAlignment == 0 ? OpenDirect(fd) : -1;
    bool complete = true;
    for (std::uint64_t done = 0; done < length;) {
        const std::size_t want = static_cast<std::size_t>(std::min<std::uint64_t>(pipeline.capacity(), length - done));
        char* buffer = pipeline.Buffer();
        const off_t at = static_cast<off_t>(offset + done);
        ssize_t got = 0;
        if (direct >= 0) {
            // Whole blocks: at the file's end the read comes back short.
            got = ::pread(direct, buffer, (want + kDirectAlignment - 1) / kDirectAlignment * kDirectAlignment, at);
            if (got < 0 && errno == EINVAL) {  // not to be had here after all (or an unaligned tail)
                ::close(std::exchange(direct, -1));
                continue;
            }
            got = std::min<ssize_t>(got, static_cast<ssize_t>(want));
        } else {
            got = ::pread(fd, buffer, want, at);
        }
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) {
            complete = false;
            break;
        }
        pipeline.Submit(static_cast<std::size_t>(got));
        done += static_cast<std::uint64_t>(got);
        ReportProgress(static_cast<std::uint64_t>(got));
    }
    if (direct >= 0) ::close(direct);
    pipeline.Finish();
    return complete;
}

// Clones the range of source to target_fd at `at`, whole blocks only (and the source's last,
// partial block when the range runs to its end); the bytes cloned, 0 where the file system does
// not share blocks or the offsets are not on block boundaries. target_fd's position is unchanged.
std::uint64_t CloneBlocks(int source_fd, std::uint64_t offset, std::uint64_t length, int target_fd, std::uint64_t at) {
    struct stat target {}, source {};
    if (::fstat(target_fd, &target) != 0 || ::fstat(source_fd, &source) != 0) return 0;
    const std::uint64_t block = target.st_blksize > 0 ? static_cast<std::uint64_t>(target.st_blksize) : 4096;
    if (offset % block != 0 || at % block != 0) return 0;
    const bool toTheEnd = S_ISREG(source.st_mode) && offset + length == static_cast<std::uint64_t>(source.st_size);
    const std::uint64_t whole = toTheEnd ? length : length / block * block;
    if (whole == 0) return 0;
    file_clone_range range{};
    range.src_fd = source_fd;
    range.src_offset = offset;
    range.src_length = whole;
    range.dest_offset = at;
    return ::ioctl(target_fd, FICLONERANGE, &range) == 0 ? whole : 0;
}

// A regular file about to be replaced lends its permission bits, and to root its owner and group,
// so that -f never makes a private file public. Symbolic links and other objects lend nothing.
// Where the file system cannot keep owners or modes (FAT), the new file is good enough when it
// belongs to the old owner or to the caller and grants nobody more than the old one did.
bool TakeOverAttributes(int fd, const std::string& target) {
    struct stat existing {};
    if (::lstat(target.c_str(), &existing) != 0 || !S_ISREG(existing.st_mode)) return true;
    const bool owned = ::geteuid() != 0 || ::fchown(fd, existing.st_uid, existing.st_gid) == 0;
    if (!owned) TraceError("Cannot give the new file the owner of", target, errno);
    const bool moded = ::fchmod(fd, existing.st_mode & 0777) == 0;
    if (!moded) TraceError("Cannot give the new file the permissions of", target, errno);
    if (owned && moded) return true;
    struct stat made {};
    if (::fstat(fd, &made) != 0) return false;
    const bool ownerKept = made.st_uid == existing.st_uid || made.st_uid == ::geteuid();
    const bool noWider = (made.st_mode & 0777 & ~existing.st_mode) == 0;
    if (ownerKept && noWider) return true;
    LV_TRACE(kModule, "The new file would be owned by %u with mode %o where %s is owned by %u with mode %o",
             static_cast<unsigned>(made.st_uid), static_cast<unsigned>(made.st_mode & 0777), target.c_str(),
             static_cast<unsigned>(existing.st_uid), static_cast<unsigned>(existing.st_mode & 0777));
    return false;
}

// Link an unnamed file to `name`; errno tells why not.
bool LinkUnnamed(int fd, const std::string& name) {
    const std::string self = "/proc/self/fd/" + std::to_string(fd);
    if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) return true;
    if (errno != ENOENT || ::access("/proc/self/fd", F_OK) == 0) return false;
    return ::linkat(fd, "", AT_FDCWD, name.c_str(), AT_EMPTY_PATH) == 0;  // without /proc
}

// Move a named file onto target without replacing anything there; errno tells why not.
bool RenameNoReplace(const std::string& from, const std::string& target) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP) return false;
    // The file system cannot rename without replacing: a hard link refuses an existing name too.
    if (::link(from.c_str(), target.c_str()) == 0) {
        ::unlink(from.c_str());
        return true;
    }
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK) return false;
    // Nor hard links (FAT, exFAT): look, then rename. Not atomic: a target created in between is lost.
    LV_TRACE(kModule, "%s: no rename without replacing and no hard links here; checking first", target.c_str());
    struct stat existing {};
    if (::lstat(target.c_str(), &existing) == 0) {
        errno = EEXIST;
        return false;
    }
    if (errno != ENOENT) return false;
    return ::rename(from.c_str(), target.c_str()) == 0;
}

}  // namespace

bool IsWrittenThrough(const std::string& target) {
    if (DescriptorNamed(target) >= 0) return true;
    struct stat info {};
    return ::stat(target.c_str(), &info) == 0 &&
           (S_ISCHR(info.st_mode) || S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode));
}

AtomicFileWriter::AtomicFileWriter(std::string target, ExistingTarget existing)
    : target_(std::move(target)), existing_(existing) {}

AtomicFileWriter::~AtomicFileWriter() { Discard(); }

bool AtomicFileWriter::Open() {
    Discard();
    failure_ = WriteFailure::none;
    size_ = 0;
    auto temporary = std::make_unique<Temporary>();
    if (OpenThrough(target_, existing_ == ExistingTarget::replace, temporary->fd)) {
        if (temporary->fd < 0) {
            const int error = errno;
            TraceError("Cannot open", target_, error);
            return Fail(FailureOf(error));
        }
        temporary->through = true;
        temporary_ = std::move(temporary);
        return true;
    }
    const std::string directory = DirectoryOf(target_);
    // The mode is the one a plain creat() would give: umask applies to both ways of creating.
    temporary->fd = ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (temporary->fd < 0) {
        TraceError("No unnamed file (O_TMPFILE) in", directory, errno);
        int& fd = temporary->fd;
        const bool created = ClaimSiblingName(directory, failure_, temporary->name, temporary->cleanup,
                                              [&fd](const std::string& name) {
                                                  fd = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
                                                  return fd < 0 ? errno : 0;
                                              });
        if (!created) return false;
    }
    temporary_ = std::move(temporary);
    return true;
}

bool AtomicFileWriter::Write(const void* data, std::size_t size) {
    if (!temporary_) return Fail(WriteFailure::io);
    if (const int error = WriteAll(temporary_->fd, data, size)) {
        TraceError("Cannot write the output for", target_, error);
        return Fail(FailureOf(error));
    }
    size_ += size;
    return true;
}

// Sets failure_ and traces the cause on failure.
bool AtomicFileWriter::CopyRange(int source_fd, std::uint64_t offset, std::uint64_t length) {
    std::uint64_t remaining = length;
    loff_t source_offset = static_cast<loff_t>(offset);
    while (remaining > 0) {
        const std::size_t chunk = static_cast<std::size_t>(std::min<std::uint64_t>(remaining, 1u << 30));
        const ssize_t copied = ::copy_file_range(source_fd, &source_offset, temporary_->fd, nullptr, chunk, 0);
        if (copied < 0 && errno == EINTR) continue;
        if (copied < 0 && (errno == ENOSPC || errno == EDQUOT || errno == EROFS)) {
            TraceError("Cannot write the output for", target_, errno);
            return Fail(FailureOf(errno));
        }
        if (copied <= 0) {
            // Not supported between these files (or a short source): copy the rest through a buffer.
            if (!CopyBuffered(source_fd, static_cast<std::uint64_t>(source_offset), remaining, temporary_->fd, failure_)) {
                LV_TRACE(kModule, "Copy into %s stopped", target_.c_str());
                return false;
            }
            break;
        }
        remaining -= static_cast<std::uint64_t>(copied);
    }
    return true;
}

// Reads each piece into memory, hands it to the hasher and writes it while the hasher works: the
// digest is of the bytes exactly as they were written.
bool AtomicFileWriter::CopyHashing(int source_fd, std::uint64_t offset, std::uint64_t length, Sha256& digest) {
    HashingPipeline pipeline(digest, HashingPipeline::PieceFor(length));
    for (std::uint64_t done = 0; done < length;) {
        const std::size_t want = static_cast<std::size_t>(std::min<std::uint64_t>(pipeline.capacity(), length - done));
        char* buffer = pipeline.Buffer();
        const ssize_t got = ::pread(source_fd, buffer, want, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) {
            if (got < 0) TraceError("Cannot read the source of", target_, errno);
            return Fail(WriteFailure::source);
        }
        pipeline.Submit(static_cast<std::size_t>(got));
        if (!Write(buffer, static_cast<std::size_t>(got))) return false;
        done += static_cast<std::uint64_t>(got);
        ReportProgress(static_cast<std::uint64_t>(got));
    }
    pipeline.Finish();
    return true;
}

bool AtomicFileWriter::CopyFrom(int source_fd, std::uint64_t offset, std::uint64_t length, Sha256* digest) {
    if (!temporary_) return Fail(WriteFailure::io);
    const bool through = temporary_->through;
    if (digest != nullptr && through) return CopyHashing(source_fd, offset, length, *digest);
    const int fd = temporary_->fd;
    std::uint64_t cloned = 0;
    if (digest != nullptr) {
        // A clone is hashed as it stands in the new file; anything else is hashed while copied.
        cloned = CloneBlocks(source_fd, offset, length, fd, size_);
        if (cloned > 0) {
            if (::lseek(fd, static_cast<off_t>(size_ + cloned), SEEK_SET) < 0 || !HashStoredRange(fd, size_, cloned, *digest)) {
                TraceError("Cannot read back what was cloned into", target_, errno);
                return Fail(WriteFailure::io);
            }
            size_ += cloned;
            if (cloned == length) return true;
        }
    }
    // Reserving the range first makes the kernel's copy a quarter faster on ext4 (measured at
    // 512 MiB). Only a hint: where it fails (no fallocate, or no room for blocks that a clone
    // would not need anyway) the copy below decides.
    if (!through && length > cloned) ::fallocate(fd, FALLOC_FL_KEEP_SIZE, static_cast<off_t>(size_), static_cast<off_t>(length - cloned));
    if (digest != nullptr) return CopyHashing(source_fd, offset + cloned, length - cloned, *digest);
    // In steps reported as progress; each a multiple of the block size, so that a clone of the
    // whole range stays possible step by step.
    constexpr std::uint64_t kStep = std::uint64_t{64} << 20;
    for (std::uint64_t done = 0; done < length;) {
        const std::uint64_t step = std::min(kStep, length - done);
        if (!CopyRange(source_fd, offset + done, step)) return false;
        done += step;
        ReportProgress(step);
    }
    size_ += length;
    return true;
}

bool AtomicFileWriter::WriteAt(std::uint64_t offset, const void* data, std::size_t size) {
    if (!temporary_ || offset > size_ || size > size_ - offset) return Fail(WriteFailure::io);
    if (const int error = WriteAll(temporary_->fd, data, size, static_cast<off_t>(offset))) {
        TraceError("Cannot write the output for", target_, error);
        return Fail(FailureOf(error));
    }
    return true;
}

bool AtomicFileWriter::Commit() {
    if (!temporary_) return Fail(WriteFailure::io);
    Temporary& file = *temporary_;
    if (file.through) {
        const bool closed = ::close(std::exchange(file.fd, -1)) == 0;
        const int error = errno;
        Discard();
        if (closed) return true;
        TraceError("Cannot finish writing", target_, error);
        return Fail(FailureOf(error));
    }
    if (existing_ == ExistingTarget::replace && !TakeOverAttributes(file.fd, target_)) {
        Discard();
        return Fail(WriteFailure::io);
    }
    if (file.name.empty() && existing_ == ExistingTarget::refuse) {
        // Linking refuses an existing name, so the unnamed file goes straight to the target.
        const bool linked = LinkUnnamed(file.fd, target_);
        const int error = errno;
        const bool closed = ::close(std::exchange(file.fd, -1)) == 0;
        const int closeError = errno;
        Discard();
        if (!linked) {
            if (error != EEXIST) TraceError("Cannot link the new file to", target_, error);
            return Fail(error == EEXIST ? WriteFailure::target_exists : FailureOf(error));
        }
        if (closed) return true;
        TraceError("Cannot finish writing", target_, closeError);
        ::unlink(target_.c_str());  // a deferred write error: the file we just linked is damaged
        return Fail(FailureOf(closeError));
    }
    // Only a rename takes an existing name: an unnamed file gets a short sibling name first.
    const int fd = file.fd;
    if (file.name.empty() &&
        !ClaimSiblingName(DirectoryOf(target_), failure_, file.name, file.cleanup,
                          [fd](const std::string& name) { return LinkUnnamed(fd, name) ? 0 : errno; })) {
        Discard();
        return false;
    }
    // Closing first reports a deferred write error while the target is still untouched.
    if (::close(std::exchange(file.fd, -1)) != 0) {
        const int error = errno;
        TraceError("Cannot finish writing", file.name, error);
        Discard();
        return Fail(FailureOf(error));
    }
    const bool renamed = existing_ == ExistingTarget::refuse ? RenameNoReplace(file.name, target_)
                                                             : ::rename(file.name.c_str(), target_.c_str()) == 0;
    const int error = errno;
    if (renamed) file.name.clear();
    if (!renamed && error != EEXIST)
        LV_TRACE(kModule, "Cannot rename %s to %s: %s", file.name.c_str(), target_.c_str(), std::strerror(error));
    Discard();
    if (renamed) return true;
    return Fail(error == EEXIST ? WriteFailure::target_exists : FailureOf(error));
}

void AtomicFileWriter::Discard() noexcept {
    if (!temporary_) return;
    if (temporary_->fd >= 0) ::close(temporary_->fd);
    if (!temporary_->name.empty()) ::unlink(temporary_->name.c_str());
    temporary_.reset();  // disarms the interruption cleanup
}

}  // namespace Portability
