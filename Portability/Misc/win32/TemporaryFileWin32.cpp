// The Windows side of TemporaryFile: a file of the temporary directory opened with
// FILE_FLAG_DELETE_ON_CLOSE, so the system removes it when its last handle closes, including at
// the end of a killed process. It is shared for deletion, so opening it again by name works.

#include "Portability/Misc/TemporaryFile.h"

#include "Portability/Misc/win32/WideText.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace Portability {

std::string TemporaryDirectory() {
    wchar_t directory[MAX_PATH + 1] = {};
    const DWORD length = ::GetTempPathW(MAX_PATH + 1, directory);
    if (length == 0 || length > MAX_PATH) return {};
    return Utf8FromWide(std::wstring(directory, length));
}

int CreateTemporaryFile(std::string& reopenPath) {
    wchar_t directory[MAX_PATH + 1] = {};
    wchar_t name[MAX_PATH + 1] = {};
    const DWORD length = ::GetTempPathW(MAX_PATH + 1, directory);
    if (length == 0 || length > MAX_PATH || ::GetTempFileNameW(directory, L"dcp", 0, name) == 0) return -1;
    const HANDLE handle = ::CreateFileW(name, GENERIC_READ | GENERIC_WRITE | DELETE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                        TRUNCATE_EXISTING, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        ::DeleteFileW(name);
        return -1;
    }
    const int fd = ::_open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_RDWR | _O_BINARY);
    if (fd < 0) {
        ::CloseHandle(handle);
        return -1;
    }
    reopenPath = Utf8FromWide(name);
    return fd;
}

}  // namespace Portability
