#pragma once
// The Windows trace sink: every trace line goes to the debugger through OutputDebugStringW
// (InstallTraceSinkFromEnvironment adds standard error when DICAPSULE_TRACE is set).

#ifndef _WIN32
#error "DebugOutputTrace.h is for Windows builds only"
#endif

#include "Portability/Misc/DebugTrace.h"

namespace Portability {

// Install the sink; call once at start-up.
void InstallDebugOutputTraceSink();

}  // namespace Portability
