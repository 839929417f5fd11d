#pragma once
// OpenJPEG decoding from memory: raw codestreams and JP2 files.

#include "Foundations/LVBuffer2DTools/LVImageMemory.h"

#include <cstdint>
#include <span>

namespace Lumivale::Imaging {

// Decode a JPEG 2000 codestream (FF 4F FF 51) or JP2 file: 1 to 4 components of equal size, sign
// and precision up to 16 bits; 8 bits or less give 8-bit samples, more give 16-bit samples. Signed
// components give a signed buffer holding their values (the caller moves them to the unsigned range).
bool DecodeJpeg2000(std::span<const std::uint8_t> bytes, LVImageMemory& image);

}  // namespace Lumivale::Imaging
