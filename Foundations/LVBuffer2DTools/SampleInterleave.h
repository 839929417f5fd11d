#pragma once
// Conversion between three planes of 8-bit samples and rows of pixels whose three samples sit side
// by side (how image libraries deliver colour and how DICOM stores it with planar configuration 0).

#include <cstddef>
#include <cstdint>

namespace Lumivale::Imaging {

// out[3x], out[3x + 1], out[3x + 2] = first[x], second[x], third[x] for x < width. No overlap allowed.
void InterleaveThreePlanes(const std::uint8_t* first, const std::uint8_t* second, const std::uint8_t* third,
                           std::uint8_t* out, std::size_t width) noexcept;

// The reverse: first[x], second[x], third[x] = pixels[3x], pixels[3x + 1], pixels[3x + 2].
void SplitIntoThreePlanes(const std::uint8_t* pixels, std::uint8_t* first, std::uint8_t* second, std::uint8_t* third,
                          std::size_t width) noexcept;

}  // namespace Lumivale::Imaging
