#pragma once
// How far a long run has come: the copies of large byte streams (a piped input into its scratch
// file, a payload into its output) report the bytes they move, and the tool, when it shows a
// progress line, observes them. Without an observer a report costs one load.

#include <cstdint>

namespace Portability {

// Called with the bytes of each step of a copy, on the thread that copies.
using ProgressObserver = void (*)(std::uint64_t bytes);

// Observe the reports from now on (nullptr: stop observing).
void SetProgressObserver(ProgressObserver observer) noexcept;

// Report bytes moved by a copy.
void ReportProgress(std::uint64_t bytes) noexcept;

}  // namespace Portability
