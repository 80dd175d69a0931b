// What tests take from POSIX systems, for Windows; included before everything else there.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <direct.h>
#include <process.h>

inline int setenv(const char* name, const char* value, int)
{
    return _putenv_s(name, value);
}

inline int unsetenv(const char* name)
{
    return _putenv_s(name, "");
}

inline char* mkdtemp(char* pattern)
{
    static unsigned used = 0;
    const unsigned number = static_cast<unsigned>(_getpid()) % 1000 * 1000 + used++ % 1000;
    std::snprintf(pattern + std::strlen(pattern) - 6, 7, "%06u", number);
    return _mkdir(pattern) == 0 ? pattern : nullptr;
}
