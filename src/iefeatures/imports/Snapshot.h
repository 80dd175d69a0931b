// What a camera was set to before something is written to it: a features file and a feature bag. Both carry
// one name, so each stands in a folder of its own:
//     <folder>/20260102T030405Z_<serial>/features/<model>_<serial>.fpk
//     <folder>/20260102T030405Z_<serial>/bag/<model>_<serial>.fpk
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/console/Console.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace companion
{

struct Snapshot
{
    QString folder; // of this one
    QString featuresFile;
    QString bagFile;
};

// The snapshot in `folder`; nothing, and a sentence in `problem`, when there is none.
std::optional<Snapshot> findSnapshot(const QString& folder, QString& problem);

struct SnapshotResult
{
    ListedCamera camera;
    QString folder; // empty when it could not be made
    std::optional<Snapshot> snapshot;
    QStringList problems; // sentences; not empty exactly when there is no snapshot
    QStringList remarks;  // what its exports have to say all the same
};

// Takes one of each camera, all at the same time, in new folders below `folder`, which must exist. The job's
// own signals are told by `run`'s rules; its job is chosen here. In the cameras' order.
std::vector<SnapshotResult> takeSnapshots(Console& console, const std::vector<ListedCamera>& cameras,
                                          const QString& folder, bool isJson);

} // namespace companion
