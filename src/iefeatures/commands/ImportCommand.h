// iefeatures import: one file, or its own one of a folder, into each chosen camera.
#pragma once

#include "iefeatures/commands/FolderOption.h"
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
    bool holdsBag(const QString& file) const;
    QStringList onlyNames() const;
    QStringList filesMeant() const;
    bool takesControl() const override { return !m_isDryRun; }
    QString outputProblem() const override { return m_options.outputProblem(); }
    int prepare(Console& console) override;
    CameraSelection::Choice choose(const CameraSelection& selection,
                                   const std::vector<ListedCamera>& found) override;
    void tellRefusal(Console& console) const override;
    QStringList objections(const std::vector<ListedCamera>& cameras) const override;
    SharedImportFiles read(const QString& file, const QString& parts, QString& problem) const;
    std::vector<ImportJob> jobs(const std::vector<ListedCamera>& cameras, const QString& parts,
                                QString& problem) const;
    int import(Console& console, const std::vector<ImportJob>& jobs) const;
    int carryOut(Console& console, const std::vector<ListedCamera>& cameras) const override;

    std::string m_file;
    FolderOption m_folder;
    bool m_isDryRun = false;
    bool m_isForced = false;
    std::vector<std::string> m_only;
    ImportOptions m_options;
};

} // namespace companion
