#pragma once
// PNM codec: the Netpbm formats P1 to P7 through the program's own reader.

#include "Foundations/LVCodec/LVImageCodec.h"

namespace Lumivale::Imaging {

// "PNM", id 6, extensions pnm ppm pgm pbm pam, signatures "P1" to "P7".
class LVImageCodec_PNM : public LVImageCodec {
public:
    // "PNM".
    const char* Name() const override { return "PNM"; }
    // 6.
    unsigned FormatId() const override { return static_cast<unsigned>(LVImageFormat::Pnm); }
    // pnm, ppm, pgm, pbm, pam.
    const char* const* Extensions() const override;
    // Decode the file.
    bool Decode(LVImage& image, const std::string& path, unsigned frame, unsigned codecOption,
                unsigned loadFlags) const override;
    // Seven records, "P1" to "P7" at offset 0.
    const LVImageSignature* Signatures() const override;
};

}  // namespace Lumivale::Imaging
