// How JPEG-LS files are recognised, shared by the CharLS codec and by the stand-in of a build
// without CharLS (which still claims the files, to refuse them rather than let another codec
// misread them).

#include "Foundations/LVCodec/jpegls/LVImageCodec_JPEGLS.h"

namespace Lumivale::Imaging {

const char* const* LVImageCodec_JPEGLS::Extensions() const {
    static constexpr const char* kExtensions[] = {"jls", nullptr};
    return kExtensions;
}

const LVImageSignature* LVImageCodec_JPEGLS::Signatures() const {
    static constexpr std::uint8_t kMagic[] = {0xFF, 0xD8, 0xFF, 0xF7};
    static constexpr LVImageSignature kSignatures[] = {{0, 4, kMagic}, {}};
    return kSignatures;
}

}  // namespace Lumivale::Imaging
