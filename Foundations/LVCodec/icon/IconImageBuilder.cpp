#include "Foundations/LVCodec/icon/IconImageBuilder.h"

#include "Foundations/BufferTools/BufferTools.h"
#include "Foundations/LVBuffer2DTools/SampleInterleave.h"
#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/HugePages.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace Lumivale::Imaging {

namespace {

constexpr const char* kModule = "Module Icon";

using DataModule::IconImageRecord;
using DataModule::PhotometricInterpretation;

// Shrink source by the divisor and map its sample range onto 8 bits.
bool ReduceToEightBits(const LVBuffer2D& source, LVImageMemory& reduced8) {
    const unsigned f = IconReductionDivisor(static_cast<std::uint64_t>(source.Width()),
                                            static_cast<std::uint64_t>(source.Height()));
    LVBuffer2D reduced;
    if (!reduced.Allocate(source.Width() / static_cast<std::int32_t>(f), source.Height() / static_cast<std::int32_t>(f),
                          source.Planes(), source.Bits()))
        return false;
    reduced.SetUnsigned(source.Type().isUnsigned);
    BufferTools::BufferToolsBlocks tools;
    std::int64_t low = 0, high = 0;
    LVLut lut;
    return tools.Resize(source, reduced) && tools.Range(reduced, low, high) && lut.BuildLinear(low, high, 8) &&
           reduced8.Allocate(reduced.Width(), reduced.Height(), reduced.Planes(), 8) &&
           BufferTools::ApplyLUTBuffer(tools, reduced, reduced8.Buffer(), lut);
}

// Copy one sample of Bytes bytes from native order to little-endian.
template <unsigned Bytes>
void StoreLittleEndian(const std::uint8_t* sample, std::uint8_t* out) {
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(out, sample, Bytes);
    } else {
        for (unsigned b = 0; b < Bytes; ++b) out[b] = sample[Bytes - 1 - b];
    }
}

// Write row y of every plane into out, the samples of one pixel side by side. The row pointers
// are taken once per row: this loop runs for every sample of a thumbnail of many megapixels.
template <unsigned Bytes>
void InterleaveRow(const LVBuffer2D& image, std::int32_t y, std::uint8_t* out) {
    const unsigned planes = image.Planes();
    std::array<const std::uint8_t*, LVBuffer2D::kMaxPlanes> rows{};
    for (unsigned p = 0; p < planes; ++p) rows[p] = image.Row(p, y);
    const auto width = static_cast<std::size_t>(image.Width());
    if (planes == 1) {
        for (std::size_t x = 0; x < width; ++x, out += Bytes) StoreLittleEndian<Bytes>(rows[0] + x * Bytes, out);
        return;
    }
    if constexpr (Bytes == 1) {
        if (planes == 3) {  // the common case, an 8-bit colour photo: a loop the compiler keeps tight
            InterleaveThreePlanes(rows[0], rows[1], rows[2], out, width);
            return;
        }
    }
    for (std::size_t x = 0; x < width; ++x)
        for (unsigned p = 0; p < planes; ++p, out += Bytes) StoreLittleEndian<Bytes>(rows[p] + x * Bytes, out);
}

bool StorePixels(IconImageRecord& record, const LVBuffer2D& colour, bool copyPixels, LVBuffer2D* consumed) {
    record.pixel_data.clear();
    if (copyPixels) {
        std::vector<std::uint8_t> bytes;
        if (!SerializePixelData(colour, bytes, consumed)) return false;
        record.pixel_data[0] = DataModule::ByteBuffer::Adopt(std::move(bytes));
        return true;
    }
    const auto planeBytes = static_cast<std::uint64_t>(colour.LineStride()) * static_cast<std::uint64_t>(colour.Height());
    for (unsigned p = 0; p < colour.Planes(); ++p)
        record.pixel_data[p] = DataModule::ByteBuffer::Borrow(colour.Plane(p), planeBytes);
    return true;
}

bool StoreImage(IconImageRecord& record, const LVBuffer2D& image, bool copyPixels, LVBuffer2D* consumed = nullptr) {
    LVBuffer2D colour;
    if (!image.MakeView(colour, 0, 1, 2, 3) || !image.MakeColourPlanesView(colour, false)) return false;
    constexpr auto kMaxSide = std::numeric_limits<std::uint16_t>::max();
    if (colour.Width() > kMaxSide || colour.Height() > kMaxSide || colour.Bits() > 32) {
        LV_TRACE(kModule, "Icon of %d x %d samples of %u bits cannot be stored", colour.Width(), colour.Height(),
                 colour.Bits());
        return false;
    }
    const bool serialised = copyPixels;
    const auto planes = static_cast<std::uint16_t>(colour.Planes());
    const auto bitsAllocated = static_cast<std::uint16_t>(colour.Type().BitsAllocated());
    const auto bitsStored = static_cast<std::uint16_t>(colour.Bits());
    auto& description = record.pixel_description;
    description.rows = static_cast<std::uint32_t>(colour.Height());
    description.columns = static_cast<std::uint32_t>(colour.Width());
    description.bytes_per_line = static_cast<std::uint32_t>(serialised ? colour.RowBytes() * planes : colour.LineStride());
    description.bits_allocated = bitsAllocated;
    description.bits_stored = bitsStored;
    description.planes = planes;
    description.pixel_representation = 0;
    if (!StorePixels(record, colour, copyPixels, consumed)) return false;

    record.samples_per_pixel = planes;
    record.rows = static_cast<std::uint16_t>(colour.Height());
    record.columns = static_cast<std::uint16_t>(colour.Width());
    record.bits_allocated = bitsAllocated;
    record.bits_stored = bitsStored;
    record.high_bit = static_cast<std::uint16_t>(bitsStored - 1);
    record.photometric_interpretation =
        planes == 1 ? PhotometricInterpretation::MONOCHROME2 : PhotometricInterpretation::RGB;
    record.pixel_representation = 0;
    if (planes != 1) record.planar_configuration = 0;
    record.is_set = true;
    return true;
}

}  // namespace

bool LoadThumbnail(const std::string& path, LVImage& image) { return image.LoadFromFile(path, 0, 0, 0); }

unsigned IconReductionDivisor(std::uint64_t width, std::uint64_t height) {
    const std::uint64_t q = (height / 10) * (width / 10);
    const double pixels = static_cast<double>(width) * static_cast<double>(height);
    double f = 10;
    if (q < 10000) f = std::floor(std::sqrt(pixels / 10000.0) + 0.5);
    if (q > 50000) f = std::floor(std::sqrt(pixels / 50000.0) + 0.5);
    return f < 1 ? 1u : static_cast<unsigned>(f);
}

bool SerializePixelData(const LVBuffer2D& image, std::vector<std::uint8_t>& out, LVBuffer2D* consumed) {
    if (!image.IsValid()) return false;
    const unsigned bytes = image.Type().BytesPerSample();
    const auto rowBytes = static_cast<std::size_t>(image.RowBytes()) * image.Planes();
    const std::size_t size = rowBytes * static_cast<std::size_t>(image.Height());
    // Source rows are given back in runs of about 512 KiB per plane: few system calls, little lag.
    const std::int64_t releaseRows = std::max<std::int64_t>(1, (std::int64_t{512} << 10) / image.LineStride());
    out.clear();
    out.reserve(size + size % 2);
    Portability::AdviseHugePages(out.data(), out.capacity());
    // The value grows row by row, so its pages are touched only as source rows are released.
    for (std::int32_t y = 0; y < image.Height(); ++y) {
        out.resize(rowBytes * static_cast<std::size_t>(y + 1));
        std::uint8_t* row = out.data() + rowBytes * static_cast<std::size_t>(y);
        if (consumed && y > 0 && y % releaseRows == 0) consumed->ReleaseLeadingRows(y);
        switch (bytes) {
            case 1: InterleaveRow<1>(image, y, row); break;
            case 2: InterleaveRow<2>(image, y, row); break;
            case 4: InterleaveRow<4>(image, y, row); break;
            case 8: InterleaveRow<8>(image, y, row); break;
            default: return false;
        }
    }
    out.resize(size + size % 2);  // DICOM values have even lengths
    if (consumed) consumed->ReleaseLeadingRows(image.Height());
    return true;
}

bool SetIconImage(IconImageRecord& record, const LVImageMemory& source, bool copyPixels) {
    const LVBuffer2D& image = source.Buffer();
    if (!image.IsValid()) return false;
    if (!record.reduce) return StoreImage(record, image, copyPixels);
    // The reduced image lives only here, so its pixels are always copied out.
    LVImageMemory reduced;
    if (!ReduceToEightBits(image, reduced)) {
        LV_TRACE(kModule, "Cannot reduce the icon image");
        return false;
    }
    return StoreImage(record, reduced.Buffer(), true);
}

bool SetIconImage(IconImageRecord& record, LVImageMemory&& source) {
    if (record.reduce) return SetIconImage(record, source, true);
    LVBuffer2D& image = source.Buffer();
    if (!image.IsValid()) return false;
    const bool stored = StoreImage(record, image, true, &image);
    source.Buffer().Reset();
    return stored;
}

}  // namespace Lumivale::Imaging
