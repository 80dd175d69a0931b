// iefeatures import: one file into each chosen camera.
#pragma once

#include "iefeatures/commands/ImportOptions.h"
#include "iefeatures/commands/JobCommand.h"

namespace companion
{

class ImportCommand : public JobCommand
{
public:
    const char* name() const override { return "import"; }
    const char* summary() const override { return "Set the features of cameras as a file says"; }
    void addOptions(CLI::App& app) override;

private:
    const char* formatHelp() const override
    {
        return "xml: features file; bag: feature bag; else by the file's content";
    }
    bool holdsBag() const;
    QStringList onlyNames() const;
    bool takesControl() const override { return !m_isDryRun; }
    QString outputProblem() const override { return m_options.outputProblem(); }
    QStringList objections(const std::vector<ListedCamera>& cameras) const override;
    int import(Console& console, const std::vector<ListedCamera>& cameras, const QString& file) const;
    int carryOut(Console& console, const std::vector<ListedCamera>& cameras) const override;

    std::string m_file;
    bool m_isDryRun = false;
    bool m_isForced = false;
    std::vector<std::string> m_only;
    ImportOptions m_options;
};

} // namespace companion
