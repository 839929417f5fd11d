// The Windows side of InputFile: a file on disk stays open where it is (shared for reading,
// writing and deletion, as other programs expect); a pipe or a console is copied into a temporary
// file that the system removes when it is closed.

#include "Portability/Misc/InputFile.h"

#include "Portability/Misc/TemporaryFile.h"
#include "Portability/Misc/win32/WideText.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <vector>

namespace Portability {

struct InputFile::Handle {
    HANDLE source = INVALID_HANDLE_VALUE;  // the input as opened
    int copy = -1;                         // descriptor of the temporary copy, if one was made
    ~Handle() {
        if (source != INVALID_HANDLE_VALUE) ::CloseHandle(source);
        if (copy >= 0) ::_close(copy);
    }
};

namespace {

// Copy everything readable from source into the descriptor target, at most max_size + 1 bytes.
InputFile::Status CopyStream(HANDLE source, int target, std::uint64_t max_size, std::uint64_t& copied) {
    std::vector<char> buffer(1 << 16);
    const HANDLE out = reinterpret_cast<HANDLE>(::_get_osfhandle(target));
    copied = 0;
    for (;;) {
        DWORD got = 0;
        if (!::ReadFile(source, buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr)) {
            // The writer closing its end of a pipe is the end of the input.
            return ::GetLastError() == ERROR_BROKEN_PIPE ? InputFile::Status::opened : InputFile::Status::unreadable;
        }
        if (got == 0) return InputFile::Status::opened;
        DWORD put = 0;
        if (!::WriteFile(out, buffer.data(), got, &put, nullptr) || put != got) return InputFile::Status::unreadable;
        copied += got;
        if (copied > max_size) return InputFile::Status::too_large;
    }
}

}  // namespace

InputFile::InputFile() = default;
InputFile::~InputFile() = default;

InputFile::Status InputFile::Open(const std::string& path, std::uint64_t max_size) {
    handle_.reset();
    readable_path_.clear();
    size_ = 0;
    std::wstring wide;
    if (!WideFromUtf8(path, wide) || wide.empty()) return Status::unreadable;
    auto handle = std::make_unique<Handle>();
    handle->source = ::CreateFileW(wide.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                   nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle->source == INVALID_HANDLE_VALUE) return Status::unreadable;
    if (::GetFileType(handle->source) == FILE_TYPE_DISK) {
        LARGE_INTEGER size{};
        if (!::GetFileSizeEx(handle->source, &size) || size.QuadPart < 0) return Status::unreadable;
        // One byte read proves the permission is real.
        char probe = 0;
        DWORD got = 0;
        if (size.QuadPart > 0 && (!::ReadFile(handle->source, &probe, 1, &got, nullptr) || got != 1)) {
            return Status::unreadable;
        }
        size_ = static_cast<std::uint64_t>(size.QuadPart);
        if (size_ > max_size) return Status::too_large;
        readable_path_ = path;
        handle_ = std::move(handle);
        return Status::opened;
    }
    handle->copy = CreateTemporaryFile(readable_path_);
    if (handle->copy < 0) return Status::unreadable;
    const Status status = CopyStream(handle->source, handle->copy, max_size, size_);
    if (status != Status::opened) {
        readable_path_.clear();
        return status;
    }
    handle_ = std::move(handle);
    return Status::opened;
}

}  // namespace Portability
