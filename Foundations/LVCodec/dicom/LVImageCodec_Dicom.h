#pragma once
// DICOM codec: main image or icon of a Part 10 file, through the program's own minimal reader.

#include "Foundations/LVCodec/LVImageCodec.h"

namespace Lumivale::Imaging {

// "DICOM", id 5, extensions dcm dicom pano sensix ceph stv sc io crceph crpano crio vl, signature "DICM" at 128.
class LVImageCodec_Dicom : public LVImageCodec {
public:
    // "DICOM".
    const char* Name() const override { return "DICOM"; }
    // 5.
    unsigned FormatId() const override { return static_cast<unsigned>(LVImageFormat::Dicom); }
    // The twelve DICOM extensions.
    const char* const* Extensions() const override;
    // Decode the given frame of the main image, or the icon when loadFlags has kLoadThumbnail.
    bool Decode(LVImage& image, const std::string& path, unsigned frame, unsigned codecOption,
                unsigned loadFlags) const override;
    // True: a DICOM file carries a data set beside its pixels.
    bool CarriesDataSet() const override { return true; }
    // Decode the Icon Image Sequence item.
    bool DecodeThumbnail(LVImage& image, const std::string& path) const override;
    // 128:4449434D.
    const LVImageSignature* Signatures() const override;
};

}  // namespace Lumivale::Imaging
