// The Windows side of InputFile: a pipe or a console is copied into a scratch file (which the
// system removes when it is closed).

#include "Portability/Misc/InputFile.h"

#include "Portability/Misc/win32/WideText.h"

#include <windows.h>

#include <vector>

namespace Portability {

InputFile::Status InputFile::CopyStream(const std::string& path, std::uint64_t max_size) {
    std::wstring wide;
    if (!WideFromUtf8(path, wide) || wide.empty()) return Status::unreadable;
    const HANDLE source = ::CreateFileW(wide.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (source == INVALID_HANDLE_VALUE) return Status::unreadable;
    struct Closer {
        HANDLE handle;
        ~Closer() { ::CloseHandle(handle); }
    } closer{source};
    // A file on disk that could not be opened for reading as one is not read as a stream either.
    if (::GetFileType(source) == FILE_TYPE_DISK) return Status::unreadable;
    std::shared_ptr<OpenFile> copy = OpenFile::OpenTemporary();
    if (!copy) return Status::unreadable;
    std::vector<char> buffer(1 << 16);
    for (;;) {
        DWORD got = 0;
        if (!::ReadFile(source, buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr)) {
            // The writer closing its end of a pipe is the end of the input.
            if (::GetLastError() != ERROR_BROKEN_PIPE) return Status::unreadable;
            got = 0;
        }
        if (!copy->Append(buffer.data(), got)) return Status::unreadable;
        size_ = copy->Size();
        if (size_ > max_size) return Status::too_large;
        if (got == 0) break;
    }
    file_ = std::move(copy);
    return Status::opened;
}

}  // namespace Portability
