#pragma once
// Where the stored rows and columns of a picture belong when it is shown upright, as the TIFF
// Orientation tag and the EXIF orientation of photos say it (values 1 to 8). Decoders write each
// stored sample straight to its upright place, so turning a picture costs no second buffer.

#include "Foundations/LVBuffer2DTools/LVBuffer2D.h"

#include <cstdint>

namespace Lumivale::Imaging {

// One of the eight orientations; values outside 1..8 are taken as 1 (stored upright).
class LVOrientation {
public:
    // Orientation `value` (1 = row 0 at the top, column 0 at the left; 3 = turned half a turn;
    // 6 = row 0 on the right, so the picture is turned a quarter clockwise to be shown).
    explicit LVOrientation(unsigned value = 1) : value_(value >= 1 && value <= 8 ? value : 1) {}
    // The orientation value, 1 to 8.
    unsigned Value() const { return value_; }
    // True for 5 to 8: stored rows become upright columns.
    bool SwapsAxes() const { return value_ >= 5; }
    // Upright width of a picture stored with the given width and height.
    std::int32_t UprightWidth(std::int32_t storedWidth, std::int32_t storedHeight) const {
        return SwapsAxes() ? storedHeight : storedWidth;
    }
    // Upright height of a picture stored with the given width and height.
    std::int32_t UprightHeight(std::int32_t storedWidth, std::int32_t storedHeight) const {
        return SwapsAxes() ? storedWidth : storedHeight;
    }
    // Upright position (ux, uy) of stored sample (x, y) of a picture stored as width x height.
    void Map(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height, std::int32_t& ux,
             std::int32_t& uy) const;

private:
    unsigned value_;
};

// Writes stored rows of a picture into an upright buffer (whose size is the upright size).
class LVOrientedWriter {
public:
    // Writer into out (allocated at the upright size) for a picture stored with the given orientation.
    LVOrientedWriter(const LVBuffer2D& out, LVOrientation orientation);
    // Copy stored row y of plane p (samples side by side, out's sample width) to its upright place.
    void WriteRow(unsigned p, std::int32_t y, const std::uint8_t* samples) const;
    // Write stored sample (x, y) of plane p.
    void WriteSample(unsigned p, std::int32_t x, std::int32_t y, std::int64_t value) const;

private:
    const LVBuffer2D& out_;
    LVOrientation orientation_;
    std::int32_t storedWidth_;
    std::int32_t storedHeight_;
};

}  // namespace Lumivale::Imaging
