#include "iefeatures/compare/FeatureSource.h"

#include "iefeatures/cameras/CameraWord.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/exports/WholeExport.h"
#include "iefeatures/files/FeaturesFileInput.h"

#include <QDir>

#include <algorithm>

namespace companion
{
namespace
{

int findCamera(Console& console, const CameraWord& word, const std::vector<ListedCamera>& cameras,
               FeatureSource& source)
{
    const auto isMeant = [&](const ListedCamera& camera) { return word.fits(camera); };
    const auto count = std::count_if(cameras.begin(), cameras.end(), isMeant);
    if (count != 1) {
        console.err((count == 0 ? word.missing() : word.ambiguous(cameras)) + '\n');
        return count == 0 ? ExitNoSuchCamera : ExitUsage;
    }
    source.camera = *std::find_if(cameras.begin(), cameras.end(), isMeant);
    source.title = "camera " + source.camera->title();
    return ExitWell;
}

void takeExport(Console& console, const CameraExport& done, FeatureSource& source)
{
    tellRemarks(console, done);
    if (!done.isWhole())
        console.err(source.camera->title() + ": could not be exported.\n");
    else if (source.camera->device.nStatus == KX_AVAILABILITY_IN_USE)
        console.err(source.camera->title() + ": " + sharedRemark() + '\n');
    source.path = done.isWhole() ? done.result.job.path : QString();
}

} // namespace

int findSource(Console& console, const std::string& word, const std::vector<ListedCamera>& cameras,
               FeatureSource& source)
{
    if (const std::optional<CameraWord> camera = cameraWord(word))
        return findCamera(console, *camera, cameras, source);
    source.path = QString::fromStdString(word);
    source.title = printable(source.path);
    return ExitWell;
}

int exportSources(Console& console, const std::vector<FeatureSource*>& sources, const QString& folder,
                  Unreadable unreadable)
{
    const auto folderOf = [&](const StructDeviceInfo& device) {
        return folder + '/' + QString::number(device.nDeviceID);
    };
    std::vector<ListedCamera> cameras;
    std::vector<FeatureSource*> meant;
    for (FeatureSource* source : sources) {
        if (!source->camera)
            continue;
        meant.push_back(source);
        cameras.push_back(*source->camera);
        const QString own = folderOf(source->camera->device);
        if (!QDir().mkpath(own)) {
            console.err("The temporary folder " + own + " cannot be made.\n");
            return ExitInputOutput;
        }
    }
    if (cameras.empty())
        return ExitWell;
    ExportTask task{ExportTask::Format::FeaturesFile, folderOf, false, unreadable};
    task.isShared = true;
    const auto exports = runExports(console, cameras, task);
    for (size_t i = 0; i < meant.size(); ++i)
        takeExport(console, exports[i], *meant[i]);
    if (!Interrupt::isRequested())
        return ExitWell;
    console.err(std::string("Interrupted.\n"));
    return ExitInterrupted;
}

int readSource(Console& console, FeatureSource& source, bool isJson)
{
    FeaturesFileInput input = readFeaturesFile(source.path);
    if (!input.isGood() && source.camera) {
        console.err(source.title + ": its export cannot be read as a features file.\n");
        return ExitInputOutput;
    }
    if (input.isGood() && input.content.header.version.isEmpty()) {
        input.verdict = CameraVerdict::Incompatible;
        input.error = "The file names no version: " + printable(source.path);
    }
    if (!input.isGood())
        tellError(console, input, isJson);
    source.content = input.content;
    return exitCodeOf(input.verdict);
}

} // namespace companion
