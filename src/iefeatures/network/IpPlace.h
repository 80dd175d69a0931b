// Where a camera is in a network, as people write it.
#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace companion
{

// In host byte order.
struct IpPlace
{
    uint32_t address = 0;
    uint32_t mask = 0;
    uint32_t gateway = 0; // 0: none
};

// Of "10.0.0.7/24", "10.0.0.7/255.255.255.0" or "10.0.0.7/24/10.0.0.1". Nothing where it is none, or no host
// can have it; `problem` is the sentence then.
std::optional<IpPlace> parseIpPlace(const QString& text, QString& problem);

// "10.0.0.7/24", "10.0.0.7/24 with the gateway 10.0.0.1"
QString ipPlaceText(const IpPlace& place);

} // namespace companion
