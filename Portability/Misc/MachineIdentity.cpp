#include "Portability/Misc/MachineIdentity.h"

#include "Portability/Misc/DebugTrace.h"

#ifdef _WIN32
#include <process.h>
#include <windows.h>
#else
#include <unistd.h>

#include <fstream>
#include <string>
#endif

namespace Portability {

#ifdef _WIN32

std::uint32_t ReadMachineNumber() {
    char directory[MAX_PATH] = {};
    const UINT length = GetSystemDirectoryA(directory, MAX_PATH);
    // Only a drive-letter path names a volume whose serial can be asked for.
    if (length <= 2 || length >= MAX_PATH || directory[1] != ':' || directory[2] != '\\') return 0;
    directory[3] = '\0';
    DWORD serial = 0;
    if (!GetVolumeInformationA(directory, nullptr, 0, &serial, nullptr, nullptr, nullptr, 0)) {
        LV_TRACE("UIDGenerator", "Cannot read the serial number of volume %s", directory);
        return 0;
    }
    return static_cast<std::uint32_t>(serial);
}

std::uint32_t CurrentProcessId() { return static_cast<std::uint32_t>(_getpid()); }

#else

namespace {

// FNV-1a over the id text: spreads the 128-bit id over 32 bits the same way on every run.
std::uint32_t HashText(const std::string& text) {
    std::uint32_t hash = 2166136261u;
    for (const char c : text) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 16777619u;
    }
    return hash;
}

}  // namespace

std::uint32_t ReadMachineNumber() {
    for (const char* path : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
        std::ifstream file(path);
        std::string id;
        if (!(file >> id) || id.empty()) continue;
        const std::uint32_t number = HashText(id);
        // 0 would mean "no machine number"; a real id must never look like that.
        return number != 0 ? number : 1u;
    }
    LV_TRACE("UIDGenerator", "%s", "No machine id to derive the machine number from");
    return 0;
}

std::uint32_t CurrentProcessId() { return static_cast<std::uint32_t>(getpid()); }

#endif

}  // namespace Portability
