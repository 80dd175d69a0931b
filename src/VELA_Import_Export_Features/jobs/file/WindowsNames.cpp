#include "jobs/file/WindowsNames.h"

#include <QRegularExpression>

namespace ie
{

bool isWindowsFileName(const QString& name)
{
    static const QRegularExpression sign("[\\x00-\\x1f<>:\"/\\\\|?*]|[. ]\\z");
    // Digits are these and the three superscripts of Latin-1, which are devices' too.
    static const QRegularExpression device(
        "\\A(CON|PRN|AUX|NUL|CONIN\\$|CONOUT\\$|(COM|LPT)[0-9\\x{B9}\\x{B2}\\x{B3}]) *(\\.|\\z)",
        QRegularExpression::CaseInsensitiveOption);
    return !name.isEmpty() && !name.contains(sign) && !name.contains(device);
}

} // namespace ie
