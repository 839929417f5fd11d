#pragma once
// Numbers that tell this machine and this process apart, for building unique identifiers.

#include <cstdint>

namespace Portability {

// A stable 32-bit number of this machine, or 0 when none can be read. On Windows it is the serial
// number of the volume that holds the system directory; elsewhere a non-zero number derived from
// the machine id (/etc/machine-id, or D-Bus's copy of it).
std::uint32_t ReadMachineNumber();

// The identifier of the running process.
std::uint32_t CurrentProcessId();

}  // namespace Portability
