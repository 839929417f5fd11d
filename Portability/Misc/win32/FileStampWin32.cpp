#include "Portability/Misc/FileStamp.h"

#include <io.h>
#include <windows.h>

namespace Portability {

bool ReadFileStamp(int descriptor, FileStamp& stamp) {
    const HANDLE handle = reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
    FILE_BASIC_INFO basic{};
    LARGE_INTEGER size{};
    if (handle == INVALID_HANDLE_VALUE || !::GetFileSizeEx(handle, &size) ||
        !::GetFileInformationByHandleEx(handle, FileBasicInfo, &basic, sizeof basic)) {
        return false;
    }
    stamp.size = static_cast<std::uint64_t>(size.QuadPart);
    stamp.modified = basic.LastWriteTime.QuadPart;
    stamp.changed = basic.ChangeTime.QuadPart;
    return true;
}

}  // namespace Portability
