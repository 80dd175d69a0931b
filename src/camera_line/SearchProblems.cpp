#include "camera_line/SearchProblems.h"

#include <KXCameraControl/KXCameraControl.h>

#include <string>

namespace camera_line
{

QStringList searchProblems()
{
    std::string text;
    uint32_t length = 0;
    KX_Status status = KX_E_BUFFER_TOO_SMALL;
    while (status == KX_E_BUFFER_TOO_SMALL) {
        text.resize(length + 1);
        status = KX_CC_GetSearchProblems(text.data(), length + 1, &length);
    }
    return status == KX_OK && length > 0 ? QString::fromUtf8(text.c_str()).split('\n') : QStringList();
}

} // namespace camera_line
