// What the system calls its failures, without a full stop.
#pragma once

#include <QString>

#include <string>
#include <system_error>

#if defined(_WIN32)
#include <winsock2.h>
#else
#include <cerrno>
#endif

namespace tests
{

inline std::string systemText(int error)
{
    const QString text = qt_error_string(error);
    return (text.endsWith('.') ? text.chopped(1) : text).toStdString();
}

#if defined(_WIN32)
inline std::string noSuchFile()
{
    return systemText(ERROR_FILE_NOT_FOUND);
}
inline std::string noSuchFolder()
{
    return systemText(ERROR_PATH_NOT_FOUND);
}
inline std::string notAFolder()
{
    return systemText(ERROR_PATH_NOT_FOUND);
}
inline std::string addressInUse()
{
    return std::system_category().message(WSAEADDRINUSE);
}
#else
inline std::string noSuchFile()
{
    return systemText(ENOENT);
}
inline std::string noSuchFolder()
{
    return systemText(ENOENT);
}
inline std::string notAFolder()
{
    return systemText(ENOTDIR);
}
inline std::string addressInUse()
{
    return systemText(EADDRINUSE);
}
#endif

} // namespace tests
