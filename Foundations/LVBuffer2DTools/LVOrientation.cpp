#include "Foundations/LVBuffer2DTools/LVOrientation.h"

#include <cstring>

namespace Lumivale::Imaging {

void LVOrientation::Map(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height, std::int32_t& ux,
                        std::int32_t& uy) const {
    switch (value_) {
        case 2: ux = width - 1 - x; uy = y; break;
        case 3: ux = width - 1 - x; uy = height - 1 - y; break;
        case 4: ux = x; uy = height - 1 - y; break;
        case 5: ux = y; uy = x; break;
        case 6: ux = height - 1 - y; uy = x; break;
        case 7: ux = height - 1 - y; uy = width - 1 - x; break;
        case 8: ux = y; uy = width - 1 - x; break;
        default: ux = x; uy = y; break;
    }
}

LVOrientedWriter::LVOrientedWriter(const LVBuffer2D& out, LVOrientation orientation)
    : out_(out),
      orientation_(orientation),
      storedWidth_(orientation.SwapsAxes() ? out.Height() : out.Width()),
      storedHeight_(orientation.SwapsAxes() ? out.Width() : out.Height()) {}

void LVOrientedWriter::WriteRow(unsigned p, std::int32_t y, const std::uint8_t* samples) const {
    const unsigned bytes = out_.Type().BytesPerSample();
    if (orientation_.Value() == 1) {
        std::memcpy(out_.Row(p, y), samples, std::size_t{bytes} * static_cast<std::size_t>(storedWidth_));
        return;
    }
    // Along a stored row the upright address moves by a fixed step: a sample or a line, either way.
    std::int32_t ux0 = 0, uy0 = 0, ux1 = 0, uy1 = 0;
    orientation_.Map(0, y, storedWidth_, storedHeight_, ux0, uy0);
    orientation_.Map(storedWidth_ > 1 ? 1 : 0, y, storedWidth_, storedHeight_, ux1, uy1);
    std::uint8_t* at = out_.Row(p, uy0) + std::int64_t{ux0} * bytes;
    const std::int64_t step = std::int64_t{ux1 - ux0} * bytes + std::int64_t{uy1 - uy0} * out_.LineStride();
    for (std::int32_t x = 0; x < storedWidth_; ++x, at += step, samples += bytes) std::memcpy(at, samples, bytes);
}

void LVOrientedWriter::WriteSample(unsigned p, std::int32_t x, std::int32_t y, std::int64_t value) const {
    std::int32_t ux = 0, uy = 0;
    orientation_.Map(x, y, storedWidth_, storedHeight_, ux, uy);
    out_.SetSample(p, ux, uy, value);
}

}  // namespace Lumivale::Imaging
