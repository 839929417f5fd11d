// The Windows side of InterruptCleanup: a console control handler removes the armed files on
// Ctrl+C, Ctrl+Break, closing the console, log-off and shut-down, then lets the default handler
// end the process. The handler runs on a thread of its own, so slots are guarded by atomics.

#include "Portability/Misc/InterruptCleanup.h"

#include "Portability/Misc/win32/WideText.h"

#include <windows.h>

#include <atomic>
#include <cwchar>
#include <utility>

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

Entry::Entry(const std::string& path) {
    std::wstring wide;
    if (!WideFromUtf8(path, wide) || wide.size() >= kMaxPath) return;
    if (!g_handler_installed.exchange(true)) ::SetConsoleCtrlHandler(RemoveArmedFiles, TRUE);
    for (int index = 0; index < kSlots; ++index) {
        bool expected = false;
        if (!g_slots[index].claimed.compare_exchange_strong(expected, true)) continue;
        std::wmemcpy(g_slots[index].path, wide.c_str(), wide.size() + 1);
        g_slots[index].armed.store(true);
        slot_ = index;
        return;
    }
}

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
    if (slot_ < 0) return;
    g_slots[slot_].armed.store(false);
    g_slots[slot_].claimed.store(false);
    slot_ = -1;
}

}  // namespace Portability::InterruptCleanup
