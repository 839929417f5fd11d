#pragma once
// Large, short-lived pixel buffers are touched once from start to end; backing them with huge
// pages turns thousands of page faults into a handful.

#include <cstddef>

namespace Portability {

// Ask the kernel to back the whole 2 MiB pages inside [start, start + length) with huge pages.
// Only advice: nothing happens on systems or ranges where it does not apply. Call it before the
// memory is first written.
void AdviseHugePages(void* start, std::size_t length) noexcept;

// Give the whole pages inside [start, start + length) back to the system: their contents are lost
// and read as zero if touched again, and they no longer count in the process's memory. Only for
// memory the caller owns and no longer needs; nothing happens where the system cannot do it.
void ReleasePages(void* start, std::size_t length) noexcept;

}  // namespace Portability
