#include "Foundations/LVCodec/openjpeg/LVImageCodec_OpenJpeg2000.h"

#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/LVImage.h"
#include "Foundations/LVCodec/openjpeg/openjpeg_wrapper.h"

#include <vector>

namespace Lumivale::Imaging {

const char* const* LVImageCodec_OpenJpeg2000::Extensions() const {
    static constexpr const char* kExtensions[] = {"j2k", "jp2", nullptr};
    return kExtensions;
}

const LVImageSignature* LVImageCodec_OpenJpeg2000::Signatures() const {
    static constexpr std::uint8_t kCodestream[] = {0xFF, 0x4F, 0xFF, 0x51};
    static constexpr std::uint8_t kBox[] = {0x00, 0x00, 0x00, 0x0C, 0x6A, 0x00, 0x78, 0x35};
    static constexpr LVImageSignature kSignatures[] = {{0, 4, kCodestream}, {0, 8, kBox}, {}};
    return kSignatures;
}

bool LVImageCodec_OpenJpeg2000::Decode(LVImage& image, const std::string& path, unsigned, unsigned,
                                       unsigned) const {
    std::vector<std::uint8_t> bytes;
    if (!ReadImageFile(path, bytes, "Module JPEG2000") || !DecodeJpeg2000(bytes, image)) return false;
    // The icon holds unsigned samples: signed components move up by half their range.
    if (!image.Buffer().Type().isUnsigned) ShiftSignedIntoUnsignedRange(image.Buffer(), image.Buffer().Bits());
    return true;
}

}  // namespace Lumivale::Imaging
