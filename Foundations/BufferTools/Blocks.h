#pragma once
// Block tasks: a source and a destination buffer cut into rectangular blocks, each pair handed to
// a per-block worker, one after the other or spread over OpenMP threads.

#include "Foundations/LVBuffer2DTools/LVBuffer2D.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace Lumivale::BufferTools {

using Imaging::LVBuffer2D;

// Largest automatic block count.
inline constexpr unsigned kMaxAutomaticBlocks = 16;
// Attempts the block tasks give the parallel self-test.
inline constexpr unsigned kSelfTestAttempts = 3;

// One block: views of the same rectangle in the source and the destination.
struct LVBlockRecord {
    LVBuffer2D source;       // view onto the source rectangle
    LVBuffer2D destination;  // view onto the destination rectangle
};

// An abstract block task: split, then run process() over every block.
class LVBlocks2D {
public:
    LVBlocks2D() = default;
    LVBlocks2D(const LVBlocks2D&) = delete;
    LVBlocks2D& operator=(const LVBlocks2D&) = delete;
    virtual ~LVBlocks2D() = default;

    // Work on one block; returns true on success. Called concurrently for different blocks.
    virtual bool Process(const LVBuffer2D& source, LVBuffer2D& destination, unsigned index) = 0;
    // Called once before any block; false aborts the task.
    virtual bool Begin() { return true; }
    // Called once after the blocks, also after a failed block.
    virtual void End() {}

    // Build the block list (nx, ny = 0: automatic; negative overlaps count as 0); discards earlier blocks.
    bool Split(const LVBuffer2D& source, LVBuffer2D& destination, unsigned nx, unsigned ny, int ox, int oy);
    // Run the task over the current blocks, in parallel when requested and allowed.
    bool Run(bool parallelRequested);
    // Clear, split and run; false when the split fails.
    bool SplitAndRun(const LVBuffer2D& source, LVBuffer2D& destination, unsigned nx, unsigned ny, int ox,
                     int oy, bool parallelRequested);
    // Discard every block.
    void Clear() { blocks_.clear(); }
    // Number of blocks of the last split.
    std::size_t BlockCount() const { return blocks_.size(); }
    // Block i, in generation order (rows of blocks top to bottom, left to right within a row).
    const LVBlockRecord& Block(std::size_t i) const { return blocks_[i]; }

private:
    bool AppendBlock(const LVBuffer2D& source, LVBuffer2D& destination, std::int32_t x, std::int32_t y,
                     std::int32_t w, std::int32_t h);
    bool AppendWholeBuffer(const LVBuffer2D& source, LVBuffer2D& destination);
    bool RunSequential();
    bool RunParallel();

    std::vector<LVBlockRecord> blocks_;
};

// Maker of the worker the self-test runs, replaceable by tests.
using SelfTestWorkerFactory = std::function<std::unique_ptr<LVBlocks2D>()>;

// The parallel self-test: copy a 512 x 1024 8-bit plane in parallel blocks and check the result,
// up to `attempts` times. True on the first good copy.
bool TryParallelTask(unsigned attempts);
// Replace the self-test worker (an empty function restores the copying worker); for tests.
void SetSelfTestWorkerFactory(SelfTestWorkerFactory factory);

}  // namespace Lumivale::BufferTools
