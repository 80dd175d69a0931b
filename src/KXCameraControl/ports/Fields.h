// The fixed text fields of the public records: zero-terminated, cut to what they hold.
#pragma once

#include "KXCameraControl/ports/Stamp.h"

#include <KXCameraControl/KXCameraControl.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

namespace kx
{

template <size_t Size>
void putText(uint8_t (&field)[Size], const std::string& text)
{
    std::memset(field, 0, Size);
    std::memcpy(field, text.data(), std::min(text.size(), Size - 1));
}

// Up to the zero, or the field's end where there is none.
template <size_t Size>
std::string textField(const uint8_t (&field)[Size])
{
    return std::string(field, std::find(field, field + Size, uint8_t(0)));
}

// For texts that tell one thing from another: one that does not fit ends in a number made of all of it.
template <size_t Size>
void putIdentifier(uint8_t (&field)[Size], const std::string& text)
{
    if (text.size() < Size)
        return putText(field, text);
    Stamp stamp;
    stamp.add(text.data(), text.size());
    char number[16];
    std::snprintf(number, sizeof number, "~%08X", static_cast<unsigned>(stamp.value()));
    putText(field, text.substr(0, Size - 1 - std::strlen(number)) + number);
}

// Zeroes but for what every record has.
inline KX_DeviceEntry newEntry(uint32_t transportType)
{
    KX_DeviceEntry entry;
    std::memset(&entry, 0, sizeof entry); // all members of the union, not the first alone
    entry.info.transportType = transportType;
    entry.info.layout = KX_DEVICE_INFO_LAYOUT;
    return entry;
}

} // namespace kx
