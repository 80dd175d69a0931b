// iefeatures line init: the present cameras become an inventory, or join one.
#pragma once

#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/console/LogSink.h"
#include "iefeatures/line/LineCapture.h"

#include <string>

namespace companion
{

class LineInitCommand : public Command
{
public:
    const char* name() const override { return "init"; }
    const char* summary() const override
    {
        return "Write an inventory of the present cameras, and their files";
    }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    int prepare(Console& console, Inventory& inventory) const;
    int find(World& world, const Inventory& inventory, std::vector<CapturedCamera>& cameras) const;
    int take(World& world, const Inventory& inventory, std::vector<CapturedCamera>& cameras) const;
    int choose(World& world, const Inventory& inventory, std::vector<CapturedCamera>& cameras) const;
    bool isNew() const { return !m_isAdded && m_refreshed.empty(); }

    std::string m_file;
    CameraSelection m_selection;
    SearchOptions m_search;
    std::string m_lineName;  // empty: the file's
    std::string m_naming;    // empty: user names
    std::string m_userSet;   // empty: UserSet1 where there is one
    bool m_isAdded = false;  // to an inventory that is there
    std::string m_refreshed; // a camera of it; empty: none
    double m_pause = 3;      // seconds between the two looks
    LogOptions m_log;
    bool m_json = false;
};

} // namespace companion
