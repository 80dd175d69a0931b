#include "iefeatures/compare/FeatureSource.h"

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

struct Selector
{
    const char* prefix;
    const char* kind;
    QString ListedCamera::*field;
};
const Selector kSelectors[] = {{"serial:", "serial number", &ListedCamera::serial},
                               {"name:", "user name", &ListedCamera::userName},
                               {"address:", "address", &ListedCamera::address}};

const Selector* selectorOf(const std::string& word)
{
    for (const Selector& selector : kSelectors)
        if (word.rfind(selector.prefix, 0) == 0)
            return &selector;
    return nullptr;
}

int findCamera(Console& console, const Selector& selector, const QString& wanted,
               const std::vector<ListedCamera>& cameras, FeatureSource& source)
{
    const auto fits = [&](const ListedCamera& camera) { return camera.*selector.field == wanted; };
    const auto count = std::count_if(cameras.begin(), cameras.end(), fits);
    if (count != 1) {
        console.err(QString("%1 the %2 \"%3\".\n")
                        .arg(count == 0 ? "No camera has" : "More than one camera has", selector.kind,
                             printable(wanted)));
        return count == 0 ? ExitNoSuchCamera : ExitUsage;
    }
    source.camera = *std::find_if(cameras.begin(), cameras.end(), fits);
    source.title = "camera " + source.camera->title();
    return ExitWell;
}

bool takeExport(Console& console, const CameraExport& done, FeatureSource& source)
{
    tellRemarks(console, done);
    if (!done.isWhole())
        console.err(source.camera->title() + ": could not be exported.\n");
    source.path = done.result.job.path;
    return done.isWhole();
}

} // namespace

bool namesCamera(const std::string& word)
{
    return selectorOf(word) != nullptr;
}

int findSource(Console& console, const std::string& word, const std::vector<ListedCamera>& cameras,
               FeatureSource& source)
{
    if (const Selector* selector = selectorOf(word)) {
        const QString wanted = QString::fromStdString(word.substr(std::string(selector->prefix).size()));
        return findCamera(console, *selector, wanted, cameras, source);
    }
    source.path = QString::fromStdString(word);
    source.title = printable(source.path);
    return ExitWell;
}

int exportSources(Console& console, std::vector<FeatureSource>& sources, const QString& folder)
{
    const auto folderOf = [&](const StructDeviceInfo& device) {
        return folder + '/' + QString::number(device.nDeviceID);
    };
    std::vector<ListedCamera> cameras;
    for (const FeatureSource& source : sources) {
        if (!source.camera)
            continue;
        cameras.push_back(*source.camera);
        const QString own = folderOf(source.camera->device);
        if (!QDir().mkpath(own)) {
            console.err("The temporary folder " + own + " cannot be made.\n");
            return ExitInputOutput;
        }
    }
    if (cameras.empty())
        return ExitWell;
    const auto exports = runExports(console, cameras, {ExportTask::Format::FeaturesFile, folderOf});
    bool areWhole = true;
    auto done = exports.begin();
    for (FeatureSource& source : sources)
        if (source.camera)
            areWhole = takeExport(console, *done++, source) && areWhole;
    if (Interrupt::isRequested()) {
        console.err(std::string("Interrupted.\n"));
        return ExitInterrupted;
    }
    return areWhole ? ExitWell : ExitInputOutput;
}

int readSource(Console& console, FeatureSource& source, bool isJson)
{
    FeaturesFileInput input = readFeaturesFile(source.path);
    // Exports write text values as they are, also those with a "<" in them.
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
