#pragma once
// The orientation a camera records in a JPEG's EXIF block (APP1 "Exif"): how to turn the stored
// picture to show it upright.

#include <cstdint>
#include <span>

namespace Lumivale::Imaging {

// Orientation (1 to 8) from the body of an APP1 marker (starting with "Exif\0\0"); 1 when the block
// is not EXIF, has no orientation in its first directory, or is malformed.
unsigned ExifOrientation(std::span<const std::uint8_t> app1);

}  // namespace Lumivale::Imaging
