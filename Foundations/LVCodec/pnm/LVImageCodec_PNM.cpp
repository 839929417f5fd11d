#include "Foundations/LVCodec/pnm/LVImageCodec_PNM.h"

#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/LVImage.h"
#include "Foundations/LVCodec/pnm/PnmWrapper.h"

#include <memory>

namespace Lumivale::Imaging {

const char* const* LVImageCodec_PNM::Extensions() const {
    static constexpr const char* kExtensions[] = {"pnm", "ppm", "pgm", "pbm", "pam", nullptr};
    return kExtensions;
}

const LVImageSignature* LVImageCodec_PNM::Signatures() const {
    static constexpr std::uint8_t kMagic[7][2] = {{'P', '1'}, {'P', '2'}, {'P', '3'}, {'P', '4'},
                                                  {'P', '5'}, {'P', '6'}, {'P', '7'}};
    static constexpr LVImageSignature kSignatures[] = {{0, 2, kMagic[0]}, {0, 2, kMagic[1]}, {0, 2, kMagic[2]},
                                                       {0, 2, kMagic[3]}, {0, 2, kMagic[4]}, {0, 2, kMagic[5]},
                                                       {0, 2, kMagic[6]}, {}};
    return kSignatures;
}

bool LVImageCodec_PNM::Decode(LVImage& image, const std::string& path, unsigned, unsigned, unsigned) const {
    const std::unique_ptr<FileImageSource> source = FileImageSource::Open(path, "Module PNM");
    return source && DecodePnm(*source, image);
}

}  // namespace Lumivale::Imaging
