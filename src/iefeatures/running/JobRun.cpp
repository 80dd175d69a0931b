#include "iefeatures/running/JobRun.h"

#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/running/Progress.h"
#include "iefeatures/running/SignalPrinter.h"

namespace companion
{

std::vector<JobRecord> runJobs(Console& console, const std::vector<ListedCamera>& cameras, const JobRun& run)
{
    const CallWatch watch(cameras, &Interrupt::isRequested, run.refusal, run.blocks, run.features);
    std::unique_ptr<JobListener> listener;
    if (run.isJson)
        listener = std::make_unique<SignalPrinter>(console);
    else
        listener = std::make_unique<Progress>(console, cameras, watch, run.features.size());

    JobBatch batch(cameras, run.setUp, *listener);
    std::vector<JobRecord> records;
    for (const JobOutcome& outcome : batch.run([] { return !Interrupt::isRequested(); })) {
        const int id = outcome.camera.device.nDeviceID;
        records.push_back({outcome, watch.tally(id), watch.findings(id)});
    }
    return records;
}

int runLogged(Console& console, const LogOptions& options, const std::function<int()>& body)
{
    const LogSink log(console, options);
    if (!log.isGood()) {
        console.err("The log file cannot be opened: " + options.file + '\n');
        return ExitInputOutput;
    }
    const Interrupt interrupt;
    const int code = body();
    if (code == ExitWell && !log.isGood()) {
        console.err("The log file cannot be written: " + options.file + '\n');
        return ExitInputOutput;
    }
    return code;
}

} // namespace companion
