#include "Foundations/LVCodec/jpeg/JpegFrameHeader.h"

#include "Foundations/LVCodec/ByteReader.h"
#include "Foundations/LVCodec/jpeg/ExifOrientation.h"

namespace Lumivale::Imaging {

namespace {

bool IsFrameMarker(unsigned marker) {
    // SOF0 to SOF15, without DHT (C4), JPG (C8) and DAC (CC).
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

bool IsStandalone(unsigned marker) { return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8); }

}  // namespace

bool ReadJpegFrameHeader(std::span<const std::uint8_t> bytes, JpegFrameHeader& header) {
    const ByteReader in(bytes);
    std::uint64_t soi = 0;
    if (!in.Be(0, 2, soi) || soi != 0xFFD8) return false;
    std::uint64_t pos = 2;
    while (in.Has(pos, 2)) {
        if (in.At(pos)[0] != 0xFF) {  // stray bytes between segments: libjpeg skips them too, with a warning
            ++pos;
            continue;
        }
        const unsigned marker = in.At(pos)[1];
        if (marker == 0xFF || marker == 0x00) {  // fill byte, or a stuffed zero among stray bytes
            ++pos;
            continue;
        }
        if (IsStandalone(marker)) {
            pos += 2;
            continue;
        }
        if (marker == 0xD9 || marker == 0xDA) return false;  // end of image or scan before any frame
        std::uint64_t length = 0;
        if (!in.Be(pos + 2, 2, length) || length < 2) return false;
        if (marker == 0xE1 && header.orientation == 1 && in.Has(pos + 4, length - 2))
            header.orientation = ExifOrientation({in.At(pos + 4), static_cast<std::size_t>(length - 2)});
        if (IsFrameMarker(marker)) {
            std::uint64_t precision = 0, height = 0, width = 0, components = 0;
            if (length < 8 || !in.Be(pos + 4, 1, precision) || !in.Be(pos + 5, 2, height) ||
                !in.Be(pos + 7, 2, width) || !in.Be(pos + 9, 1, components))
                return false;
            header.marker = marker;
            header.precision = static_cast<unsigned>(precision);
            header.height = static_cast<std::uint32_t>(height);
            header.width = static_cast<std::uint32_t>(width);
            header.components = static_cast<unsigned>(components);
            return true;
        }
        pos += 2 + length;
    }
    return false;
}

}  // namespace Lumivale::Imaging
