#pragma once
// The progress line of a long pack or unpack: once the run has lasted a second, one line on
// standard error with the bytes done, the share of the total and the rate, redrawn in place as
// the copies report their steps. Nothing is shown when standard error is not a terminal, nor in
// test mode.

#include <chrono>
#include <cstdint>
#include <string>

namespace Dicapsule {

class ProgressLine {
public:
    using Clock = std::chrono::steady_clock;

    // Observe the copies of this run (at most one line at a time); total 0 when not known yet.
    explicit ProgressLine(std::uint64_t total = 0);
    // Stop observing; a line that was drawn is ended with a line feed.
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // Count again from zero towards a new total (a new stage of the run; 0 when not known).
    void Restart(std::uint64_t total);

    // The line for done bytes of total (0: not known) after seconds: "1.50 GiB of 3.98 GiB (37%),
    // 140.2 MiB/s", or without " of ..." when the total is not known.
    static std::string Format(std::uint64_t done, std::uint64_t total, double seconds);

private:
    static void Observe(std::uint64_t bytes);
    void Add(std::uint64_t bytes);

    bool shown_;  // standard error is a terminal and the test mode is off
    bool drawn_ = false;
    std::size_t width_ = 0;  // of the last line drawn, to blank what a shorter one leaves
    std::uint64_t done_ = 0;
    std::uint64_t total_;
    Clock::time_point started_;        // of the run: nothing is drawn in its first second
    Clock::time_point stage_started_;  // of the stage: the rate is taken over it
    Clock::time_point last_drawn_;
};

}  // namespace Dicapsule
