#pragma once
// Hashes a stream of pieces on a second thread while the caller produces the next ones, so that
// reading, writing and hashing overlap. The caller fills the buffer that Buffer() gives, hands it
// over with Submit, and may go on reading it (to write it out, say) until it next calls Buffer():
// a handed-over buffer is only reused after the hasher is done with it. Buffers are aligned to
// 4096 bytes, fit for direct I/O. Without a thread to be had the pieces are hashed in Submit.

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

namespace Portability {

class Sha256;

class HashingPipeline {
public:
    static constexpr std::size_t kAlignment = 4096;

    // The piece size for a stream of length bytes: 1 MiB, or an eighth of a shorter stream (64 KiB
    // at least), so that a short copy overlaps its hash too rather than waiting for it at the end.
    static std::size_t PieceFor(std::uint64_t length);

    // Pieces of at most pieceSize bytes (rounded up to kAlignment) are fed to digest in order.
    HashingPipeline(Sha256& digest, std::size_t pieceSize);
    // Waits for the hasher.
    ~HashingPipeline();
    HashingPipeline(const HashingPipeline&) = delete;
    HashingPipeline& operator=(const HashingPipeline&) = delete;

    // The buffer of the next piece, capacity() bytes; waits while the hasher still reads it.
    char* Buffer();
    std::size_t capacity() const { return pieceSize_; }
    // Hands the first size bytes of the last Buffer() to the hasher.
    void Submit(std::size_t size);
    // Waits until every submitted piece is hashed.
    void Finish();

private:
    static constexpr std::size_t kSlots = 4;

    void HashPieces();
    char* Slot(std::uint64_t piece) { return aligned_ + (piece % kSlots) * pieceSize_; }

    Sha256& digest_;
    std::size_t pieceSize_;
    std::unique_ptr<char[]> storage_;  // left uninitialised: pieces are written before they are read
    char* aligned_ = nullptr;
    std::size_t sizes_[kSlots] = {};

    std::mutex mutex_;
    std::condition_variable changed_;
    std::uint64_t submitted_ = 0;  // pieces handed over
    std::uint64_t hashed_ = 0;     // pieces fed to digest_
    bool stopping_ = false;
    std::thread hasher_;
};

}  // namespace Portability
