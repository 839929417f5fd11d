#include "Portability/Misc/win32/PosixFiles.h"

#include <windows.h>

#include <algorithm>
#include <limits>

namespace {

OVERLAPPED At(std::int64_t offset) {
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(static_cast<std::uint64_t>(offset) & 0xFFFFFFFFu);
    at.OffsetHigh = static_cast<DWORD>(static_cast<std::uint64_t>(offset) >> 32);
    return at;
}

}  // namespace

int open(const wchar_t* path, int flags, int mode) {
    if ((flags & (_O_WRONLY | _O_RDWR | _O_CREAT | _O_TRUNC)) != 0) return ::_wopen(path, flags | _O_BINARY, mode);
    const HANDLE handle = ::CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return -1;
    const int descriptor = ::_open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_RDONLY | _O_BINARY);
    if (descriptor < 0) ::CloseHandle(handle);
    return descriptor;
}

ssize_t pread(int descriptor, void* data, std::size_t size, std::int64_t offset) {
    const HANDLE handle = reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
    if (handle == INVALID_HANDLE_VALUE || offset < 0) return -1;
    OVERLAPPED at = At(offset);
    const DWORD want = static_cast<DWORD>(std::min<std::size_t>(size, std::numeric_limits<DWORD>::max() / 2));
    DWORD got = 0;
    if (!::ReadFile(handle, data, want, &got, &at)) {
        return ::GetLastError() == ERROR_HANDLE_EOF ? 0 : -1;
    }
    return static_cast<ssize_t>(got);
}

ssize_t pwrite(int descriptor, const void* data, std::size_t size, std::int64_t offset) {
    const HANDLE handle = reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
    if (handle == INVALID_HANDLE_VALUE || offset < 0) return -1;
    OVERLAPPED at = At(offset);
    const DWORD want = static_cast<DWORD>(std::min<std::size_t>(size, std::numeric_limits<DWORD>::max() / 2));
    DWORD put = 0;
    if (!::WriteFile(handle, data, want, &put, &at)) return -1;
    return static_cast<ssize_t>(put);
}
