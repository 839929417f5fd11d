#include "Portability/Misc/DebugTrace.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

namespace Portability {

namespace {
TraceSink& CurrentSink() {
    static TraceSink sink;
    return sink;
}
}  // namespace

TraceSink SetTraceSink(TraceSink sink) {
    return std::exchange(CurrentSink(), std::move(sink));
}

std::string FormatTraceLine(const TraceLine& line) {
    const std::size_t slash = line.file.find_last_of("/\\");
    const std::string_view file = slash == std::string_view::npos ? line.file : line.file.substr(slash + 1);
    std::string text;
    text.append(line.module).append(" ").append(file).append(":").append(std::to_string(line.line));
    return text.append(": ").append(line.text);
}

bool InstallTraceSinkFromEnvironment() {
    const char* wanted = std::getenv("DICAPSULE_TRACE");
    if (wanted == nullptr || *wanted == '\0') return false;
    TraceSink previous = CurrentSink();
    SetTraceSink([previous = std::move(previous)](const TraceLine& line) {
        if (previous) previous(line);
        const std::string text = FormatTraceLine(line) + "\n";
        std::fwrite(text.data(), 1, text.size(), stderr);
    });
    return true;
}

void Trace(std::string_view module, std::string_view file, int line, std::string_view text) noexcept {
    const TraceSink& sink = CurrentSink();
    if (!sink) return;
    try {
        sink(TraceLine{module, file, line, text});
    } catch (...) {
        // A failing sink must not turn a diagnostic into a failure of the work being traced.
    }
}

std::string TraceFormat(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    const int size = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string text;
    if (size > 0) {
        text.resize(static_cast<std::size_t>(size));
        std::vsnprintf(text.data(), text.size() + 1, format, args);
    }
    va_end(args);
    return text;
}

}  // namespace Portability
