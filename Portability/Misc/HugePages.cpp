#include "Portability/Misc/HugePages.h"

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace Portability {

void AdviseHugePages(void* start, std::size_t length) noexcept {
#if defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t kHugePage = std::uintptr_t{2} << 20;
    const auto begin = reinterpret_cast<std::uintptr_t>(start);
    const std::uintptr_t first = (begin + kHugePage - 1) & ~(kHugePage - 1);
    const std::uintptr_t last = (begin + length) & ~(kHugePage - 1);
    if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#else
    (void)start;
    (void)length;
#endif
}

void ReleasePages(void* start, std::size_t length) noexcept {
#if defined(MADV_DONTNEED)
    constexpr std::uintptr_t kPage = 4096;
    const auto begin = reinterpret_cast<std::uintptr_t>(start);
    const std::uintptr_t first = (begin + kPage - 1) & ~(kPage - 1);
    const std::uintptr_t last = (begin + length) & ~(kPage - 1);
    if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_DONTNEED);
#else
    (void)start;
    (void)length;
#endif
}

}  // namespace Portability
