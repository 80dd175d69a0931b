#include "iefeatures/commands/ExportCommand.h"

#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/exports/ExportStage.h"
#include "iefeatures/exports/WholeExport.h"
#include "iefeatures/files/FeatureBagInput.h"

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
    app.add_option("--file-name", m_fileNaming,
                   "What the files are called: name, address or serial of the camera; else MODEL_SERIAL")
        ->check(CLI::IsMember(fileNamingWords()))
        ->type_name("BY");
    app.add_flag("--shared", m_isShared, "Only read, beside a program that controls the camera");
    app.add_flag("--skip-unreadable", m_skipsUnreadable, kSkipUnreadableHelp);
    JobCommand::addOptions(app);
}

QString ExportCommand::outputProblem() const
{
    const QString folder = QString::fromStdString(m_folder);
    if (isBag() && !bagPathProblem(folder).isEmpty())
        return {}; // whether it is there or not, it is objected to
    const QString filters = exportFilterProblem();
    return filters.isEmpty() ? exportFolderProblem(folder) : filters;
}

// Of two cameras that would write one file, the last writer would win.
QStringList ExportCommand::objections(const std::vector<ListedCamera>& cameras) const
{
    QStringList sentences;
    if (isBag())
        sentences += bagPathProblem(QString::fromStdString(m_folder));
    if (isBag() && m_isShared)
        sentences += "--shared needs a features file: a feature bag moves selectors.";
    QMap<QString, QStringList> writers;
    for (const ListedCamera& camera : cameras)
        if (fileNameProblem(camera, naming()).isEmpty())
            writers[fileNameOf(camera, naming())] += QString::number(camera.device.nDeviceID);
    for (auto it = writers.cbegin(); it != writers.cend(); ++it)
        if (it->size() > 1)
            sentences += QString("The cameras %1 would write one file, %2.")
                             .arg(it->join(" and "), printable(it.key()));
    sentences.removeAll({});
    return sentences;
}

QString ExportCommand::objectionTo(const ListedCamera& camera) const
{
    return isBag() ? bagPathProblem(QString::fromStdString(m_folder) + '/' + fileNameOf(camera, naming()))
                   : QString();
}

bool ExportCommand::areNamesFree(Console& console, const std::vector<ListedCamera>& cameras) const
{
    QString problems;
    for (const ListedCamera& camera : cameras) {
        if (!fileNameProblem(camera, naming()).isEmpty())
            continue; // none is written
        const QString problem =
            exportNameProblem(QString::fromStdString(m_folder), fileNameOf(camera, naming()));
        problems += problem.isEmpty() ? problem : problem + '\n';
    }
    console.err(problems);
    return problems.isEmpty();
}

int ExportCommand::carryOut(Console& console, const std::vector<ListedCamera>& cameras) const
{
    const QString folder = QString::fromStdString(m_folder);
    if (!areNamesFree(console, cameras))
        return ExitInputOutput;
    if (const QString warning = sharedFolderWarning(folder); !warning.isEmpty())
        console.err(warning + '\n');
    using Format = ExportTask::Format;
    ExportTask task{isBag() ? Format::FeatureBag : Format::FeaturesFile,
                    [&](const StructDeviceInfo&) { return folder; }, wantsJson(),
                    m_skipsUnreadable ? Unreadable::LeftOut : Unreadable::Refused};
    task.isShared = m_isShared;
    task.naming = naming();
    task.objection = [this](const ListedCamera& camera) { return objectionTo(camera); };
    std::vector<ExportResult> results;
    for (const CameraExport& done : runExports(console, cameras, task)) {
        tellRemarks(console, done);
        console.object("export", exportJson(done.result, done.remarks));
        if (m_isShared && done.isWhole())
            console.err(done.result.job.camera.title() + ": " + sharedRemark() + '\n');
        results.push_back(done.result);
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
