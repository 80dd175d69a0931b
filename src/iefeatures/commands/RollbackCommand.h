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
    // ExitWell, or why nothing is done, which is told.
    int readFiles(Console& console, const Snapshot& snapshot, FeaturesFileInput& file) const;
    int proveCameras(Console& console, const std::vector<ListedCamera>& cameras,
                     const ie::FeaturesContent& content) const;
    int objectTo(Console& console, const ListedCamera& camera, const Snapshot& snapshot,
                 const ie::FeaturesHeader& header) const;

    ImportTask task() const;
    static SharedImportFiles filesOf(Console& console, const Snapshot& snapshot);

    std::string m_snapshot;
    CameraSelection m_selection;
    SearchOptions m_search;
    bool m_isForced = false;
    bool m_json = false;
    ImportOptions m_options;
    LogOptions m_log;
};

} // namespace companion
