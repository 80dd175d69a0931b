// What a command may be given in place of a features file: the file, or a camera, which stands for what an
// export of it writes now.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/console/Console.h"
#include "iefeatures/exports/ExportVerdict.h"

#include "jobs/file/FeaturesFile.h"

#include <QString>

#include <optional>
#include <string>
#include <vector>

namespace companion
{

struct FeatureSource
{
    QString title; // the path as it was given, or "camera MODEL SERIAL"
    std::optional<ListedCamera> camera;
    QString path; // of the file; of a camera that could be exported, after that
    ie::FeaturesContent content;
};

// A camera by a word (CameraWord.h), else the path of a file. Gives an ExitCode and tells what went wrong: 3
// when no camera fits, 2 when several do.
int findSource(Console& console, const std::string& word, const std::vector<ListedCamera>& cameras,
               FeatureSource& source);
// Exports those of the sources that are cameras, all at the same time and without control, into folders of
// their own below `folder`. Tells what went wrong; one that could not be exported has no path. Gives an
// ExitCode, of them all.
int exportSources(Console& console, const std::vector<FeatureSource*>& sources, const QString& folder,
                  Unreadable unreadable);
// Gives an ExitCode and tells what went wrong, as readFeaturesFile() does; a file that names no version fits
// no camera. 6 for an export that cannot be read again.
int readSource(Console& console, FeatureSource& source, bool isJson);

} // namespace companion
