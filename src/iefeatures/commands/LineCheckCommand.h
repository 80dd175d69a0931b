// iefeatures line check: a line against its inventory.
#pragma once

#include "iefeatures/commands/Command.h"
#include "iefeatures/commands/ReportOptions.h"
#include "iefeatures/line/LineReport.h"

#include <string>

namespace companion
{

class LineCheckCommand : public Command
{
public:
    const char* name() const override { return "check"; }
    const char* summary() const override
    {
        return "Compare the cameras of a line with its inventory; only reads";
    }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    int check(World& world, Inventory& inventory, std::optional<LineCheck>& done) const;
    int writeFiles(Console& console, const Inventory& inventory, const std::optional<LineCheck>& done,
                   int code) const;

    std::string m_file;
    bool m_isStrict = false;
    std::string m_junit; // files; empty: none
    std::string m_page;
    std::string m_metrics;
    bool m_isQuiet = false;
    ReportOptions m_report;
    bool m_json = false;
};

} // namespace companion
