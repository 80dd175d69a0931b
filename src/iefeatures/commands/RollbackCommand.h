// iefeatures rollback: a camera set back to a snapshot of it.
#pragma once

#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/commands/ImportOptions.h"
#include "iefeatures/console/LogSink.h"

#include <string>

namespace companion
{

class RollbackCommand : public Command
{
public:
    const char* name() const override { return "rollback"; }
    const char* summary() const override { return "Set a camera back to what a snapshot of it holds"; }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    int objectTo(Console& console, const ListedCamera& camera, const Snapshot& snapshot,
                 const ie::FeaturesHeader& header) const;

    std::string m_snapshot;
    CameraSelection m_selection;
    SearchOptions m_search;
    bool m_isForced = false;
    bool m_json = false;
    ImportOptions m_options;
    LogOptions m_log;
};

} // namespace companion
