#include "iefeatures/ExportCommand.h"

#include "iefeatures/ExitCode.h"
#include "iefeatures/Interrupt.h"
#include "iefeatures/Progress.h"
#include "iefeatures/SignalPrinter.h"
#include "iefeatures/Text.h"

#include <DeviceNames.h>
#include <QOperateThread.h>

#include <CLI/CLI.hpp>

#include <QMap>

namespace companion
{
namespace
{

// A sentence for each file that more than one camera would write; the last writer would win.
QStringList fileClashes(const std::vector<Camera>& cameras)
{
    QMap<QString, QStringList> writers;
    for (const Camera& camera : cameras) {
        const auto names = ie::deviceNames(camera.device.stDeviceInfo, ie::FieldEnd::AtSize);
        writers[ie::featuresFileName(names)] += QString::number(camera.device.nDeviceID);
    }
    QStringList sentences;
    for (auto it = writers.cbegin(); it != writers.cend(); ++it)
        if (it->size() > 1)
            sentences += QString("The cameras %1 would write one file, %2.")
                             .arg(it->join(" and "), printable(it.key()));
    return sentences;
}

void tellAll(Console& console, const QStringList& sentences)
{
    for (const QString& sentence : sentences)
        console.err(sentence + '\n');
}

} // namespace

void ExportCommand::addOptions(CLI::App& app)
{
    app.add_option("--to", m_folder, "Folder that the files go into; it must exist")
        ->required()
        ->type_name("DIR")
        ->check(
            [](const std::string& folder) { return std::string(folder.empty() ? "Name a folder." : ""); });
    m_selection.addOptions(app);
    app.add_flag("--json", m_json, "One JSON object a line for each signal of the jobs");
    m_log.addOptions(app);
}

int ExportCommand::execute(World& world)
{
    std::vector<Camera> cameras;
    if (!findCameras(world, cameras))
        return ExitInputOutput;
    const CameraSelection::Choice choice = m_selection.choose(cameras);
    if (!choice.misses.isEmpty()) {
        tellAll(world.console, choice.misses);
        return ExitNoSuchCamera;
    }
    const QStringList clashes = fileClashes(choice.cameras);
    if (!clashes.isEmpty()) {
        tellAll(world.console, clashes);
        return ExitUsage;
    }
    return exportCameras(world, choice.cameras);
}

int ExportCommand::exportCameras(World& world, const std::vector<Camera>& cameras) const
{
    const LogSink log(world.console, m_log);
    if (!log.isGood()) {
        world.console.err("The log file cannot be opened: " + m_log.file + '\n');
        return ExitInputOutput;
    }
    const Interrupt interrupt;
    const std::vector<ExportResult> results = runJobs(world.console, cameras);
    report(world.console, results);
    const int code = exportExitCode(results, Interrupt::isRequested());
    if (code == ExitWell && !log.isGood()) {
        world.console.err("The log file cannot be written: " + m_log.file + '\n');
        return ExitInputOutput;
    }
    return code;
}

std::vector<ExportResult> ExportCommand::runJobs(Console& console, const std::vector<Camera>& cameras) const
{
    const CallWatch watch(cameras, &Interrupt::isRequested);
    std::unique_ptr<JobListener> listener;
    if (m_json)
        listener = std::make_unique<SignalPrinter>(console);
    else
        listener = std::make_unique<Progress>(console, cameras, watch);

    const QString folder = QString::fromStdString(m_folder);
    const auto setUp = [&folder](QOperateThread& worker, const StructDeviceInfo& device) {
        worker.SetXmlExportJob(device, folder);
    };
    JobBatch batch(cameras, setUp, *listener);
    std::vector<ExportResult> results;
    for (const JobOutcome& outcome : batch.run([] { return !Interrupt::isRequested(); }))
        results.push_back(examineExport(outcome, watch.tally(outcome.camera.device.nDeviceID)));
    return results;
}

void ExportCommand::report(Console& console, const std::vector<ExportResult>& results) const
{
    for (const ExportResult& result : results)
        if (result.state == ExportResult::State::Written && result.tally.hasLineFailed)
            console.err(result.job.camera.title() +
                        ": the line failed during the export; the file may lack features.\n");
    if (Interrupt::isRequested())
        console.err(std::string("Interrupted.\n"));
    if (!m_json)
        console.out(exportTable(results));
    else if (Interrupt::isRequested())
        console.err(exportFates(results));
}

} // namespace companion
