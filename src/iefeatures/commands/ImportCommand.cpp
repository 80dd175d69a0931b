#include "iefeatures/commands/ImportCommand.h"

#include "iefeatures/commands/CheckCommand.h"
#include "iefeatures/files/NamedFeatures.h"
#include "iefeatures/imports/ImportProcedure.h"

#include <CLI/CLI.hpp>

namespace companion
{

void ImportCommand::addOptions(CLI::App& app)
{
    app.add_option("FILE", m_file, "File to import, as an export has written it")
        ->required()
        ->type_name("")
        ->check([](const std::string& file) { return std::string(file.empty() ? "Name a file." : ""); });
    app.add_flag("--dry-run", m_isDryRun, "Show what would change and change nothing, as plan does");
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
    if (m_isDryRun)
        sentences += "--dry-run needs a features file: nobody can tell what a feature bag would do.";
    return sentences;
}

int ImportCommand::carryOut(Console& console, const std::vector<ListedCamera>& cameras) const
{
    if (m_isDryRun)
        return runCheck(console, cameras, QString::fromStdString(m_file),
                        {CheckMode::Plan, m_options.detail(), wantsJson()});
    ImportTask task;
    task.command = name();
    (holdsBag() ? task.bag : task.features) = QString::fromStdString(m_file);
    task.isJson = wantsJson();
    m_options.fill(task);
    return ImportProcedure(console, task).run(cameras);
}

} // namespace companion
