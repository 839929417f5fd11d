#include "Foundations/LVCodec/jpeg/JpegExtendedDecoder.h"

// Builds without the extended JPEG support (DICAPSULE_EXTENDED_JPEG off) refuse 12-bit and lossless
// streams; the caller traces why.

namespace Lumivale::Imaging {

bool HasExtendedJpeg() { return false; }

bool DecodeJpegExtended(std::span<const std::uint8_t>, const JpegFrameHeader&, JpegColour, unsigned, LVImageMemory&) {
    return false;
}

}  // namespace Lumivale::Imaging
