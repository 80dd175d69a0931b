// A folder in the place of a file: each camera that is chosen has a file of its own there.
#pragma once

#include "iefeatures/cameras/CameraSelection.h"
#include "iefeatures/cameras/FolderPairs.h"
#include "iefeatures/console/Console.h"

#include <QString>

#include <string>

namespace companion
{

class FolderOption
{
public:
    // --by
    void addOptions(CLI::App& app);

    // Takes what stands in the place of a file. ExitWell, or why nothing is done, which is told; no camera is
    // asked.
    int setPath(Console& console, const QString& path);
    // Whether it is a folder; else all below is empty.
    bool isUsed() const { return m_isFolder; }

    // Those of the cameras that have a file; what nobody has is missing. For CameraSearch.
    CameraSelection::Choice pair(const CameraSelection& selection, const std::vector<ListedCamera>& found);
    const std::vector<FolderPairs::Pair>& pairs() const { return m_pairs.pairs; }

    // What has come of each pair ("applied"), in their order, and what was alone; shorter lists leave the
    // rest not started.
    void tellSummary(Console& console, const QStringList& results) const;

private:
    QString summaryText(const QStringList& results) const;

    std::string m_by;
    QString m_folder;
    bool m_isFolder = false;
    FolderPairs m_pairs;
};

} // namespace companion
