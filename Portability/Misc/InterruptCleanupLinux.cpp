// The Linux side of InterruptCleanup: SIGINT, SIGTERM and SIGHUP remove the armed files, then end
// the process as they would have without us.

#include "Portability/Misc/InterruptCleanupSlots.h"

#include <limits.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

namespace Portability::InterruptCleanup {

namespace {

constexpr int kSlots = 8;
constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// A slot is claimed by one Entry; the handler reads its path only while it is armed, and the path
// is written before arming, so the handler never sees a half-written path.
struct Slot {
    std::atomic<bool> claimed{false};
    std::atomic<bool> armed{false};
    char path[PATH_MAX] = {};
};
Slot g_slots[kSlots];
std::atomic<bool> g_handlers_installed{false};

extern "C" void RemoveArmedFiles(int signal_number) {
    for (Slot& slot : g_slots) {
        if (slot.armed.load()) ::unlink(slot.path);
    }
    // The handler was installed with SA_RESETHAND: the signal, delivered again once this handler
    // returns, now does what it would have done without us.
    ::raise(signal_number);
}

void InstallHandlers() {
    if (g_handlers_installed.exchange(true)) return;
    for (int signal_number : kSignals) {
        struct sigaction current {};
        if (::sigaction(signal_number, nullptr, &current) != 0 || current.sa_handler != SIG_DFL) continue;
        struct sigaction action {};
        action.sa_handler = RemoveArmedFiles;
        ::sigemptyset(&action.sa_mask);
        for (int other : kSignals) ::sigaddset(&action.sa_mask, other);
        action.sa_flags = SA_RESETHAND;
        ::sigaction(signal_number, &action, nullptr);
    }
}

}  // namespace

namespace Slots {

int Arm(const std::string& path) noexcept {
    if (path.size() >= PATH_MAX) return -1;
    InstallHandlers();
    for (int index = 0; index < kSlots; ++index) {
        bool expected = false;
        if (!g_slots[index].claimed.compare_exchange_strong(expected, true)) continue;
        std::memcpy(g_slots[index].path, path.c_str(), path.size() + 1);
        g_slots[index].armed.store(true);
        return index;
    }
    return -1;
}

void Release(int slot) noexcept {
    g_slots[slot].armed.store(false);
    g_slots[slot].claimed.store(false);
}

}  // namespace Slots
}  // namespace Portability::InterruptCleanup
