#pragma once
// The frame header (SOF marker) of a JPEG stream, read without decoding: which decoder the stream
// needs, how large its picture is and which way up it is to be shown (EXIF orientation).

#include <cstdint>
#include <span>

namespace Lumivale::Imaging {

// What the first SOF marker of a stream says.
struct JpegFrameHeader {
    unsigned marker = 0;      // the SOF marker's second byte (0xC0 baseline ... 0xC3 lossless ...)
    unsigned precision = 0;   // bits per sample
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    unsigned components = 0;
    unsigned orientation = 1;  // from an EXIF block before the frame; 1 when none
    // True for the lossless processes (SOF3, SOF7, SOF11, SOF15).
    bool Lossless() const { return (marker & 0x03) == 0x03; }
    // True for arithmetic coding (SOF9 and up), which the decoders here do not read.
    bool Arithmetic() const { return marker >= 0xC9; }
};

// Walk the markers from SOI to the first SOF; false when the stream ends first or is malformed.
bool ReadJpegFrameHeader(std::span<const std::uint8_t> bytes, JpegFrameHeader& header);

}  // namespace Lumivale::Imaging
