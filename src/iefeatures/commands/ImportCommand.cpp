#include "iefeatures/commands/ImportCommand.h"

#include "iefeatures/commands/CheckCommand.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/files/FeatureBagInput.h"
#include "iefeatures/files/NamedFeatures.h"
#include "iefeatures/imports/ImportProcedure.h"
#include "iefeatures/imports/PartialFile.h"

#include <CLI/CLI.hpp>

#include <QFileInfo>
#include <QTemporaryDir>

namespace companion
{

void ImportCommand::addOptions(CLI::App& app)
{
    app.add_option("FILE", m_file, "File to import, as an export has written it, or a folder of one a camera")
        ->required()
        ->type_name("")
        ->check([](const std::string& file) { return std::string(file.empty() ? "Name a file." : ""); });
    m_folder.addOptions(app);
    app.add_flag("--dry-run", m_isDryRun, "Show what would change and change nothing, as plan does");
    app.add_option("--only", m_only, "Take only these features of the file; * stands for any characters")
        ->type_name("NAME")
        ->check(isGiven("Name a feature."));
    app.add_flag("--force", m_isForced,
                 "Write also what no import should: registers that the description does not know, control");
    m_options.addSnapshot(app);
    m_options.addVerify(app);
    m_options.addUserSet(app);
    m_options.addAudit(app);
    m_options.addReport(app);
    m_options.addIgnored(app);
    JobCommand::addOptions(app);
}

bool ImportCommand::holdsBag(const QString& file) const
{
    return isFormatGiven() ? isBag() : isFeatureBag(file);
}

int ImportCommand::prepare(Console& console)
{
    return m_folder.setPath(console, QString::fromStdString(m_file));
}

CameraSelection::Choice ImportCommand::choose(const CameraSelection& selection,
                                              const std::vector<ListedCamera>& found)
{
    return m_folder.isUsed() ? m_folder.pair(selection, found) : JobCommand::choose(selection, found);
}

void ImportCommand::tellRefusal(Console& console) const
{
    m_folder.tellSummary(console, {});
}

QStringList ImportCommand::filesMeant() const
{
    if (!m_folder.isUsed())
        return {QString::fromStdString(m_file)};
    QStringList files;
    for (const FolderPairs::Pair& pair : m_folder.pairs())
        files += pair.path;
    return files;
}

QStringList ImportCommand::objections(const std::vector<ListedCamera>&) const
{
    QStringList sentences;
    for (const QString& file : filesMeant()) {
        if (!holdsBag(file))
            continue;
        sentences += bagPathProblem(file);
        if (m_options.isVerified())
            sentences += "Only the import of a features file can be verified.";
        if (!m_only.empty())
            sentences += "--only needs a features file.";
        if (m_isDryRun)
            sentences += "--dry-run needs a features file: nobody can tell what a feature bag would do.";
    }
    sentences.removeAll({});
    sentences.removeDuplicates();
    return sentences;
}

int ImportCommand::carryOut(Console& console, const std::vector<ListedCamera>& cameras) const
{
    const QTemporaryDir parts;
    QString problem;
    const std::vector<ImportJob> all = jobs(cameras, parts.path(), problem);
    if (problem.isEmpty())
        return import(console, all);
    console.err(problem + '\n');
    return ExitUsage;
}

// All are read before anything is done with one.
std::vector<ImportJob> ImportCommand::jobs(const std::vector<ListedCamera>& cameras, const QString& parts,
                                           QString& problem) const
{
    if (!m_folder.isUsed())
        return importJobs(cameras, read(QString::fromStdString(m_file), parts, problem));
    std::vector<ImportJob> jobs;
    for (const FolderPairs::Pair& pair : m_folder.pairs())
        if (problem.isEmpty())
            jobs.push_back({pair.camera, read(pair.path, parts, problem)});
    return jobs;
}

// What is no features file is told by who reads it.
SharedImportFiles ImportCommand::read(const QString& file, const QString& parts, QString& problem) const
{
    if (holdsBag(file))
        return readImportFiles(file, {});
    SharedImportFiles whole = readImportFiles({}, file);
    if (m_only.empty() || !whole->input.isGood())
        return whole;
    const QString part = parts + '/' + QFileInfo(file).fileName();
    problem = writePartialFile(file, onlyNames(), part);
    return readImportFiles({}, part, file);
}

QStringList ImportCommand::onlyNames() const
{
    QStringList names;
    for (const std::string& name : m_only)
        names += QString::fromStdString(name);
    return names;
}

int ImportCommand::import(Console& console, const std::vector<ImportJob>& jobs) const
{
    if (m_isDryRun)
        return runCheck(
            console, jobs,
            {{CheckMode::Plan, false, m_options.ignored(), m_isForced}, m_options.style(), wantsJson()},
            m_folder);
    ImportTask task;
    task.command = name();
    task.only = onlyNames();
    task.isForced = m_isForced;
    task.isJson = wantsJson();
    task.isSummedUp = m_folder.isUsed();
    m_options.fill(task);
    ImportProcedure procedure(console, task);
    const int code = procedure.run(jobs);
    QStringList results;
    for (const CameraVerdict verdict : procedure.verdicts())
        results += verdictWord(verdict);
    m_folder.tellSummary(console, results);
    return code;
}

} // namespace companion
