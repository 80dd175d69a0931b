#include "iefeatures/cameras/LastError.h"

#include <KXCameraControl/KXCameraControl.h>

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

} // namespace companion
