#include "Foundations/LVCodec/LVImageCodec.h"

namespace Lumivale::Imaging {

bool LVImageCodec::Encode(LVImage&, const std::string&, unsigned, unsigned, unsigned) const { return false; }

bool LVImageCodec::Save(LVImage&, const std::string&, unsigned) const { return false; }

bool LVImageCodec::DecodeThumbnail(LVImage&, const std::string&) const { return false; }

const char* const* LVImageCodec_Default::Extensions() const {
    static constexpr const char* kNone[] = {nullptr};
    return kNone;
}

}  // namespace Lumivale::Imaging
