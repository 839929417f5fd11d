#pragma once
// Process-wide switch for block-parallel work and the OpenMP thread settings that follow it.
// Read and written only outside parallel regions.

namespace Lumivale::BufferTools {

// Processor-count source, replaceable by tests.
using ProcessorCountFunction = int (*)();

// Re-evaluate the switch (FORCE_DISABLE_BLOCKS_PARALLEL = "1" or "true" turns it off for good),
// re-apply the OpenMP thread count (processors when on, 1 when off) and return it.
bool IsParallelEnabled();
// Turn parallel work off for the rest of the process and re-apply the thread settings.
void DisableParallel();
// Processor count used for automatic block counts and threads (omp_get_num_procs unless replaced).
int ProcessorCount();
// Replace the processor-count source (null restores omp_get_num_procs); for tests.
void SetProcessorCountFunction(ProcessorCountFunction function);

// True once the parallel self-test was started in this process.
bool IsSelfTestDone();
// Record that the self-test was started, so it never runs again.
void MarkSelfTestDone();

// Put the switch and the self-test flag back to their start-up values; for tests only.
void ResetParallelStateForTests();

}  // namespace Lumivale::BufferTools
