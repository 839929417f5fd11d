#include "Portability/Misc/win32/DebugOutputTrace.h"

#include "Portability/Misc/win32/WideText.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace Portability {

std::string FormatTraceLine(const TraceLine& line) {
    std::string text;
    text.reserve(line.module.size() + line.file.size() + line.text.size() + 16);
    text.append(line.module).append(" ").append(line.file);
    text.append("(").append(std::to_string(line.line)).append("): ").append(line.text);
    return text;
}

void InstallDebugOutputTraceSink() {
    const bool toStandardError = std::getenv("DICAPSULE_TRACE") != nullptr;
    SetTraceSink([toStandardError](const TraceLine& line) {
        const std::string text = FormatTraceLine(line) + "\n";
        std::wstring wide;
        if (!WideFromUtf8(text, wide)) {
            // A trace text that is not UTF-8 still reaches the debugger, byte for byte.
            ::OutputDebugStringA(text.c_str());
        } else {
            ::OutputDebugStringW(wide.c_str());
        }
        if (toStandardError) {
            std::fwrite(text.data(), 1, text.size(), stderr);
            std::fflush(stderr);
        }
    });
}

}  // namespace Portability
