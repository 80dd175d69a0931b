#include "iefeatures/network/IpPlace.h"

#include "iefeatures/console/Text.h"

#include "camera_line/RecordTexts.h"
#include "gvcp/Gvcp.h"

#include <QRegularExpression>
#include <QStringList>
#include <QtAlgorithms>

namespace companion
{
namespace
{

std::optional<uint32_t> quad(const QString& text)
{
    static const QRegularExpression form("^\\d{1,3}(\\.\\d{1,3}){3}$");
    return form.match(text).hasMatch() ? gvcp::parseAddress(text.toStdString()) : std::nullopt;
}

std::optional<uint32_t> maskOf(const QString& text)
{
    bool isNumber = false;
    const int bits = text.toInt(&isNumber);
    if (isNumber)
        return bits >= 1 && bits <= 32 ? std::make_optional(0xFFFFFFFFu << (32 - bits)) : std::nullopt;
    const auto mask = quad(text);
    const uint32_t hosts = ~mask.value_or(0);
    return mask && *mask != 0 && (hosts & (hosts + 1)) == 0 ? mask : std::nullopt;
}

// Neither this network, nor everybody, nor a group, nor the network itself (RFC 1122).
bool isHost(uint32_t address, uint32_t mask)
{
    const uint32_t hosts = ~mask;
    const bool hasRoom = hosts > 1;
    const uint32_t host = address & hosts;
    return address >> 24 > 0 && address >> 24 < 224 && (!hasRoom || (host != 0 && host != hosts));
}

} // namespace

std::optional<IpPlace> parseIpPlace(const QString& text, QString& problem)
{
    const QStringList parts = text.split('/');
    const auto failed = [&](const QString& what) {
        problem = printable(text) + ' ' + what;
        return std::nullopt;
    };
    if (parts.size() < 2 || parts.size() > 3)
        return failed("is no ADDRESS/MASK or ADDRESS/MASK/GATEWAY.");
    const auto address = quad(parts[0]);
    const auto mask = maskOf(parts[1]);
    const auto gateway = parts.size() == 3 ? quad(parts[2]) : std::make_optional(0u);
    if (!address || !mask || !gateway)
        return failed("has no IPv4 address, mask or gateway where one should be.");
    if (!isHost(*address, *mask))
        return failed("is an address that no camera can have.");
    if (*gateway != 0 && (((*gateway ^ *address) & *mask) != 0 || !isHost(*gateway, *mask)))
        return failed("has a gateway that is not in its network.");
    return IpPlace{*address, *mask, *gateway};
}

QString ipPlaceText(const IpPlace& place)
{
    const QString text =
        QString("%1/%2").arg(camera_line::dottedQuad(place.address)).arg(qPopulationCount(place.mask));
    return place.gateway == 0 ? text : text + " with the gateway " + camera_line::dottedQuad(place.gateway);
}

} // namespace companion
