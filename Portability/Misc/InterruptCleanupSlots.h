#pragma once
// The platform half of InterruptCleanup: a fixed table of paths that the platform's interruption
// handler removes. Entry (InterruptCleanup.cpp) owns one slot of it at a time.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <string>

namespace Portability::InterruptCleanup {

// The table both platforms keep, of paths in the platform's own characters. A slot is claimed by
// one Entry; the handler reads a path only while its slot is armed, and the path is written before
// arming, so a handler never sees a half-written path. Constant-initialised, never allocates.
template <typename Char, std::size_t Capacity>
class SlotTable {
public:
    // Claim a free slot and arm it with the first length characters of path; its index, or -1 when
    // the path does not fit a slot or every slot is taken.
    int Arm(const Char* path, std::size_t length) noexcept {
        if (length >= Capacity) return -1;
        for (int index = 0; index < kSlots; ++index) {
            Slot& slot = slots_[index];
            bool expected = false;
            if (!slot.claimed.compare_exchange_strong(expected, true)) continue;
            std::copy_n(path, length, slot.path);
            slot.path[length] = Char{};
            slot.armed.store(true);
            return index;
        }
        return -1;
    }
    // Disarm and free a slot that Arm gave.
    void Release(int index) noexcept {
        slots_[index].armed.store(false);
        slots_[index].claimed.store(false);
    }
    // Hand every armed path to remove; safe in a signal handler as long as remove is.
    template <typename Remove>
    void RemoveArmed(Remove remove) noexcept {
        for (Slot& slot : slots_) {
            if (slot.armed.load()) remove(slot.path);
        }
    }

private:
    static constexpr int kSlots = 8;
    struct Slot {
        std::atomic<bool> claimed{false};
        std::atomic<bool> armed{false};
        Char path[Capacity] = {};
    };
    Slot slots_[kSlots];
};

namespace Slots {

// Claim a free slot for path and arm it (installing the handler on first use); its index, or -1
// when the path is too long for a slot or every slot is taken.
int Arm(const std::string& path) noexcept;
// Disarm and free a slot that Arm gave.
void Release(int slot) noexcept;

}  // namespace Slots
}  // namespace Portability::InterruptCleanup
