// Where exports come to be until they have been looked at: private folders beside those that they are for.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/console/UnfinishedFolder.h"

#include <QString>

#include <functional>
#include <map>
#include <vector>

namespace companion
{

// Whether exports could go into the folder, by trying; a printable sentence when not, else an empty text.
QString exportFolderProblem(const QString& folder);

// Why a file cannot have its name in the folder: something else has it. As above.
QString exportNameProblem(const QString& folder, const QString& fileName);
// Why the lists of what is left out (jobs/rules/StreamableFilters.h) cannot be read. As above.
QString exportFilterProblem();
// What is to be told of a folder into which other people may write, or an empty text.
QString sharedFolderWarning(const QString& folder);

class ExportStage
{
public:
    using FolderOf = std::function<QString(const StructDeviceInfo& device)>;

    // `target`: the folder that a camera's file is for.
    ExportStage(const std::vector<ListedCamera>& cameras, const FolderOf& target);

    // The camera's own folder to export into; empty where `problem()` tells why there is none.
    QString folder(int deviceId) const;
    // A printable sentence; empty: none.
    QString problem(int deviceId) const;

    // The file that was exported; empty: none. Its name is the camera library's where that made it.
    QString file(int deviceId) const;
    // Where the file of that name is in the end.
    QString target(int deviceId, const QString& fileName) const;
    // Puts the exported file there; a printable sentence, or an empty text.
    QString release(int deviceId, const QString& fileName);

private:
    // For all cameras of one target folder.
    struct Room
    {
        UnfinishedFolder folder;
        QString cause; // why there is none
    };
    struct Place
    {
        QString folder;
        QString target;
        QString problem;
    };
    Room& roomIn(const QString& target);
    Place placeFor(const ListedCamera& camera, const QString& target);

    std::map<QString, Room> m_rooms; // by target folder
    std::map<int, Place> m_places;   // by device
};

} // namespace companion
