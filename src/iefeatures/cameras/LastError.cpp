#include "iefeatures/cameras/LastError.h"

#include "iefeatures/console/Text.h"

#include <string>

namespace companion
{

QString lastErrorText()
{
    uint32_t length = 0;
    KX_CC_GetLastErrorText(nullptr, nullptr, 0, &length);
    std::string text(length + 1, '\0');
    KX_CC_GetLastErrorText(nullptr, text.data(), length + 1, &length);
    return QString::fromUtf8(text.c_str());
}

QString failureText(KX_Status status, const QString& error)
{
    const QString text = printable(error);
    if (status != KX_E_CONNECTION_LOST || text.isEmpty())
        return KX_CC_StatusText(status);
    return text[0].toUpper() + text.mid(1) + (text.endsWith('.') ? "" : ".");
}

} // namespace companion
