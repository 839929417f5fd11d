#include "Foundations/LVCodec/jpeg/ExifOrientation.h"

#include "Foundations/LVCodec/ByteReader.h"

#include <cstring>

namespace Lumivale::Imaging {

namespace {

constexpr std::uint8_t kExifHeader[] = {'E', 'x', 'i', 'f', 0, 0};
constexpr std::uint64_t kOrientationTag = 0x0112;
constexpr std::uint64_t kShortType = 3;
constexpr std::uint64_t kEntrySize = 12;

}  // namespace

unsigned ExifOrientation(std::span<const std::uint8_t> app1) {
    if (app1.size() < sizeof kExifHeader || std::memcmp(app1.data(), kExifHeader, sizeof kExifHeader) != 0) return 1;
    // Offsets inside the block count from the TIFF header that follows "Exif\0\0".
    const ByteReader tiff(app1.subspan(sizeof kExifHeader));
    if (!tiff.Has(0, 8)) return 1;
    const bool little = tiff.At(0)[0] == 'I' && tiff.At(0)[1] == 'I';
    const bool big = tiff.At(0)[0] == 'M' && tiff.At(0)[1] == 'M';
    if (!little && !big) return 1;
    auto read = [&](std::uint64_t offset, unsigned width, std::uint64_t& value) {
        return little ? tiff.Le(offset, width, value) : tiff.Be(offset, width, value);
    };
    std::uint64_t magic = 0, directory = 0, entries = 0;
    if (!read(2, 2, magic) || magic != 42 || !read(4, 4, directory) || !read(directory, 2, entries)) return 1;
    for (std::uint64_t i = 0; i < entries; ++i) {
        const std::uint64_t entry = directory + 2 + i * kEntrySize;
        std::uint64_t tag = 0, type = 0, count = 0, value = 0;
        if (!read(entry, 2, tag) || !read(entry + 2, 2, type) || !read(entry + 4, 4, count)) return 1;
        if (tag != kOrientationTag) continue;
        if (type != kShortType || count < 1 || !read(entry + 8, 2, value) || value < 1 || value > 8) return 1;
        return static_cast<unsigned>(value);
    }
    return 1;
}

}  // namespace Lumivale::Imaging
