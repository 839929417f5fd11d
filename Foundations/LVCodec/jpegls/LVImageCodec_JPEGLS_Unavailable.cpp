// The JPEG-LS codec of a build without CharLS: the format is still recognised by its extension
// and signature, so that a JPEG-LS thumbnail is refused as unreadable rather than misread by
// another codec.

#include "Foundations/LVCodec/jpegls/LVImageCodec_JPEGLS.h"

#include "Portability/Misc/DebugTrace.h"

namespace Lumivale::Imaging {

bool DecodeJpegLs(std::span<const std::uint8_t>, LVImageMemory&) {
    LV_TRACE("Module JPEGLS", "%s", "JPEG-LS decoding is not part of this build");
    return false;
}

bool LVImageCodec_JPEGLS::Decode(LVImage&, const std::string&, unsigned, unsigned, unsigned) const {
    LV_TRACE("Module JPEGLS", "%s", "JPEG-LS decoding is not part of this build");
    return false;
}

}  // namespace Lumivale::Imaging
