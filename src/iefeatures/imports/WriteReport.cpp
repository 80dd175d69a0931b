#include "iefeatures/imports/WriteReport.h"

#include "iefeatures/check/CheckReport.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/running/NetChanges.h"

namespace companion
{

AuditEntry auditEntryOf(const QString& command, const FeatureWrites& result)
{
    AuditEntry entry;
    entry.command = command;
    entry.camera = result.check.camera;
    entry.changes = result.changes;
    entry.inDoubt = result.inDoubt;
    entry.notApplied = result.check.notApplied();
    entry.outcome = result.check.verdict;
    return entry;
}

QString doubtText(const QString& names)
{
    return "may have been changed, as no answer came: " + names;
}

int tellWrites(Console& console, const std::vector<FeatureWrites>& results)
{
    std::vector<CameraCheck> checks;
    std::vector<CameraVerdict> verdicts;
    for (const FeatureWrites& result : results) {
        checks.push_back(result.check);
        checks.back().changed = titlesOf(result.changes);
        verdicts.push_back(result.check.verdict);
        for (const Change& change : result.changes)
            console.err(result.check.camera.title() + ": " + printable(change.feature) + ": " +
                        printable(change.from.isNull() ? change.to : change.from + " -> " + change.to) +
                        '\n');
        if (!result.inDoubt.empty())
            console.err(result.check.camera.title() + ": " +
                        doubtText(printable(result.check.inDoubt.join(", "))) + '\n');
    }
    if (Interrupt::isRequested())
        console.err(std::string("Interrupted.\n"));
    for (const CameraCheck& check : checks)
        console.object("result", checkJson(check));
    ReportStyle style;
    style.target = "wanted";
    style.columns = reportColumns();
    if (!console.isJson())
        console.out(checkText(checks, style));
    return Interrupt::isRequested() ? int(ExitInterrupted) : exitCodeOf(gravest(verdicts));
}

} // namespace companion
