// Any bytes handed to the BMP reader must decode or be refused, never crash.
#include "Foundations/LVCodec/bmp/LVImageCodec_BMP.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Lumivale::Imaging::LVImageMemory image;
    Lumivale::Imaging::DecodeBmp({data, size}, image);
    return 0;
}
