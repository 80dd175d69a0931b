#include "iefeatures/console/Verdict.h"

#include <algorithm>

namespace companion
{

QString verdictWord(CameraVerdict verdict)
{
    switch (verdict) {
    case CameraVerdict::Applied:
        return "applied";
    case CameraVerdict::Ready:
        return "ready";
    case CameraVerdict::Incomplete:
        return "incomplete";
    case CameraVerdict::Incompatible:
        return "incompatible";
    case CameraVerdict::BadFile:
        return "bad file";
    case CameraVerdict::UnreadableFile:
        return "unreadable file";
    case CameraVerdict::NotStarted:
        return "not started";
    case CameraVerdict::Failed:
        return "failed";
    case CameraVerdict::Interrupted:
        break;
    }
    return "interrupted";
}

CameraVerdict gravest(const std::vector<CameraVerdict>& verdicts)
{
    const auto found = std::max_element(verdicts.begin(), verdicts.end());
    return found == verdicts.end() ? CameraVerdict::Applied : *found;
}

QString verdictWord(EntryVerdict verdict)
{
    switch (verdict) {
    case EntryVerdict::Applied:
        return "applied";
    case EntryVerdict::Unchanged:
        return "unchanged";
    case EntryVerdict::WouldChange:
        return "would change";
    case EntryVerdict::Coerced:
        return "coerced";
    case EntryVerdict::NotApplied:
        return "not applied";
    case EntryVerdict::Skipped:
        return "skipped";
    case EntryVerdict::NotWritable:
        return "not writable";
    case EntryVerdict::OutOfRange:
        return "out of range";
    case EntryVerdict::Absent:
        return "absent";
    case EntryVerdict::Broken:
        return "broken";
    case EntryVerdict::State:
        return "state";
    case EntryVerdict::Session:
        return "session";
    case EntryVerdict::Automatic:
        return "automatic";
    case EntryVerdict::Ignored:
        break;
    }
    return "ignored";
}

bool isNoSetting(EntryVerdict verdict)
{
    return verdict == EntryVerdict::State || verdict == EntryVerdict::Session ||
           verdict == EntryVerdict::Automatic || verdict == EntryVerdict::Ignored;
}

} // namespace companion
