#pragma once
// Bounds-checked little- and big-endian reads from a byte span, for the program's own decoders.

#include <cstdint>
#include <span>

namespace Lumivale::Imaging {

// Reads fixed-width integers at absolute offsets; every read reports whether it fitted.
class ByteReader {
public:
    // Reader over bytes (not owned).
    explicit ByteReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
    // Total bytes.
    std::uint64_t Size() const { return bytes_.size(); }
    // True when [offset, offset + length) lies inside the bytes.
    bool Has(std::uint64_t offset, std::uint64_t length) const {
        return offset <= bytes_.size() && length <= bytes_.size() - offset;
    }
    // Pointer to offset (caller checked Has).
    const std::uint8_t* At(std::uint64_t offset) const { return bytes_.data() + offset; }
    // Little-endian unsigned of `width` bytes (1 to 8) at offset; false when out of range.
    bool Le(std::uint64_t offset, unsigned width, std::uint64_t& value) const {
        if (!Has(offset, width)) return false;
        value = 0;
        for (unsigned i = width; i-- > 0;) value = (value << 8) | bytes_[offset + i];
        return true;
    }
    // Big-endian unsigned of `width` bytes (1 to 8) at offset; false when out of range.
    bool Be(std::uint64_t offset, unsigned width, std::uint64_t& value) const {
        if (!Has(offset, width)) return false;
        value = 0;
        for (unsigned i = 0; i < width; ++i) value = (value << 8) | bytes_[offset + i];
        return true;
    }
    // Little-endian 16 bits at offset, 0 when out of range.
    std::uint16_t Le16(std::uint64_t offset) const {
        std::uint64_t v = 0;
        return Le(offset, 2, v) ? static_cast<std::uint16_t>(v) : 0;
    }
    // Little-endian 32 bits at offset, 0 when out of range.
    std::uint32_t Le32(std::uint64_t offset) const {
        std::uint64_t v = 0;
        return Le(offset, 4, v) ? static_cast<std::uint32_t>(v) : 0;
    }

private:
    std::span<const std::uint8_t> bytes_;
};

}  // namespace Lumivale::Imaging
