#include "iefeatures/exports/WholeExport.h"

#include "iefeatures/running/JobRun.h"

#include "jobs/worker/QOperateThread.h"

namespace companion
{

std::vector<CameraExport> runExports(Console& console, const std::vector<ListedCamera>& cameras,
                                     const ExportTask& task)
{
    const auto setUp = [&](QOperateThread& worker, const StructDeviceInfo& device) {
        if (task.isShared)
            worker.SetAccessMode(KX_ACCESS_MONITOR);
        if (task.format == ExportTask::Format::FeatureBag)
            worker.SetFeatureBagExportJob(device, task.folder(device));
        else
            worker.SetXmlExportJob(device, task.folder(device));
    };
    std::vector<CameraExport> exports;
    for (const JobRecord& record : runJobs(console, cameras, {setUp, task.isJson})) {
        const ExportResult result = examineExport(record.job, record.tally, record.findings.bagStatus);
        exports.push_back({result, exportRemarks(result, record.findings)});
    }
    return exports;
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
