#include "iefeatures/check/CheckReport.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"

#include <algorithm>

namespace companion
{
namespace
{

QString outcomeWord(ie::IdentityComparison::Outcome outcome)
{
    switch (outcome) {
    case ie::IdentityComparison::Outcome::Good:
        return "good";
    case ie::IdentityComparison::Outcome::Tolerated:
        return "tolerated";
    case ie::IdentityComparison::Outcome::Bad:
        break;
    }
    return "bad";
}

QString quoted(const QString& value)
{
    return value.isNull() ? QString("-") : '"' + value + '"';
}

QString identityLines(const CameraCheck& check, Detail detail)
{
    QString text;
    for (const ie::IdentityComparison& line : check.identity)
        if (detail == Detail::All || line.outcome != ie::IdentityComparison::Outcome::Good)
            text += QString("  %1: %2, file %3, camera %4\n")
                        .arg(identityWord(line.what), outcomeWord(line.outcome),
                             printable(quoted(line.fileValue)), printable(quoted(line.cameraValue)));
    return text;
}

QString filesAndCameras(const EntryCheck& entry)
{
    QStringList parts;
    if (!entry.cameraValue.isNull())
        parts += "camera " + entry.cameraValue;
    if (!entry.fileValue.isNull())
        parts += "file " + entry.fileValue;
    return parts.join(", ");
}

QString valuesText(const EntryCheck& entry)
{
    switch (entry.verdict) {
    case EntryVerdict::WouldChange:
        return (entry.cameraValue.isNull() ? QString("?") : entry.cameraValue) + " -> " + entry.newValue;
    case EntryVerdict::State:
    case EntryVerdict::Session:
    case EntryVerdict::Automatic:
    case EntryVerdict::Ignored:
    case EntryVerdict::Coerced:
    case EntryVerdict::NotApplied:
    case EntryVerdict::NotWritable:
    case EntryVerdict::OutOfRange:
        return filesAndCameras(entry);
    default:
        return {};
    }
}

bool isAsExpected(const EntryCheck& entry)
{
    return entry.verdict == EntryVerdict::Unchanged || entry.verdict == EntryVerdict::Applied;
}

bool isWorthALine(const EntryCheck& entry, Detail detail)
{
    if (isAsExpected(entry))
        return false;
    return detail == Detail::All || entry.verdict == EntryVerdict::WouldChange || isAmiss(entry);
}

QString entryLines(const CameraCheck& check, Detail detail)
{
    QString text;
    for (const EntryCheck& entry : check.entries) {
        if (isWorthALine(entry, detail)) {
            QStringList parts = {printable(entry.title()), printable(valuesText(entry)),
                                 printable(entry.reason)};
            parts.removeAll({});
            text += "  " + verdictWord(entry.verdict) + ": " + parts.join(": ") + '\n';
        }
        for (const QString& warning : entry.warnings)
            text += "  warning: " + printable(entry.title()) + ": " + printable(warning) + '\n';
    }
    return text;
}

// Of a camera that was asked about every entry.
bool isComplete(const CameraCheck& check)
{
    return check.verdict <= CameraVerdict::Incomplete;
}

// "152 unchanged, 1 not applied; state: 3 differ"
QString countsLine(const CameraCheck& check)
{
    QStringList counts;
    QString others;
    for (const EntryVerdict verdict : kEntryVerdicts) {
        const auto count =
            std::count_if(check.entries.begin(), check.entries.end(),
                          [verdict](const EntryCheck& entry) { return entry.verdict == verdict; });
        if (count > 0 && isNoSetting(verdict))
            others += QString("; %1: %2 %3")
                          .arg(verdictWord(verdict))
                          .arg(count)
                          .arg(count == 1 ? "differs" : "differ");
        else if (count > 0)
            counts += QString::number(count) + ' ' + verdictWord(verdict);
    }
    if (check.entries.empty())
        return "  nothing in the file\n";
    return "  " + (counts.isEmpty() ? "no settings" : counts.join(", ")) + others + '\n';
}

Json identityJson(const ie::IdentityComparison& line)
{
    return {{"check", json(identityWord(line.what))},
            {"verdict", json(outcomeWord(line.outcome))},
            {"file", jsonUnlessNull(line.fileValue)},
            {"camera", jsonUnlessNull(line.cameraValue)}};
}

Json entryJson(const EntryCheck& entry)
{
    Json object = {{"feature", json(entry.feature)}};
    if (entry.isRegister)
        object["register"] = entry.address ? Json(*entry.address) : Json();
    object["verdict"] = json(verdictWord(entry.verdict));
    object["file"] = jsonUnlessNull(entry.fileValue);
    object["camera"] = jsonUnlessNull(entry.cameraValue);
    if (!entry.newValue.isNull())
        object["new"] = json(entry.newValue);
    if (!entry.reason.isEmpty())
        object["reason"] = json(entry.reason);
    object["warnings"] = json(entry.warnings);
    return object;
}

} // namespace

QString checkText(const std::vector<CameraCheck>& checks, Detail detail)
{
    QString text;
    for (const CameraCheck& check : checks) {
        text += check.camera.title() + ": " + verdictWord(check.verdict);
        if (!check.error.isEmpty())
            text += ": " + printable(check.error);
        text += '\n' + (isComplete(check) ? countsLine(check) : QString()) + identityLines(check, detail) +
                entryLines(check, detail);
    }
    return text;
}

Json checkJson(const CameraCheck& check)
{
    Json object = {{"camera", cameraJson(check.camera)},
                   {"result", json(verdictWord(check.verdict))},
                   {"error", jsonUnlessEmpty(check.error)},
                   {"not_applied", json(check.notApplied())},
                   {"identity", Json::array()},
                   {"features", Json::array()}};
    for (const ie::IdentityComparison& line : check.identity)
        object["identity"].push_back(identityJson(line));
    for (const EntryCheck& entry : check.entries)
        object["features"].push_back(entryJson(entry));
    if (check.changed)
        object["changed"] = json(*check.changed);
    return object;
}

CameraVerdict gravestOf(const std::vector<CameraCheck>& checks)
{
    std::vector<CameraVerdict> verdicts;
    for (const CameraCheck& check : checks)
        verdicts.push_back(check.verdict);
    return gravest(verdicts);
}

} // namespace companion
