#include "Portability/Misc/DebugTrace.h"

#include <cstdarg>
#include <cstdio>
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
