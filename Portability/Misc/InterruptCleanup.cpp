#include "Portability/Misc/InterruptCleanup.h"

#include "Portability/Misc/InterruptCleanupSlots.h"

#include <utility>

namespace Portability::InterruptCleanup {

Entry::Entry(const std::string& path) : slot_(Slots::Arm(path)) {}

Entry::~Entry() { Release(); }

Entry::Entry(Entry&& other) noexcept : slot_(std::exchange(other.slot_, -1)) {}

Entry& Entry::operator=(Entry&& other) noexcept {
    if (this != &other) {
        Release();
        slot_ = std::exchange(other.slot_, -1);
    }
    return *this;
}

void Entry::Release() noexcept {
    if (slot_ >= 0) Slots::Release(std::exchange(slot_, -1));
}

}  // namespace Portability::InterruptCleanup
