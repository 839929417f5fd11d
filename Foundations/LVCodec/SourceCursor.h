#pragma once
// Reads an image source front to back through a window of bounded size, so a decoder walks a file
// of any size with a few hundred KiB in memory.

#include "Foundations/LVCodec/ImageSource.h"

#include <cstdint>
#include <vector>

namespace Lumivale::Imaging {

// A position in a source and the window of bytes read around it.
class SourceCursor {
public:
    // Bytes read from the source per refill (more when one request is larger).
    static constexpr std::uint64_t kWindowBytes = std::uint64_t{256} << 10;

    // Cursor at offset (past the end is allowed: nothing is left then).
    explicit SourceCursor(const ImageSource& source, std::uint64_t offset = 0) : source_(source), position_(offset) {}
    // Offset of the next byte.
    std::uint64_t Position() const { return position_; }
    // Bytes left after the position.
    std::uint64_t Remaining() const { return position_ < source_.Size() ? source_.Size() - position_ : 0; }
    // True when no byte is left.
    bool AtEnd() const { return Remaining() == 0; }
    // True once a read of the source failed (rather than running out of bytes).
    bool ReadFailed() const { return failed_; }
    // Pointer to the next size bytes, valid until the next call; null when fewer are left or they
    // cannot be read.
    const std::uint8_t* Peek(std::uint64_t size) {
        if (position_ >= start_ && size <= window_.size() && position_ - start_ <= window_.size() - size)
            return window_.data() + (position_ - start_);
        return Fill(size);
    }
    // Peek, then move past the bytes.
    const std::uint8_t* Take(std::uint64_t size) {
        const std::uint8_t* bytes = Peek(size);
        if (bytes) position_ += size;
        return bytes;
    }
    // Move past size bytes without reading them.
    void Skip(std::uint64_t size) { position_ += size; }

private:
    // Read the window again from the position, with at least size bytes; null as Peek.
    const std::uint8_t* Fill(std::uint64_t size);

    const ImageSource& source_;
    std::vector<std::uint8_t> window_;
    std::uint64_t start_ = 0;  // offset of window_[0]
    std::uint64_t position_;
    bool failed_ = false;
};

}  // namespace Lumivale::Imaging
