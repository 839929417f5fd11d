// Any bytes handed to the Netpbm reader must decode or be refused, never crash.
#include "Foundations/LVCodec/pnm/PnmWrapper.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Lumivale::Imaging::LVImageMemory image;
    Lumivale::Imaging::DecodePnm({data, size}, image);
    return 0;
}
