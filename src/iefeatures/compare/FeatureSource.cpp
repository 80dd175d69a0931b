#include "iefeatures/compare/FeatureSource.h"

#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/exports/ExportVerdict.h"
#include "iefeatures/files/FeaturesFileInput.h"
#include "iefeatures/running/JobRun.h"

#include "jobs/worker/QOperateThread.h"

#include <QDir>

#include <algorithm>
#include <map>

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

// A file that the line has thinned out would show differences that are none.
bool takeExport(Console& console, const JobRecord& record, FeatureSource& source)
{
    const ExportResult result = examineExport(record.job, record.tally);
    const QStringList remarks = exportRemarks(result, record.findings);
    for (const QString& remark : remarks)
        console.err(source.camera->title() + ": " + remark + '\n');
    const bool isWhole = result.state == ExportResult::State::Written && remarks.isEmpty();
    if (!isWhole)
        console.err(source.camera->title() + ": could not be exported.\n");
    source.path = result.job.path;
    return isWhole;
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
    std::vector<ListedCamera> cameras;
    std::map<int, QString> folders;
    for (const FeatureSource& source : sources) {
        if (!source.camera)
            continue;
        const int id = source.camera->device.nDeviceID;
        cameras.push_back(*source.camera);
        folders[id] = folder + '/' + QString::number(id);
        if (!QDir().mkpath(folders[id])) {
            console.err("The temporary folder " + folders[id] + " cannot be made.\n");
            return ExitInputOutput;
        }
    }
    if (cameras.empty())
        return ExitWell;
    const auto setUp = [&](QOperateThread& worker, const StructDeviceInfo& device) {
        worker.SetXmlExportJob(device, folders.at(device.nDeviceID));
    };
    const std::vector<JobRecord> records = runJobs(console, cameras, {setUp});
    bool isGood = true;
    auto record = records.begin();
    for (FeatureSource& source : sources)
        if (source.camera)
            isGood = takeExport(console, *record++, source) && isGood;
    if (Interrupt::isRequested()) {
        console.err(std::string("Interrupted.\n"));
        return ExitInterrupted;
    }
    return isGood ? ExitWell : ExitInputOutput;
}

int readSource(Console& console, FeatureSource& source)
{
    const FeaturesFileInput input = readFeaturesFile(source.path);
    if (!input.problem.isNull()) {
        // Exports write text values as they are, also those with a "<" in them.
        console.err((source.camera ? source.title + ": its export cannot be read as a features file."
                                   : printable(input.problem)) +
                    '\n');
        return ExitInputOutput;
    }
    source.content = input.content;
    const bool isUsable = source.content.hasFeatures && !source.content.header.version.isEmpty();
    if (isUsable)
        return ExitWell;
    console.err(QString("%1 is no features file: it has no %2.\n")
                    .arg(printable(source.path), source.content.hasFeatures ? "version" : "features"));
    return ExitIncompatible;
}

} // namespace companion
