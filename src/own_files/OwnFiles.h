// Whose the files are that a program makes. C++17 only.
#pragma once

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace own_files
{

// From now on others may not write to new files and folders of this process, though it was started by
// somebody who lets them (umask). Once, before there are threads.
inline void keepFromOthers()
{
#if !defined(_WIN32)
    umask(umask(S_IWOTH) | S_IWOTH);
#endif
}

} // namespace own_files
