// iefeatures show: what stands in a features file.
#pragma once

#include "iefeatures/commands/Command.h"
#include "iefeatures/commands/ReportOptions.h"

#include <string>

namespace companion
{

class ShowCommand : public Command
{
public:
    const char* name() const override { return "show"; }
    const char* summary() const override { return "Show what stands in a features file"; }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    std::string m_file;
    ReportOptions m_report;
    bool m_json = false;
};

} // namespace companion
