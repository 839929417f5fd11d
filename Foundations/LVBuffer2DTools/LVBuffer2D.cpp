#include "Foundations/LVBuffer2DTools/LVBuffer2D.h"

#include "Portability/Misc/HugePages.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

namespace Lumivale::Imaging {

namespace {

bool g_alignmentEnabled = true;

constexpr std::size_t kDefaultAlignment = 32;
// Refuse blocks above 16 GiB: no image this program handles comes near, and a hostile header
// must not turn into an allocation the sanitizers treat as fatal.
constexpr std::uint64_t kMaxBlockBytes = std::uint64_t{1} << 34;

std::int64_t ReadSample(const std::uint8_t* at, unsigned bytes, bool isUnsigned) {
    switch (bytes) {
        case 1: {
            std::uint8_t v;
            std::memcpy(&v, at, 1);
            return isUnsigned ? v : static_cast<std::int8_t>(v);
        }
        case 2: {
            std::uint16_t v;
            std::memcpy(&v, at, 2);
            return isUnsigned ? v : static_cast<std::int16_t>(v);
        }
        case 4: {
            std::uint32_t v;
            std::memcpy(&v, at, 4);
            return isUnsigned ? static_cast<std::int64_t>(v) : static_cast<std::int32_t>(v);
        }
        case 8: {
            std::int64_t v;
            std::memcpy(&v, at, 8);
            return v;
        }
        default:
            return 0;
    }
}

void WriteSample(std::uint8_t* at, unsigned bytes, std::int64_t value) {
    switch (bytes) {
        case 1: *at = static_cast<std::uint8_t>(value); break;
        case 2: {
            const auto v = static_cast<std::uint16_t>(value);
            std::memcpy(at, &v, 2);
            break;
        }
        case 4: {
            const auto v = static_cast<std::uint32_t>(value);
            std::memcpy(at, &v, 4);
            break;
        }
        case 8: std::memcpy(at, &value, 8); break;
        default: break;
    }
}

}  // namespace

void SetBufferAlignmentEnabled(bool enabled) { g_alignmentEnabled = enabled; }


LVBuffer2D::LVBuffer2D(std::int32_t width, std::int32_t height, unsigned planes, unsigned bits,
                       std::int64_t lineStride, bool isUnsigned)
    : info_{LVPixelType{planes, bits, isUnsigned}, width, height}, lineStride_(lineStride) {}

bool LVBuffer2D::Allocate(std::int32_t width, std::int32_t height, unsigned planes, unsigned bits,
                          std::size_t alignment) {
    if (alignment == 0) alignment = g_alignmentEnabled ? kDefaultAlignment : 1;
    if (planes < 1 || planes > kMaxPlanes || width <= 0 || height <= 0 || bits == 0 || bits > 64 ||
        !std::has_single_bit(alignment))
        return false;

    const LVPixelType type{planes, bits, true};
    const std::uint64_t a = alignment;
    const std::uint64_t stride = (std::uint64_t{type.BytesPerSample()} * static_cast<std::uint64_t>(width) + a - 1) / a * a;
    const std::uint64_t planeSize = stride * static_cast<std::uint64_t>(height);
    const std::uint64_t size = planeSize * planes + a - 1;
    if (planeSize > kMaxBlockBytes || size > kMaxBlockBytes) return false;

    if (!block_ || blockSize_ != size) {
        block_.reset(new (std::nothrow) std::uint8_t[size]);
        blockSize_ = block_ ? size : 0;
        if (!block_) {
            Reset();
            return false;
        }
        Portability::AdviseHugePages(block_.get(), size);
    }
    info_ = LVBuffer2DInfo{type, width, height};
    lineStride_ = static_cast<std::int64_t>(stride);
    const auto base = reinterpret_cast<std::uintptr_t>(block_.get());
    const std::uintptr_t skip = (a - base % a) % a;
    planes_.fill(nullptr);
    for (unsigned p = 0; p < planes; ++p) planes_[p] = block_.get() + skip + planeSize * p;
    return true;
}

void LVBuffer2D::Reset() {
    info_ = LVBuffer2DInfo{};
    planes_.fill(nullptr);
    lineStride_ = 0;
    block_.reset();
    blockSize_ = 0;
}

void LVBuffer2D::ReleaseLeadingRows(std::int32_t rows) {
    if (!block_ || rows <= 0) return;
    rows = std::min(rows, Height());
    for (unsigned p = 0; p < Planes(); ++p)
        if (planes_[p]) Portability::ReleasePages(planes_[p], static_cast<std::size_t>(lineStride_ * rows));
}

bool LVBuffer2D::MakeView(LVBuffer2D& view, unsigned i0, unsigned i1, unsigned i2, unsigned i3) const {
    if (Planes() == 0 || planes_[0] == nullptr) return false;
    view.Reset();
    view.info_ = info_;
    view.lineStride_ = lineStride_;
    unsigned taken = 0;
    for (const unsigned index : {i0, i1, i2, i3}) {
        if (index >= kMaxPlanes || index >= Planes()) continue;
        view.planes_[taken++] = planes_[index];
    }
    view.info_.type.planes = taken;
    return view.IsValid();
}

bool LVBuffer2D::MakeColourPlanesView(LVBuffer2D& view, bool replicateGrey) const {
    switch (Type().ColourPlanes()) {
        case 1: return replicateGrey ? MakeView(view, 0, 0, 0) : MakeView(view, 0);
        case 3: return MakeView(view, 0, 1, 2);
        default: return true;
    }
}

bool LVBuffer2D::MakeAlphaView(LVBuffer2D& view) const {
    if (Type().HasAlpha()) return MakeView(view, Planes() - 1);
    MakeView(view, kNoPlane);
    return false;
}

bool LVBuffer2D::MakeRectView(LVBuffer2D& view, std::int32_t x, std::int32_t y, std::int32_t width,
                              std::int32_t height) const {
    if (!IsValid() || x < 0 || y < 0 || width <= 0 || height <= 0 ||
        std::int64_t{x} + width > Width() || std::int64_t{y} + height > Height())
        return false;
    view.Reset();
    view.info_ = LVBuffer2DInfo{info_.type, width, height};
    view.lineStride_ = lineStride_;
    const std::int64_t offset = lineStride_ * y + std::int64_t{x} * Type().BytesPerSample();
    for (unsigned p = 0; p < Planes(); ++p)
        if (planes_[p]) view.planes_[p] = planes_[p] + offset;
    return view.IsValid();
}

void LVBuffer2D::SetPlaneAddress(std::uint8_t* address, unsigned plane) {
    if (plane < kMaxPlanes) planes_[plane] = address;
}

bool LVBuffer2D::SetSignificantBits(unsigned bits) {
    const LVPixelType changed{Planes(), bits, Type().isUnsigned};
    if (bits == 0 || changed.BytesPerSample() != Type().BytesPerSample()) return false;
    info_.type.bits = bits;
    return true;
}

std::int64_t LVBuffer2D::RowBytes() const {
    return std::int64_t{Width()} * Type().BytesPerSample();
}

std::uint8_t* LVBuffer2D::Row(unsigned p, std::int32_t y) const {
    std::uint8_t* plane = Plane(p);
    return plane ? plane + lineStride_ * y : nullptr;
}

std::int64_t LVBuffer2D::Sample(unsigned p, std::int32_t x, std::int32_t y) const {
    const unsigned bytes = Type().BytesPerSample();
    return ReadSample(Row(p, y) + std::int64_t{x} * bytes, bytes, Type().isUnsigned);
}

void LVBuffer2D::SetSample(unsigned p, std::int32_t x, std::int32_t y, std::int64_t value) const {
    const unsigned bytes = Type().BytesPerSample();
    WriteSample(Row(p, y) + std::int64_t{x} * bytes, bytes, value);
}

bool LVBuffer2D::Fill(std::int64_t value) {
    if (!IsValid()) return false;
    const unsigned bytes = Type().BytesPerSample();
    for (unsigned p = 0; p < Planes(); ++p) {
        if (!planes_[p]) return false;
        std::uint8_t* row = Row(p, 0);
        for (std::int32_t x = 0; x < Width(); ++x) WriteSample(row + std::int64_t{x} * bytes, bytes, value);
        // The first row is the pattern for the others.
        for (std::int32_t y = 1; y < Height(); ++y) std::memcpy(Row(p, y), row, static_cast<std::size_t>(RowBytes()));
    }
    return true;
}

bool LVBuffer2D::Equals(const LVBuffer2D& other) const {
    if (!IsValid() || !other.IsValid() || Width() != other.Width() || Height() != other.Height() ||
        Type() != other.Type())
        return false;
    const auto rowBytes = static_cast<std::size_t>(RowBytes());
    for (unsigned p = 0; p < Planes(); ++p) {
        if (!planes_[p] || !other.planes_[p]) return false;
        for (std::int32_t y = 0; y < Height(); ++y)
            if (std::memcmp(Row(p, y), other.Row(p, y), rowBytes) != 0) return false;
    }
    return true;
}

bool LVBuffer2D::IsValid() const {
    return Planes() >= 1 && Planes() <= kMaxPlanes && planes_[0] != nullptr && Width() > 0 && Height() > 0;
}

}  // namespace Lumivale::Imaging
