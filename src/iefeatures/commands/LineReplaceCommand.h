// iefeatures line replace: a new camera takes the place of one that is gone.
#pragma once

#include "iefeatures/commands/AuditOptions.h"
#include "iefeatures/commands/Command.h"
#include "iefeatures/commands/ReportOptions.h"
#include "iefeatures/console/LogSink.h"
#include "iefeatures/replace/Candidates.h"
#include "iefeatures/replace/Replacement.h"

#include <optional>
#include <string>
#include <vector>

namespace companion
{

class LineReplaceCommand : public Command
{
public:
    const char* name() const override { return "replace"; }
    const char* summary() const override { return "Let a new camera take the place of one that is gone"; }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    int replaceLocked(World& world) const;
    int readAll(Console& console, Inventory& inventory, std::vector<Inventory>& neighbours) const;
    int choose(World& world, const Inventory& inventory, const std::vector<Inventory>& neighbours,
               const InventoryCamera& wanted, std::optional<ReplacementRecord>& record,
               ListedCamera& camera) const;
    int awaitBegun(World& world, const ReplacementRecord& record, ListedCamera& camera) const;
    int agree(World& world, const InventoryCamera& wanted, const QStringList& plan,
              ListedCamera& camera) const;
    std::chrono::milliseconds patience() const;

    std::string m_file;
    std::string m_camera;
    std::string m_with; // empty: not given
    std::vector<std::string> m_neighbours;
    bool m_takesNamed = false;
    bool m_isForced = false;
    bool m_acceptsFirmware = false;
    bool m_isNotReset = false;
    bool m_isAgreed = false;
    double m_wait = 120; // seconds
    AuditOptions m_audit;
    ReportOptions m_report;
    LogOptions m_log;
    bool m_json = false;
};

} // namespace companion
