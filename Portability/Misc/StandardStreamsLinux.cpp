#include "Portability/Misc/StandardStreams.h"

#include <unistd.h>

#include <cerrno>

namespace Portability {

bool WriteStandardOutput(const void* data, std::size_t size) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (size > 0) {
        const ssize_t written = ::write(STDOUT_FILENO, bytes, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

bool IsStandardErrorTerminal() { return ::isatty(STDERR_FILENO) == 1; }

}  // namespace Portability
