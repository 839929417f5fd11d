#pragma once
// Writes a file so that readers only ever see the old content or the complete new one: the bytes
// go to a temporary file beside the target, which is renamed over the target on Commit. A writer
// destroyed without a successful Commit removes its temporary file, so a failure never leaves a
// partial output or damages an existing file.

#include <cstddef>
#include <cstdint>
#include <string>

namespace Portability {

class AtomicFileWriter {
public:
    // Nothing is created until Open.
    explicit AtomicFileWriter(std::string target);
    ~AtomicFileWriter();
    AtomicFileWriter(const AtomicFileWriter&) = delete;
    AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;

    // Create the temporary file in the target's directory; false when it cannot be created.
    bool Open();
    // Append bytes; false on any write failure.
    bool Write(const void* data, std::size_t size);
    // Append `length` bytes of the open file `source_fd` starting at `offset`, copied file to file
    // (copy_file_range, with a buffered fallback) without passing through the caller's memory.
    bool CopyFrom(int source_fd, std::uint64_t offset, std::uint64_t length);
    // Flush, close and rename over the target (replacing it); false when any step fails.
    bool Commit();

    // Bytes appended so far.
    std::uint64_t size() const { return size_; }
    const std::string& target() const { return target_; }

private:
    void Discard() noexcept;

    std::string target_;
    std::string temporary_;
    int fd_ = -1;
    std::uint64_t size_ = 0;
};

}  // namespace Portability
