#include "iefeatures/running/JobBatch.h"

#include "iefeatures/running/CallWatch.h"

#include "jobs/worker/QOperateThread.h"
#include <SuiteTools/SuiteTools.h>

#include <QTimer>

#include <utility>

namespace companion
{
namespace
{

constexpr int kTickMilliseconds = 100;

// Where not even the memory is there to tell that a job ran out of it.
class GuardedWorker : public QOperateThread
{
public:
    explicit GuardedWorker(std::function<void()> caught) : m_caught(std::move(caught)) {}

protected:
    void run() override
    {
        try {
            QOperateThread::run();
        } catch (...) {
            m_caught();
        }
    }

private:
    const std::function<void()> m_caught;
};

} // namespace

JobBatch::JobBatch(const std::vector<ListedCamera>& cameras, SetUp setUp, JobListener& listener)
    : m_setUp(std::move(setUp)), m_listener(listener), m_jobs(cameras.size())
{
    for (size_t i = 0; i < cameras.size(); ++i)
        m_jobs[i].outcome.camera = cameras[i];
}

JobBatch::~JobBatch() = default;

std::vector<JobOutcome> JobBatch::run(const std::function<bool()>& mayStart)
{
    m_mayStart = mayStart;
    guarded([this] { startWhatMay(); });
    if (m_running > 0) {
        QTimer ticks;
        QObject::connect(&ticks, &QTimer::timeout, [this] {
            askForTheEnd();
            guarded([this] { m_listener.tick(); });
        });
        ticks.start(kTickMilliseconds);
        m_loop.exec();
    }
    if (m_failure)
        std::rethrow_exception(m_failure);
    std::vector<JobOutcome> outcomes;
    for (Job& job : m_jobs)
        outcomes.push_back(job.outcome);
    return outcomes;
}

// Heard by what a job computes between two calls to its camera.
void JobBatch::askForTheEnd()
{
    if (m_mayStart())
        return;
    for (const Job& job : m_jobs)
        if (job.worker)
            job.worker->requestInterruption();
}

void JobBatch::startWhatMay()
{
    while (m_next < m_jobs.size() && m_running < VELAInterface::toolsSupportNum() && m_mayStart())
        start(m_jobs[m_next++]);
}

void JobBatch::start(Job& job)
{
    JobOutcome& outcome = job.outcome;
    job.worker = std::make_unique<GuardedWorker>([this] { keepFailure(); });
    QOperateThread* worker = job.worker.get();
    QObject::connect(worker, &QOperateThread::SigBeginThread, &m_here, [this, &outcome](long, unsigned type) {
        outcome.type = type;
        guarded([&] { m_listener.begin(outcome.camera, type); });
    });
    QObject::connect(worker, &QOperateThread::SigThreadInfo, &m_here,
                     [this, &outcome](long, const QString& message, bool isFailure) {
                         outcome.hasFailed = outcome.hasFailed || isFailure;
                         guarded(
                             [&] { m_listener.info(outcome.camera, withInterruption(message), isFailure); });
                     });
    QObject::connect(worker, &QOperateThread::SigEndThread, &m_here,
                     [this, &job](long, unsigned type, const QString& path) {
                         job.outcome.path = path;
                         job.outcome.seconds = double(job.clock.nsecsElapsed()) / 1e9;
                         guarded([&] { m_listener.end(job.outcome.camera, type, path); });
                     });
    QObject::connect(worker, &QThread::finished, &m_here, [this, worker, &outcome] {
        worker->wait();
        outcome.errorCode = worker->ErrorCode();
        finish();
    });
    m_setUp(*worker, outcome.camera.device);
    job.clock.start();
    worker->start();
    if (!worker->isRunning() && !worker->isFinished())
        return tellNotStarted(job);
    outcome.hasStarted = true;
    ++m_running;
}

// The system gives no thread, and the worker will never say so.
void JobBatch::tellNotStarted(Job& job)
{
    job.worker.reset();
    guarded([&] { m_listener.info(job.outcome.camera, "no thread can be started for it.", true); });
}

void JobBatch::keepFailure()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_failure)
        m_failure = std::current_exception();
}

// Nothing may be thrown through the event loop, with workers that still run.
void JobBatch::guarded(const std::function<void()>& body)
{
    try {
        body();
    } catch (...) {
        keepFailure();
    }
}

void JobBatch::finish()
{
    --m_running;
    guarded([this] { startWhatMay(); });
    if (m_running == 0)
        m_loop.quit();
}

} // namespace companion
