// One job on each of several cameras, at the same time.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QObject>

#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

class QOperateThread;

namespace companion
{

struct JobOutcome
{
    ListedCamera camera;
    bool hasStarted = false;
    bool hasFailed = false; // a failure was reported
    QString path;           // of the end report
    double seconds = 0;     // from begin to end report
    unsigned type = 0;      // of the begin report
    unsigned errorCode = 0; // the worker's result code
};

// Told of the workers' signals on the thread that runs the batch.
class JobListener
{
public:
    virtual ~JobListener() = default;
    virtual void begin(const ListedCamera& camera, unsigned type) = 0;
    virtual void info(const ListedCamera& camera, const QString& message, bool isFailure) = 0;
    virtual void end(const ListedCamera& camera, unsigned type, const QString& path) = 0;
    // Now and then while jobs run.
    virtual void tick() {}
};

class JobBatch
{
public:
    using SetUp = std::function<void(QOperateThread& worker, const StructDeviceInfo& device)>;
    JobBatch(const std::vector<ListedCamera>& cameras, SetUp setUp, JobListener& listener);
    ~JobBatch();

    // Runs an event loop until every job is over and gives the outcomes in the cameras' order. As many jobs
    // as the suite supports in one batch run at once, the others wait; one that fails does not stop the
    // others. Where `mayStart` says no, no job is started, and those that run are asked for their end
    // (QThread::requestInterruption()). What a listener has thrown is thrown again when all are over.
    std::vector<JobOutcome> run(const std::function<bool()>& mayStart);

private:
    struct Job
    {
        JobOutcome outcome;
        QElapsedTimer clock;
        std::unique_ptr<QOperateThread> worker;
    };

    void askForTheEnd();
    void startWhatMay();
    void start(Job& job);
    void tellNotStarted(Job& job);
    void finish();
    void keepFailure();
    void guarded(const std::function<void()>& body);

    SetUp m_setUp;
    std::mutex m_mutex;
    std::exception_ptr m_failure;
    JobListener& m_listener;
    std::function<bool()> m_mayStart;
    std::vector<Job> m_jobs;
    size_t m_next = 0;
    unsigned m_running = 0;
    QObject m_here; // brings the signals to the batch's thread
    QEventLoop m_loop;
};

} // namespace companion
