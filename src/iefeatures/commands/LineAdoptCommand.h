// iefeatures line adopt: what a camera of the line has now becomes its right state.
#pragma once

#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/commands/ReportOptions.h"
#include "iefeatures/console/LogSink.h"
#include "iefeatures/line/LineCapture.h"

#include <string>

namespace companion
{

class LineAdoptCommand : public Command
{
public:
    const char* name() const override { return "adopt"; }
    const char* summary() const override { return "Let what a camera has now become its right state"; }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    int adopt(World& world, const Inventory& inventory, std::vector<CapturedCamera>& cameras) const;
    bool differs(Console& console, const Inventory& inventory, const ListedCamera& camera) const;

    std::string m_file;
    std::string m_camera;
    SearchOptions m_search;
    bool m_isAgreed = false;
    double m_pause = 3;
    ReportOptions m_report;
    LogOptions m_log;
    bool m_json = false;
};

} // namespace companion
