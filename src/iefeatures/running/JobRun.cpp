#include "iefeatures/running/JobRun.h"

#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/running/Progress.h"
#include "iefeatures/running/SignalPrinter.h"

#include <QSet>

namespace companion
{
namespace
{

// Hands on what the jobs tell; what is made of their ends comes before these.
class Conclusion : public JobListener
{
public:
    Conclusion(JobListener& listener, const CallWatch& watch, const JobRun& run)
        : m_listener(listener), m_watch(watch), m_run(run)
    {}

    void begin(const ListedCamera& camera, unsigned type) override { m_listener.begin(camera, type); }

    void info(const ListedCamera& camera, const QString& message, bool isFailure) override
    {
        if (isFailure)
            m_failed.insert(camera.device.nDeviceID);
        m_listener.info(camera, message, isFailure);
    }

    void end(const ListedCamera& camera, unsigned type, const QString& path) override
    {
        if (!m_run.conclude)
            return m_listener.end(camera, type, path);
        const int id = camera.device.nDeviceID;
        JobOutcome job{camera, true, m_failed.contains(id), path, 0, type, 0};
        const JobEnd end = m_run.conclude({job, m_watch.tally(id), m_watch.findings(id)});
        for (const QString& note : end.notes)
            m_listener.info(camera, note, false);
        if (!end.problem.isEmpty())
            m_listener.info(camera, end.problem, true);
        m_listener.end(camera, type, end.path);
    }

    void tick() override { m_listener.tick(); }

private:
    JobListener& m_listener;
    const CallWatch& m_watch;
    const JobRun& m_run;
    QSet<int> m_failed;
};

} // namespace

std::vector<JobRecord> runJobs(Console& console, const std::vector<ListedCamera>& cameras, const JobRun& run)
{
    CallWatch watch(cameras, &Interrupt::isRequested, run.refusal, run.expected);
    std::unique_ptr<JobListener> listener;
    if (run.isJson)
        listener = std::make_unique<SignalPrinter>(console);
    else
        listener = std::make_unique<Progress>(console, cameras, watch);

    Conclusion conclusion(*listener, watch, run);
    JobBatch batch(cameras, run.setUp, conclusion);
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
        console.err("The log file cannot be opened: " + options.file + " (" +
                    log.openingFailure().toStdString() + ")\n");
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
