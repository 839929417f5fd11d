// The Windows side of InterruptCleanup: a console control handler removes the armed files on
// Ctrl+C, Ctrl+Break, closing the console, log-off and shut-down, then lets the default handler
// end the process. The handler runs on a thread of its own, so slots are guarded by atomics.

#include "Portability/Misc/InterruptCleanupSlots.h"

#include "Portability/Misc/win32/WideText.h"

#include <windows.h>

#include <atomic>

namespace Portability::InterruptCleanup {

namespace {

constexpr std::size_t kMaxPath = 1024;

SlotTable<wchar_t, kMaxPath> g_slots;
std::atomic<bool> g_handler_installed{false};

BOOL WINAPI RemoveArmedFiles(DWORD) {
    g_slots.RemoveArmed([](const wchar_t* path) { ::DeleteFileW(path); });
    return FALSE;  // the next handler (by default, the one that ends the process) runs as usual
}

}  // namespace

namespace Slots {

int Arm(const std::string& path) noexcept {
    std::wstring wide;
    if (!WideFromUtf8(path, wide)) return -1;
    if (!g_handler_installed.exchange(true)) ::SetConsoleCtrlHandler(RemoveArmedFiles, TRUE);
    return g_slots.Arm(wide.c_str(), wide.size());
}

void Release(int slot) noexcept { g_slots.Release(slot); }

}  // namespace Slots
}  // namespace Portability::InterruptCleanup
