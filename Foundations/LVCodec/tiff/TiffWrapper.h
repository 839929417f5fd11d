#pragma once
// libtiff reading: opening with traced errors and a memory cap, page counting and page decoding.

#include "Foundations/LVBuffer2DTools/LVImageMemory.h"

#include <string>

namespace Lumivale::Imaging {

// Decode page `frame` of the TIFF file at path: 8- and 16-bit grey (with alpha) and RGB (with alpha),
// strips or tiles, contiguous or separate planes, read directly; other layouts through libtiff's RGBA reader.
bool DecodeTiffFile(const std::string& path, unsigned frame, LVImageMemory& image);

}  // namespace Lumivale::Imaging
