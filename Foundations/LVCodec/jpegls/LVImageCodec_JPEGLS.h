#pragma once
// JPEG-LS codec over CharLS.

#include "Foundations/LVBuffer2DTools/LVImageMemory.h"
#include "Foundations/LVCodec/LVImageCodec.h"

#include <cstdint>
#include <span>

namespace Lumivale::Imaging {

// Decode a JPEG-LS stream: 1 to 4 components of 2 to 16 bits; 8 bits or less give 8-bit samples.
bool DecodeJpegLs(std::span<const std::uint8_t> bytes, LVImageMemory& image);

// "JpegLS", id 7, extension jls, signature FF D8 FF F7.
class LVImageCodec_JPEGLS : public LVImageCodec {
public:
    // "JpegLS".
    const char* Name() const override { return "JpegLS"; }
    // 7.
    unsigned FormatId() const override { return static_cast<unsigned>(LVImageFormat::JpegLs); }
    // jls.
    const char* const* Extensions() const override;
    // Decode the file.
    bool Decode(LVImage& image, const std::string& path, unsigned frame, unsigned codecOption,
                unsigned loadFlags) const override;
    // 0:FFD8FFF7.
    const LVImageSignature* Signatures() const override;
};

}  // namespace Lumivale::Imaging
