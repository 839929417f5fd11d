#include "Foundations/BufferTools/ApplyLUTBlocks.h"

namespace Lumivale::BufferTools {

bool ApplyLUTBlocks::Process(const LVBuffer2D& source, LVBuffer2D& destination, unsigned) {
    if (!lut_.IsValid() || source.Planes() != destination.Planes() || source.Width() != destination.Width() ||
        source.Height() != destination.Height())
        return false;
    for (unsigned p = 0; p < source.Planes(); ++p) {
        if (!source.Plane(p) || !destination.Plane(p)) return false;
        for (std::int32_t y = 0; y < source.Height(); ++y)
            for (std::int32_t x = 0; x < source.Width(); ++x)
                destination.SetSample(p, x, y, lut_.Map(source.Sample(p, x, y)));
    }
    return true;
}

}  // namespace Lumivale::BufferTools
