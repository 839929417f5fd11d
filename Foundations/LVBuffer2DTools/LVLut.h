#pragma once
// Look-up table from the sample values of one range onto unsigned output samples of a given width.

#include <cstdint>
#include <vector>

namespace Lumivale::Imaging {

// A table with one entry per input value from MinInput() to MaxInput().
class LVLut {
public:
    // Largest number of entries a table may hold (a 20-bit input range).
    static constexpr std::int64_t kMaxEntries = std::int64_t{1} << 20;

    // Build a linear ramp mapping [minInput, maxInput] onto [0, 2^outputBits - 1]; fails on an empty or too wide range.
    bool BuildLinear(std::int64_t minInput, std::int64_t maxInput, unsigned outputBits);
    // Output value for an input sample; inputs outside the range are clamped to it.
    std::uint32_t Map(std::int64_t input) const;
    // True once built.
    bool IsValid() const { return !entries_.empty(); }
    // First input value of the table.
    std::int64_t MinInput() const { return minInput_; }
    // Last input value of the table.
    std::int64_t MaxInput() const { return minInput_ + static_cast<std::int64_t>(entries_.size()) - 1; }
    // Bits of the output samples.
    unsigned OutputBits() const { return outputBits_; }

private:
    std::vector<std::uint32_t> entries_;
    std::int64_t minInput_ = 0;
    unsigned outputBits_ = 0;
};

}  // namespace Lumivale::Imaging
