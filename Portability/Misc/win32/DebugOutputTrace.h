#pragma once
// The Windows trace sink: every trace line goes to the debugger through OutputDebugStringW, and
// also to standard error when the environment variable DICAPSULE_TRACE is set.

#ifndef _WIN32
#error "DebugOutputTrace.h is for Windows builds only"
#endif

#include <string>

#include "Portability/Misc/DebugTrace.h"

namespace Portability {

// The text of one trace line: "<module> <file>(<line>): <text>".
std::string FormatTraceLine(const TraceLine& line);

// Install the sink; call once at start-up.
void InstallDebugOutputTraceSink();

}  // namespace Portability
