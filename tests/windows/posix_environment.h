// setenv and unsetenv for the shared host tests when they are built for Windows.
#pragma once
#ifdef _WIN32
#include <stdlib.h>

// _putenv_s also updates the process environment that GetEnvironmentVariableW reads.
inline int setenv(const char* name, const char* value, int overwrite) {
    if (!overwrite && getenv(name) != nullptr) return 0;
    return _putenv_s(name, value) == 0 ? 0 : -1;
}
inline int unsetenv(const char* name) { return _putenv_s(name, "") == 0 ? 0 : -1; }
#endif
