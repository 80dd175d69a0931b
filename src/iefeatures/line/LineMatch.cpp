#include "iefeatures/line/LineMatch.h"

#include "camera_line/RecordTexts.h"

#include <QHash>

#include <algorithm>

namespace companion
{
namespace
{

QString modelAndSerial(const QString& model, const QString& serial)
{
    return model + QChar(0) + serial;
}

bool hasUserName(const ListedCamera& camera)
{
    return camera_line::userNameField(camera.device.stDeviceInfo).bytes != nullptr;
}

// Looks up each camera by what identifies it, so that long lines take no longer a camera than short ones.
class Matcher
{
public:
    Matcher(const Inventory& inventory, const std::vector<ListedCamera>& cameras)
        : m_inventory(inventory), m_cameras(cameras), m_isTaken(cameras.size(), false)
    {
        for (int i = 0; i < int(cameras.size()); ++i) {
            const ListedCamera& camera = cameras[size_t(i)];
            m_byMac.insert(camera.mac, i);
            m_byGuid.insert(camera.guid, i);
            m_byName.insert(camera.userName, i);
            m_bySerial.insert(modelAndSerial(camera.model, camera.serial), i);
        }
    }

    std::vector<LineMatch> run()
    {
        for (const InventoryCamera& wanted : m_inventory.cameras) {
            LineMatch& match = m_matches.emplace_back();
            match.wanted = &wanted;
            if (const int found = identified(wanted); found >= 0)
                take(match, found);
        }
        for (LineMatch& match : m_matches)
            if (match.camera)
                compare(match);
            else
                findInItsPlace(match);
        addOthers();
        return m_matches;
    }

private:
    int identified(const InventoryCamera& wanted) const
    {
        if (!wanted.mac.isEmpty() && m_byMac.contains(wanted.mac))
            return free(m_byMac.value(wanted.mac));
        if (!wanted.guid.isEmpty() && m_byGuid.contains(wanted.guid))
            return free(m_byGuid.value(wanted.guid));
        if (wanted.serial.isEmpty())
            return -1;
        const int found = onlyOne(wanted);
        if (found < 0)
            return -1;
        const ListedCamera& camera = m_cameras[size_t(found)];
        const bool isToldOtherwise =
            !(wanted.mac + wanted.guid).isEmpty() && !(camera.mac + camera.guid).isEmpty();
        return isToldOtherwise ? -1 : free(found);
    }

    // Of that model and serial number; of several, as cameras with two sensors are, the one of its name.
    int onlyOne(const InventoryCamera& wanted) const
    {
        const QList<int> alike = m_bySerial.values(modelAndSerial(wanted.model, wanted.serial));
        QList<int> named;
        for (const int camera : alike)
            if (m_cameras[size_t(camera)].userName == wanted.nameInCamera())
                named += camera;
        return alike.size() == 1 ? alike.first() : named.size() == 1 ? named.first() : -1;
    }

    int free(int camera) const { return m_isTaken[size_t(camera)] ? -1 : camera; }

    void take(LineMatch& match, int camera)
    {
        m_isTaken[size_t(camera)] = true;
        match.camera = m_cameras[size_t(camera)];
    }

    static void note(LineMatch& match, const char* what, const QString& expected, const QString& found)
    {
        if (expected != found)
            match.differences.push_back({what, expected, found});
    }

    // What the inventory does not say, and what the camera's transport has not, is no difference.
    static void compare(LineMatch& match)
    {
        const InventoryCamera& wanted = *match.wanted;
        const ListedCamera& camera = *match.camera;
        if (hasUserName(camera))
            note(match, "name", wanted.nameInCamera(), camera.userName);
        if (!wanted.serial.isEmpty())
            note(match, "serial", wanted.serial, camera.serial);
        if (!wanted.address.isEmpty())
            note(match, "address", wanted.address, camera.address);
        if (!wanted.interfaceName.isEmpty() && !camera.interfaceName.isEmpty())
            note(match, "interface", wanted.interfaceName, camera.interfaceName);
        match.state = match.differences.empty() ? LineState::InOrder : LineState::Elsewhere;
        if (camera.model != wanted.model) {
            match.state = LineState::Incompatible;
            note(match, "model", wanted.model, camera.model);
        }
        if (camera.device.nStatus == KX_AVAILABILITY_UNREACHABLE) {
            match.state = LineState::Unreachable;
            match.reason = camera.reason;
        }
    }

    // A camera that was replaced comes before one that only has the name.
    void findInItsPlace(LineMatch& match)
    {
        const InventoryCamera& wanted = *match.wanted;
        match.state = LineState::Missing;
        int found = -1;
        const QString name = wanted.nameInCamera();
        if (!name.isEmpty())
            for (const int camera : m_byName.values(name))
                found = !m_isTaken[size_t(camera)] && hasUserName(m_cameras[size_t(camera)]) ? camera : found;
        if (found < 0)
            return;
        take(match, found);
        match.isOther = true;
        const ListedCamera& camera = *match.camera;
        match.state = wanted.retired.contains(camera.mac) ? LineState::Retired : LineState::OtherCamera;
        if (camera.model != wanted.model) {
            match.state = LineState::Incompatible;
            note(match, "model", wanted.model, camera.model);
        }
        note(match, "serial", wanted.serial, camera.serial);
        if (!wanted.mac.isEmpty())
            note(match, "mac", wanted.mac, camera.mac);
        if (!wanted.guid.isEmpty())
            note(match, "guid", wanted.guid, camera.guid);
    }

    void addOthers()
    {
        QHash<QString, QString> retired; // whose, by MAC address
        for (const InventoryCamera& wanted : m_inventory.cameras)
            for (const QString& mac : wanted.retired)
                retired.insert(mac, wanted.name);
        for (size_t i = 0; i < m_cameras.size(); ++i) {
            if (m_isTaken[i])
                continue;
            LineMatch match{nullptr, m_cameras[i], LineState::Stranger, {}};
            if (const auto whose = retired.constFind(m_cameras[i].mac); whose != retired.constEnd()) {
                match.state = LineState::Retired;
                match.reason = "it was in the place of \"" + *whose + "\".";
            }
            m_matches.push_back(match);
        }
    }

    const Inventory& m_inventory;
    const std::vector<ListedCamera>& m_cameras;
    std::vector<bool> m_isTaken;
    QMultiHash<QString, int> m_byMac;
    QMultiHash<QString, int> m_byGuid;
    QMultiHash<QString, int> m_byName;
    QMultiHash<QString, int> m_bySerial;
    std::vector<LineMatch> m_matches;
};

} // namespace

QString lineStateWord(LineState state)
{
    switch (state) {
    case LineState::InOrder:
        return "in order";
    case LineState::Stranger:
        return "not in the inventory";
    case LineState::Retired:
        return "retired, and back";
    case LineState::Differs:
        return "differs";
    case LineState::Elsewhere:
        return "elsewhere";
    case LineState::OtherCamera:
        return "other camera";
    case LineState::Incompatible:
        return "other model or firmware";
    case LineState::Missing:
        return "missing";
    case LineState::NotJudged:
        return "not judged";
    case LineState::Unreachable:
        return "unreachable";
    case LineState::BadFiles:
        break;
    }
    return "bad files";
}

std::vector<LineMatch> matchLine(const Inventory& inventory, const std::vector<ListedCamera>& cameras)
{
    return Matcher(inventory, cameras).run();
}

} // namespace companion
