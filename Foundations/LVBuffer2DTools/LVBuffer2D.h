#pragma once
// Planar two-dimensional pixel buffer: one to four sample planes of equal geometry sharing a line
// stride. A buffer either owns one aligned block holding its planes one after the other, or is a
// view onto planes (or a rectangle) of another buffer and owns nothing.

#include "Foundations/LVBuffer2DTools/LVPixelType.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace Lumivale::Imaging {

// Geometry and sample format of a buffer.
struct LVBuffer2DInfo {
    LVPixelType type;        // sample format
    std::int32_t width = 0;  // samples per row; positive for a usable buffer
    std::int32_t height = 0; // rows; positive for a usable buffer
};

// Turn the process-wide default alignment (32 bytes when on, 1 when off) on or off.
void SetBufferAlignmentEnabled(bool enabled);

// A planar pixel buffer, owning or view.
class LVBuffer2D {
public:
    static constexpr unsigned kMaxPlanes = 4;
    // Plane index that selects no plane in MakeView.
    static constexpr unsigned kNoPlane = 4;

    // An empty buffer without geometry or planes.
    LVBuffer2D() = default;
    // A described buffer with all plane addresses null; it owns no memory until allocated.
    LVBuffer2D(std::int32_t width, std::int32_t height, unsigned planes, unsigned bits,
               std::int64_t lineStride, bool isUnsigned);
    LVBuffer2D(LVBuffer2D&&) noexcept = default;
    LVBuffer2D& operator=(LVBuffer2D&&) noexcept = default;
    LVBuffer2D(const LVBuffer2D&) = delete;
    LVBuffer2D& operator=(const LVBuffer2D&) = delete;
    ~LVBuffer2D() = default;

    // Set the geometry (unsigned samples) and allocate the planes; alignment 0 takes the default.
    bool Allocate(std::int32_t width, std::int32_t height, unsigned planes, unsigned bits,
                  std::size_t alignment = 0);
    // Forget geometry and planes and free any owned memory.
    void Reset();
    // Give the memory of rows [0, rows) of every plane of an owning buffer back to the system once
    // they have been consumed: their samples are lost. Views and rows past the end are left alone.
    void ReleaseLeadingRows(std::int32_t rows);

    // Make view hold this buffer's planes at the given indices (indices >= 4 or past the plane count are skipped).
    bool MakeView(LVBuffer2D& view, unsigned i0, unsigned i1 = kNoPlane, unsigned i2 = kNoPlane,
                  unsigned i3 = kNoPlane) const;
    // Make view hold the colour planes without alpha; a single grey plane is repeated three times on request.
    bool MakeColourPlanesView(LVBuffer2D& view, bool replicateGrey) const;
    // Make view hold the alpha plane of a 2- or 4-plane buffer, or no plane otherwise.
    bool MakeAlphaView(LVBuffer2D& view) const;
    // Make view hold the rectangle (x, y, width, height) of every plane; fails when it leaves the buffer.
    bool MakeRectView(LVBuffer2D& view, std::int32_t x, std::int32_t y, std::int32_t width,
                      std::int32_t height) const;
    // Point plane `plane` at caller-managed memory (the caller keeps it alive).
    void SetPlaneAddress(std::uint8_t* address, unsigned plane);
    // Mark the samples signed or unsigned without touching memory.
    void SetUnsigned(bool isUnsigned) { info_.type.isUnsigned = isUnsigned; }
    // Set the significant bits per sample without touching memory (the bytes per sample must stay the same).
    bool SetSignificantBits(unsigned bits);

    // Set every sample of every plane to value (truncated to the sample width).
    bool Fill(std::int64_t value);
    // True when both buffers have the same geometry and format and equal samples.
    bool Equals(const LVBuffer2D& other) const;

    // True when the buffer has a geometry, at least one plane and a non-null first plane.
    bool IsValid() const;
    // True when this buffer owns its memory block.
    bool OwnsMemory() const { return block_ != nullptr; }

    // Geometry and sample format.
    const LVBuffer2DInfo& Info() const { return info_; }
    // Sample format.
    const LVPixelType& Type() const { return info_.type; }
    // Samples per row.
    std::int32_t Width() const { return info_.width; }
    // Rows.
    std::int32_t Height() const { return info_.height; }
    // Number of planes.
    unsigned Planes() const { return info_.type.planes; }
    // Significant bits per sample.
    unsigned Bits() const { return info_.type.bits; }
    // Bytes from one row to the next, the same in every plane.
    std::int64_t LineStride() const { return lineStride_; }
    // Bytes of one row that hold samples (width times bytes per sample).
    std::int64_t RowBytes() const;
    // Start of plane p, or null.
    std::uint8_t* Plane(unsigned p) const { return p < kMaxPlanes ? planes_[p] : nullptr; }
    // Start of row y of plane p (no bounds check beyond the plane index).
    std::uint8_t* Row(unsigned p, std::int32_t y) const;
    // Read sample (x, y) of plane p, sign-extended for signed types.
    std::int64_t Sample(unsigned p, std::int32_t x, std::int32_t y) const;
    // Write sample (x, y) of plane p, truncated to the sample width.
    void SetSample(unsigned p, std::int32_t x, std::int32_t y, std::int64_t value) const;

private:
    LVBuffer2DInfo info_;
    std::array<std::uint8_t*, kMaxPlanes> planes_{};
    std::int64_t lineStride_ = 0;
    std::unique_ptr<std::uint8_t[]> block_;
    std::size_t blockSize_ = 0;
};

}  // namespace Lumivale::Imaging
