#include "Foundations/LVCodec/LVImage.h"

#include "Foundations/LVCodec/LVImageCodecRegistry.h"

namespace Lumivale::Imaging {

bool LVImage::LoadFromFile(const std::string& path, unsigned loadFlags) { return LoadFromFile(path, 0, 0, loadFlags); }

bool LVImage::LoadFromFile(const std::string& path, unsigned frame, unsigned codecOption, unsigned loadFlags) {
    const LVImageCodec* codec = nullptr;
    if (loadFlags & kLoadBySignature) {
        const LVImageCodec* matched = FindCodecBySignature(path);
        codec = &FindCodecById(matched ? matched->FormatId() : static_cast<unsigned>(LVImageFormat::Unknown));
    } else {
        codec = FindCodecByExtension(path);
    }
    if (codec == nullptr || !(codec->Capabilities() & kCodecCanDecode)) return false;
    return codec->Decode(*this, path, frame, codecOption, loadFlags);
}

}  // namespace Lumivale::Imaging
