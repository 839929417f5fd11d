#pragma once
// Debug trace: diagnostics that do not stop the work (odd lengths, codec notes, self-test results).
// Each line carries the module or tag that wrote it and its source location. Lines go to a
// process-wide sink; without one they are dropped, so tracing never disturbs the tool's output.

#include <functional>
#include <string>
#include <string_view>

namespace Portability {

// One trace line as the sink receives it.
struct TraceLine {
    std::string_view module;  // module or tag name, e.g. "Module DicomDataStream", "Blocks"
    std::string_view file;    // source file that wrote the line
    int line = 0;             // source line
    std::string_view text;    // the formatted message
};

using TraceSink = std::function<void(const TraceLine&)>;

// Install the sink that receives every trace line (an empty function drops them); returns the previous one.
TraceSink SetTraceSink(TraceSink sink);

// The line as a person reads it: "module file:line: text", with the file's name only.
std::string FormatTraceLine(const TraceLine& line);

// When the environment variable DICAPSULE_TRACE is set and not empty, install a sink that writes
// every line, formatted, to standard error after handing it to the sink installed before (the
// debugger output on Windows), and return true; otherwise change nothing.
bool InstallTraceSinkFromEnvironment();

// Hand one line to the sink. Never throws.
void Trace(std::string_view module, std::string_view file, int line, std::string_view text) noexcept;

// printf-style formatting into a std::string, for trace texts written as "%s" templates.
#ifdef __MINGW32__
// The C99 formats (%zu, %lld) of mingw's own printf family, not the system C runtime's.
std::string TraceFormat(const char* format, ...) __attribute__((format(gnu_printf, 1, 2)));
#else
std::string TraceFormat(const char* format, ...) __attribute__((format(printf, 1, 2)));
#endif

}  // namespace Portability

// Trace a printf-style message under a module name, with the caller's file and line.
#define LV_TRACE(module, ...) \
    ::Portability::Trace((module), __FILE__, __LINE__, ::Portability::TraceFormat(__VA_ARGS__))
