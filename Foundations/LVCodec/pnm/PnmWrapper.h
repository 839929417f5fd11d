#pragma once
// Netpbm reader (P1 to P7, PAM headers included) into an in-memory image.

#include "Foundations/LVBuffer2DTools/LVImageMemory.h"
#include "Foundations/LVCodec/ImageSource.h"

#include <cstdint>
#include <span>

namespace Lumivale::Imaging {

// Largest width or height a Netpbm header may give (2^20).
inline constexpr std::uint64_t kPnmMaxSide = std::uint64_t{1} << 20;

// Decode Netpbm bytes: bitmaps and maxval <= 255 give 8-bit samples scaled to 255 (bitmap black = 0),
// maxval 2^b - 1 above 255 keeps b bits, other wide maxvals scale to 16 bits. PAM depth 2 and 4 carry alpha.
// The file is read a window at a time.
bool DecodePnm(const ImageSource& source, LVImageMemory& image);
// The same from bytes in memory.
bool DecodePnm(std::span<const std::uint8_t> bytes, LVImageMemory& image);

}  // namespace Lumivale::Imaging
