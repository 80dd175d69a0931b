#include "iefeatures/line/Inventory.h"

#include "iefeatures/console/Text.h"
#include "iefeatures/network/UserName.h"

#include "gvcp/Gvcp.h"
#include "jobs/file/RegularFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace companion
{
namespace
{

constexpr qint64 kLargestInventory = 16 * 1024 * 1024; // bytes; thousands of cameras take less

QString anyText(QString&)
{
    return {};
}

QString objectionToMac(QString& value)
{
    static const QRegularExpression form("^[0-9A-F]{2}([:-][0-9A-F]{2}){5}$");
    QString mac = value.toUpper();
    if (!form.match(mac).hasMatch())
        return "is no MAC address.";
    value = mac.replace('-', ':');
    return {};
}

QString objectionToAddress(QString& value)
{
    static const QRegularExpression form("^\\d{1,3}(\\.\\d{1,3}){3}$");
    const auto address = gvcp::parseAddress(value.toStdString());
    return form.match(value).hasMatch() && address ? QString() : "is no IPv4 address.";
}

QString objectionToMask(QString& value)
{
    const QString objection = objectionToAddress(value);
    if (!objection.isEmpty())
        return objection;
    const uint32_t hosts = ~gvcp::parseAddress(value.toStdString()).value_or(0);
    return (hosts & (hosts + 1)) == 0 ? QString() : "is no network mask.";
}

QString objectionToHash(QString& value)
{
    static const QRegularExpression form("^[0-9a-f]{64}$");
    value = value.toLower();
    return form.match(value).hasMatch() ? QString() : "is no SHA-256.";
}

} // namespace

const std::vector<InventoryKey>& inventoryKeys()
{
    using Camera = InventoryCamera;
    static const std::vector<InventoryKey> keys = {
        {"model", InventoryKind::Text, &Camera::model, anyText},
        {"serial", InventoryKind::Text, &Camera::serial, anyText},
        {"user_name", InventoryKind::Name, &Camera::userName, anyText},
        {"mac", InventoryKind::Text, &Camera::mac, objectionToMac},
        {"guid", InventoryKind::Text, &Camera::guid, anyText},
        {"interface", InventoryKind::Text, &Camera::interfaceName, anyText},
        {"address", InventoryKind::Text, &Camera::address, objectionToAddress},
        {"mask", InventoryKind::Text, &Camera::mask, objectionToMask},
        {"gateway", InventoryKind::Text, &Camera::gateway, objectionToAddress},
        {"dhcp", InventoryKind::Switch, &Camera::usesDhcp, anyText},
        {"lla", InventoryKind::Switch, &Camera::usesLla, anyText},
        {"firmware", InventoryKind::Text, &Camera::firmware, anyText},
        {"features", InventoryKind::Text, &Camera::featuresFile, anyText},
        {"features_sha256", InventoryKind::Text, &Camera::featuresHash, objectionToHash},
        {"bag", InventoryKind::Text, &Camera::bagFile, anyText},
        {"bag_sha256", InventoryKind::Text, &Camera::bagHash, objectionToHash},
        {"user_set", InventoryKind::Text, &Camera::userSet, anyText},
        {"ignored", InventoryKind::List, &Camera::ignored, anyText},
        {"retired", InventoryKind::List, &Camera::retired, objectionToMac},
        {"comment", InventoryKind::Text, &Camera::comment, anyText},
    };
    return keys;
}

bool sayTheSame(const InventoryCamera& left, const InventoryCamera& right)
{
    const std::vector<InventoryKey>& keys = inventoryKeys();
    return left.name == right.name && std::all_of(keys.begin(), keys.end(), [&](const InventoryKey& key) {
               return std::visit([&](auto member) { return left.*member == right.*member; }, key.member);
           });
}

QString inventoryNameObjection(const InventoryCamera& camera)
{
    const int room = !camera.guid.isEmpty() ? kUsbNameBytes : kGigENameBytes;
    const bool isOnTransport = !camera.guid.isEmpty() || !camera.mac.isEmpty() || !camera.address.isEmpty();
    return isOnTransport ? userNameObjection(camera.nameInCamera(), room) : QString();
}

QString InventoryCamera::nameInCamera() const
{
    return userName.value_or(name);
}

QString Inventory::filesFolder() const
{
    return folder.isEmpty() ? QFileInfo(path).completeBaseName() + "-files" : folder;
}

QString Inventory::resolved(const QString& relative) const
{
    return QDir::cleanPath(QFileInfo(path).absoluteDir().absoluteFilePath(relative));
}

const InventoryCamera* Inventory::find(const QString& wanted) const
{
    const auto found = std::find_if(cameras.begin(), cameras.end(),
                                    [&](const InventoryCamera& camera) { return camera.name == wanted; });
    return found == cameras.end() ? nullptr : &*found;
}

QStringList Inventory::ignoredOf(const InventoryCamera& camera) const
{
    return ignored.value(camera.model) + camera.ignored;
}

QString faultText(const QString& path, const InventoryFault& fault)
{
    const QString place = fault.line ? QString(":%1:%2").arg(fault.line).arg(fault.column) : QString();
    return printable(path + place + ": " + fault.text);
}

InventoryReading readInventory(const QString& path)
{
    QFile file(path);
    const auto failed = [](const QString& text) { return InventoryReading{{}, {{0, 0, text}}}; };
    const QString cause = ie::openRegular(file, QIODevice::ReadOnly);
    if (!cause.isEmpty())
        return failed("it cannot be read: " + cause + '.');
    const QByteArray text = file.read(kLargestInventory + 1);
    if (text.size() > kLargestInventory)
        return failed("it is too large for an inventory.");
    return parseInventory(text, path);
}

} // namespace companion
