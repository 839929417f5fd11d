#pragma once
// JPEG 2000 codec over OpenJPEG.

#include "Foundations/LVCodec/LVImageCodec.h"

namespace Lumivale::Imaging {

// "JPEG2000", id 1, extensions j2k jp2, signatures FF 4F FF 51 and 00 00 00 0C 6A 00 78 35.
class LVImageCodec_OpenJpeg2000 : public LVImageCodec {
public:
    // "JPEG2000".
    const char* Name() const override { return "JPEG2000"; }
    // 1.
    unsigned FormatId() const override { return static_cast<unsigned>(LVImageFormat::Jpeg2000); }
    // j2k, jp2.
    const char* const* Extensions() const override;
    // Decode the file.
    bool Decode(LVImage& image, const std::string& path, unsigned frame, unsigned codecOption,
                unsigned loadFlags) const override;
    // 0:FF4FFF51; 0:0000000C6A007835 (kept as registered, not the standard JP2 signature box).
    const LVImageSignature* Signatures() const override;
};

}  // namespace Lumivale::Imaging
