// iefeatures plan and iefeatures verify: a features file against each chosen camera, which is only read.
#pragma once

#include "iefeatures/check/CheckReport.h"
#include "iefeatures/commands/CameraSearch.h"

#include <string>

namespace companion
{

struct CheckTask
{
    CheckRule rule;
    Detail detail = Detail::Attention;
    bool isJson = false;
};

// Checks the cameras, tells what it has come to and gives an ExitCode; none is asked when the file is none.
// An interrupt ends it after the features in hand.
int runCheck(Console& console, const std::vector<ListedCamera>& cameras, const QString& file,
             const CheckTask& task);

class CheckCommand : public Command
{
public:
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

protected:
    virtual CheckMode mode() const = 0;

private:
    CameraSelection m_selection;
    SearchOptions m_search;
    std::string m_file;
    bool m_isStrict = false;
    bool m_isDetailed = false;
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
