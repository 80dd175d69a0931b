#include "iefeatures/network/NetworkWrites.h"

#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/imports/WriteReport.h"

#include "camera_line/RecordTexts.h"

#include <mutex>

namespace companion
{
namespace
{

FeatureWrites failed(const ListedCamera& camera, const QString& error)
{
    FeatureWrites result;
    result.check.camera = camera;
    result.check.verdict = CameraVerdict::Failed;
    result.check.error = error;
    return result;
}

// One that is searched for by its address alone is found no more by that.
ListedCamera movedTo(ListedCamera camera, const IpPlace& place)
{
    camera.device.stDeviceInfo.special.gige.ipAddress = place.address;
    camera.address = camera_line::dottedQuad(place.address);
    return camera;
}

// The entry of what was forced stands before those of what is kept.
void noteForced(const ListedCamera& before, const IpPlace& place, FeatureWrites& result)
{
    const QString address = camera_line::dottedQuad(place.address);
    EntryCheck entry;
    entry.feature = "GevCurrentIPAddress";
    entry.fileValue = entry.cameraValue = address;
    entry.judge(EntryVerdict::Applied);
    result.check.entries.insert(result.check.entries.begin(), entry);
    result.changes.insert(result.changes.begin(), {entry.feature, false, 0, before.address, address});
    if (result.check.verdict == CameraVerdict::NotStarted)
        result.check.verdict = CameraVerdict::Applied;
}

FeatureWrites writeOne(const Look& look, std::mutex& searching, const NetworkJob& job)
{
    ListedCamera camera = job.camera;
    if (job.task.forced) {
        if (const QString problem = forceAddress(camera, *job.task.forced); !problem.isEmpty())
            return failed(camera, problem);
        const std::lock_guard lock(searching);
        camera = findAgain(look, camera).value_or(movedTo(camera, *job.task.forced));
    }
    FeatureWrites result;
    result.check.camera = camera;
    if (job.task.isKept())
        result = Interrupt::isRequested() ? result : writeNetwork(camera, job.task);
    if (job.task.forced)
        noteForced(job.camera, *job.task.forced, result);
    return result;
}

} // namespace

int writeNetworks(Console& console, const Look& look, const QString& command, const AuditRule& audit,
                  const std::vector<NetworkJob>& jobs)
{
    std::vector<FeatureWrites> results(jobs.size());
    std::vector<AuditEntry> entries;
    for (size_t i = 0; i < jobs.size(); ++i) {
        results[i].check.camera = jobs[i].camera;
        entries.push_back(auditEntryOf(command, results[i]));
    }
    AuditTrail trail(console, audit);
    if (!trail.begin(entries))
        return ExitInputOutput;
    std::mutex searching;
    inParallel(jobs.size(), [&](size_t i) {
        results[i] = writeOne(look, searching, jobs[i]);
        entries[i] = auditEntryOf(command, results[i]);
    });
    trail.end(entries);
    tellWrites(console, results);
    std::vector<CameraVerdict> verdicts;
    for (const FeatureWrites& result : results)
        verdicts.push_back(result.check.verdict);
    return Interrupt::isRequested() ? int(ExitInterrupted) : exitCodeOf(gravest(verdicts));
}

} // namespace companion
