#include "iefeatures/JobRun.h"

#include "iefeatures/Interrupt.h"
#include "iefeatures/Progress.h"
#include "iefeatures/SignalPrinter.h"

namespace companion
{

std::vector<JobRecord> runJobs(Console& console, const std::vector<Camera>& cameras, const JobRun& run)
{
    const CallWatch watch(cameras, &Interrupt::isRequested, run.refusal, run.blocks);
    std::unique_ptr<JobListener> listener;
    if (run.isJson)
        listener = std::make_unique<SignalPrinter>(console);
    else
        listener = std::make_unique<Progress>(console, cameras, watch);

    JobBatch batch(cameras, run.setUp, *listener);
    std::vector<JobRecord> records;
    for (const JobOutcome& outcome : batch.run([] { return !Interrupt::isRequested(); })) {
        const int id = outcome.camera.device.nDeviceID;
        records.push_back({outcome, watch.tally(id), watch.findings(id)});
    }
    return records;
}

} // namespace companion
