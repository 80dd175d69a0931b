#include "iefeatures/ImportCommand.h"

#include "iefeatures/ImportProcedure.h"

#include <CLI/CLI.hpp>

namespace companion
{

void ImportCommand::addOptions(CLI::App& app)
{
    app.add_option("FILE", m_file, "File to import, as an export has written it")
        ->required()
        ->type_name("")
        ->check([](const std::string& file) { return std::string(file.empty() ? "Name a file." : ""); });
    app.add_option("--snapshot", m_snapshots,
                   "Export each camera into a folder below this one first; it must exist")
        ->type_name("DIR")
        ->check(
            [](const std::string& folder) { return std::string(folder.empty() ? "Name a folder." : ""); });
    app.add_flag("--no-audit", m_isUnaudited, "Leave no line in the audit log");
    JobCommand::addOptions(app);
}

QStringList ImportCommand::objections(const std::vector<Camera>&) const
{
    return isBag() ? objectionsToBagPath(QString::fromStdString(m_file)) : QStringList();
}

int ImportCommand::carryOut(Console& console, const std::vector<Camera>& cameras) const
{
    ImportTask task;
    task.command = name();
    (isBag() ? task.bag : task.features) = QString::fromStdString(m_file);
    task.snapshots = QString::fromStdString(m_snapshots);
    task.isAudited = !m_isUnaudited;
    task.isJson = wantsJson();
    return ImportProcedure(console, task).run(cameras);
}

} // namespace companion
