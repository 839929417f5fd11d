#pragma once
// TIFF codec over libtiff.

#include "Foundations/LVCodec/LVImageCodec.h"

namespace Lumivale::Imaging {

// "TIFF", id 2, extensions tif tiff, signatures "II*\0" and "MM\0*".
class LVImageCodec_LibTiff : public LVImageCodec {
public:
    // "TIFF".
    const char* Name() const override { return "TIFF"; }
    // 2.
    unsigned FormatId() const override { return static_cast<unsigned>(LVImageFormat::Tiff); }
    // tif, tiff.
    const char* const* Extensions() const override;
    // Decode page frame of the file.
    bool Decode(LVImage& image, const std::string& path, unsigned frame, unsigned codecOption,
                unsigned loadFlags) const override;
    // 0:49492A00; 0:4D4D002A.
    const LVImageSignature* Signatures() const override;
};

}  // namespace Lumivale::Imaging
