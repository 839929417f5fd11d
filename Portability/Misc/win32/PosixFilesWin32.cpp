#include "Portability/Misc/win32/PosixFiles.h"

#include <windows.h>

#include <algorithm>
#include <limits>

int open(const wchar_t* path, int flags, int mode) { return ::_wopen(path, flags | _O_BINARY, mode); }

ssize_t pread(int descriptor, void* data, std::size_t size, std::int64_t offset) {
    const HANDLE handle = reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
    if (handle == INVALID_HANDLE_VALUE || offset < 0) return -1;
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(static_cast<std::uint64_t>(offset) & 0xFFFFFFFFu);
    at.OffsetHigh = static_cast<DWORD>(static_cast<std::uint64_t>(offset) >> 32);
    const DWORD want = static_cast<DWORD>(std::min<std::size_t>(size, std::numeric_limits<DWORD>::max() / 2));
    DWORD got = 0;
    if (!::ReadFile(handle, data, want, &got, &at)) {
        return ::GetLastError() == ERROR_HANDLE_EOF ? 0 : -1;
    }
    return static_cast<ssize_t>(got);
}
