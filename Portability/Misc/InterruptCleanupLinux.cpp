// The Linux side of InterruptCleanup: SIGINT, SIGTERM and SIGHUP remove the armed files, then end
// the process as they would have without us.

#include "Portability/Misc/InterruptCleanupSlots.h"

#include <limits.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>

namespace Portability::InterruptCleanup {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

SlotTable<char, PATH_MAX> g_slots;
std::atomic<bool> g_handlers_installed{false};

extern "C" void RemoveArmedFiles(int signal_number) {
    g_slots.RemoveArmed([](const char* path) { ::unlink(path); });
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
    InstallHandlers();
    return g_slots.Arm(path.c_str(), path.size());
}

void Release(int slot) noexcept { g_slots.Release(slot); }

}  // namespace Slots
}  // namespace Portability::InterruptCleanup
