#pragma once
// PNG codec over libpng.

#include "Foundations/LVBuffer2DTools/LVImageMemory.h"
#include "Foundations/LVCodec/LVImageCodec.h"

#include <cstdint>
#include <span>

namespace Lumivale::Imaging {

// Decode PNG bytes: grey, grey + alpha, RGB, RGBA; palettes expanded to RGB (RGBA with transparency),
// 1- to 4-bit greys scaled to 8 bits, 16-bit samples kept as 16 bits.
bool DecodePng(std::span<const std::uint8_t> bytes, LVImageMemory& image);

// "PNG", id 3, extension png, signature 89 50 4E 47 0D 0A 1A 0A.
class LVImageCodec_LibPNG : public LVImageCodec {
public:
    // "PNG".
    const char* Name() const override { return "PNG"; }
    // 3.
    unsigned FormatId() const override { return static_cast<unsigned>(LVImageFormat::Png); }
    // png.
    const char* const* Extensions() const override;
    // Decode the file.
    bool Decode(LVImage& image, const std::string& path, unsigned frame, unsigned codecOption,
                unsigned loadFlags) const override;
    // 0:89504E470D0A1A0A.
    const LVImageSignature* Signatures() const override;
};

}  // namespace Lumivale::Imaging
