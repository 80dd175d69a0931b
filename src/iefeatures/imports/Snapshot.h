// What a camera was set to before something is written to it: a features file and a feature bag. Both carry
// one name, so each stands in a folder of its own:
//     <folder>/20260102T030405Z_<serial>/features/<model>_<serial>.fpk
//     <folder>/20260102T030405Z_<serial>/bag/<model>_<serial>.fpk
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/console/Console.h"
#include "iefeatures/exports/ExportVerdict.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace companion
{

struct Snapshot
{
    QString folder;       // of this one
    QString featuresFile; // empty: none, and then there is the other
    QString bagFile;

    bool isWhole() const { return !featuresFile.isEmpty() && !bagFile.isEmpty(); }
};

// The snapshot in `folder`, or what is left of it: one of its two files. Nothing, and a sentence in
// `problem`, when there is none.
std::optional<Snapshot> findSnapshot(const QString& folder, QString& problem);

// Those of one import, in the folder that they were taken into: of the newest, or of the time that their
// names begin with ("20260102T030405Z"). None, and a sentence in `problem`, where there are none or one of
// them is none.
std::vector<Snapshot> findSnapshots(const QString& folder, const QString& time, QString& problem);

// The name that its files have, "EMU-1_0123.fpk".
QString snapshotName(const Snapshot& snapshot);
// Whether that is the camera's.
bool isOf(const Snapshot& snapshot, const ListedCamera& camera);

struct SnapshotResult
{
    ListedCamera camera;
    QString folder; // empty when it could not be made
    std::optional<Snapshot> snapshot;
    QStringList problems; // sentences; not empty exactly when there is no snapshot
    QStringList untold;   // those of them that nobody was told of yet, and what is to be told all the same
};

// Why no snapshot can go into the folder, a printable sentence; empty: one can.
QString snapshotFolderProblem(const QString& folder);

struct SnapshotTask
{
    QString folder;      // must exist
    bool isJson = false; // the jobs' signals are told as JSON lines
    Unreadable unreadable = Unreadable::Refused;
};

// Takes one of each camera, all at the same time, in new folders below the task's. One that fails leaves no
// folder. In the cameras' order.
std::vector<SnapshotResult> takeSnapshots(Console& console, const std::vector<ListedCamera>& cameras,
                                          const SnapshotTask& task);

} // namespace companion
