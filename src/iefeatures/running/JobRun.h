// Runs one job on each of several cameras, watched, with the progress told.
#pragma once

#include "iefeatures/console/Console.h"
#include "iefeatures/console/LogSink.h"
#include "iefeatures/running/CallWatch.h"
#include "iefeatures/running/JobBatch.h"

#include <functional>
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

// What somebody has made of a job that is over, before its end is told.
struct JobEnd
{
    QString path;      // told in place of the job's own
    QString problem;   // makes it a failure, told as one; empty: none but what the job has told
    QStringList notes; // told as well
};

struct JobRun
{
    JobBatch::SetUp setUp;
    bool isJson = false; // the jobs' signals as JSON lines instead of progress for people
    CallWatch::Refusal refusal = CallWatch::Refusal::AtOnce; // when interrupted
    CallWatch::Expected expected = {}; // of each camera's job, where that is known beforehand
    // Asked when a job is over, on the thread that runs them; its time and result code are not known yet.
    std::function<JobEnd(const JobRecord& record)> conclude = {};
};

// In the cameras' order. Blocks until all are over; an interrupt (Interrupt.h) ends them early.
std::vector<JobRecord> runJobs(Console& console, const std::vector<ListedCamera>& cameras, const JobRun& run);

// Runs `body`, which gives an ExitCode, with the log lines of the jobs going where `options` say, and with
// Ctrl-C asking for its end. A log that cannot be written turns a good end into a failure of output.
int runLogged(Console& console, const LogOptions& options, const std::function<int()>& body);

} // namespace companion
