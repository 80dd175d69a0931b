#include "iefeatures/cameras/LineWatch.h"

namespace companion
{
namespace
{

std::vector<CameraEvent::Change> changesOf(const ListedCamera& before, const ListedCamera& now)
{
    static const std::pair<const char*, QString ListedCamera::*> fields[] = {
        {"name", &ListedCamera::userName},
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
    std::vector<KX_DeviceInfo> answers;
    for (const ListedCamera& camera : cameras)
        answers.push_back(camera.device.stDeviceInfo);
    const camera_line::Presence::Look look = m_presence.look(answers);
    std::vector<CameraEvent> events;
    for (size_t i = 0; i < cameras.size(); ++i) {
        ListedCamera& known = m_known[look.answers[i].id];
        if (look.answers[i].isNew)
            events.push_back({CameraEvent::Kind::Appeared, cameras[i], {}});
        else if (const auto changes = changesOf(known, cameras[i]); !changes.empty())
            events.push_back({CameraEvent::Kind::Changed, cameras[i], changes});
        known = cameras[i];
    }
    for (const int id : look.gone)
        events.push_back({CameraEvent::Kind::Gone, m_known.take(id), {}});
    return events;
}

} // namespace companion
