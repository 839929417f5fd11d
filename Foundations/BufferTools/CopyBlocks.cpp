#include "Foundations/BufferTools/CopyBlocks.h"

#include <cstring>

namespace Lumivale::BufferTools {

bool CopyBlocks::Process(const LVBuffer2D& source, LVBuffer2D& destination, unsigned) {
    if (source.Planes() != destination.Planes() ||
        source.Type().BytesPerSample() != destination.Type().BytesPerSample() ||
        source.Width() != destination.Width() || source.Height() != destination.Height())
        return false;
    const auto rowBytes = static_cast<std::size_t>(source.RowBytes());
    for (unsigned p = 0; p < source.Planes(); ++p) {
        if (!source.Plane(p) || !destination.Plane(p)) return false;
        for (std::int32_t y = 0; y < source.Height(); ++y)
            std::memmove(destination.Row(p, y), source.Row(p, y), rowBytes);
    }
    return true;
}

}  // namespace Lumivale::BufferTools
