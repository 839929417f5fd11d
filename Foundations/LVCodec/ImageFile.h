#pragma once
// Helpers every decoder shares: reading a whole image file and checking header geometry.

#include "Foundations/LVBuffer2DTools/LVImageMemory.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Portability {
class OpenFile;
}

namespace Lumivale::Imaging {

// Largest image file read into memory (1 GiB).
inline constexpr std::uint64_t kMaxImageFileBytes = std::uint64_t{1} << 30;
// Largest number of pixels a decoder accepts (2^26, 8192 x 8192), checked from the header before
// anything is decoded: a thumbnail picture never needs more, and a small file declaring more
// (a run-length or deflate bomb) is refused before it costs memory.
inline constexpr std::uint64_t kMaxImagePixels = std::uint64_t{1} << 26;

// Stretch a sample of 0..maximum over 0..255, rounding to nearest (how low bit depths are shown).
constexpr std::uint8_t ScaleToEightBits(std::uint32_t value, std::uint32_t maximum) {
    return static_cast<std::uint8_t>((std::uint64_t{value} * 255 + maximum / 2) / maximum);
}

// Move signed samples into the unsigned range by adding 2^(bits - 1): the order of values is kept
// and the shift can be undone. A signed buffer is shifted by value; an unsigned one is taken to
// hold two's-complement patterns of `bits` bits (as DICOM stores them), whose sign bit is flipped.
// The buffer is unsigned afterwards.
void ShiftSignedIntoUnsignedRange(LVBuffer2D& out, unsigned bits);

// Open the image file at path; null (with a trace line) when it cannot be opened or is too large.
std::shared_ptr<Portability::OpenFile> OpenImageFile(const std::string& path, const char* module);
// Read the whole file at path into bytes; false (with a trace line) when unreadable or too large.
bool ReadImageFile(const std::string& path, std::vector<std::uint8_t>& bytes, const char* module);
// True when width and height are positive, fit in 32 bits and their product is at most
// kMaxImagePixels; a refusal is traced with the geometry and the cap.
bool IsSaneGeometry(std::uint64_t width, std::uint64_t height);
// Allocate image after checking the geometry; traces the reason of a refusal under module.
bool AllocateImage(LVImageMemory& image, std::uint64_t width, std::uint64_t height, unsigned planes, unsigned bits,
                   const char* module);

}  // namespace Lumivale::Imaging
