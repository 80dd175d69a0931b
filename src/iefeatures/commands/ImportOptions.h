// The options of all commands that set features.
#pragma once

#include "iefeatures/commands/AuditOptions.h"
#include "iefeatures/commands/ReportOptions.h"
#include "iefeatures/imports/ImportProcedure.h"

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace companion
{

// --ignore, for all that compare: adds what `names` take.
void addIgnoreOption(CLI::App& app, std::vector<std::string>& names);
QStringList patternsOf(const std::vector<std::string>& names);

class ImportOptions
{
public:
    void addSnapshot(CLI::App& app); // and what becomes of texts that no file can have
    void addVerify(CLI::App& app);   // for commands that do not always verify
    void addUserSet(CLI::App& app);
    void addAudit(CLI::App& app);
    void addReport(CLI::App& app); // of what has become of the features
    void addIgnored(CLI::App& app);

    bool isVerified() const { return m_isVerified || !m_userSet.empty(); }
    QStringList ignored() const { return patternsOf(m_ignored); }
    ReportStyle style() const { return m_report.style(); }
    // A sentence when snapshots cannot be taken for the folder, or an empty text. No camera is asked.
    QString outputProblem() const;
    // Of what is exported on the way.
    Unreadable unreadable() const { return m_skipsUnreadable ? Unreadable::LeftOut : Unreadable::Refused; }
    void fill(ImportTask& task) const;

private:
    std::string m_snapshots;
    bool m_skipsUnreadable = false;
    bool m_isVerified = false;
    std::string m_userSet;
    bool m_isForStartUp = false;
    AuditOptions m_audit;
    ReportOptions m_report;
    std::vector<std::string> m_ignored;
};

} // namespace companion
