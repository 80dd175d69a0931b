#include "camera_line/Presence.h"

#include "camera_line/RecordTexts.h"

#include <QPair>

namespace camera_line
{

QByteArray identityOf(const KX_DeviceInfo& device)
{
    const KX_GigEDeviceInfo& gige = device.special.gige;
    QByteArray identity = QByteArray::number(device.transportType) + '\0' + serialField(device).content();
    if (device.transportType ==
        KX_TRANSPORT_GIGE) // the model may change with the firmware, the address does not
        identity += '\0' + QByteArray::number(gige.macHigh) + ' ' + QByteArray::number(gige.macLow);
    else
        for (const Field& field : identifyingFields(device))
            identity += '\0' + field.content(); // no content holds a zero byte
    return identity;
}

int Presence::idOf(const KX_DeviceInfo& device, int occurrence)
{
    int& id = m_ids[{identityOf(device), occurrence}];
    if (id == 0)
        id = m_ids.size();
    return id;
}

Presence::Look Presence::look(const std::vector<KX_DeviceInfo>& answers, int missesUntilGone)
{
    for (int& misses : m_misses)
        ++misses;
    Look look;
    QHash<QByteArray, int> occurrences;
    for (const KX_DeviceInfo& device : answers) {
        const int id = idOf(device, occurrences[identityOf(device)]++);
        look.answers.push_back({id, !m_misses.contains(id)});
        m_misses[id] = 0;
    }
    for (auto misses = m_misses.begin(); misses != m_misses.end();) {
        if (*misses < missesUntilGone) {
            ++misses;
            continue;
        }
        look.gone.push_back(misses.key());
        misses = m_misses.erase(misses);
    }
    return look;
}

} // namespace camera_line
