#include "iefeatures/check/CheckReport.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/check/EntryLines.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"

#include <algorithm>

namespace companion
{
namespace
{

constexpr int kShortestValue = 12; // columns

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

// Lines behind the first one are indented.
QString folded(const QString& text, int indent, const ReportStyle& style)
{
    if (style.columns <= 0 || displayWidth(text) <= style.columns)
        return text + '\n';
    return wrapped(text, style.columns - indent).join('\n' + QString(indent, ' ')) + '\n';
}

// What is bad stands in the error.
QString identityLines(const CameraCheck& check, const ReportStyle& style)
{
    const auto shown = [&](const QString& value) {
        const QString text = printable(quoted(value));
        return style.columns > 0 ? shortened(text, std::max(kShortestValue, style.columns / 3)) : text;
    };
    QString text;
    for (const ie::IdentityComparison& line : check.identity)
        if (style.detail == Detail::All || line.outcome == ie::IdentityComparison::Outcome::Tolerated)
            text += folded(QString("  %1: %2, file %3, camera %4")
                               .arg(identityWord(line.what), outcomeWord(line.outcome), shown(line.fileValue),
                                    shown(line.cameraValue)),
                           6, style);
    return text;
}

// Of a camera that was asked about every entry.
bool isComplete(const CameraCheck& check)
{
    return check.verdict <= CameraVerdict::Incomplete;
}

// "152 unchanged, 1 not applied; state: 3 differ"
QString counts(const CameraCheck& check)
{
    QStringList settings;
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
            settings += QString::number(count) + ' ' + verdictWord(verdict);
    }
    if (check.entries.empty())
        return "nothing in the file";
    return (settings.isEmpty() ? "no settings" : settings.join(", ")) + others;
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
    if (!entry.selectors.isEmpty())
        object["selectors"] = json(entry.selectors);
    if (!entry.category.isEmpty())
        object["category"] = json(entry.category);
    object["verdict"] = json(verdictWord(entry.verdict));
    object["file"] = jsonUnlessNull(entry.fileValue);
    object["camera"] = jsonUnlessNull(entry.cameraValue);
    if (!entry.newValue.isNull())
        object["new"] = json(entry.newValue);
    for (const auto& [key, name] :
         {std::pair("file_entry", entry.fileEntry), std::pair("camera_entry", entry.cameraEntry),
          std::pair("new_entry", entry.newEntry)})
        if (!name.isEmpty())
            object[key] = json(name);
    if (!entry.reason.isEmpty())
        object["reason"] = json(entry.reason);
    object["warnings"] = json(entry.warnings);
    return object;
}

} // namespace

QString checkText(const std::vector<CameraCheck>& checks, const ReportStyle& style)
{
    QString text;
    for (const CameraCheck& check : checks) {
        const QString error = check.error.isEmpty() ? QString() : ": " + printable(check.error);
        text += folded(check.camera.title() + ": " + verdictWord(check.verdict) + error, 2, style);
        if (isComplete(check))
            text += folded("  " + counts(check), 4, style);
        text += identityLines(check, style) + entryLines(check, style);
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
    if (!check.inDoubt.isEmpty())
        object["in_doubt"] = json(check.inDoubt);
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
