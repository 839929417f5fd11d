#include "Foundations/LVCodec/LVImage.h"

#include "Foundations/LVCodec/LVImageCodecRegistry.h"

namespace Lumivale::Imaging {

bool LVImage::LoadFromFile(const std::string& path, unsigned flags) { return LoadFromFile(path, 0, 0, flags); }

bool LVImage::LoadFromFile(const std::string& path, unsigned option1, unsigned option2, unsigned flags) {
    const LVImageCodec* codec = nullptr;
    if (flags & kLoadBySignature) {
        const LVImageCodec* matched = FindCodecBySignature(path);
        codec = &FindCodecById(matched ? matched->FormatId() : static_cast<unsigned>(LVImageFormat::Unknown));
    } else {
        codec = FindCodecByExtension(path);
    }
    if (codec == nullptr || !(codec->Capabilities() & kCodecCanDecode)) return false;
    return codec->Decode(*this, path, option1, option2, flags);
}

}  // namespace Lumivale::Imaging
