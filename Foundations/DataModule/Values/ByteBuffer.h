#pragma once
// Binary attribute values. A ByteBuffer shares one buffer record between its copies; the record
// holds either bytes in memory (owned or borrowed) or a region of a file, so that a very large
// payload can travel from file to file without being loaded.

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "Portability/Misc/OpenFile.h"

namespace Lumivale::DataModule {

// A region of an open file: length bytes from offset. The file stays open while a region refers
// to it, so a file without a name of its own (a piped input, an inflated data set) lives as long.
struct FileRegion {
    std::shared_ptr<const Portability::OpenFile> file;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    // Set when offset and length count bytes of the inflation of the raw deflate data that begin
    // at this offset of the file (a deflated data set): such a region is read by inflating again,
    // which the DICOM codec does (FileRegion.h there); here its bytes cannot be read.
    std::optional<std::uint64_t> deflatedFrom = std::nullopt;
    // True when the region lies inside its file (for an inflated region: its deflate data do).
    bool IsInsideFile() const noexcept {
        if (deflatedFrom) return file && *deflatedFrom <= file->Size();
        return file && offset <= file->Size() && length <= file->Size() - offset;
    }
};

// Shared, reference-counted byte buffer value. Copies refer to the same record.
class ByteBuffer {
public:
    // No buffer at all.
    ByteBuffer() = default;

    // A new owned buffer holding a copy of bytes.
    static ByteBuffer CopyOf(std::span<const std::uint8_t> bytes);
    // Takes over the bytes of a vector (owned, no copy).
    static ByteBuffer Adopt(std::vector<std::uint8_t> bytes);
    // A new owned, zero-filled buffer of length bytes to be filled through MutableBytes; no buffer
    // when the memory cannot be had.
    static ByteBuffer Allocate(std::uint64_t length);
    // Refers to bytes owned by the caller, which must outlive every copy (owns-the-bytes flag clear).
    static ByteBuffer Borrow(const std::uint8_t* bytes, std::uint64_t length);
    // Refers to a region of a file; nothing is read now.
    static ByteBuffer OfFileRegion(FileRegion region);

    // True when there is a buffer record (of either kind).
    bool HasBuffer() const noexcept { return record_ != nullptr; }
    // True when there is no buffer or its length is 0.
    bool IsEmpty() const noexcept { return Length() == 0; }
    // Length in bytes (0 without a buffer).
    std::uint64_t Length() const noexcept;
    // True when the bytes are in memory.
    bool IsInMemory() const noexcept;
    // True when the bytes are a file region.
    bool IsFileRegion() const noexcept;
    // True when the record frees its bytes when the last copy goes (memory buffers only).
    bool OwnsBytes() const noexcept;
    // The bytes in memory; empty for a file region or no buffer.
    std::span<const std::uint8_t> MemoryBytes() const noexcept;
    // Writable bytes of an owned memory buffer; empty otherwise.
    std::span<std::uint8_t> MutableBytes() noexcept;
    // The file region; nullptr for memory or no buffer.
    const FileRegion* Region() const noexcept;

    // Every byte of the value into out (reading the file region when it is one); false when the
    // file cannot be read to the full length or memory is short.
    bool ReadAll(std::vector<std::uint8_t>& out) const;
    // The bytes as narrow text (memory only; a file region gives false).
    bool ReadText(std::string& out) const;

private:
    struct MemoryBytesRecord {
        std::vector<std::uint8_t> owned;  // the bytes, when the record owns them
        const std::uint8_t* bytes = nullptr;
        std::uint64_t length = 0;
        bool owns_bytes = false;
    };
    using Record = std::variant<MemoryBytesRecord, FileRegion>;

    explicit ByteBuffer(std::shared_ptr<Record> record) : record_(std::move(record)) {}

    std::shared_ptr<Record> record_;
};

}  // namespace Lumivale::DataModule
