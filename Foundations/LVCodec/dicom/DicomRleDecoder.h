#pragma once
// The DICOM RLE compression (transfer syntax 1.2.840.10008.1.2.5): a 64-byte header of segment
// offsets, then one PackBits segment per byte plane, most significant byte first, one sample after
// the other.

#include "Foundations/LVBuffer2DTools/LVBuffer2D.h"

#include <cstdint>
#include <span>

namespace Lumivale::Imaging {

// Decode one RLE frame into out, which must be allocated with the frame's geometry and one plane per
// sample; its sample width (1 or 2 bytes) says how many segments make one sample. False (with a
// trace line) when the header or a segment does not fit the frame.
bool DecodeDicomRle(std::span<const std::uint8_t> frame, const LVBuffer2D& out);

}  // namespace Lumivale::Imaging
