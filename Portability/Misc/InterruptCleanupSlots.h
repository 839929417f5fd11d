#pragma once
// The platform half of InterruptCleanup: a fixed table of paths that the platform's interruption
// handler removes. Entry (InterruptCleanup.cpp) owns one slot of it at a time.

#include <string>

namespace Portability::InterruptCleanup::Slots {

// Claim a free slot for path and arm it (installing the handler on first use); its index, or -1
// when the path is too long for a slot or every slot is taken.
int Arm(const std::string& path) noexcept;
// Disarm and free a slot that Arm gave.
void Release(int slot) noexcept;

}  // namespace Portability::InterruptCleanup::Slots
