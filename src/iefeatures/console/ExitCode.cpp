#include "iefeatures/console/ExitCode.h"

#include <iomanip>
#include <sstream>
#include <utility>

namespace companion
{

ExitCode exitCodeOf(CameraVerdict verdict)
{
    switch (verdict) {
    case CameraVerdict::Applied:
    case CameraVerdict::Ready:
        return ExitWell;
    case CameraVerdict::Incomplete:
        return ExitNotAllApplied;
    case CameraVerdict::Incompatible:
    case CameraVerdict::BadFile:
        return ExitIncompatible;
    case CameraVerdict::UnreadableFile:
        return ExitInputOutput;
    case CameraVerdict::NotStarted:
    case CameraVerdict::Failed:
        return ExitJobFailed;
    case CameraVerdict::Interrupted:
        break;
    }
    return ExitInterrupted;
}

std::string exitCodeTable()
{
    static const std::pair<ExitCode, const char*> rows[] = {
        {ExitWell, "all went well"},
        {ExitJobFailed,
         "a job failed; the others went on; or a clone that was asked about was refused; or what was "
         "compared differs"},
        {ExitUsage, "wrong usage, or two chosen cameras that would write one file; nothing was done"},
        {ExitNoSuchCamera,
         "no such camera, another number of them than expected, or one of a folder's files or cameras has no "
         "other; nothing was done, unless --keep-going let the others go on"},
        {ExitNotAllApplied, "a camera did not take all of the file"},
        {ExitIncompatible, "the file belongs to another model, firmware, board type or version, or the "
                           "snapshot to another camera; or it is no features file"},
        {ExitInputOutput, "input or output failed (network, a file or folder, log file, standard output), or "
                          "memory ran out"},
        {ExitInterrupted, "interrupted"},
    };
    std::ostringstream text;
    text << "Exit codes:\n";
    for (const auto& [code, meaning] : rows)
        text << "  " << std::left << std::setw(5) << code << meaning << '\n';
    return text.str();
}

} // namespace companion
