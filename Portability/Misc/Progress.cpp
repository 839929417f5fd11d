#include "Portability/Misc/Progress.h"

#include <atomic>

namespace Portability {

namespace {
std::atomic<ProgressObserver> observer{nullptr};
}  // namespace

void SetProgressObserver(ProgressObserver value) noexcept { observer.store(value, std::memory_order_relaxed); }

void ReportProgress(std::uint64_t bytes) noexcept {
    if (const ProgressObserver current = observer.load(std::memory_order_relaxed)) current(bytes);
}

}  // namespace Portability
