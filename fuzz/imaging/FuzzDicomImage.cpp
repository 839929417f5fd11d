// Any bytes handed to the DICOM image reader, main image and icon, must decode or be refused.
#include "Foundations/LVCodec/dicom/DicomImageReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Lumivale::Imaging::LVImageMemory image;
    Lumivale::Imaging::DecodeDicom({data, size}, false, 0, "fuzz input", image);
    Lumivale::Imaging::DecodeDicom({data, size}, true, 0, "fuzz input", image);
    return 0;
}
