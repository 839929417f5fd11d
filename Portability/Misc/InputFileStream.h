#pragma once
// InputFile's copy of a stream into a scratch file, shared by the platform sides (private to
// Portability/Misc).

#include "Portability/Misc/InputFile.h"
#include "Portability/Misc/Progress.h"

#include <cerrno>
#include <vector>

namespace Portability {

// Whether a failed write's errno says the file system is full (or the user's quota reached).
inline bool IsNoSpace(int error) {
#if defined(EDQUOT)
    if (error == EDQUOT) return true;
#endif
    return error == ENOSPC;
}

template <typename Read>
InputFile::Status InputFile::CopyStream(Read read, std::uint64_t max_size) {
    std::shared_ptr<OpenFile> copy = OpenFile::OpenTemporary();
    if (!copy) return Status::unreadable;
    std::vector<char> buffer(1 << 16);
    for (;;) {
        const long long got = read(buffer.data(), buffer.size());
        if (got < 0) return Status::unreadable;
        if (!copy->Append(buffer.data(), static_cast<std::size_t>(got)))
            return IsNoSpace(errno) ? Status::no_temporary_space : Status::unreadable;
        size_ = copy->Size();
        if (size_ > max_size) return Status::too_large;
        ReportProgress(static_cast<std::uint64_t>(got));
        if (got == 0) break;
    }
    file_ = std::move(copy);
    return Status::opened;
}

}  // namespace Portability
