#pragma once
// JPEG decoding through libjpeg from memory, shared by the JPEG codec and the DICOM codec.

#include "Foundations/LVBuffer2DTools/LVImageMemory.h"

#include <cstdint>
#include <span>

namespace Lumivale::Imaging {

// Decode a JPEG stream: greyscale gives one 8-bit plane, colour three (CMYK and YCCK converted to RGB).
// Precisions the installed libjpeg cannot decode (12-bit on an 8-bit build) are refused with a trace line.
bool DecodeJpeg(std::span<const std::uint8_t> bytes, LVImageMemory& image);

}  // namespace Lumivale::Imaging
