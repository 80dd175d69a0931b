#include "iefeatures/commands/ImportCommand.h"

#include "iefeatures/commands/CheckCommand.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/OptionChecks.h"
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
    app.add_option("FILE", m_file, "File to import, as an export has written it")
        ->required()
        ->type_name("")
        ->check([](const std::string& file) { return std::string(file.empty() ? "Name a file." : ""); });
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
    m_options.addDetails(app);
    JobCommand::addOptions(app);
}

bool ImportCommand::holdsBag() const
{
    return isFormatGiven() ? isBag() : isFeatureBag(QString::fromStdString(m_file));
}

QStringList ImportCommand::objections(const std::vector<ListedCamera>&) const
{
    if (!holdsBag())
        return {};
    QStringList sentences = objectionsToBagPath(QString::fromStdString(m_file));
    if (m_options.isVerified())
        sentences += "Only the import of a features file can be verified.";
    if (!m_only.empty())
        sentences += "--only needs a features file.";
    if (m_isDryRun)
        sentences += "--dry-run needs a features file: nobody can tell what a feature bag would do.";
    return sentences;
}

int ImportCommand::carryOut(Console& console, const std::vector<ListedCamera>& cameras) const
{
    const QString file = QString::fromStdString(m_file);
    // What is no features file is told by who reads it.
    if (m_only.empty() || !readFeaturesFile(file).isGood())
        return import(console, cameras, file);
    const QTemporaryDir folder;
    const QString part = folder.filePath(QFileInfo(file).fileName());
    const QString problem = writePartialFile(file, onlyNames(), part);
    if (problem.isEmpty())
        return import(console, cameras, part);
    console.err(problem + '\n');
    return ExitUsage;
}

QStringList ImportCommand::onlyNames() const
{
    QStringList names;
    for (const std::string& name : m_only)
        names += QString::fromStdString(name);
    return names;
}

int ImportCommand::import(Console& console, const std::vector<ListedCamera>& cameras,
                          const QString& file) const
{
    if (m_isDryRun)
        return runCheck(console, cameras, file,
                        {{CheckMode::Plan, false, m_isForced}, m_options.detail(), wantsJson()});
    ImportTask task;
    task.command = name();
    task.only = onlyNames();
    task.isForced = m_isForced;
    task.isJson = wantsJson();
    m_options.fill(task);
    const QString original = m_only.empty() ? QString() : QString::fromStdString(m_file);
    const SharedImportFiles files =
        holdsBag() ? readImportFiles(file, {}) : readImportFiles({}, file, original);
    return ImportProcedure(console, task).run(importJobs(cameras, files));
}

} // namespace companion
