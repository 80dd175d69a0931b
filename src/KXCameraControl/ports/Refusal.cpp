#include "KXCameraControl/ports/Refusal.h"

#include <cstdio>

namespace kx
{

namespace
{

enum Code : uint16_t
{
    Success = 0x0000,
    NotImplemented = 0x8001,
    InvalidParameter = 0x8002,
    InvalidAddress = 0x8003,
    WriteProtect = 0x8004,
    BadAlignment = 0x8005,
    AccessDenied = 0x8006,
    Busy = 0x8007
};

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
