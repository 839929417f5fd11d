#pragma once
// BMP codec (own decoder): 1, 4, 8, 16, 24 and 32 bits, bottom-up and top-down, RLE4 and RLE8.

#include "Foundations/LVBuffer2DTools/LVImageMemory.h"
#include "Foundations/LVCodec/ImageSource.h"
#include "Foundations/LVCodec/LVImageCodec.h"

#include <cstdint>
#include <span>

namespace Lumivale::Imaging {

// Decode a BMP file into image: palettes of greys give one plane, other palettes and true colour
// three, 32-bit images with an alpha mask four. The pixel rows are read a window at a time.
bool DecodeBmp(const ImageSource& source, LVImageMemory& image);
// The same from bytes in memory.
bool DecodeBmp(std::span<const std::uint8_t> bytes, LVImageMemory& image);

// "BMP", id 4, extension bmp, signature "BM".
class LVImageCodec_BMP : public LVImageCodec {
public:
    // "BMP".
    const char* Name() const override { return "BMP"; }
    // 4.
    unsigned FormatId() const override { return static_cast<unsigned>(LVImageFormat::Bmp); }
    // bmp.
    const char* const* Extensions() const override;
    // Decode the file (or, with kLoadThumbnail, its thumbnail).
    bool Decode(LVImage& image, const std::string& path, unsigned frame, unsigned codecOption,
                unsigned loadFlags) const override;
    // A BMP holds no separate thumbnail: the picture itself serves as one.
    bool DecodeThumbnail(LVImage& image, const std::string& path) const override;
    // 0:424D.
    const LVImageSignature* Signatures() const override;
};

}  // namespace Lumivale::Imaging
