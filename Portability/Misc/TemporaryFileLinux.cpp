// The Linux side of TemporaryFile: an O_TMPFILE file of $TMPDIR (or /tmp), reached again through
// /proc/self/fd; where the file system lacks O_TMPFILE, a named file unnamed at once.

#include "Portability/Misc/TemporaryFile.h"

#include "Portability/Misc/DebugTrace.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace Portability {

std::string TemporaryDirectory() {
    const char* variable = std::getenv("TMPDIR");
    return variable != nullptr && *variable != '\0' ? variable : "/tmp";
}

int CreateTemporaryFile(std::string& reopenPath) {
    const std::string directory = TemporaryDirectory();
    int fd = ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (fd < 0) {
        std::string name = directory + "/.dcpXXXXXX";
        fd = ::mkostemp(name.data(), O_CLOEXEC);
        if (fd < 0) {
            const int error = errno;
            LV_TRACE("TemporaryFile", "Cannot create a temporary file in %s: %s", directory.c_str(), std::strerror(error));
            errno = error;
            return -1;
        }
        ::unlink(name.c_str());  // the descriptor keeps the file alive
    }
    reopenPath = "/proc/self/fd/" + std::to_string(fd);
    return fd;
}

}  // namespace Portability
