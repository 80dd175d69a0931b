// Runs exports and looks at what they came to: whoever goes on with what an export has written wants it
// whole.
#pragma once

#include "iefeatures/cameras/FileNaming.h"
#include "iefeatures/console/Console.h"
#include "iefeatures/exports/ExportVerdict.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace companion
{

struct ExportTask
{
    enum class Format
    {
        FeaturesFile,
        FeatureBag
    };
    Format format = Format::FeaturesFile;
    std::function<QString(const StructDeviceInfo& device)> folder; // that the camera's file goes into
    bool isJson = false;                                           // the jobs' signals are told as JSON lines
    Unreadable unreadable = Unreadable::Refused;
    bool isShared = false; // read beside whoever controls the camera; features files only
    FileNaming naming = FileNaming::ModelAndSerial; // of the files in their folders
    // Why a camera's file is not to be written, which fails that camera alone: a sentence, or an empty text.
    std::function<QString(const ListedCamera& camera)> objection = {};
};

struct CameraExport
{
    ExportResult result;
    QStringList remarks; // what the jobs' own messages have not told, a sentence each

    // Nothing is missing in the file.
    bool isWhole() const { return result.state == ExportResult::State::Written && !result.isCut; }
};

// All at the same time, in the cameras' order. Each file comes to be in a private folder, is looked at when
// its job is over (ExportVerdict.h) and then takes its place, or is dropped: an older file of that name stays
// then. Blocks until all are over.
std::vector<CameraExport> runExports(Console& console, const std::vector<ListedCamera>& cameras,
                                     const ExportTask& task);

// Whether the camera answers, and there can be no features file of it for want of a firmware version; asks
// it.
bool lacksFirmwareVersion(const ListedCamera& camera);

// What is to be said of an export beside whoever controls the camera.
QString sharedRemark();

// The remarks, each behind the camera's name.
void tellRemarks(Console& console, const CameraExport& done);

} // namespace companion
