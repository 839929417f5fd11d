#include "Foundations/BufferTools/ParallelSwitch.h"

#include <omp.h>

#include <cstdlib>
#include <string_view>
#include <strings.h>

namespace Lumivale::BufferTools {

namespace {

bool g_parallelEnabled = true;
bool g_selfTestDone = false;
ProcessorCountFunction g_processorCount = nullptr;

bool EnvironmentForbidsParallel() {
    const char* value = std::getenv("FORCE_DISABLE_BLOCKS_PARALLEL");
    if (value == nullptr) return false;
    return std::string_view(value) == "1" || strcasecmp(value, "true") == 0;
}

// The same n goes to both calls: dynamic adjustment is on whenever n is not zero.
void ApplyThreadSettings() {
    const int n = g_parallelEnabled ? ProcessorCount() : 1;
    omp_set_dynamic(n);
    omp_set_num_threads(n);
}

}  // namespace

bool IsParallelEnabled() {
    if (g_parallelEnabled && EnvironmentForbidsParallel()) g_parallelEnabled = false;
    ApplyThreadSettings();
    return g_parallelEnabled;
}

void DisableParallel() {
    g_parallelEnabled = false;
    ApplyThreadSettings();
}

int ProcessorCount() { return g_processorCount ? g_processorCount() : omp_get_num_procs(); }

void SetProcessorCountFunction(ProcessorCountFunction function) { g_processorCount = function; }

bool IsSelfTestDone() { return g_selfTestDone; }

void MarkSelfTestDone() { g_selfTestDone = true; }

void ResetParallelStateForTests() {
    g_parallelEnabled = true;
    g_selfTestDone = false;
}

}  // namespace Lumivale::BufferTools
