#include "Foundations/BufferTools/BufferTools.h"

#include "Foundations/BufferTools/ApplyLUTBlocks.h"
#include "Foundations/BufferTools/CopyBlocks.h"

#include <algorithm>
#include <limits>

namespace Lumivale::BufferTools {

bool CopyBuffer(BufferTools&, const LVBuffer2D& source, LVBuffer2D& destination, bool parallel) {
    CopyBlocks worker;
    return worker.SplitAndRun(source, destination, 0, 0, 0, 0, parallel);
}

bool ApplyLUTBuffer(BufferTools&, const LVBuffer2D& source, LVBuffer2D& destination, const LVLut& lut) {
    ApplyLUTBlocks worker(lut);
    return worker.SplitAndRun(source, destination, 0, 0, 0, 0, true);
}

bool BufferToolsBlocks::Copy(const LVBuffer2D& source, LVBuffer2D& destination) {
    return CopyBuffer(*this, source, destination, true);
}

bool BufferToolsBlocks::ApplyLut(const LVBuffer2D& source, LVBuffer2D& destination, const LVLut& lut) {
    return ApplyLUTBuffer(*this, source, destination, lut);
}

bool BufferToolsBlocks::Resize(const LVBuffer2D& source, LVBuffer2D& destination) {
    if (!source.IsValid() || !destination.IsValid() || source.Planes() != destination.Planes()) return false;
    const std::int64_t sw = source.Width();
    const std::int64_t sh = source.Height();
    const std::int64_t dw = destination.Width();
    const std::int64_t dh = destination.Height();
    for (unsigned p = 0; p < source.Planes(); ++p) {
        for (std::int64_t y = 0; y < dh; ++y) {
            const std::int64_t y0 = y * sh / dh;
            const std::int64_t y1 = std::max((y + 1) * sh / dh, y0 + 1);
            for (std::int64_t x = 0; x < dw; ++x) {
                const std::int64_t x0 = x * sw / dw;
                const std::int64_t x1 = std::max((x + 1) * sw / dw, x0 + 1);
                std::int64_t sum = 0;
                for (std::int64_t sy = y0; sy < y1; ++sy)
                    for (std::int64_t sx = x0; sx < x1; ++sx)
                        sum += source.Sample(p, static_cast<std::int32_t>(sx), static_cast<std::int32_t>(sy));
                const std::int64_t area = (y1 - y0) * (x1 - x0);
                destination.SetSample(p, static_cast<std::int32_t>(x), static_cast<std::int32_t>(y),
                                      (sum + area / 2) / area);
            }
        }
    }
    return true;
}

bool BufferToolsBlocks::Range(const LVBuffer2D& source, std::int64_t& minimum, std::int64_t& maximum) {
    if (!source.IsValid()) return false;
    std::int64_t low = std::numeric_limits<std::int64_t>::max();
    std::int64_t high = std::numeric_limits<std::int64_t>::min();
    for (unsigned p = 0; p < source.Planes(); ++p) {
        if (!source.Plane(p)) return false;
        for (std::int32_t y = 0; y < source.Height(); ++y)
            for (std::int32_t x = 0; x < source.Width(); ++x) {
                const std::int64_t v = source.Sample(p, x, y);
                low = std::min(low, v);
                high = std::max(high, v);
            }
    }
    minimum = low;
    maximum = high;
    return true;
}

}  // namespace Lumivale::BufferTools
