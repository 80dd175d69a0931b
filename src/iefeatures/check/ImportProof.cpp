#include "iefeatures/check/ImportProof.h"

#include <algorithm>

namespace companion
{
namespace
{

bool isOf(const Change& change, const EntryCheck& entry)
{
    if (change.isRegister != entry.isRegister)
        return false;
    return change.isRegister ? entry.address == qint64(change.address) : change.feature == entry.feature;
}

bool isSameThing(const EntryCheck& one, const EntryCheck& other)
{
    if (one.isRegister != other.isRegister)
        return false;
    return one.isRegister ? one.address == other.address : one.feature == other.feature;
}

void layOver(EntryCheck& entry, const ImportTraces& traces)
{
    const auto isChanged = [&](const Change& change) { return isOf(change, entry); };
    if (entry.verdict == EntryVerdict::Unchanged &&
        std::any_of(traces.changes.begin(), traces.changes.end(), isChanged))
        entry.verdict = EntryVerdict::Applied;
    if (entry.verdict != EntryVerdict::NotApplied && entry.verdict != EntryVerdict::Coerced)
        return;
    // A value that the camera has refused was near the file's before: nobody has made it fit.
    const auto refusal =
        std::find_if(traces.failures.begin(), traces.failures.end(), [&](const EntryCheck& failure) {
            return isAmiss(failure) && isSameThing(failure, entry);
        });
    if (refusal != traces.failures.end())
        entry.judge(EntryVerdict::NotApplied, refusal->reason);
}

} // namespace

EntryCheck failedEntry(const FailedCall& call)
{
    EntryCheck entry;
    entry.feature = call.feature;
    entry.isRegister = call.isRegister;
    if (call.isRegister)
        entry.address = call.address;
    entry.judge(EntryVerdict::NotApplied, KX_CC_StatusText(call.status));
    return entry;
}

void layOver(CameraCheck& check, const ImportTraces& traces)
{
    if (check.verdict > CameraVerdict::Incomplete)
        return;
    for (EntryCheck& entry : check.entries)
        layOver(entry, traces);
    for (const EntryCheck& failure : traces.failures) {
        const auto isIt = [&](const EntryCheck& entry) { return isSameThing(failure, entry); };
        if (std::none_of(check.entries.begin(), check.entries.end(), isIt))
            check.entries.push_back(failure);
    }
    check.verdict = verdictOn(check.entries, CameraVerdict::Applied);
}

} // namespace companion
