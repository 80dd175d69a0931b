// Tells what has become of the cameras on the line between one look and the next.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

#include "camera_line/Presence.h"

#include <QMap>
#include <QString>

#include <vector>

namespace companion
{

struct CameraEvent
{
    enum class Kind
    {
        Appeared,
        Changed,
        Gone
    };
    struct Change
    {
        QString field; // as it is named to scripts: "name", "address", "status"
        QString from;
        QString to;
    };

    Kind kind;
    ListedCamera camera;         // as it is now; of one that is gone, as it was
    std::vector<Change> changes; // of one that has changed
};

class LineWatch
{
public:
    // `cameras`: all that answered this look. Events of the present ones in their order, then those that are
    // gone. Who is the same camera, and when one is gone, camera_line::Presence decides.
    std::vector<CameraEvent> look(const std::vector<ListedCamera>& cameras);

private:
    camera_line::Presence m_presence;
    QMap<int, ListedCamera> m_known; // as they answered last, by the id that m_presence gave them
};

} // namespace companion
