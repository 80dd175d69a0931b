// What commands have in common that run one job on each chosen camera.
#pragma once

#include "iefeatures/CallWatch.h"
#include "iefeatures/CameraSelection.h"
#include "iefeatures/Command.h"
#include "iefeatures/JobBatch.h"
#include "iefeatures/LogSink.h"

#include <vector>

namespace companion
{

// One job that is over, or was never started.
struct JobRecord
{
    JobOutcome job;
    CallWatch::Tally tally;
    CallWatch::Findings findings;
};

class JobCommand : public Command
{
public:
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

protected:
    // A sentence for each reason not to begin at all.
    virtual QStringList objections(const std::vector<Camera>&) const { return {}; }
    virtual void setUp(QOperateThread& worker, const StructDeviceInfo& device) const = 0;
    // Tells people (or scripts) what the jobs have come to and gives an ExitCode.
    virtual int conclude(Console& console, const std::vector<JobRecord>& records) const = 0;

    bool isBag() const { return m_format == "bag"; }
    // A sentence when this path cannot be handed to the camera library, which takes it as Latin-1.
    static QStringList objectionsToBagPath(const QString& path);
    bool wantsJson() const { return m_json; }

private:
    int runWithLog(Console& console, const std::vector<Camera>& cameras) const;
    std::vector<JobRecord> runJobs(Console& console, const std::vector<Camera>& cameras) const;

    CameraSelection m_selection;
    LogOptions m_log;
    std::string m_format = "xml";
    bool m_json = false;
};

} // namespace companion
