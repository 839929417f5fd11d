// The Windows side of the atomic writer: the temporary file is made beside the target with
// CreateFileW, then takes the target's place with ReplaceFileW (an existing target keeps its
// security descriptor and attributes) or MoveFileExW (a new target), both writing through.

#include "Portability/Misc/AtomicFileWriter.h"

#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/win32/WideText.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace Portability {

namespace {

constexpr const char* kModule = "AtomicFileWriter";
// Large chunks: each ReadFile/WriteFile pair costs a round trip through the file system.
constexpr std::uint64_t kCopyChunk = std::uint64_t{8} << 20;

HANDLE HandleOf(int descriptor) { return reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor)); }

std::size_t LastSeparator(const std::wstring& path) { return path.find_last_of(L"/\\"); }

// The directory part with its separator ("" for a bare name), and the name after it.
std::wstring DirectoryPrefixOf(const std::wstring& path) {
    const std::size_t separator = LastSeparator(path);
    if (separator != std::wstring::npos) return path.substr(0, separator + 1);
    // "C:name" is relative to drive C's current directory.
    if (path.size() >= 2 && path[1] == L':') return path.substr(0, 2);
    return L"";
}

std::wstring FileNameOf(const std::wstring& path) {
    return path.substr(DirectoryPrefixOf(path).size());
}

// The absolute form of a path (ReplaceFileW refuses relative names on some systems).
std::wstring FullPathOf(const std::wstring& path) {
    const DWORD needed = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    if (needed == 0) return path;
    std::wstring full(needed, L'\0');
    const DWORD length = ::GetFullPathNameW(path.c_str(), needed, full.data(), nullptr);
    if (length == 0 || length >= needed) return path;
    full.resize(length);
    return full;
}

// Put the finished temporary file in the target's place. An existing target is replaced with
// ReplaceFileW, which keeps its security descriptor and attributes; where that call fails, a
// replacing move still gives the new content.
bool PutInPlace(const std::wstring& temporary, const std::wstring& target) {
    const DWORD attributes = ::GetFileAttributesW(target.c_str());
    const bool replacing = attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
    if (replacing && ::ReplaceFileW(target.c_str(), temporary.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS,
                                    nullptr, nullptr)) {
        return true;
    }
    const DWORD flags = MOVEFILE_WRITE_THROUGH | (replacing ? MOVEFILE_REPLACE_EXISTING : 0);
    return ::MoveFileExW(temporary.c_str(), target.c_str(), flags) != 0;
}

bool WriteAll(HANDLE handle, const char* bytes, std::uint64_t size) {
    while (size > 0) {
        const DWORD want = static_cast<DWORD>(std::min<std::uint64_t>(size, kCopyChunk));
        DWORD put = 0;
        if (!::WriteFile(handle, bytes, want, &put, nullptr) || put == 0) return false;
        bytes += put;
        size -= put;
    }
    return true;
}

}  // namespace

AtomicFileWriter::AtomicFileWriter(std::string target) : target_(std::move(target)) {}

AtomicFileWriter::~AtomicFileWriter() { Discard(); }

bool AtomicFileWriter::Open() {
    Discard();
    std::wstring wideTarget;
    if (!WideFromUtf8(target_, wideTarget) || wideTarget.empty()) return false;
    const std::wstring prefix = DirectoryPrefixOf(wideTarget) + L"." + FileNameOf(wideTarget) + L".";
    // A fresh name from the tick count and the process id; CREATE_NEW never takes an existing file.
    const ULONGLONG seed = ::GetTickCount64() ^ (static_cast<ULONGLONG>(::GetCurrentProcessId()) << 20);
    for (unsigned attempt = 0; attempt < 100; ++attempt) {
        const std::wstring candidate = prefix + std::to_wstring((seed + attempt * 7919u) % 1000000u);
        const HANDLE handle = ::CreateFileW(candidate.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                            CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            if (::GetLastError() == ERROR_FILE_EXISTS) continue;
            LV_TRACE(kModule, "Cannot create a temporary file beside %s (error %lu)", target_.c_str(),
                     static_cast<unsigned long>(::GetLastError()));
            return false;
        }
        fd_ = ::_open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY);
        if (fd_ < 0) {
            ::CloseHandle(handle);
            ::DeleteFileW(candidate.c_str());
            return false;
        }
        temporary_ = Utf8FromWide(candidate);
        size_ = 0;
        return true;
    }
    return false;
}

bool AtomicFileWriter::Write(const void* data, std::size_t size) {
    if (fd_ < 0) return false;
    if (!WriteAll(HandleOf(fd_), static_cast<const char*>(data), size)) return false;
    size_ += size;
    return true;
}

bool AtomicFileWriter::CopyFrom(int source_fd, std::uint64_t offset, std::uint64_t length) {
    if (fd_ < 0) return false;
    const HANDLE source = HandleOf(source_fd);
    if (source == INVALID_HANDLE_VALUE) return false;
    std::vector<char> buffer(static_cast<std::size_t>(std::min(kCopyChunk, length)));
    for (std::uint64_t done = 0; done < length;) {
        OVERLAPPED at{};
        const std::uint64_t position = offset + done;
        at.Offset = static_cast<DWORD>(position & 0xFFFFFFFFu);
        at.OffsetHigh = static_cast<DWORD>(position >> 32);
        const DWORD want = static_cast<DWORD>(std::min<std::uint64_t>(buffer.size(), length - done));
        DWORD got = 0;
        if (!::ReadFile(source, buffer.data(), want, &got, &at) || got == 0) return false;
        if (!WriteAll(HandleOf(fd_), buffer.data(), got)) return false;
        done += got;
    }
    size_ += length;
    return true;
}

bool AtomicFileWriter::Commit() {
    if (fd_ < 0) return false;
    const HANDLE handle = HandleOf(fd_);
    const bool flushed = ::FlushFileBuffers(handle) != 0;
    const bool closed = ::_close(std::exchange(fd_, -1)) == 0;
    std::wstring wideTemporary;
    std::wstring wideTarget;
    WideFromUtf8(temporary_, wideTemporary);
    bool placed = flushed && closed && !wideTemporary.empty() && WideFromUtf8(target_, wideTarget);
    if (placed) {
        placed = PutInPlace(FullPathOf(wideTemporary), FullPathOf(wideTarget));
        if (!placed) {
            LV_TRACE(kModule, "Cannot put the new file in place of %s (error %lu)", target_.c_str(),
                     static_cast<unsigned long>(::GetLastError()));
        }
    }
    if (!placed && !wideTemporary.empty()) ::DeleteFileW(wideTemporary.c_str());
    temporary_.clear();
    return placed;
}

void AtomicFileWriter::Discard() noexcept {
    if (fd_ >= 0) ::_close(std::exchange(fd_, -1));
    if (!temporary_.empty()) {
        std::wstring wideTemporary;
        if (WideFromUtf8(temporary_, wideTemporary)) ::DeleteFileW(wideTemporary.c_str());
    }
    temporary_.clear();
}

}  // namespace Portability
