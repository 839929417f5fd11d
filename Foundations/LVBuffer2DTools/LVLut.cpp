#include "Foundations/LVBuffer2DTools/LVLut.h"

#include <algorithm>

namespace Lumivale::Imaging {

bool LVLut::BuildLinear(std::int64_t minInput, std::int64_t maxInput, unsigned outputBits) {
    if (maxInput < minInput || outputBits == 0 || outputBits > 32) return false;
    const std::int64_t count = maxInput - minInput + 1;
    if (count > kMaxEntries) return false;
    const std::uint64_t outMax = (std::uint64_t{1} << outputBits) - 1;
    entries_.assign(static_cast<std::size_t>(count), 0);
    minInput_ = minInput;
    outputBits_ = outputBits;
    // A single-value range maps to the middle of the output so a flat image stays visible.
    if (count == 1) {
        entries_[0] = static_cast<std::uint32_t>(outMax / 2);
        return true;
    }
    const auto span = static_cast<std::uint64_t>(count - 1);
    for (std::uint64_t i = 0; i < static_cast<std::uint64_t>(count); ++i)
        entries_[i] = static_cast<std::uint32_t>((i * outMax + span / 2) / span);
    return true;
}

std::uint32_t LVLut::Map(std::int64_t input) const {
    if (entries_.empty()) return 0;
    const std::int64_t clamped = std::clamp(input, MinInput(), MaxInput());
    return entries_[static_cast<std::size_t>(clamped - minInput_)];
}

}  // namespace Lumivale::Imaging
