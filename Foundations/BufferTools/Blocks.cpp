#include "Foundations/BufferTools/Blocks.h"

#include "Foundations/BufferTools/CopyBlocks.h"
#include "Foundations/BufferTools/ParallelSwitch.h"
#include "Portability/Misc/DebugTrace.h"

#include <algorithm>
#include <cstdint>
#include <memory>

namespace Lumivale::BufferTools {

namespace {

SelfTestWorkerFactory g_selfTestWorkerFactory;

unsigned AutomaticBlockCount() {
    if (!IsParallelEnabled()) return 1;
    const int processors = ProcessorCount();
    if (processors <= 0) return 1;
    return std::min(static_cast<unsigned>(processors), kMaxAutomaticBlocks);
}

std::unique_ptr<LVBlocks2D> MakeSelfTestWorker() {
    if (g_selfTestWorkerFactory) return g_selfTestWorkerFactory();
    return std::make_unique<CopyBlocks>();
}

}  // namespace

bool LVBlocks2D::AppendBlock(const LVBuffer2D& source, LVBuffer2D& destination, std::int32_t x, std::int32_t y,
                             std::int32_t w, std::int32_t h) {
    LVBlockRecord record;
    if (!source.MakeRectView(record.source, x, y, w, h) || !destination.MakeRectView(record.destination, x, y, w, h))
        return false;
    blocks_.push_back(std::move(record));
    return true;
}

bool LVBlocks2D::AppendWholeBuffer(const LVBuffer2D& source, LVBuffer2D& destination) {
    blocks_.clear();
    return AppendBlock(source, destination, 0, 0, source.Width(), source.Height());
}

bool LVBlocks2D::Split(const LVBuffer2D& source, LVBuffer2D& destination, unsigned nx, unsigned ny, int ox, int oy) {
    blocks_.clear();
    if (!source.IsValid() || !destination.IsValid()) return false;

    if (nx == 0 || ny == 0) {
        const unsigned p = AutomaticBlockCount();
        if (nx == 0 && ny == 0) {
            nx = 1;
            ny = p;
        } else if (nx == 0) {
            nx = p;
        } else {
            ny = p;
        }
    }
    if (nx == 1 && ny == 1) return AppendWholeBuffer(source, destination);

    const std::int64_t overlapX = std::max(ox, 0);
    const std::int64_t overlapY = std::max(oy, 0);
    // Overlapping blocks working in place would read what a neighbour already wrote.
    const bool inPlace = &source == &destination || source.Plane(0) == destination.Plane(0);
    if ((overlapX != 0 || overlapY != 0) && inPlace) return AppendWholeBuffer(source, destination);

    const std::int64_t width = source.Width();
    const std::int64_t height = source.Height();
    const std::int64_t blockWidth = ((std::int64_t{nx} - 1) * (overlapX + 1) + width) / nx;
    const std::int64_t blockHeight = ((std::int64_t{ny} - 1) * (overlapY + 1) + height) / ny;
    const std::int64_t stepX = blockWidth - overlapX;
    const std::int64_t stepY = blockHeight - overlapY;
    if (stepX < 1 || stepY < 1) return AppendWholeBuffer(source, destination);

    for (std::int64_t j = 0; j < ny; ++j) {
        for (std::int64_t i = 0; i < nx; ++i) {
            const std::int64_t x = i * stepX;
            const std::int64_t y = j * stepY;
            const std::int64_t w = std::min(x + blockWidth, width) - x;
            const std::int64_t h = std::min(y + blockHeight, height) - y;
            if (w <= 0 || h <= 0) continue;
            if (!AppendBlock(source, destination, static_cast<std::int32_t>(x), static_cast<std::int32_t>(y),
                             static_cast<std::int32_t>(w), static_cast<std::int32_t>(h))) {
                blocks_.clear();
                return false;
            }
        }
    }
    if (blocks_.empty()) return false;
    if (blocks_.size() == std::size_t{nx} * ny) return true;
    // Some rectangles fell outside the buffer: a partial grid would be uneven work, so use one block.
    return AppendWholeBuffer(source, destination);
}

bool LVBlocks2D::Run(bool parallelRequested) {
    if (blocks_.empty()) return false;
    if (parallelRequested && blocks_.size() > 1 && IsParallelEnabled()) {
        if (!IsSelfTestDone()) {
            // Marked before running so the self-test's own parallel run does not start another.
            MarkSelfTestDone();
            if (!TryParallelTask(kSelfTestAttempts)) DisableParallel();
        }
        if (IsParallelEnabled()) return RunParallel();
    }
    return RunSequential();
}

bool LVBlocks2D::RunParallel() {
    if (!Begin()) return false;
    const auto count = static_cast<std::int64_t>(blocks_.size());
    bool ok = true;
#pragma omp parallel for reduction(&& : ok) schedule(static)
    for (std::int64_t i = 0; i < count; ++i) {
        LVBlockRecord& block = blocks_[static_cast<std::size_t>(i)];
        ok = Process(block.source, block.destination, static_cast<unsigned>(i)) && ok;
    }
    End();
    return ok;
}

bool LVBlocks2D::RunSequential() {
    if (!Begin()) return false;
    bool ok = true;
    for (std::size_t i = 0; i < blocks_.size() && ok; ++i)
        ok = Process(blocks_[i].source, blocks_[i].destination, static_cast<unsigned>(i));
    End();
    return ok;
}

bool LVBlocks2D::SplitAndRun(const LVBuffer2D& source, LVBuffer2D& destination, unsigned nx, unsigned ny, int ox,
                             int oy, bool parallelRequested) {
    Clear();
    if (!Split(source, destination, nx, ny, ox, oy)) return false;
    return Run(parallelRequested);
}

bool TryParallelTask(unsigned attempts) {
    if (!IsParallelEnabled()) {
        LV_TRACE("Blocks", "Parallelization Initialization : cannot try to perform parallel task => "
                           "parallelization is not enabled at all");
        return false;
    }
    constexpr std::int32_t kColumns = 512;
    constexpr std::int32_t kRows = 1024;
    constexpr std::size_t kPlaneBytes = std::size_t{kColumns} * kRows;
    // Both planes live in one allocation, laid out here rather than by LVBuffer2D::Allocate.
    auto memory = std::make_unique<std::uint8_t[]>(kPlaneBytes * 2);
    LVBuffer2D both(kColumns, kRows, 2, 8, kColumns, true);
    both.SetPlaneAddress(memory.get(), 0);
    both.SetPlaneAddress(memory.get() + kPlaneBytes, 1);
    LVBuffer2D source;
    LVBuffer2D destination;
    if (!both.MakeView(source, 0) || !both.MakeView(destination, 1)) return false;
    if (!source.Fill(source.Type().MaxValue())) return false;

    const int total = static_cast<int>(attempts);
    for (int attempt = 1; attempt <= total; ++attempt) {
        LV_TRACE("Blocks", "Parallelization Initialization : attempt %d of %d", attempt, total);
        if (!destination.Fill(destination.Type().MinValue())) continue;
        const std::unique_ptr<LVBlocks2D> worker = MakeSelfTestWorker();
        if (worker->SplitAndRun(source, destination, 0, 0, 0, 0, true) && destination.Equals(source)) {
            LV_TRACE("Blocks", "Parallelization Initialization : successful attempt %d using %d blocks", attempt,
                     static_cast<int>(worker->BlockCount()));
            return true;
        }
    }
    LV_TRACE("Blocks", "Parallelization Initialization : failed => paralellization disabled");
    return false;
}

void SetSelfTestWorkerFactory(SelfTestWorkerFactory factory) { g_selfTestWorkerFactory = std::move(factory); }

}  // namespace Lumivale::BufferTools
