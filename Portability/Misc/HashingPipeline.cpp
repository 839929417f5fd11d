#include "Portability/Misc/HashingPipeline.h"
#include "Portability/Misc/Sha256.h"

#include <algorithm>
#include <system_error>

namespace Portability {

std::size_t HashingPipeline::PieceFor(std::uint64_t length) {
    constexpr std::uint64_t kLargest = 1 << 20, kSmallest = 64 << 10;
    return static_cast<std::size_t>(std::clamp(length / 8, kSmallest, kLargest));
}

HashingPipeline::HashingPipeline(Sha256& digest, std::size_t pieceSize)
    : digest_(digest), pieceSize_((pieceSize + kAlignment - 1) / kAlignment * kAlignment) {
    storage_.reset(new char[kSlots * pieceSize_ + kAlignment]);
    const auto address = reinterpret_cast<std::uintptr_t>(storage_.get());
    aligned_ = storage_.get() + (kAlignment - address % kAlignment) % kAlignment;
    try {
        hasher_ = std::thread([this] { HashPieces(); });
    } catch (const std::system_error&) {
        // Submit hashes each piece itself.
    }
}

HashingPipeline::~HashingPipeline() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    if (hasher_.joinable()) hasher_.join();
}

char* HashingPipeline::Buffer() {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return submitted_ - hashed_ < kSlots; });
    return Slot(submitted_);
}

void HashingPipeline::Submit(std::size_t size) {
    if (!hasher_.joinable()) {
        digest_.Update(Slot(submitted_), size);
        ++submitted_;
        ++hashed_;
        return;
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        sizes_[submitted_ % kSlots] = size;
        ++submitted_;
    }
    changed_.notify_all();
}

void HashingPipeline::Finish() {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return hashed_ == submitted_; });
}

void HashingPipeline::HashPieces() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return stopping_ || hashed_ < submitted_; });
        if (hashed_ == submitted_) return;  // stopping, nothing left
        const std::uint64_t piece = hashed_;
        const std::size_t size = sizes_[piece % kSlots];
        lock.unlock();
        digest_.Update(Slot(piece), size);
        lock.lock();
        ++hashed_;
        changed_.notify_all();
    }
}

}  // namespace Portability
