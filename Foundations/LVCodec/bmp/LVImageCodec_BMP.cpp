#include "Foundations/LVCodec/bmp/LVImageCodec_BMP.h"

#include "Foundations/LVCodec/ByteReader.h"
#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/LVImage.h"
#include "Foundations/LVCodec/SourceCursor.h"
#include "Portability/Misc/DebugTrace.h"

#include <algorithm>
#include <array>
#include <bit>
#include <vector>

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module BMP";
constexpr std::uint32_t kFileHeaderSize = 14;
constexpr std::uint32_t kCoreHeaderSize = 12;
// What may follow the info header before the pixels: three or four masks, then up to 256 colours.
constexpr std::uint64_t kMasksAfterInfo = 16;
constexpr std::uint64_t kLargestPalette = 256 * 4;

enum Compression : std::uint32_t { kRgb = 0, kRle8 = 1, kRle4 = 2, kBitFields = 3, kAlphaBitFields = 6 };

struct Colour {
    std::uint8_t r = 0, g = 0, b = 0;
};

struct BmpHeader {
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    bool topDown = false;
    unsigned bitsPerPixel = 0;
    std::uint32_t compression = kRgb;
    std::uint64_t pixelOffset = 0;
    std::array<std::uint32_t, 4> masks{};  // red, green, blue, alpha
    std::vector<Colour> palette;
};

bool ReadMasks(const ByteReader& in, std::uint64_t at, unsigned count, BmpHeader& header) {
    for (unsigned i = 0; i < count; ++i) {
        std::uint64_t v = 0;
        if (!in.Le(at + 4 * i, 4, v)) return false;
        header.masks[i] = static_cast<std::uint32_t>(v);
    }
    return true;
}

bool ReadHeader(const ByteReader& in, BmpHeader& header) {
    if (!in.Has(0, kFileHeaderSize + 4) || in.At(0)[0] != 'B' || in.At(0)[1] != 'M') {
        LV_TRACE(kModule, "Not a BMP file");
        return false;
    }
    header.pixelOffset = in.Le32(10);
    const std::uint32_t infoSize = in.Le32(kFileHeaderSize);
    const std::uint64_t info = kFileHeaderSize;
    if (infoSize == kCoreHeaderSize) {
        header.width = in.Le16(info + 4);
        header.height = in.Le16(info + 6);
        header.bitsPerPixel = in.Le16(info + 10);
    } else if (infoSize >= 40 && in.Has(info, infoSize)) {
        const auto width = static_cast<std::int32_t>(in.Le32(info + 4));
        const auto height = static_cast<std::int32_t>(in.Le32(info + 8));
        if (width <= 0 || height == 0 || height == INT32_MIN) {
            LV_TRACE(kModule, "Bad BMP size %d x %d", width, height);
            return false;
        }
        header.width = static_cast<std::uint64_t>(width);
        header.topDown = height < 0;
        header.height = static_cast<std::uint64_t>(height < 0 ? -std::int64_t{height} : height);
        header.bitsPerPixel = in.Le16(info + 14);
        header.compression = in.Le32(info + 16);
        if (header.compression == kBitFields || header.compression == kAlphaBitFields) {
            const unsigned count = header.compression == kAlphaBitFields ? 4 : 3;
            // Version 2+ headers carry the masks; a plain 40-byte header is followed by them.
            if (!ReadMasks(in, info + 40, infoSize >= 56 ? 4 : count, header)) return false;
        } else if (infoSize >= 56 && header.bitsPerPixel == 32) {
            ReadMasks(in, info + 40, 4, header);
            header.masks[0] = header.masks[1] = header.masks[2] = 0;
        }
        std::uint64_t used = in.Le32(info + 32);
        if (header.bitsPerPixel <= 8) {
            const std::uint64_t maximum = std::uint64_t{1} << header.bitsPerPixel;
            if (used == 0 || used > maximum) used = maximum;
            std::uint64_t at = info + infoSize;
            if (infoSize == 40 && header.compression == kBitFields) at += 12;
            for (std::uint64_t i = 0; i < used && in.Has(at + 4 * i, 4); ++i)
                header.palette.push_back({in.At(at + 4 * i)[2], in.At(at + 4 * i)[1], in.At(at + 4 * i)[0]});
        }
    } else {
        LV_TRACE(kModule, "Unsupported BMP header size %u", infoSize);
        return false;
    }
    if (infoSize == kCoreHeaderSize && header.bitsPerPixel <= 8) {
        const std::uint64_t at = info + kCoreHeaderSize;
        for (std::uint64_t i = 0; i < (std::uint64_t{1} << header.bitsPerPixel) && in.Has(at + 3 * i, 3); ++i)
            header.palette.push_back({in.At(at + 3 * i)[2], in.At(at + 3 * i)[1], in.At(at + 3 * i)[0]});
    }
    return true;
}

// Read the start of the file up to the end of the largest palette its info header allows: every
// byte ReadHeader looks at.
bool ReadHeaderBytes(const ImageSource& source, std::vector<std::uint8_t>& bytes) {
    std::array<std::uint8_t, kFileHeaderSize + 4> start{};
    const std::uint64_t infoSize =
        source.ReadAt(start.data(), start.size(), 0) ? ByteReader(start).Le32(kFileHeaderSize) : 0;
    bytes.resize(static_cast<std::size_t>(
        std::min(source.Size(), kFileHeaderSize + infoSize + kMasksAfterInfo + kLargestPalette)));
    return source.ReadAt(bytes.data(), bytes.size(), 0);
}

// Expand an RLE8 or RLE4 stream into one palette index per pixel, rows bottom-up as stored.
bool DecodeRle(const ImageSource& source, const BmpHeader& header, std::vector<std::uint8_t>& indices) {
    const bool four = header.compression == kRle4;
    indices.assign(header.width * header.height, 0);
    SourceCursor in(source, header.pixelOffset);
    std::uint64_t x = 0, y = 0;
    auto put = [&](std::uint8_t index) {
        if (x < header.width && y < header.height) indices[y * header.width + x] = index;
        ++x;
    };
    while (const std::uint8_t* pair = in.Take(2)) {
        const std::uint8_t count = pair[0];
        const std::uint8_t value = pair[1];
        if (count > 0) {
            for (unsigned i = 0; i < count; ++i) put(four ? ((i & 1) ? value & 0x0F : value >> 4) : value);
            continue;
        }
        if (value == 0) {
            x = 0;
            ++y;
        } else if (value == 1) {
            return true;
        } else if (value == 2) {
            const std::uint8_t* delta = in.Take(2);
            if (!delta) break;
            x += delta[0];
            y += delta[1];
        } else {
            const std::uint64_t bytes = four ? (value + 1u) / 2 : value;
            const std::uint8_t* run = in.Take(bytes);
            if (!run) break;
            for (unsigned i = 0; i < value; ++i) {
                const std::uint8_t b = run[four ? i / 2 : i];
                put(four ? ((i & 1) ? b & 0x0F : b >> 4) : b);
            }
            in.Skip(bytes % 2);  // absolute runs are padded to 16 bits
        }
        if (y > header.height) break;
    }
    if (in.ReadFailed()) return false;
    LV_TRACE(kModule, "RLE stream ends without an end-of-bitmap marker");
    return true;
}

bool IsGreyPalette(const std::vector<Colour>& palette) {
    for (const Colour& c : palette)
        if (c.r != c.g || c.g != c.b) return false;
    return !palette.empty();
}

// The image row that stored row y becomes.
std::int32_t OutputRow(const BmpHeader& header, std::uint64_t y) {
    return static_cast<std::int32_t>(header.topDown ? y : header.height - 1 - y);
}

// Allocate one grey plane for a palette of greys, three for other palettes.
bool AllocatePaletteImage(const BmpHeader& header, LVImageMemory& image) {
    if (header.palette.empty()) {
        LV_TRACE(kModule, "Palette image without a palette");
        return false;
    }
    return AllocateImage(image, header.width, header.height, IsGreyPalette(header.palette) ? 1 : 3, 8, kModule);
}

// Write the colours of stored row y, one palette index per pixel (an index past the palette is 0).
void StorePaletteRow(const BmpHeader& header, const std::uint8_t* indices, std::uint64_t y, const LVBuffer2D& out) {
    const std::int32_t outY = OutputRow(header, y);
    for (std::uint64_t x = 0; x < header.width; ++x) {
        const std::uint8_t index = indices[x] < header.palette.size() ? indices[x] : 0;
        const Colour& c = header.palette[index];
        out.Row(0, outY)[x] = c.r;
        if (out.Planes() == 1) continue;
        out.Row(1, outY)[x] = c.g;
        out.Row(2, outY)[x] = c.b;
    }
}

// The decoded RLE indices, row by row.
bool StorePaletteImage(const BmpHeader& header, const std::vector<std::uint8_t>& indices, LVImageMemory& image) {
    if (!AllocatePaletteImage(header, image)) return false;
    for (std::uint64_t y = 0; y < header.height; ++y)
        StorePaletteRow(header, indices.data() + y * header.width, y, image.Buffer());
    return true;
}

// The uncompressed palette rows, read one at a time and unpacked to one index per pixel.
bool StorePaletteRows(SourceCursor& in, const BmpHeader& header, std::uint64_t stride, LVImageMemory& image) {
    if (!AllocatePaletteImage(header, image)) return false;
    const unsigned bpp = header.bitsPerPixel;
    std::vector<std::uint8_t> indices(header.width);
    for (std::uint64_t y = 0; y < header.height; ++y) {
        const std::uint8_t* row = in.Take(stride);
        if (!row) return false;
        for (std::uint64_t x = 0; x < header.width; ++x) {
            const std::uint64_t bit = x * bpp;
            const unsigned shift = 8 - bpp - static_cast<unsigned>(bit % 8);
            indices[x] = static_cast<std::uint8_t>((row[bit / 8] >> shift) & ((1u << bpp) - 1));
        }
        StorePaletteRow(header, indices.data(), y, image.Buffer());
    }
    return true;
}

// Scale the bits of value selected by mask to 8 bits.
std::uint8_t MaskedChannel(std::uint32_t value, std::uint32_t mask) {
    if (mask == 0) return 0;
    const unsigned shift = static_cast<unsigned>(std::countr_zero(mask));
    const std::uint32_t maximum = mask >> shift;
    return static_cast<std::uint8_t>(((value & mask) >> shift) * 255u / maximum);
}

bool StoreTrueColourImage(SourceCursor& in, const BmpHeader& header, std::uint64_t stride, LVImageMemory& image) {
    std::array<std::uint32_t, 4> masks = header.masks;
    const bool fieldMasks = header.compression == kBitFields || header.compression == kAlphaBitFields;
    if (!fieldMasks && header.bitsPerPixel == 16) masks = {0x7C00, 0x03E0, 0x001F, 0};
    if (!fieldMasks && header.bitsPerPixel != 16) masks = {0xFF0000, 0x00FF00, 0x0000FF, masks[3]};
    if (header.bitsPerPixel == 24) masks[3] = 0;
    const unsigned planes = masks[3] != 0 ? 4 : 3;
    if (!AllocateImage(image, header.width, header.height, planes, 8, kModule)) return false;
    const unsigned bytes = header.bitsPerPixel / 8;
    const LVBuffer2D& out = image.Buffer();
    for (std::uint64_t y = 0; y < header.height; ++y) {
        const std::uint8_t* row = in.Take(stride);
        if (!row) return false;
        const std::int32_t outY = OutputRow(header, y);
        for (std::uint64_t x = 0; x < header.width; ++x) {
            std::uint32_t value = 0;
            for (unsigned i = bytes; i-- > 0;) value = (value << 8) | row[x * bytes + i];
            for (unsigned p = 0; p < planes; ++p)
                out.Row(p, outY)[x] = MaskedChannel(value, masks[p]);
        }
    }
    return true;
}

}  // namespace

bool DecodeBmp(std::span<const std::uint8_t> bytes, LVImageMemory& image) {
    return DecodeBmp(MemoryImageSource(bytes), image);
}

bool DecodeBmp(const ImageSource& source, LVImageMemory& image) {
    std::vector<std::uint8_t> headerBytes;
    BmpHeader header;
    if (!ReadHeaderBytes(source, headerBytes) || !ReadHeader(ByteReader(headerBytes), header)) return false;
    if (!IsSaneGeometry(header.width, header.height)) {
        LV_TRACE(kModule, "Refusing BMP of %llu x %llu pixels", static_cast<unsigned long long>(header.width),
                 static_cast<unsigned long long>(header.height));
        return false;
    }
    const unsigned bpp = header.bitsPerPixel;
    const bool rle = header.compression == kRle8 || header.compression == kRle4;
    if (rle) {
        if ((header.compression == kRle8 && bpp != 8) || (header.compression == kRle4 && bpp != 4)) {
            LV_TRACE(kModule, "RLE compression with %u bits per pixel", bpp);
            return false;
        }
        // Every pixel of an RLE stream costs at least a fraction of a byte; refuse headers that promise far more.
        if (header.width * header.height > (source.Size() + 1) * 256) {
            LV_TRACE(kModule, "RLE image larger than its file can describe");
            return false;
        }
        std::vector<std::uint8_t> indices;
        return DecodeRle(source, header, indices) && StorePaletteImage(header, indices, image);
    }
    if (header.compression != kRgb && header.compression != kBitFields && header.compression != kAlphaBitFields) {
        LV_TRACE(kModule, "Unsupported BMP compression %u", header.compression);
        return false;
    }
    if (bpp != 1 && bpp != 4 && bpp != 8 && bpp != 16 && bpp != 24 && bpp != 32) {
        LV_TRACE(kModule, "Unsupported BMP depth %u", bpp);
        return false;
    }
    const std::uint64_t stride = (header.width * bpp + 31) / 32 * 4;
    if (!source.Has(header.pixelOffset, stride * header.height)) {
        LV_TRACE(kModule, "BMP pixel data truncated");
        return false;
    }
    SourceCursor rows(source, header.pixelOffset);
    if (bpp <= 8) return StorePaletteRows(rows, header, stride, image);
    return StoreTrueColourImage(rows, header, stride, image);
}

const char* const* LVImageCodec_BMP::Extensions() const {
    static constexpr const char* kExtensions[] = {"bmp", nullptr};
    return kExtensions;
}

const LVImageSignature* LVImageCodec_BMP::Signatures() const {
    static constexpr std::uint8_t kMagic[] = {0x42, 0x4D};
    static constexpr LVImageSignature kSignatures[] = {{0, 2, kMagic}, {}};
    return kSignatures;
}

bool LVImageCodec_BMP::Decode(LVImage& image, const std::string& path, unsigned, unsigned, unsigned loadFlags) const {
    if (loadFlags & kLoadThumbnail) return DecodeThumbnail(image, path);
    const std::unique_ptr<FileImageSource> source = FileImageSource::Open(path, kModule);
    return source && DecodeBmp(*source, image);
}

bool LVImageCodec_BMP::DecodeThumbnail(LVImage& image, const std::string& path) const {
    return Decode(image, path, 0, 0, 0);
}

}  // namespace Lumivale::Imaging
