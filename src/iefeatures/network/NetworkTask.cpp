#include "iefeatures/network/NetworkTask.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/Controller.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/network/AddressOwner.h"
#include "iefeatures/network/UserName.h"

#include "camera_line/RecordTexts.h"
#include "gvcp/Gvcp.h"

#include <QtEndian>

#include <cstring>

namespace companion
{
namespace
{

const char* const kCurrentAddress = "GevCurrentIPAddress";
const char* const kUserId = "DeviceUserID"; // SFNC

bool isGigE(const ListedCamera& camera)
{
    return camera.device.stDeviceInfo.transportType == KX_TRANSPORT_GIGE;
}

QString switchWord(bool isOn)
{
    return isOn ? "on" : "off";
}

// One setting: how it is called, what it is and what it shall be, and the bytes that say so.
struct Setting
{
    QString name;
    QString from;
    QString to;
};

class NetworkWriter
{
public:
    NetworkWriter(KX_HANDLE handle, bool isGigE, FeatureWrites& result)
        : m_handle(handle), m_isGigE(isGigE), m_result(result)
    {}

    void run(const NetworkTask& task)
    {
        const bool isDone = (!task.userName || setName(*task.userName)) &&
                            (!task.persistent || setPersistent(*task.persistent)) &&
                            (!task.usesDhcp || setSwitch("DHCP", gvcp::kIpDhcp, *task.usesDhcp)) &&
                            (!task.usesLla || setSwitch("LLA", gvcp::kIpLinkLocal, *task.usesLla));
        CameraVerdict& verdict = m_result.check.verdict;
        if (verdict == CameraVerdict::NotStarted)
            verdict = isDone ? CameraVerdict::Applied : CameraVerdict::Incomplete;
    }

private:
    bool failed(KX_Status status)
    {
        m_result.check.verdict =
            KX_IS_LINE_FAILURE(status) ? CameraVerdict::Failed : CameraVerdict::Incomplete;
        m_result.check.error = KX_CC_StatusText(status);
        return false;
    }

    bool doubted(const QString& name, const QString& from, KX_Status status)
    {
        m_result.doubt(name, from);
        return failed(status);
    }

    // The camera has taken, or refused, what could not be read again.
    bool noteUnread(const Setting& setting, KX_Status status)
    {
        if (status == KX_OK && setting.from != setting.to)
            m_result.changes.push_back({setting.name, false, 0, setting.from, setting.to});
        return false;
    }

    // `now`: what was read behind the write. True: the camera took it.
    bool note(const Setting& setting, const QString& now, KX_Status status)
    {
        EntryCheck entry;
        entry.feature = setting.name;
        entry.fileValue = setting.to;
        entry.cameraValue = now;
        if (status != KX_OK)
            entry.judge(EntryVerdict::NotApplied, KX_CC_StatusText(status));
        else if (now != setting.to)
            entry.judge(EntryVerdict::NotApplied, "the camera took another value");
        else
            entry.judge(setting.from == setting.to ? EntryVerdict::Unchanged : EntryVerdict::Applied);
        if (now != setting.from)
            m_result.changes.push_back({setting.name, false, 0, setting.from, now});
        m_result.check.entries.push_back(entry);
        return !isAmiss(entry);
    }

    std::optional<uint32_t> word(uint32_t address)
    {
        uint32_t bytes = 0;
        const KX_Status status = KX_CC_ReadMemory(m_handle, &bytes, address, sizeof bytes);
        if (status == KX_OK)
            return qFromBigEndian(bytes);
        failed(status);
        return {};
    }

    template <typename Text>
    bool setWord(const QString& name, uint32_t address, uint32_t before, uint32_t wanted, const Text& text)
    {
        KX_Status status = KX_OK;
        const uint32_t bytes = qToBigEndian(wanted);
        if (before != wanted)
            status = KX_CC_WriteMemory(m_handle, &bytes, address, sizeof bytes);
        if (KX_IS_LINE_FAILURE(status))
            return doubted(name, text(before), status);
        const auto now = word(address);
        const Setting setting{name, text(before), text(wanted)};
        return now ? note(setting, text(*now), status) : noteUnread(setting, status);
    }

    bool setQuad(const QString& name, uint32_t address, uint32_t wanted)
    {
        const auto before = word(address);
        return before && setWord(name, address, *before, wanted, camera_line::dottedQuad);
    }

    bool setSwitch(const QString& which, uint32_t bit, bool isOn)
    {
        const auto before = word(gvcp::RegIpCurrent);
        const auto text = [bit](uint32_t value) { return switchWord((value & bit) != 0); };
        return before && setWord("GevCurrentIPConfiguration" + which, gvcp::RegIpCurrent, *before,
                                 isOn ? *before | bit : *before & ~bit, text);
    }

    bool setPersistent(const IpPlace& place)
    {
        return setQuad("GevPersistentSubnetMask", gvcp::RegPersistentMask, place.mask) &&
               setQuad("GevPersistentDefaultGateway", gvcp::RegPersistentGateway, place.gateway) &&
               setQuad("GevPersistentIPAddress", gvcp::RegPersistentAddress, place.address) &&
               setSwitch("PersistentIP", gvcp::kIpPersistent, true);
    }

    // GigE Vision cameras have the register, whatever their description says.
    bool setName(const QString& name)
    {
        QString before;
        if (!readName(before))
            return false;
        KX_Status status = KX_OK;
        if (before != name)
            status = writeName(name.toUtf8());
        if (KX_IS_LINE_FAILURE(status))
            return doubted(kUserId, before, status);
        QString now;
        const Setting setting{kUserId, before, name};
        return readName(now) ? note(setting, now, status) : noteUnread(setting, status);
    }

    KX_Status writeName(const QByteArray& name)
    {
        if (!m_isGigE)
            return KX_CC_SetStringValue(m_handle, kUserId, name.constData());
        char field[kGigENameBytes] = {};
        std::memcpy(field, name.constData(), size_t(qMin(name.size(), kGigENameBytes)));
        return KX_CC_WriteMemory(m_handle, field, gvcp::RegUserName, sizeof field);
    }

    bool readName(QString& name)
    {
        KX_StringValue value{};
        char field[kGigENameBytes + 1] = {};
        const KX_Status status = m_isGigE
                                     ? KX_CC_ReadMemory(m_handle, field, gvcp::RegUserName, kGigENameBytes)
                                     : KX_CC_GetStringValue(m_handle, kUserId, &value);
        if (status != KX_OK)
            return failed(status);
        name = QString::fromUtf8(m_isGigE ? field : value.current);
        return true;
    }

    const KX_HANDLE m_handle;
    const bool m_isGigE;
    FeatureWrites& m_result;
};

QString ownerObjection(const ListedCamera& camera, const std::optional<IpPlace>& place)
{
    const QString owner = place ? addressOwner(camera, place->address) : QString();
    return owner.isEmpty() ? QString()
                           : "the address " + camera_line::dottedQuad(place->address) + ' ' + owner + '.';
}

} // namespace

QStringList networkWords(const NetworkTask& task)
{
    QStringList words;
    if (task.forced)
        words += "the address " + ipPlaceText(*task.forced) + " until it is switched off";
    if (task.persistent)
        words += "the address " + ipPlaceText(*task.persistent) + " whenever it is switched on";
    if (task.usesDhcp)
        words += "DHCP " + switchWord(*task.usesDhcp);
    if (task.usesLla)
        words += "link-local addresses " + switchWord(*task.usesLla);
    if (task.userName)
        words += "the name \"" + printable(*task.userName) + '"';
    return words;
}

QStringList networkObjections(const ListedCamera& camera, const NetworkTask& task)
{
    QStringList found;
    const bool hasAddress = isGigE(camera);
    if (!hasAddress && (task.forced || task.persistent || task.usesDhcp || task.usesLla))
        found += "it has no IP address: its transport is " + camera.transport + '.';
    const int room = userNameRoom(camera);
    if (task.userName && room == 0)
        found += "its transport has no names.";
    else if (const QString text = userNameObjection(task.userName.value_or(QString()), room);
             !text.isEmpty() && task.userName)
        found += "the name \"" + printable(*task.userName) + "\" " + text;
    if (task.isKept() && !task.forced && camera.device.nStatus == KX_AVAILABILITY_UNREACHABLE)
        found += "it is unreachable" + (camera.reason.isEmpty() ? QString() : ", " + camera.reason) +
                 "; an address of a network that leads there has to be forced first.";
    if (!found.isEmpty())
        return found;
    const bool isOne = task.forced && task.persistent && task.forced->address == task.persistent->address;
    for (const QString& text :
         {ownerObjection(camera, task.forced), isOne ? QString() : ownerObjection(camera, task.persistent)})
        if (!text.isEmpty())
            found += text;
    return found;
}

FeatureWrites forceAddress(const ListedCamera& camera, const IpPlace& place)
{
    const KX_DeviceInfo& device = camera.device.stDeviceInfo;
    const KX_Status status = KX_CC_ForceIp(&device, place.address, place.mask, place.gateway);
    FeatureWrites result;
    result.check.camera = camera;
    EntryCheck entry;
    entry.feature = kCurrentAddress;
    entry.fileValue = entry.cameraValue = camera_line::dottedQuad(place.address);
    if (status == KX_OK) {
        entry.judge(EntryVerdict::Applied);
        result.check.entries = {entry};
        result.check.verdict = CameraVerdict::Applied;
        result.changes = {{kCurrentAddress, false, 0, camera.address, entry.cameraValue}};
        return result;
    }
    const QString why =
        status == KX_E_CONTROL_REFUSED ? openingFailure(device, status) : QString(KX_CC_StatusText(status));
    result.check.verdict = CameraVerdict::Failed;
    result.check.error = "it did not take the address " + ipPlaceText(place) + ": " + why;
    if (status == KX_E_NO_ANSWER)
        result.doubt(kCurrentAddress, camera.address);
    return result;
}

FeatureWrites writeNetwork(const ListedCamera& camera, const NetworkTask& task)
{
    FeatureWrites result;
    result.check.camera = camera;
    const CameraConnection connection(camera.device.stDeviceInfo, KX_ACCESS_EXCLUSIVE);
    if (connection.status() != KX_OK) {
        result.check.verdict = CameraVerdict::Failed;
        result.check.error = "the camera could not be opened: " +
                             openingFailure(camera.device.stDeviceInfo, connection.status());
        return result;
    }
    NetworkWriter(connection.handle(), isGigE(camera), result).run(task);
    return result;
}

} // namespace companion
