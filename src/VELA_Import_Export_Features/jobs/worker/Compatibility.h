// Spelled types of the suite that only the Windows compilers know.
#pragma once

#include <QtGlobal>

#if !defined(Q_OS_WIN)
typedef qint64 __int64;
#endif
