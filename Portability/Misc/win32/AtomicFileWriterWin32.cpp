// The Windows side of the atomic writer: the temporary file is made beside the target with
// CreateFileW under a short hidden name (removed if the console is interrupted), then takes the
// target's place: with ExistingTarget::refuse by MoveFileExW without replacing, which fails if
// the target appeared meanwhile; with replace by ReplaceFileW (an existing target keeps its
// security descriptor and attributes) or a replacing MoveFileExW, both writing through. A device
// (NUL, CON, COM1) or a pipe is opened as it is and written through.

#include "Portability/Misc/AtomicFileWriter.h"

#include "Portability/Misc/DebugTrace.h"
#include "Portability/Misc/HashingPipeline.h"
#include "Portability/Misc/InterruptCleanup.h"
#include "Portability/Misc/Progress.h"
#include "Portability/Misc/Sha256.h"
#include "Portability/Misc/win32/WideText.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace Portability {

struct AtomicFileWriter::Temporary {
    int fd = -1;
    std::wstring name;
    InterruptCleanup::Entry cleanup;  // removes name if the console is interrupted
    bool through = false;             // fd is the target itself, written through
};

namespace {

constexpr const char* kModule = "AtomicFileWriter";
// Large chunks: each ReadFile/WriteFile pair costs a round trip through the file system.
constexpr std::uint64_t kCopyChunk = std::uint64_t{8} << 20;

// What the last Win32 error says about the target's volume, for the caller's message.
WriteFailure FailureOfLastError() {
    switch (::GetLastError()) {
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return WriteFailure::no_space;
        case ERROR_WRITE_PROTECT:
            return WriteFailure::read_only;
        default:
            return WriteFailure::io;
    }
}

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
bool ReplaceTarget(const std::wstring& temporary, const std::wstring& target) {
    const DWORD attributes = ::GetFileAttributesW(target.c_str());
    const bool replacing = attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
    if (replacing && ::ReplaceFileW(target.c_str(), temporary.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS,
                                    nullptr, nullptr)) {
        return true;
    }
    const DWORD flags = MOVEFILE_WRITE_THROUGH | (replacing ? MOVEFILE_REPLACE_EXISTING : 0);
    return ::MoveFileExW(temporary.c_str(), target.c_str(), flags) != 0;
}

// The target opened for writing when it is a character device or a pipe; otherwise null. A named
// pipe is recognised by its name, since opening one to look would take one of its instances.
HANDLE OpenThrough(const std::wstring& target, bool probe) {
    const bool pipe = target.rfind(L"\\\\.\\pipe\\", 0) == 0;
    if (pipe && probe) return INVALID_HANDLE_VALUE;  // a stand-in that only says "through"
    const HANDLE handle = ::CreateFileW(target.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return nullptr;
    const DWORD type = ::GetFileType(handle);
    if (type == FILE_TYPE_CHAR || type == FILE_TYPE_PIPE) return handle;
    ::CloseHandle(handle);
    return nullptr;
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

bool IsWrittenThrough(const std::string& target) {
    std::wstring wide;
    if (!WideFromUtf8(target, wide) || wide.empty()) return false;
    const HANDLE handle = OpenThrough(wide, true);
    if (handle == nullptr) return false;
    if (handle != INVALID_HANDLE_VALUE) ::CloseHandle(handle);
    return true;
}

AtomicFileWriter::AtomicFileWriter(std::string target, ExistingTarget existing)
    : target_(std::move(target)), existing_(existing) {}

AtomicFileWriter::~AtomicFileWriter() { Discard(); }

bool AtomicFileWriter::Open() {
    Discard();
    failure_ = WriteFailure::none;
    size_ = 0;
    std::wstring wideTarget;
    if (!WideFromUtf8(target_, wideTarget) || wideTarget.empty()) return Fail(WriteFailure::io);
    if (const HANDLE device = OpenThrough(wideTarget, false); device != nullptr) {
        auto temporary = std::make_unique<Temporary>();
        temporary->through = true;
        temporary->fd = ::_open_osfhandle(reinterpret_cast<intptr_t>(device), _O_BINARY);
        if (temporary->fd < 0) {
            ::CloseHandle(device);
            return Fail(WriteFailure::io);
        }
        temporary_ = std::move(temporary);
        return true;
    }
    // ".dcp" and six digits: no longer than any name the target's directory already holds.
    const std::wstring prefix = DirectoryPrefixOf(wideTarget) + L".dcp";
    const ULONGLONG seed = ::GetTickCount64() ^ (static_cast<ULONGLONG>(::GetCurrentProcessId()) << 20);
    for (unsigned attempt = 0; attempt < 100; ++attempt) {
        auto temporary = std::make_unique<Temporary>();
        temporary->name = prefix + std::to_wstring(100000 + (seed + attempt * 7919u) % 900000u);
        temporary->cleanup = InterruptCleanup::Entry(Utf8FromWide(temporary->name));
        // CREATE_NEW never takes an existing file.
        const HANDLE handle = ::CreateFileW(temporary->name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                            CREATE_NEW, FILE_ATTRIBUTE_HIDDEN, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            if (::GetLastError() == ERROR_FILE_EXISTS) continue;
            LV_TRACE(kModule, "Cannot create a temporary file beside %s (error %lu)", target_.c_str(),
                     static_cast<unsigned long>(::GetLastError()));
            return Fail(FailureOfLastError());
        }
        temporary->fd = ::_open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY);
        if (temporary->fd < 0) {
            ::CloseHandle(handle);
            ::DeleteFileW(temporary->name.c_str());
            return Fail(WriteFailure::io);
        }
        temporary_ = std::move(temporary);
        return true;
    }
    return Fail(WriteFailure::io);
}

bool AtomicFileWriter::Write(const void* data, std::size_t size) {
    if (!temporary_) return Fail(WriteFailure::io);
    if (!WriteAll(HandleOf(temporary_->fd), static_cast<const char*>(data), size)) {
        LV_TRACE(kModule, "Cannot write the output for %s (error %lu)", target_.c_str(),
                 static_cast<unsigned long>(::GetLastError()));
        return Fail(FailureOfLastError());
    }
    size_ += size;
    return true;
}

bool AtomicFileWriter::CopyFrom(int source_fd, std::uint64_t offset, std::uint64_t length, Sha256* digest) {
    if (!temporary_) return Fail(WriteFailure::io);
    const HANDLE source = HandleOf(source_fd);
    if (source == INVALID_HANDLE_VALUE) return Fail(WriteFailure::io);
    // With a digest, each piece is hashed on a second thread while it is written and the next read.
    std::optional<HashingPipeline> pipeline;
    std::vector<char> plain;
    if (digest != nullptr) {
        pipeline.emplace(*digest, HashingPipeline::PieceFor(length));
    } else {
        plain.resize(static_cast<std::size_t>(std::min(kCopyChunk, length)));
    }
    const std::size_t piece = pipeline ? pipeline->capacity() : plain.size();
    for (std::uint64_t done = 0; done < length;) {
        char* buffer = pipeline ? pipeline->Buffer() : plain.data();
        OVERLAPPED at{};
        const std::uint64_t position = offset + done;
        at.Offset = static_cast<DWORD>(position & 0xFFFFFFFFu);
        at.OffsetHigh = static_cast<DWORD>(position >> 32);
        const DWORD want = static_cast<DWORD>(std::min<std::uint64_t>(piece, length - done));
        DWORD got = 0;
        if (!::ReadFile(source, buffer, want, &got, &at) || got == 0) {
            LV_TRACE(kModule, "The source ends or cannot be read at offset %llu (error %lu)",
                     static_cast<unsigned long long>(position), static_cast<unsigned long>(::GetLastError()));
            return Fail(WriteFailure::source);
        }
        if (pipeline) pipeline->Submit(got);  // the bytes about to be written, as they go to the file
        if (!WriteAll(HandleOf(temporary_->fd), buffer, got)) {
            LV_TRACE(kModule, "Cannot write the output for %s (error %lu)", target_.c_str(),
                     static_cast<unsigned long>(::GetLastError()));
            return Fail(FailureOfLastError());
        }
        done += got;
        ReportProgress(got);
    }
    if (pipeline) pipeline->Finish();
    size_ += length;
    return true;
}

bool AtomicFileWriter::WriteAt(std::uint64_t offset, const void* data, std::size_t size) {
    if (!temporary_ || offset > size_ || size > size_ - offset) return Fail(WriteFailure::io);
    const HANDLE handle = HandleOf(temporary_->fd);
    const char* bytes = static_cast<const char*>(data);
    for (std::size_t done = 0; done < size;) {
        // The file pointer moves too: nothing is appended after this.
        OVERLAPPED at{};
        const std::uint64_t position = offset + done;
        at.Offset = static_cast<DWORD>(position & 0xFFFFFFFFu);
        at.OffsetHigh = static_cast<DWORD>(position >> 32);
        const DWORD want = static_cast<DWORD>(std::min<std::uint64_t>(size - done, kCopyChunk));
        DWORD put = 0;
        if (!::WriteFile(handle, bytes + done, want, &put, &at) || put == 0) {
            LV_TRACE(kModule, "Cannot write the output for %s (error %lu)", target_.c_str(),
                     static_cast<unsigned long>(::GetLastError()));
            return Fail(FailureOfLastError());
        }
        done += put;
    }
    return true;
}

bool AtomicFileWriter::Commit() {
    if (!temporary_) return Fail(WriteFailure::io);
    if (temporary_->through) {
        const bool closed = ::_close(std::exchange(temporary_->fd, -1)) == 0;
        Discard();
        return closed || Fail(WriteFailure::io);
    }
    const bool flushed = ::FlushFileBuffers(HandleOf(temporary_->fd)) != 0;
    const bool closed = ::_close(std::exchange(temporary_->fd, -1)) == 0;
    std::wstring wideTarget;
    if (!flushed || !closed || !WideFromUtf8(target_, wideTarget)) {
        Discard();
        return Fail(WriteFailure::io);
    }
    const std::wstring from = FullPathOf(temporary_->name);
    const std::wstring to = FullPathOf(wideTarget);
    const bool placed = existing_ == ExistingTarget::refuse ? ::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH) != 0
                                                            : ReplaceTarget(from, to);
    const DWORD error = ::GetLastError();
    if (placed) temporary_->name.clear();
    Discard();
    if (placed) return true;
    LV_TRACE(kModule, "Cannot put the new file in place of %s (error %lu)", target_.c_str(), static_cast<unsigned long>(error));
    const bool exists = error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS;
    return Fail(exists && existing_ == ExistingTarget::refuse ? WriteFailure::target_exists : WriteFailure::io);
}

void AtomicFileWriter::Discard() noexcept {
    if (!temporary_) return;
    if (temporary_->fd >= 0) ::_close(temporary_->fd);
    if (!temporary_->name.empty()) ::DeleteFileW(temporary_->name.c_str());
    temporary_.reset();  // disarms the interruption cleanup
}

}  // namespace Portability
