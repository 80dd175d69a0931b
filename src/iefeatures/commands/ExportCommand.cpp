#include "iefeatures/commands/ExportCommand.h"

#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/exports/ExportVerdict.h"

#include "jobs/rules/DeviceNames.h"
#include "jobs/worker/QOperateThread.h"

#include <CLI/CLI.hpp>

#include <QMap>

namespace companion
{

void ExportCommand::addOptions(CLI::App& app)
{
    app.add_option("--to", m_folder, "Folder that the files go into; it must exist")
        ->required()
        ->type_name("DIR")
        ->check(
            [](const std::string& folder) { return std::string(folder.empty() ? "Name a folder." : ""); });
    JobCommand::addOptions(app);
}

// Of two cameras that would write one file, the last writer would win.
QStringList ExportCommand::objections(const std::vector<ListedCamera>& cameras) const
{
    QStringList sentences;
    QMap<QString, QStringList> writers;
    for (const ListedCamera& camera : cameras) {
        const auto names = ie::deviceNames(camera.device.stDeviceInfo, ie::FieldEnd::AtSize);
        const QString file = ie::featuresFileName(names);
        writers[file] += QString::number(camera.device.nDeviceID);
        if (isBag())
            sentences += objectionsToBagPath(QString::fromStdString(m_folder) + '/' + file);
        // The job for features files refuses such a name by itself; for a bag the camera library writes.
        if (isBag() && file.contains('/'))
            sentences += QString("The camera %1 would write outside of the folder: %2.")
                             .arg(QString::number(camera.device.nDeviceID), printable(file));
    }
    for (auto it = writers.cbegin(); it != writers.cend(); ++it)
        if (it->size() > 1)
            sentences += QString("The cameras %1 would write one file, %2.")
                             .arg(it->join(" and "), printable(it.key()));
    return sentences;
}

int ExportCommand::carryOut(Console& console, const std::vector<ListedCamera>& cameras) const
{
    const QString folder = QString::fromStdString(m_folder);
    const auto setUp = [&](QOperateThread& worker, const StructDeviceInfo& device) {
        if (isBag())
            worker.SetFeatureBagExportJob(device, folder);
        else
            worker.SetXmlExportJob(device, folder);
    };
    std::vector<ExportResult> results;
    for (const JobRecord& record : runJobs(console, cameras, {setUp, wantsJson()})) {
        results.push_back(examineExport(record.job, record.tally));
        for (const QString& remark : exportRemarks(results.back(), record.findings))
            console.err(record.job.camera.title() + ": " + remark + '\n');
    }
    if (Interrupt::isRequested())
        console.err(std::string("Interrupted.\n"));
    if (!wantsJson())
        console.out(exportTable(results));
    else if (Interrupt::isRequested())
        console.err(exportFates(results));
    return exportExitCode(results, Interrupt::isRequested());
}

} // namespace companion
