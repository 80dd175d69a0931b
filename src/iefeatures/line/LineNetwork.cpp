#include "iefeatures/line/LineNetwork.h"

#include "iefeatures/network/UserName.h"

#include "gvcp/Gvcp.h"

#include <algorithm>

namespace companion
{
namespace
{

bool isOfPlace(const QString& what)
{
    return what == "address" || what == "mask" || what == "gateway";
}

bool isSetBy(const NetworkTask& task, const QString& what)
{
    return (isOfPlace(what) && task.persistent) || (what == "name" && task.userName) ||
           (what == "dhcp" && task.usesDhcp) || (what == "lla" && task.usesLla);
}

uint32_t quad(const QString& text)
{
    return gvcp::parseAddress(text.toStdString()).value_or(0);
}

} // namespace

std::optional<IpPlace> placeOf(const InventoryCamera& wanted, const ListedCamera& camera)
{
    if (camera.device.stDeviceInfo.transportType != KX_TRANSPORT_GIGE || wanted.address.isEmpty() ||
        wanted.usesDhcp == true)
        return {};
    const uint32_t mask = wanted.mask.isEmpty() ? camera.interfaceMask : quad(wanted.mask);
    if (mask == 0)
        return {};
    return IpPlace{quad(wanted.address), mask, quad(wanted.gateway)};
}

NetworkTask networkTaskOf(const InventoryCamera& wanted, const ListedCamera& camera)
{
    NetworkTask task;
    task.persistent = placeOf(wanted, camera);
    if (camera.device.stDeviceInfo.transportType == KX_TRANSPORT_GIGE) {
        task.usesDhcp = wanted.usesDhcp;
        task.usesLla = wanted.usesLla;
    }
    if (userNameRoom(camera) > 0)
        task.userName = wanted.nameInCamera();
    return task;
}

NetworkTask networkTaskOf(const LineMatch& match)
{
    const NetworkTask all = networkTaskOf(*match.wanted, *match.camera);
    NetworkTask task;
    for (const LineDifference& difference : match.differences) {
        if (difference.what == "name")
            task.userName = all.userName;
        else if (difference.what == "dhcp")
            task.usesDhcp = all.usesDhcp;
        else if (difference.what == "lla")
            task.usesLla = all.usesLla;
        else if (isOfPlace(difference.what))
            task.forced = task.persistent = all.persistent;
    }
    return task;
}

std::vector<LineDifference> differencesBehind(const NetworkTask& task, const LineMatch& match)
{
    std::vector<LineDifference> left;
    std::copy_if(match.differences.begin(), match.differences.end(), std::back_inserter(left),
                 [&](const LineDifference& difference) { return !isSetBy(task, difference.what); });
    return left;
}

} // namespace companion
