#include "Foundations/LVCodec/tiff/LVImageCodec_LibTiff.h"

#include "Foundations/LVCodec/LVImage.h"
#include "Foundations/LVCodec/tiff/TiffWrapper.h"

namespace Lumivale::Imaging {

const char* const* LVImageCodec_LibTiff::Extensions() const {
    static constexpr const char* kExtensions[] = {"tif", "tiff", nullptr};
    return kExtensions;
}

const LVImageSignature* LVImageCodec_LibTiff::Signatures() const {
    static constexpr std::uint8_t kLittle[] = {0x49, 0x49, 0x2A, 0x00};
    static constexpr std::uint8_t kBig[] = {0x4D, 0x4D, 0x00, 0x2A};
    static constexpr LVImageSignature kSignatures[] = {{0, 4, kLittle}, {0, 4, kBig}, {}};
    return kSignatures;
}

bool LVImageCodec_LibTiff::Decode(LVImage& image, const std::string& path, unsigned frame, unsigned,
                                  unsigned) const {
    return DecodeTiffFile(path, frame, image);
}

}  // namespace Lumivale::Imaging
