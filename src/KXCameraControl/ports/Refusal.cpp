#include "KXCameraControl/ports/Refusal.h"

#include "gencp/Gencp.h"

#include <cstdio>

namespace kx
{

using namespace gencp;

namespace
{

const char* wordsOf(uint16_t code)
{
    switch (code) {
    case NotImplemented:
        return "not implemented";
    case InvalidParameter:
        return "invalid parameter";
    case InvalidAddress:
        return "invalid address";
    case WriteProtect:
        return "write-protected";
    case BadAlignment:
        return "bad alignment";
    case AccessDenied:
        return "access denied";
    case Busy:
        return "busy";
    default:
        return "a fault of the camera";
    }
}

} // namespace

KX_Status statusOfRefusal(uint16_t code)
{
    switch (code) {
    case Success:
        return KX_OK;
    case NotImplemented:
    case InvalidParameter:
    case InvalidAddress:
    case WriteProtect:
    case BadAlignment:
    case AccessDenied:
        return KX_E_GC_ACCESS;
    case Busy:
        return KX_E_BUSY;
    default:
        return KX_E_DEVICE;
    }
}

std::string refusalText(uint16_t code)
{
    char number[16];
    std::snprintf(number, sizeof number, " (0x%04X)", code);
    return wordsOf(code) + std::string(number);
}

} // namespace kx
