#pragma once

#include <string>

namespace LibCommon {

// The program name shown in usage texts: the last component of argv[0], with "/" and "\" both
// taken as separators ("C:\tools\dicapsule.exe" gives "dicapsule.exe"). A null argv[0] gives "".
std::string ProgramName(const char* argv0);

}  // namespace LibCommon
