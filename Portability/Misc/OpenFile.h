#pragma once
// A file held open for reading at any offset, shared by everything that refers to its bytes: the
// payload on its way from the input to the packed file, the values a DICOM file leaves where they
// are, a scratch copy of a pipe or of an inflated data set. The layers above read files through
// it, so none of them opens a path a second time.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "Portability/Misc/FileStamp.h"

namespace Portability {

class OpenFile {
public:
    // Open the regular file at path (UTF-8) for reading; null when it is missing, cannot be
    // opened, or is not a regular file.
    static std::shared_ptr<OpenFile> Open(const std::string& path);
    // An empty scratch file (see TemporaryFile.h), filled with Append; null when none can be made.
    static std::shared_ptr<OpenFile> OpenTemporary();
    // Take over a descriptor open for reading on a regular file of `size` bytes, named path.
    static std::shared_ptr<OpenFile> Adopt(int descriptor, std::string path, std::uint64_t size);
    ~OpenFile();
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    // The UTF-8 path it was opened by (for a scratch file, one that reaches it while it is open).
    const std::string& Path() const noexcept { return path_; }
    // The descriptor, for copies file to file (AtomicFileWriter::CopyFrom); valid while this lives.
    int Descriptor() const noexcept { return descriptor_; }
    // Size in bytes: as opened, grown by Append.
    std::uint64_t Size() const noexcept { return size_; }
    // Read exactly size bytes at offset; false on a read error or a file that ends before.
    bool ReadAt(void* data, std::uint64_t size, std::uint64_t offset) const;
    // Append bytes at the end; false when they cannot all be written.
    bool Append(const void* data, std::size_t size);
    // True while a file opened by path or adopted still has the size, modification time and change
    // time it had then (a scratch file, which only this process writes, is always unchanged);
    // false when they differ or cannot be read.
    bool Unchanged() const;

private:
    OpenFile(std::string path, int descriptor, std::uint64_t size);
    void TakeStamp() { stamped_ = ReadFileStamp(descriptor_, stamp_); }
    std::string path_;
    int descriptor_;
    std::uint64_t size_;
    bool stamped_ = false;
    FileStamp stamp_;
};

}  // namespace Portability
