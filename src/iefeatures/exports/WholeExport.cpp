#include "iefeatures/exports/WholeExport.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/FeatureReader.h"
#include "iefeatures/exports/ExportStage.h"
#include "iefeatures/running/JobRun.h"

#include "jobs/worker/QOperateThread.h"

#include <QFileInfo>

#include <map>

namespace companion
{

namespace
{

bool isEmptyBag(const ExportResult& result)
{
    return result.state == ExportResult::State::Written && result.job.type == JOB_FEATURE_BAG_EXPORT &&
           result.features == 0;
}

// Asks the camera, which its job has given back; who does not answer has no problem with it.
QString descriptionProblemOf(const ListedCamera& camera)
{
    const CameraConnection connection(camera.device.stDeviceInfo, KX_ACCESS_MONITOR);
    return connection.status() == KX_OK ? FeatureReader(connection.handle()).descriptionProblem() : QString();
}

// Of a features file, where nothing that was seen of the job tells it.
QString unknownCause(const ListedCamera& camera)
{
    const QString name = fileNameProblem(camera, FileNaming::ModelAndSerial);
    const QString description = name.isEmpty() ? descriptionProblemOf(camera) : QString();
    if (!name.isEmpty() || !description.isEmpty())
        return name + description;
    if (lacksFirmwareVersion(camera))
        return "the camera has no DeviceFirmwareVersion, without which there is no features file.";
    return "the file could not be written.";
}

class Exports
{
public:
    Exports(const std::vector<ListedCamera>& cameras, const ExportTask& task)
        : m_task(task), m_stage(cameras, task.folder)
    {
        for (const ListedCamera& camera : cameras) {
            ExportResult& result = m_exports[camera.device.nDeviceID].result;
            result.job.camera = camera;
            result.problem = m_stage.problem(camera.device.nDeviceID);
            if (result.problem.isEmpty())
                result.problem = objectionTo(camera);
            if (result.problem.isEmpty())
                m_ready.push_back(camera);
            else
                result.state = ExportResult::State::Failed;
        }
    }

    void run(Console& console)
    {
        const auto setUp = [this](QOperateThread& worker, const StructDeviceInfo& device) {
            if (m_task.isShared)
                worker.SetAccessMode(KX_ACCESS_MONITOR);
            if (m_task.format == ExportTask::Format::FeatureBag)
                worker.SetFeatureBagExportJob(device, m_stage.folder(device.nDeviceID));
            else
                worker.SetXmlExportJob(device, m_stage.folder(device.nDeviceID));
        };
        for (const auto& [id, done] : m_exports)
            if (!done.result.problem.isEmpty())
                console.err(done.result.job.camera.title() + ": " + done.result.problem + '\n');
        JobRun run{setUp, m_task.isJson};
        run.conclude = [this](const JobRecord& record) { return conclude(record); };
        for (const JobRecord& record : runJobs(console, m_ready, run))
            settle(record);
    }

    const CameraExport& of(const ListedCamera& camera) const { return m_exports.at(camera.device.nDeviceID); }

private:
    // The camera library writes a bag where its name leads; the job for features files looks at that itself.
    QString objectionTo(const ListedCamera& camera) const
    {
        const bool isLookedAt =
            m_task.format == ExportTask::Format::FeaturesFile && m_task.naming == FileNaming::ModelAndSerial;
        const QString problem = isLookedAt ? QString() : fileNameProblem(camera, m_task.naming);
        return problem.isEmpty() && m_task.objection ? m_task.objection(camera) : problem;
    }

    // As the job has called it, unless another name is asked for.
    QString nameFor(const JobOutcome& job) const
    {
        return m_task.naming == FileNaming::ModelAndSerial ? QFileInfo(job.path).fileName()
                                                           : fileNameOf(job.camera, m_task.naming);
    }

    // What is good is in its place before anybody is told.
    JobEnd conclude(const JobRecord& record)
    {
        const int id = record.job.camera.device.nDeviceID;
        CameraExport& done = m_exports[id];
        JobOutcome job = record.job;
        if (const QString file = m_stage.file(id); !file.isEmpty())
            job.path = file;
        const QString name = nameFor(job);
        const QString target = m_stage.target(id, name);
        ExportResult& result = done.result =
            examineExport(job, record.tally, record.findings, m_task.unreadable);
        result.job.path = target;
        if (isEmptyBag(result))
            result.problem = descriptionProblemOf(job.camera);
        if (result.problem.isEmpty() && result.state == ExportResult::State::Written)
            result.problem = m_stage.release(id, name);
        if (!result.problem.isEmpty())
            result.state = ExportResult::State::Failed;
        done.remarks = exportRemarks(result, record.findings);
        if (result.state == ExportResult::State::Failed && result.problem.isEmpty() && done.remarks.isEmpty())
            done.remarks += unknownCause(job.camera);
        QStringList notes{leftOutNote(result)};
        notes.removeAll({});
        return {target, result.problem, notes};
    }

    void settle(const JobRecord& record)
    {
        JobOutcome& job = m_exports[record.job.camera.device.nDeviceID].result.job;
        const QString target = job.path;
        job = record.job;
        job.path = target;
    }

    const ExportTask& m_task;
    ExportStage m_stage;
    std::vector<ListedCamera> m_ready;
    std::map<int, CameraExport> m_exports; // by device
};

} // namespace

std::vector<CameraExport> runExports(Console& console, const std::vector<ListedCamera>& cameras,
                                     const ExportTask& task)
{
    Exports exports(cameras, task);
    exports.run(console);
    std::vector<CameraExport> done;
    for (const ListedCamera& camera : cameras)
        done.push_back(exports.of(camera));
    return done;
}

bool lacksFirmwareVersion(const ListedCamera& camera)
{
    const CameraConnection connection(camera.device.stDeviceInfo, KX_ACCESS_MONITOR);
    return connection.status() == KX_OK &&
           FeatureReader(connection.handle()).access("DeviceFirmwareVersion").isAbsent();
}

QString sharedRemark()
{
    return "read without control: it may have been changed while it was read.";
}

void tellRemarks(Console& console, const CameraExport& done)
{
    for (const QString& remark : done.remarks)
        console.err(done.result.job.camera.title() + ": " + remark + '\n');
}

} // namespace companion
