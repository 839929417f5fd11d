#include "Portability/Misc/FileStamp.h"

#include <sys/stat.h>

namespace Portability {

bool ReadFileStamp(int descriptor, FileStamp& stamp) {
    struct stat info {};
    if (::fstat(descriptor, &info) != 0) return false;
    constexpr std::int64_t kNanoseconds = 1000000000;
    stamp.size = static_cast<std::uint64_t>(info.st_size);
    stamp.modified = static_cast<std::int64_t>(info.st_mtim.tv_sec) * kNanoseconds + info.st_mtim.tv_nsec;
    stamp.changed = static_cast<std::int64_t>(info.st_ctim.tv_sec) * kNanoseconds + info.st_ctim.tv_nsec;
    return true;
}

}  // namespace Portability
