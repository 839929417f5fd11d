#pragma once
// Decoding of the JPEG processes an 8-bit libjpeg cannot read: 12-bit DCT (processes 2 and 4) and
// lossless (processes 14 and 14 SV1) of 2 to 16 bits. Built only when the extended JPEG support is
// configured in (DICAPSULE_EXTENDED_JPEG); otherwise every call refuses the stream with a trace line.

#include "Foundations/LVBuffer2DTools/LVImageMemory.h"
#include "Foundations/LVCodec/jpeg/JpegDecoder.h"
#include "Foundations/LVCodec/jpeg/JpegFrameHeader.h"

#include <cstdint>
#include <span>

namespace Lumivale::Imaging {

// True when this build can decode streams that DecodeJpegExtended handles.
bool HasExtendedJpeg();
// Decode a stream whose frame header is `frame` into one or three planes of 8-bit (precision 8 or
// less) or 16-bit samples (more, with the precision as significant bits), upright as orientation says.
bool DecodeJpegExtended(std::span<const std::uint8_t> bytes, const JpegFrameHeader& frame, JpegColour colour,
                        unsigned orientation, LVImageMemory& image);

}  // namespace Lumivale::Imaging
