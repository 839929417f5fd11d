#pragma once
// Setting and clearing environment variables in tests, on POSIX and on the Windows C runtime.

#include <cstdlib>

namespace TestEnvironment {

inline void Set(const char* name, const char* value) {
#ifdef _WIN32
    ::_putenv_s(name, value);
#else
    ::setenv(name, value, 1);
#endif
}

inline void Unset(const char* name) {
#ifdef _WIN32
    ::_putenv_s(name, "");  // an empty value removes the variable
#else
    ::unsetenv(name);
#endif
}

}  // namespace TestEnvironment
