#include "iefeatures/console/ExitCode.h"

#include <initializer_list>
#include <iomanip>
#include <sstream>
#include <utility>

namespace companion
{
namespace
{

using Rows = std::initializer_list<std::pair<ExitCode, const char*>>;

std::string tableOf(const Rows& rows)
{
    std::ostringstream text;
    text << "Exit codes:\n";
    for (const auto& [code, meaning] : rows)
        text << "  " << std::left << std::setw(5) << code << meaning << '\n';
    return text.str();
}

} // namespace

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
    return tableOf({
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
    });
}

// The gravest of a line's cameras has the last word; the order is that of this table.
std::string lineExitCodeTable()
{
    return tableOf({
        {ExitWell, "all is in order"},
        {ExitUsage, "wrong usage, or cameras that cannot be told apart by name; nothing was done"},
        {ExitNotAllApplied, "a camera differs, is elsewhere, is not in the inventory, or is back"},
        {ExitIncompatible, "a camera has another model or firmware"},
        {ExitNoSuchCamera, "a camera is missing; or none, or more than one, could take its place"},
        {ExitJobFailed, "a camera could not be judged, exported, or taken for another one; or an address is "
                        "somebody else's; or another command works on the line"},
        {ExitInputOutput, "the inventory or a file cannot be read, or written"},
        {ExitInterrupted, "interrupted"},
    });
}

} // namespace companion
