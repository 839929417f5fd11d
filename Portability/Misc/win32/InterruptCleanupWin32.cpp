// The Windows side of InterruptCleanup: a console control handler removes the armed files on
// Ctrl+C, Ctrl+Break, closing the console, log-off and shut-down, then lets the default handler
// end the process. The handler runs on a thread of its own, so slots are guarded by atomics.

#include "Portability/Misc/InterruptCleanupSlots.h"

#include "Portability/Misc/win32/WideText.h"

#include <windows.h>

#include <atomic>
#include <cwchar>

namespace Portability::InterruptCleanup {

namespace {

constexpr int kSlots = 8;
constexpr std::size_t kMaxPath = 1024;

struct Slot {
    std::atomic<bool> claimed{false};
    std::atomic<bool> armed{false};
    wchar_t path[kMaxPath] = {};
};
Slot g_slots[kSlots];
std::atomic<bool> g_handler_installed{false};

BOOL WINAPI RemoveArmedFiles(DWORD) {
    for (Slot& slot : g_slots) {
        if (slot.armed.load()) ::DeleteFileW(slot.path);
    }
    return FALSE;  // the next handler (by default, the one that ends the process) runs as usual
}

}  // namespace

namespace Slots {

int Arm(const std::string& path) noexcept {
    std::wstring wide;
    if (!WideFromUtf8(path, wide) || wide.size() >= kMaxPath) return -1;
    if (!g_handler_installed.exchange(true)) ::SetConsoleCtrlHandler(RemoveArmedFiles, TRUE);
    for (int index = 0; index < kSlots; ++index) {
        bool expected = false;
        if (!g_slots[index].claimed.compare_exchange_strong(expected, true)) continue;
        std::wmemcpy(g_slots[index].path, wide.c_str(), wide.size() + 1);
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
