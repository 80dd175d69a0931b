// iefeatures export: a features file of each chosen camera.
#pragma once

#include "iefeatures/CameraSelection.h"
#include "iefeatures/Command.h"
#include "iefeatures/ExportSummary.h"
#include "iefeatures/LogSink.h"

namespace companion
{

class ExportCommand : public Command
{
public:
    const char* name() const override { return "export"; }
    const char* summary() const override { return "Write the features of cameras into files, one a camera"; }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    int exportCameras(World& world, const std::vector<Camera>& cameras) const;
    std::vector<ExportResult> runJobs(Console& console, const std::vector<Camera>& cameras) const;
    void report(Console& console, const std::vector<ExportResult>& results) const;

    std::string m_folder;
    CameraSelection m_selection;
    LogOptions m_log;
    bool m_json = false;
};

} // namespace companion
