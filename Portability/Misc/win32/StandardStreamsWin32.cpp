#include "Portability/Misc/StandardStreams.h"

#include <windows.h>

#include <algorithm>

namespace Portability {

bool WriteStandardOutput(const void* data, std::size_t size) {
    // WriteFile on the handle writes bytes as they are, whatever mode the C runtime gave stdout.
    const HANDLE out = ::GetStdHandle(STD_OUTPUT_HANDLE);
    if (out == INVALID_HANDLE_VALUE || out == nullptr) return false;
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (size > 0) {
        const DWORD piece = static_cast<DWORD>(std::min<std::size_t>(size, 1u << 24));
        DWORD written = 0;
        if (!::WriteFile(out, bytes, piece, &written, nullptr) || written == 0) return false;
        bytes += written;
        size -= written;
    }
    return true;
}

bool IsStandardErrorTerminal() {
    // A console answers GetConsoleMode; a file, a pipe or the NUL device does not.
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

}  // namespace Portability
