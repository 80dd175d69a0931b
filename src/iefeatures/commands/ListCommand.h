// iefeatures list: the cameras on the line.
#pragma once

#include "iefeatures/cameras/LineWatch.h"
#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/commands/LineOption.h"

namespace companion
{

class ListCommand : public Command
{
public:
    const char* name() const override { return "list"; }
    const char* summary() const override { return "Show the cameras on the line"; }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    // Until somebody ends it.
    int watch(World& world) const;
    void tell(Console& console, const CameraEvent& event) const;
    void pause() const;

    bool m_json = false;
    SearchOptions m_search;
    CameraSelection m_selection; // of all
    LineOption m_line;
    bool m_isWatch = false;
    double m_interval = 1; // seconds between two looks
};

} // namespace companion
