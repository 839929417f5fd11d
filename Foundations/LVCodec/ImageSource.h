#pragma once
// Where the program's own decoders read an image's bytes: a file read piece by piece as it is
// decoded, or bytes already in memory (the fuzz targets and the tests).

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace Portability {
class OpenFile;
}

namespace Lumivale::Imaging {

// Random access to the bytes of one image.
class ImageSource {
public:
    virtual ~ImageSource() = default;
    // Total bytes.
    virtual std::uint64_t Size() const = 0;
    // Copy exactly size bytes at offset into data; false when they pass the end or cannot be read.
    virtual bool ReadAt(std::uint8_t* data, std::uint64_t size, std::uint64_t offset) const = 0;
    // True when [offset, offset + length) lies inside the bytes.
    bool Has(std::uint64_t offset, std::uint64_t length) const {
        return offset <= Size() && length <= Size() - offset;
    }
};

// Bytes held by the caller (not owned).
class MemoryImageSource final : public ImageSource {
public:
    explicit MemoryImageSource(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
    std::uint64_t Size() const override { return bytes_.size(); }
    bool ReadAt(std::uint8_t* data, std::uint64_t size, std::uint64_t offset) const override;

private:
    std::span<const std::uint8_t> bytes_;
};

// An image file, read only where a decoder asks; a failed read is traced under the module.
class FileImageSource final : public ImageSource {
public:
    // The file at path, or null (traced) when it cannot be opened or is larger than kMaxImageFileBytes.
    static std::unique_ptr<FileImageSource> Open(const std::string& path, const char* module);
    std::uint64_t Size() const override;
    bool ReadAt(std::uint8_t* data, std::uint64_t size, std::uint64_t offset) const override;

private:
    FileImageSource(std::shared_ptr<Portability::OpenFile> file, const char* module);
    std::shared_ptr<Portability::OpenFile> file_;
    const char* module_;
};

}  // namespace Lumivale::Imaging
