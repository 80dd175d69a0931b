// The files of a folder and the cameras that they are called after.
#pragma once

#include "iefeatures/cameras/FileNaming.h"

#include <QStringList>

namespace companion
{

struct FolderPairs
{
    struct Pair
    {
        ListedCamera camera;
        QString path;
    };
    struct Lonely
    {
        ListedCamera camera;
        QString why; // a sentence
    };
    std::vector<Pair> pairs;           // in the cameras' order
    std::vector<Lonely> lonelyCameras; // chosen, and without a file
    QStringList lonelyFiles;           // names; no camera on the line is called so
    QStringList ambiguities;           // a sentence for each file that more than one camera is called after
};

// Why nothing can be paired with it, a printable sentence: there is no file in it; or an empty text.
QString folderProblem(const QString& folder);

// Files are what ends in ".fpk", whatever it is. A camera that was not chosen keeps its file from being a
// lonely one, and one that is called as a chosen one makes that one's file ambiguous.
FolderPairs pairUp(const QString& folder, FileNaming naming, const std::vector<ListedCamera>& chosen,
                   const std::vector<ListedCamera>& found);

} // namespace companion
