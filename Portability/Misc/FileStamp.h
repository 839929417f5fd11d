#pragma once
// What tells whether an open file changed since a moment: its size and its modification and
// change times (the change time moves with any write, whatever the modification time is set to).

#include <cstdint>

namespace Portability {

struct FileStamp {
    std::uint64_t size = 0;
    std::int64_t modified = 0;  // in the platform's units
    std::int64_t changed = 0;
    bool operator==(const FileStamp&) const = default;
};

// The stamp of an open descriptor now; false when it cannot be had.
bool ReadFileStamp(int descriptor, FileStamp& stamp);

}  // namespace Portability
