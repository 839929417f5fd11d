// The text of the progress line: units, the share of a known total, the rate.

#include "app/ProgressLine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

TEST(ProgressLine, Format) {
    constexpr std::uint64_t kMiB = 1u << 20;
    const struct {
        const char* id;
        std::uint64_t done, total;
        double seconds;
        std::string line;
    } cases[] = {
        {"bytes", 512, 0, 0, "512 B"},
        {"unknown-total", 3 * kMiB / 2, 0, 1.5, "1.50 MiB, 1.00 MiB/s"},
        {"share", 1536ull * kMiB, 4096ull * kMiB, 2, "1.50 GiB of 4.00 GiB (37%), 768.00 MiB/s"},
        {"done", 10, 10, 1, "10 B of 10 B (100%), 10 B/s"},
        {"past-total", 11, 10, 1, "11 B of 10 B (100%), 11 B/s"},
        {"terabytes", 5ull << 40, 0, 0, "5.00 TiB"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(Dicapsule::ProgressLine::Format(c.done, c.total, c.seconds), c.line);
    }
}

}  // namespace
