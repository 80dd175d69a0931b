// Filling a consumer's buffers (GenICam GenTL, "Software Interface": type, buffer, size).
#pragma once

#include "camera_emulator/producer/State.h"

namespace producer
{

// Without a buffer, tells the size.
Error give(const Fault& fault, int32_t* type, void* buffer, size_t* size, int32_t which, const void* data,
           size_t length);
Error giveText(const Fault& fault, int32_t* type, void* buffer, size_t* size, const std::string& text);

template <class Number>
Error giveNumber(const Fault& fault, int32_t* type, void* buffer, size_t* size, int32_t which, Number number)
{
    return give(fault, type, buffer, size, which, &number, sizeof number);
}

Error giveCount(const Fault& fault, uint32_t* count, size_t number);

Error systemInfo(const Fault& fault, int32_t what, int32_t* type, void* buffer, size_t* size);
Error interfaceInfo(const Fault& fault, const Interface& interface, int32_t what, int32_t* type, void* buffer,
                    size_t* size);
Error deviceInfo(const Fault& fault, const Device& device, int32_t what, int32_t* type, void* buffer,
                 size_t* size);

} // namespace producer
