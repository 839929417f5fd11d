#pragma once
// Sample format of a planar pixel buffer: plane count, bits per sample, signedness.

#include <cstdint>

namespace Lumivale::Imaging {

// The sample format shared by every plane of a buffer.
struct LVPixelType {
    unsigned planes = 1;      // number of sample planes, 1 to 4
    unsigned bits = 8;        // significant bits per sample
    bool isUnsigned = true;   // true when samples are unsigned

    // Bytes one sample occupies: (bits + 7) / 8 rounded up to a power of two (0 for 0 bits).
    unsigned BytesPerSample() const;
    // Bits one sample occupies in memory: BytesPerSample() * 8.
    unsigned BitsAllocated() const;
    // Smallest representable sample value.
    std::int64_t MinValue() const;
    // Largest representable sample value.
    std::int64_t MaxValue() const;
    // True for 2 and 4 planes, whose last plane is alpha.
    bool HasAlpha() const;
    // Number of planes that carry colour (planes without the alpha plane).
    unsigned ColourPlanes() const;

    bool operator==(const LVPixelType&) const = default;
};

}  // namespace Lumivale::Imaging
