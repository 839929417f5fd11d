#pragma once
// JPEG decoding from memory, shared by the JPEG codec and the DICOM codec: 8-bit baseline and
// progressive streams through libjpeg; 12-bit and lossless ones through the extended decoder when
// the build has it.

#include "Foundations/LVBuffer2DTools/LVImageMemory.h"

#include <cstdint>
#include <span>

namespace Lumivale::Imaging {

// How the three components of a colour stream are to be read.
enum class JpegColour {
    Guess,  // as the stream's markers suggest (JFIF and Adobe markers, component ids): plain files
    Rgb,    // stored as RGB, no colour transform (DICOM "RGB")
    Ybr,    // stored as YCbCr, converted to RGB (DICOM "YBR_FULL", "YBR_FULL_422")
};

// What the caller knows about a stream beside its bytes.
struct JpegDecodeOptions {
    JpegColour colour = JpegColour::Guess;
    bool honourExifOrientation = true;  // turn the picture upright as its EXIF block says (plain files)
};

// Decode a JPEG stream: greyscale gives one plane, colour three (CMYK and YCCK converted to RGB);
// 8-bit streams give 8-bit samples, deeper ones 16-bit samples with their precision as significant bits.
bool DecodeJpeg(std::span<const std::uint8_t> bytes, LVImageMemory& image, const JpegDecodeOptions& options = {});

}  // namespace Lumivale::Imaging
