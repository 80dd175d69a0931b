// Who has come, who is still there and who is gone, from one look at the line to the next.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QHash>
#include <QMap>
#include <QString>

#include <vector>

namespace camera_line
{

// What makes two answers the same camera, whatever address, name or interface it has by now: transport and
// serial number, and what keeps cameras of several makers apart: the MAC address (GigE), the model (USB3,
// Camera Link) and the port (Camera Link). As the bytes that the camera sent, so that the suite's encoding
// does not count.
QByteArray identityOf(const KX_DeviceInfo& device);

// One lost answer does not make a camera come and go.
constexpr int kMissesUntilGone = 2;

class Presence
{
public:
    struct Answer
    {
        int id; // 1, 2, 3... in the order in which cameras are first seen; one that comes back has its old
                // one
        bool isNew;
    };
    struct Look
    {
        std::vector<Answer> answers; // one for each camera that answered, in their order
        std::vector<int> gone;       // in ascending order; told once
    };

    // `answers`: all that answered this look. Alike to a hair, they are told apart by their order. Those that
    // did not answer `missesUntilGone` looks in a row are gone.
    Look look(const std::vector<KX_DeviceInfo>& answers, int missesUntilGone = kMissesUntilGone);

private:
    int idOf(const KX_DeviceInfo& device, int occurrence);

    QHash<QPair<QByteArray, int>, int> m_ids; // of all that were ever seen
    QMap<int, int> m_misses;                  // looks in a row; of those that are there
};

} // namespace camera_line
