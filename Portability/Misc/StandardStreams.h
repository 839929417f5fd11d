#pragma once
// The process's standard streams where the operations use them as files: the bytes of a payload
// or of a packed file written to standard output unchanged, and whether standard error is a
// terminal (where a progress line may be shown). Standard input is read through InputFile.

#include <cstddef>

namespace Portability {

// Write size bytes to standard output as they are (never translated as text); false when they
// cannot all be written.
bool WriteStandardOutput(const void* data, std::size_t size);

// True when standard error is a terminal (a console on Windows).
bool IsStandardErrorTerminal();

}  // namespace Portability
