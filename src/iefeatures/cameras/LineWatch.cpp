#include "iefeatures/cameras/LineWatch.h"

#include <QMap>

#include <algorithm>

namespace companion
{
namespace
{

constexpr int kMissesToBeGone = 2;

// What a camera keeps when it gets another address or name.
QString identityOf(const ListedCamera& camera)
{
    QString identity = camera.transport + '\n' + camera.model + '\n' + camera.serial;
    const KX_DeviceInfo& info = camera.device.stDeviceInfo;
    if (info.transportType == KX_TRANSPORT_GIGE)
        identity += QString("\n%1 %2").arg(info.special.gige.macHigh).arg(info.special.gige.macLow);
    else if (info.transportType == KX_TRANSPORT_CAMERA_LINK)
        identity += '\n' + camera.address;
    return identity;
}

std::vector<CameraEvent::Change> changesOf(const ListedCamera& before, const ListedCamera& now)
{
    static const std::pair<const char*, QString ListedCamera::*> fields[] = {
        {"userName", &ListedCamera::userName},
        {"address", &ListedCamera::address},
        {"status", &ListedCamera::status}};
    std::vector<CameraEvent::Change> changes;
    for (const auto& [name, field] : fields)
        if (before.*field != now.*field)
            changes.push_back({name, before.*field, now.*field});
    return changes;
}

} // namespace

std::vector<CameraEvent> LineWatch::look(const std::vector<ListedCamera>& cameras)
{
    for (Known& known : m_known)
        ++known.misses;
    std::vector<CameraEvent> events;
    QMap<QString, int> seen; // cameras may be alike to a hair
    for (const ListedCamera& camera : cameras) {
        const QString identity = identityOf(camera);
        const QString key = identity + '\n' + QString::number(seen[identity]++);
        const auto known =
            std::find_if(m_known.begin(), m_known.end(), [&](const Known& one) { return one.key == key; });
        if (known == m_known.end()) {
            m_known.push_back({key, camera});
            events.push_back({CameraEvent::Kind::Appeared, camera, {}});
            continue;
        }
        const auto changes = changesOf(known->camera, camera);
        if (!changes.empty())
            events.push_back({CameraEvent::Kind::Changed, camera, changes});
        known->camera = camera;
        known->misses = 0;
    }
    const auto isThere = [](const Known& known) { return known.misses < kMissesToBeGone; };
    const auto gone = std::stable_partition(m_known.begin(), m_known.end(), isThere);
    for (auto known = gone; known != m_known.end(); ++known)
        events.push_back({CameraEvent::Kind::Gone, known->camera, {}});
    m_known.erase(gone, m_known.end());
    return events;
}

} // namespace companion
