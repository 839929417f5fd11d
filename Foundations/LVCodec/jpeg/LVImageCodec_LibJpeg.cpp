#include "Foundations/LVCodec/jpeg/LVImageCodec_LibJpeg.h"

#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/LVImage.h"
#include "Foundations/LVCodec/jpeg/JpegDecoder.h"

#include <vector>

namespace Lumivale::Imaging {

const char* const* LVImageCodec_LibJpeg::Extensions() const {
    static constexpr const char* kExtensions[] = {"jpg", "jpeg", "jpe", nullptr};
    return kExtensions;
}

const LVImageSignature* LVImageCodec_LibJpeg::Signatures() const {
    static constexpr std::uint8_t kMagic[] = {0xFF, 0xD8};
    static constexpr LVImageSignature kSignatures[] = {{0, 2, kMagic}, {}};
    return kSignatures;
}

bool LVImageCodec_LibJpeg::Decode(LVImage& image, const std::string& path, unsigned, unsigned, unsigned) const {
    std::vector<std::uint8_t> bytes;
    return ReadImageFile(path, bytes, "Module JPEG") && DecodeJpeg(bytes, image);
}

}  // namespace Lumivale::Imaging
