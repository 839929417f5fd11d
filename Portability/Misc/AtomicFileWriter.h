#pragma once
// Writes a file so that readers only ever see the old content or the complete new one: the bytes
// go to a temporary file beside the target, which takes the target's name on Commit. A writer
// destroyed without a successful Commit removes its temporary file, so a failure never leaves a
// partial output or damages an existing file. Where the platform allows, the temporary file has
// no name at all until Commit, so not even a killed process leaves it behind; otherwise its name
// is short (it fits wherever the target's name fits) and is removed when the process is
// interrupted (SIGINT, SIGTERM, SIGHUP), though not when it is killed outright.
//
// An existing symbolic link at the target is itself replaced, never followed, when it leads to a
// regular file or to nothing. A target that is not a file to replace (a character device, a FIFO,
// a socket, one of this process's descriptors such as /dev/stdout or /proc/self/fd/N, or a
// symbolic link to any of them) is written through instead: opened as it is and never replaced,
// so a failure there may leave part of the bytes written. A block device counts as an existing
// file, and with ExistingTarget::replace it is written through as well.
//
// File systems without unnamed files, renaming without replacing, hard links or ownership (FAT,
// exFAT, some network shares) get a named temporary file, and a commit that refuses an existing
// target is then a check followed by a rename: another process that creates the target between
// the two loses its file. Everywhere else that refusal is atomic.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace Portability {

class Sha256;

// What Commit does when something already answers to the target's name.
enum class ExistingTarget {
    replace,  // take its place; a replaced regular file lends its permissions (and, for root, owner)
    refuse,   // fail with WriteFailure::target_exists, checked atomically at the last step
};

// Why the last step of a writer failed.
enum class WriteFailure {
    none,
    target_exists,  // ExistingTarget::refuse and the target existed when Commit tried to take it
    no_space,       // the target's file system is full (or the quota reached)
    read_only,      // the target's file system is mounted read-only
    source,         // CopyFrom's source ended early or could not be read
    io,             // any other failure (directory missing, no permission, ...)
};

// True when target is written through rather than replaced (see above): a character device, a
// FIFO, a socket or a descriptor of this process, directly or through symbolic links. Such a
// target does not count as an existing file.
bool IsWrittenThrough(const std::string& target);

class AtomicFileWriter {
public:
    // Nothing is created until Open.
    explicit AtomicFileWriter(std::string target, ExistingTarget existing = ExistingTarget::replace);
    ~AtomicFileWriter();
    AtomicFileWriter(const AtomicFileWriter&) = delete;
    AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;

    // Create the temporary file in the target's directory (or open a target that is written
    // through); false when it cannot be created.
    bool Open();
    // Append bytes; false on any write failure.
    bool Write(const void* data, std::size_t size);
    // Append `length` bytes of the open file `source_fd` starting at `offset`, copied file to file
    // without passing through the caller's memory (a clone where the file system shares blocks).
    // With a digest, the appended range is also fed to it as it stands in the new file: a clone is
    // read back from the new file, any other copy is hashed from the memory it is written from,
    // on a second thread; false, with the digest in no defined state, when the source ends early
    // or any step fails.
    bool CopyFrom(int source_fd, std::uint64_t offset, std::uint64_t length, Sha256* digest = nullptr);
    // Overwrite size bytes already appended, from offset on (a value reserved earlier and known only
    // now); call it after the last append. False when the range goes beyond the bytes appended or
    // the write fails.
    bool WriteAt(std::uint64_t offset, const void* data, std::size_t size);
    // Flush, close and give the file the target's name; false when any step fails (see failure()).
    bool Commit();

    // Bytes appended so far.
    std::uint64_t size() const { return size_; }
    const std::string& target() const { return target_; }
    // Why Open, Write, CopyFrom or Commit last failed.
    WriteFailure failure() const { return failure_; }

private:
    struct Temporary;  // the platform's temporary file
    bool Fail(WriteFailure failure) {
        failure_ = failure;
        return false;
    }
    void Discard() noexcept;
    bool CopyRange(int source_fd, std::uint64_t offset, std::uint64_t length);
    bool CopyHashing(int source_fd, std::uint64_t offset, std::uint64_t length, Sha256& digest);

    std::string target_;
    ExistingTarget existing_;
    std::unique_ptr<Temporary> temporary_;
    std::uint64_t size_ = 0;
    WriteFailure failure_ = WriteFailure::none;
};

}  // namespace Portability
