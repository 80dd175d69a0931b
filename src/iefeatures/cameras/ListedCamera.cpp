#include "iefeatures/cameras/ListedCamera.h"

#include "iefeatures/console/Text.h"

#include "camera_line/Enumeration.h"
#include "camera_line/RecordTexts.h"

#include <QtAlgorithms>

#include <map>

namespace companion
{
namespace
{

QString statusWord(uint32_t availability)
{
    switch (availability) {
    case KX_AVAILABILITY_FREE:
        return "free";
    case KX_AVAILABILITY_IN_USE:
        return "in use";
    default:
        return "unreachable";
    }
}

// "not in the network of eth1 (192.168.7.1/24)"
QString reasonOf(const KX_DeviceEntry& entry)
{
    const KX_GigEDeviceInfo& gige = entry.info.special.gige;
    const bool isElsewhere = entry.info.transportType == KX_TRANSPORT_GIGE &&
                             ((gige.ipAddress ^ gige.interfaceAddress) & entry.interfaceMask) != 0;
    if (!isElsewhere || entry.availability != KX_AVAILABILITY_UNREACHABLE)
        return {};
    return QString("not in the network of %1 (%2/%3)")
        .arg(QString::fromUtf8(entry.interfaceName), camera_line::dottedQuad(gige.interfaceAddress))
        .arg(qPopulationCount(entry.interfaceMask));
}

QString guidOf(const KX_DeviceInfo& device)
{
    if (device.transportType != KX_TRANSPORT_USB3)
        return {};
    const uint8_t(&guid)[64] = device.special.usb3.guid;
    return QString::fromUtf8(camera_line::Field{guid, int(sizeof guid)}.content());
}

QString interfaceOf(const KX_DeviceEntry& entry)
{
    const QString name = QString::fromUtf8(entry.interfaceName);
    return name == "unicast" ? QString() : name;
}

void findTwins(std::vector<ListedCamera>& cameras)
{
    std::map<std::pair<QString, QString>, int> counts;
    for (const ListedCamera& camera : cameras)
        ++counts[{camera.model, camera.serial}];
    for (ListedCamera& camera : cameras)
        camera.hasTwin = counts[{camera.model, camera.serial}] > 1;
}

} // namespace

bool ListedCamera::isNameless() const
{
    return model.isEmpty() && serial.isEmpty() && userName.isEmpty();
}

QString ListedCamera::title() const
{
    if (isNameless())
        return printable("camera at " + address);
    const bool isToldApart = hasTwin && !address.isEmpty();
    return printable(model + ' ' + serial + (isToldApart ? " at " + address : QString()));
}

KX_Status enumerateCameras(std::vector<KX_DeviceEntry>& entries)
{
    return camera_line::enumerateCameras(KX_TRANSPORT_ALL, entries);
}

bool isSameCamera(const ListedCamera& one, const ListedCamera& other)
{
    if (!one.mac.isEmpty() || !other.mac.isEmpty())
        return one.mac == other.mac;
    return one.guid == other.guid && one.model == other.model && one.serial == other.serial;
}

std::optional<ListedCamera> findAgain(const Look& look, const ListedCamera& camera)
{
    for (const ListedCamera& other : look())
        if (isSameCamera(camera, other))
            return other;
    return {};
}

std::vector<ListedCamera> camerasFrom(const std::vector<KX_DeviceEntry>& entries)
{
    std::vector<ListedCamera> cameras;
    for (const KX_DeviceEntry& entry : entries) {
        ListedCamera& camera = cameras.emplace_back();
        camera.device.nDeviceID = static_cast<qint32>(cameras.size());
        camera.device.nStatus = static_cast<qint32>(entry.availability);
        camera.device.stDeviceInfo = entry.info;
        camera.transport = camera_line::layerWord(entry.info);
        camera.model = camera_line::modelField(entry.info).text();
        camera.serial = camera_line::serialField(entry.info).text();
        camera.userName = camera_line::userNameField(entry.info).text();
        camera.address = camera_line::addressText(entry.info);
        camera.mac = camera_line::macText(entry.info);
        camera.guid = guidOf(entry.info);
        camera.interfaceName = interfaceOf(entry);
        camera.interfaceMask = entry.interfaceMask;
        camera.status = statusWord(entry.availability);
        camera.reason = reasonOf(entry);
    }
    findTwins(cameras);
    return cameras;
}

} // namespace companion
