// The Windows side of InputFile: the path is opened once, shared for reading, writing and deletion
// as other programs expect; a file on disk is kept open where it is, and a pipe or a console is
// copied into a scratch file (which the system removes when it is closed).

#include "Portability/Misc/InputFileStream.h"

#include "Portability/Misc/win32/WideText.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace Portability {

struct InputFile::Source {
    HANDLE handle;  // INVALID_HANDLE_VALUE when the input could not be opened
};

InputFile::Status InputFile::Open(const std::string& path, std::uint64_t max_size) {
    std::wstring wide;
    if (!WideFromUtf8(path, wide) || wide.empty()) return OpenSource({INVALID_HANDLE_VALUE}, path, max_size);
    const HANDLE source = ::CreateFileW(wide.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return OpenSource({source}, path, max_size);
}

InputFile::Status InputFile::OpenStandardInput(const std::string& name, std::uint64_t max_size) {
    // A handle of its own, so that what keeps the input open never closes the process's.
    const HANDLE process = ::GetCurrentProcess();
    const HANDLE standard = ::GetStdHandle(STD_INPUT_HANDLE);
    HANDLE source = INVALID_HANDLE_VALUE;
    if (standard == nullptr || standard == INVALID_HANDLE_VALUE ||
        !::DuplicateHandle(process, standard, process, &source, 0, FALSE, DUPLICATE_SAME_ACCESS)) {
        source = INVALID_HANDLE_VALUE;
    }
    return OpenSource({source}, name, max_size);
}

InputFile::Status InputFile::OpenSource(const Source& opened, const std::string& path, std::uint64_t max_size) {
    file_.reset();
    size_ = 0;
    const HANDLE source = opened.handle;
    if (source == INVALID_HANDLE_VALUE) return Status::unreadable;
    if (::GetFileType(source) == FILE_TYPE_DISK) {
        LARGE_INTEGER size{};
        const int descriptor = ::GetFileSizeEx(source, &size) && size.QuadPart >= 0
                                   ? ::_open_osfhandle(reinterpret_cast<intptr_t>(source), _O_RDONLY | _O_BINARY)
                                   : -1;
        if (descriptor < 0) {
            ::CloseHandle(source);
            return Status::unreadable;
        }
        return Keep(OpenFile::Adopt(descriptor, path, static_cast<std::uint64_t>(size.QuadPart)), max_size);
    }
    struct Closer {
        HANDLE handle;
        ~Closer() { ::CloseHandle(handle); }
    } closer{source};
    return CopyStream(
        [source](char* data, std::size_t size) -> long long {
            DWORD got = 0;
            if (::ReadFile(source, data, static_cast<DWORD>(size), &got, nullptr)) return got;
            // The writer closing its end of a pipe is the end of the input.
            return ::GetLastError() == ERROR_BROKEN_PIPE ? 0 : -1;
        },
        max_size);
}

}  // namespace Portability
