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

// One that is searched for by its address alone is found no more by that.
ListedCamera movedTo(ListedCamera camera, const IpPlace& place)
{
    camera.device.stDeviceInfo.special.gige.ipAddress = place.address;
    camera.address = camera_line::dottedQuad(place.address);
    return camera;
}

void append(const FeatureWrites& behind, FeatureWrites& result)
{
    result.check.verdict = behind.check.verdict;
    result.check.error = behind.check.error;
    result.check.inDoubt += behind.check.inDoubt;
    const auto add = [](const auto& from, auto& to) { to.insert(to.end(), from.begin(), from.end()); };
    add(behind.check.entries, result.check.entries);
    add(behind.changes, result.changes);
    add(behind.inDoubt, result.inDoubt);
}

FeatureWrites writeOne(const Look& look, std::mutex& searching, const NetworkJob& job)
{
    FeatureWrites result;
    ListedCamera& camera = result.check.camera = job.camera;
    if (job.task.forced) {
        result = forceAddress(camera, *job.task.forced);
        if (result.check.verdict != CameraVerdict::Applied)
            return result;
        const std::lock_guard lock(searching);
        camera = findAgain(look, camera).value_or(movedTo(camera, *job.task.forced));
    }
    if (job.task.isKept() && !Interrupt::isRequested())
        append(writeNetwork(camera, job.task), result);
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
    return tellWrites(console, results);
}

} // namespace companion
