#include "Foundations/LVBuffer2DTools/LVPixelType.h"

#include <bit>

namespace Lumivale::Imaging {

unsigned LVPixelType::BytesPerSample() const {
    const unsigned bytes = (bits + 7) / 8;
    return bytes == 0 ? 0 : std::bit_ceil(bytes);
}

unsigned LVPixelType::BitsAllocated() const { return BytesPerSample() * 8; }

// Widths beyond 63 bits cannot be represented in the 64-bit limits, so they are clamped.
static unsigned UsableBits(unsigned bits) { return bits > 63 ? 63 : bits; }

std::int64_t LVPixelType::MinValue() const {
    const unsigned b = UsableBits(bits);
    if (isUnsigned || b == 0) return 0;
    return -(std::int64_t{1} << (b - 1));
}

std::int64_t LVPixelType::MaxValue() const {
    const unsigned b = UsableBits(bits);
    if (b == 0) return 0;
    if (isUnsigned) return static_cast<std::int64_t>((std::uint64_t{1} << b) - 1);
    return (std::int64_t{1} << (b - 1)) - 1;
}

bool LVPixelType::HasAlpha() const { return planes == 2 || planes == 4; }

unsigned LVPixelType::ColourPlanes() const { return HasAlpha() ? planes - 1 : planes; }

}  // namespace Lumivale::Imaging
