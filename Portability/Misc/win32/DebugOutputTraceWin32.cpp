#include "Portability/Misc/win32/DebugOutputTrace.h"

#include "Portability/Misc/win32/WideText.h"

#include <windows.h>

namespace Portability {

void InstallDebugOutputTraceSink() {
    SetTraceSink([](const TraceLine& line) {
        const std::string text = FormatTraceLine(line) + "\n";
        std::wstring wide;
        if (WideFromUtf8(text, wide)) {
            ::OutputDebugStringW(wide.c_str());
        } else {
            ::OutputDebugStringA(text.c_str());  // a text that is not UTF-8 still arrives, byte for byte
        }
    });
}

}  // namespace Portability
