#include "Foundations/LVCodec/SourceCursor.h"

#include <algorithm>

namespace Lumivale::Imaging {

const std::uint8_t* SourceCursor::Fill(std::uint64_t size) {
    if (size > Remaining()) return nullptr;
    window_.resize(static_cast<std::size_t>(std::min(std::max(size, kWindowBytes), Remaining())));
    start_ = position_;
    if (!source_.ReadAt(window_.data(), window_.size(), start_)) {
        window_.clear();
        failed_ = true;
        return nullptr;
    }
    return window_.data();
}

}  // namespace Lumivale::Imaging
