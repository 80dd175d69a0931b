// iefeatures plan and iefeatures verify: a features file, or one of a folder, against each chosen camera,
// which is only read.
#pragma once

#include "iefeatures/check/CheckReport.h"
#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/commands/FolderOption.h"
#include "iefeatures/commands/LineOption.h"
#include "iefeatures/commands/ReportOptions.h"
#include "iefeatures/imports/ImportFiles.h"

#include <string>
#include <vector>

namespace companion
{

struct CheckTask
{
    CheckRule rule;
    ReportStyle style;
    bool isJson = false;
};

// Checks the cameras by their features files, tells what it has come to and gives an ExitCode; none is asked
// whose file is none. An interrupt ends it after the features in hand.
int runCheck(Console& console, const std::vector<ImportJob>& jobs, const CheckTask& task,
             const FolderOption& folder);

class CheckCommand : public Command
{
public:
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

protected:
    virtual CheckMode mode() const = 0;

private:
    std::vector<ImportJob> jobs(const std::vector<ListedCamera>& cameras) const;

    CameraSelection m_selection;
    LineOption m_line;
    SearchOptions m_search;
    FolderOption m_folder;
    std::string m_file;
    bool m_isStrict = false;
    ReportOptions m_report;
    std::vector<std::string> m_ignored;
    bool m_json = false;
};

class PlanCommand : public CheckCommand
{
public:
    const char* name() const override { return "plan"; }
    const char* summary() const override { return "Show what an import would change, and change nothing"; }

private:
    CheckMode mode() const override { return CheckMode::Plan; }
};

class VerifyCommand : public CheckCommand
{
public:
    const char* name() const override { return "verify"; }
    const char* summary() const override { return "Compare cameras with a features file"; }

private:
    CheckMode mode() const override { return CheckMode::Verify; }
};

} // namespace companion
