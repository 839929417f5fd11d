#include "app/ProgressLine.h"

#include "Foundations/DataModule/Uid/IdentitySource.h"
#include "Portability/Misc/Progress.h"
#include "Portability/Misc/StandardStreams.h"

#include <cstdio>

namespace Dicapsule {

namespace {

constexpr std::chrono::seconds kQuietStart{1};
constexpr std::chrono::milliseconds kRedrawInterval{200};

ProgressLine* current = nullptr;

// "512 B", "1.50 KiB", ... "3.98 GiB".
std::string Bytes(double value) {
    static constexpr const char* kUnits[] = {"B", "KiB", "MiB", "GiB", "TiB"};
    std::size_t unit = 0;
    while (value >= 1024 && unit + 1 < std::size(kUnits)) {
        value /= 1024;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.2f %s", value, kUnits[unit]);
    return text;
}

}  // namespace

ProgressLine::ProgressLine(std::uint64_t total)
    : shown_(Portability::IsStandardErrorTerminal() && !Lumivale::DataModule::IsTestModeOn()),
      total_(total),
      started_(Clock::now()),
      stage_started_(started_) {
    if (!shown_) return;
    current = this;
    Portability::SetProgressObserver(&ProgressLine::Observe);
}

ProgressLine::~ProgressLine() {
    if (!shown_) return;
    Portability::SetProgressObserver(nullptr);
    current = nullptr;
    if (drawn_) std::fputs("\n", stderr);
}

void ProgressLine::Restart(std::uint64_t total) {
    done_ = 0;
    total_ = total;
    stage_started_ = Clock::now();
}

std::string ProgressLine::Format(std::uint64_t done, std::uint64_t total, double seconds) {
    std::string line = Bytes(static_cast<double>(done));
    if (total > 0) {
        const std::uint64_t percent = done >= total ? 100 : done * 100 / total;
        line += " of " + Bytes(static_cast<double>(total)) + " (" + std::to_string(percent) + "%)";
    }
    if (seconds > 0) line += ", " + Bytes(static_cast<double>(done) / seconds) + "/s";
    return line;
}

void ProgressLine::Observe(std::uint64_t bytes) {
    if (current != nullptr) current->Add(bytes);
}

void ProgressLine::Add(std::uint64_t bytes) {
    done_ += bytes;
    const Clock::time_point now = Clock::now();
    if (now - started_ < kQuietStart || (drawn_ && now - last_drawn_ < kRedrawInterval)) return;
    const double seconds = std::chrono::duration<double>(now - stage_started_).count();
    std::string line = Format(done_, total_, seconds);
    const std::size_t width = line.size();
    if (width < width_) line.append(width_ - width, ' ');
    std::fprintf(stderr, "\r%s", line.c_str());
    std::fflush(stderr);
    width_ = width;
    drawn_ = true;
    last_drawn_ = now;
}

}  // namespace Dicapsule
