#pragma once
// JPEG codec over libjpeg.

#include "Foundations/LVCodec/LVImageCodec.h"

namespace Lumivale::Imaging {

// "JPEG", id 0, extensions jpg jpeg jpe, signature FF D8.
class LVImageCodec_LibJpeg : public LVImageCodec {
public:
    // "JPEG".
    const char* Name() const override { return "JPEG"; }
    // 0.
    unsigned FormatId() const override { return static_cast<unsigned>(LVImageFormat::Jpeg); }
    // jpg, jpeg, jpe.
    const char* const* Extensions() const override;
    // Decode the file.
    bool Decode(LVImage& image, const std::string& path, unsigned frame, unsigned codecOption,
                unsigned loadFlags) const override;
    // 0:FFD8.
    const LVImageSignature* Signatures() const override;
};

}  // namespace Lumivale::Imaging
