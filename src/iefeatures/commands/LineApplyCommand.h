// iefeatures line apply: the cameras of a line are set as its inventory says.
#pragma once

#include "iefeatures/commands/AuditOptions.h"
#include "iefeatures/commands/Command.h"
#include "iefeatures/commands/ReportOptions.h"
#include "iefeatures/console/LogSink.h"
#include "iefeatures/line/LinePlan.h"

#include <string>
#include <vector>

namespace companion
{

class LineApplyCommand : public Command
{
public:
    const char* name() const override { return "apply"; }
    const char* summary() const override { return "Set the cameras of a line as its inventory says"; }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    int readLine(Console& console, Inventory& inventory) const;
    int apply(World& world, const Inventory& inventory) const;
    int write(World& world, const Inventory& inventory, Unfinished& unfinished, const LinePlan& plan) const;
    int writeBatch(World& world, const Inventory& inventory, Unfinished& unfinished,
                   const std::vector<LineTarget>& batch) const;
    int writeNames(World& world, const std::vector<LineTarget>& targets) const;
    int writeTargets(World& world, const Inventory& inventory, const std::vector<LineTarget>& targets) const;
    int import(Console& console, const Inventory& inventory, const std::vector<LineTarget>& targets) const;
    void tellPlan(Console& console, const LinePlan& plan) const;
    QStringList names() const;

    std::string m_file;
    std::vector<std::string> m_cameras; // empty: all
    bool m_isDryRun = false;
    bool m_isAgreed = false;
    bool m_isAllAtOnce = false;
    AuditOptions m_audit;
    ReportOptions m_report;
    LogOptions m_log;
    bool m_json = false;
};

} // namespace companion
