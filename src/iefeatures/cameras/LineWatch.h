// Tells what has become of the cameras on the line between one look and the next.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

#include <QString>
#include <QStringList>

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
        QString field; // as the JSON list names it: "userName", "address", "status"
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
    // `cameras`: all that answered this look. Those that do not answer two looks in a row are gone: the
    // answer to one may get lost. Events of the present ones in their order, then those that are gone.
    std::vector<CameraEvent> look(const std::vector<ListedCamera>& cameras);

private:
    struct Known
    {
        QString key;
        ListedCamera camera;
        int misses = 0; // looks in a row
    };
    std::vector<Known> m_known;
};

} // namespace companion
