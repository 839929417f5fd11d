#include "Foundations/LVCodec/dicom/LVImageCodec_Dicom.h"

#include "Foundations/LVCodec/ImageFile.h"
#include "Foundations/LVCodec/LVImage.h"
#include "Foundations/LVCodec/dicom/DicomImageReader.h"

#include <vector>

namespace Lumivale::Imaging {

namespace {
constexpr const char* kModule = "Module DICOM image";
}

const char* const* LVImageCodec_Dicom::Extensions() const {
    static constexpr const char* kExtensions[] = {"dcm",   "dicom", "pano",   "sensix", "ceph", "stv", "sc",
                                                  "io",    "crceph", "crpano", "crio",   "vl",   nullptr};
    return kExtensions;
}

const LVImageSignature* LVImageCodec_Dicom::Signatures() const {
    static constexpr std::uint8_t kMagic[] = {0x44, 0x49, 0x43, 0x4D};
    static constexpr LVImageSignature kSignatures[] = {{128, 4, kMagic}, {}};
    return kSignatures;
}

bool LVImageCodec_Dicom::Decode(LVImage& image, const std::string& path, unsigned frame, unsigned,
                                unsigned loadFlags) const {
    if (loadFlags & kLoadThumbnail) return DecodeThumbnail(image, path);
    std::vector<std::uint8_t> bytes;
    return ReadImageFile(path, bytes, kModule) && DecodeDicom(bytes, false, frame, path, image);
}

bool LVImageCodec_Dicom::DecodeThumbnail(LVImage& image, const std::string& path) const {
    std::vector<std::uint8_t> bytes;
    return ReadImageFile(path, bytes, kModule) && DecodeDicom(bytes, true, 0, path, image);
}

}  // namespace Lumivale::Imaging
