// iefeatures rollback: a camera set back to a snapshot of it, or all cameras of an import to theirs.
#pragma once

#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/commands/ImportOptions.h"
#include "iefeatures/console/LogSink.h"
#include "iefeatures/imports/ImportFiles.h"
#include "iefeatures/imports/Snapshot.h"

#include <string>
#include <vector>

namespace companion
{

class RollbackCommand : public Command
{
public:
    const char* name() const override { return "rollback"; }
    const char* summary() const override { return "Set cameras back to what snapshots of them hold"; }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    struct Source
    {
        Snapshot snapshot;
        SharedImportFiles files;
    };
    struct Job
    {
        ListedCamera camera;
        const Source* source;
    };

    // ExitWell, or why nothing is done, which is told.
    int readSources(Console& console);
    int objectTo(Console& console, const Job& job) const;
    int proveCameras(Console& console, const std::vector<Job>& jobs) const;

    CameraSelection::Choice choose(const std::vector<ListedCamera>& found);
    void pair(const ListedCamera& camera, CameraSelection::Choice& choice);
    int rollBack(Console& console) const;
    ImportTask task() const;

    std::string m_folder;
    std::string m_time;
    CameraSelection m_selection;
    SearchOptions m_search;
    bool m_isForced = false;
    bool m_json = false;
    ImportOptions m_options;
    LogOptions m_log;

    bool m_isOne = false; // the folder is a snapshot, and does not hold those of an import
    std::vector<Source> m_sources;
    std::vector<Job> m_jobs;
};

} // namespace companion
