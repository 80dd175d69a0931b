#include "iefeatures/commands/ImportOptions.h"

#include "iefeatures/console/OptionChecks.h"

#include <CLI/CLI.hpp>

namespace companion
{

void addIgnoreOption(CLI::App& app, std::vector<std::string>& names)
{
    app.add_option("--ignore", names,
                   "Do not count these features when they differ; * stands for any characters")
        ->type_name("NAME")
        ->check(isGiven("Name a feature."));
}

QStringList patternsOf(const std::vector<std::string>& names)
{
    QStringList patterns;
    for (const std::string& name : names)
        patterns += QString::fromStdString(name);
    return patterns;
}

void ImportOptions::addSnapshot(CLI::App& app)
{
    app.add_option("--snapshot", m_snapshots,
                   "Export each camera into a folder below this one first; it must exist")
        ->type_name("DIR")
        ->check(
            [](const std::string& folder) { return std::string(folder.empty() ? "Name a folder." : ""); });
    app.add_flag("--skip-unreadable", m_skipsUnreadable, kSkipUnreadableHelp);
}

void ImportOptions::addVerify(CLI::App& app)
{
    app.add_flag("--verify", m_isVerified,
                 "Read everything again that the file names, and tell what did not reach its value");
}

void ImportOptions::addUserSet(CLI::App& app)
{
    auto* persist = app.add_option("--persist", m_userSet,
                                   "Save into this user set of the camera, e.g. UserSet1, when all was "
                                   "applied; verifies");
    persist->type_name("SET")->check(
        [](const std::string& set) { return std::string(set.empty() ? "Name a user set." : ""); });
    app.add_flag("--start-up", m_isForStartUp, "Make that user set the one that is loaded at power-up")
        ->needs(persist);
}

void ImportOptions::addAudit(CLI::App& app)
{
    m_audit.addOptions(app);
}

void ImportOptions::addReport(CLI::App& app)
{
    m_report.addDetails(app);
    m_report.addOptions(app);
}

QString ImportOptions::outputProblem() const
{
    const QString folder = QString::fromStdString(m_snapshots);
    return folder.isEmpty() ? QString() : snapshotFolderProblem(folder);
}

void ImportOptions::addIgnored(CLI::App& app)
{
    addIgnoreOption(app, m_ignored);
}

void ImportOptions::fill(ImportTask& task) const
{
    task.snapshots = QString::fromStdString(m_snapshots);
    task.unreadable = unreadable();
    task.isVerified = isVerified();
    task.userSet = {QString::fromStdString(m_userSet), m_isForStartUp};
    task.audit = m_audit.rule();
    task.style = style();
    task.ignored = ignored();
}

} // namespace companion
