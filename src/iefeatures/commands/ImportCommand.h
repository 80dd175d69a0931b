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
    QStringList objections(const std::vector<ListedCamera>& cameras) const override;
    int carryOut(Console& console, const std::vector<ListedCamera>& cameras) const override;

    std::string m_file;
    bool m_isDryRun = false;
    ImportOptions m_options;
};

} // namespace companion
