#include "iefeatures/check/CheckReport.h"

#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace companion
{
namespace
{

using State = CameraCheck::State;
using Json = nlohmann::ordered_json;

constexpr Verdict kVerdicts[] = {Verdict::Same,       Verdict::Change,  Verdict::Coerced,
                                 Verdict::NotApplied, Verdict::Skipped, Verdict::NotWritable,
                                 Verdict::OutOfRange, Verdict::Absent,  Verdict::Broken};

bool hasAmiss(const CameraCheck& check)
{
    return std::any_of(check.entries.begin(), check.entries.end(), isAmiss);
}

QString resultWord(const CameraCheck& check, CheckMode mode)
{
    switch (check.state) {
    case State::Interrupted:
        return "interrupted";
    case State::Failed:
        return "failed";
    case State::Incompatible:
        return "incompatible";
    case State::Checked:
        break;
    }
    if (mode == CheckMode::Plan)
        return hasAmiss(check) ? "not all would be applied" : "ready";
    return hasAmiss(check) ? "not all applied" : "applied";
}

QString identityWord(IdentityCheck::Verdict verdict)
{
    switch (verdict) {
    case IdentityCheck::Verdict::Good:
        return "good";
    case IdentityCheck::Verdict::Tolerated:
        return "tolerated";
    case IdentityCheck::Verdict::Bad:
        break;
    }
    return "bad";
}

QString nameOf(const EntryCheck& entry)
{
    return entry.address.isEmpty() ? entry.feature : entry.feature + " (register " + entry.address + ')';
}

QString quoted(const QString& value)
{
    return value.isNull() ? QString("-") : '"' + value + '"';
}

QString identityLines(const CameraCheck& check)
{
    QString text;
    for (const IdentityCheck& line : check.identity)
        text += QString("  %1: %2, file %3, camera %4\n")
                    .arg(line.what, identityWord(line.verdict), printable(quoted(line.fileValue)),
                         printable(quoted(line.cameraValue)));
    return text;
}

// What the file says against what the camera has.
QString valuesText(const EntryCheck& entry)
{
    switch (entry.verdict) {
    case Verdict::Change:
        return (entry.cameraValue.isNull() ? QString("?") : entry.cameraValue) + " -> " + entry.newValue;
    case Verdict::Coerced:
    case Verdict::NotApplied:
    case Verdict::NotWritable:
    case Verdict::OutOfRange:
        return entry.cameraValue.isNull() ? "file " + entry.fileValue
                                          : "camera " + entry.cameraValue + ", file " + entry.fileValue;
    default:
        return {};
    }
}

QString entryLines(const CameraCheck& check, CheckMode mode)
{
    QString text;
    for (const EntryCheck& entry : check.entries) {
        if (entry.verdict != Verdict::Same) {
            QStringList parts = {printable(nameOf(entry)), printable(valuesText(entry)),
                                 printable(entry.reason)};
            parts.removeAll({});
            text += "  " + verdictWord(entry.verdict, mode) + ": " + parts.join(": ") + '\n';
        }
        for (const QString& warning : entry.warnings)
            text += "  warning: " + printable(nameOf(entry)) + ": " + printable(warning) + '\n';
    }
    return text;
}

auto countOf(const CameraCheck& check, Verdict verdict)
{
    return std::count_if(check.entries.begin(), check.entries.end(),
                         [verdict](const EntryCheck& entry) { return entry.verdict == verdict; });
}

QString countsText(const CameraCheck& check, CheckMode mode)
{
    QStringList counts;
    for (const Verdict verdict : kVerdicts)
        if (const auto count = countOf(check, verdict))
            counts += QString::number(count) + ' ' + verdictWord(verdict, mode);
    return counts.isEmpty() ? "nothing in the file" : counts.join(", ");
}

Json jsonText(const QString& text)
{
    return text.isNull() ? Json() : Json(text.toStdString());
}

Json entryJson(const EntryCheck& entry, CheckMode mode)
{
    Json object = {{"feature", entry.feature.toStdString()}};
    if (entry.isRegister)
        object["address"] = entry.address.isEmpty() ? Json() : jsonText(entry.address);
    object["verdict"] = verdictWord(entry.verdict, mode).toStdString();
    object["file"] = entry.fileValue.toStdString();
    object["camera"] = jsonText(entry.cameraValue);
    if (entry.verdict == Verdict::Change)
        object["new"] = entry.newValue.toStdString();
    if (!entry.reason.isEmpty())
        object["reason"] = entry.reason.toStdString();
    object["warnings"] = Json::array();
    for (const QString& warning : entry.warnings)
        object["warnings"].push_back(warning.toStdString());
    return object;
}

Json cameraJson(const CameraCheck& check, CheckMode mode)
{
    Json object = {{"result", resultWord(check, mode).toStdString()},
                   {"device", check.camera.device.nDeviceID},
                   {"model", check.camera.model.toStdString()},
                   {"serial", check.camera.serial.toStdString()}};
    if (check.state == State::Failed)
        object["error"] = KX_CC_StatusText(check.status);
    object["identity"] = Json::array();
    for (const IdentityCheck& line : check.identity)
        object["identity"].push_back({{"check", line.what.toStdString()},
                                      {"verdict", identityWord(line.verdict).toStdString()},
                                      {"file", jsonText(line.fileValue)},
                                      {"camera", jsonText(line.cameraValue)}});
    object["features"] = Json::array();
    for (const EntryCheck& entry : check.entries)
        object["features"].push_back(entryJson(entry, mode));
    return object;
}

int exitCodeOf(const CameraCheck& check)
{
    switch (check.state) {
    case State::Interrupted:
        return ExitInterrupted;
    case State::Failed:
        return ExitJobFailed;
    case State::Incompatible:
        return ExitIncompatible;
    case State::Checked:
        break;
    }
    return hasAmiss(check) ? ExitNotAllApplied : ExitWell;
}

} // namespace

QString verdictWord(Verdict verdict, CheckMode mode)
{
    switch (verdict) {
    case Verdict::Same:
        return mode == CheckMode::Plan ? "same" : "applied";
    case Verdict::Change:
        return "would change";
    case Verdict::Coerced:
        return "coerced";
    case Verdict::NotApplied:
        return "not applied";
    case Verdict::Skipped:
        return mode == CheckMode::Plan ? "would be skipped" : "skipped";
    case Verdict::NotWritable:
        return "not writable";
    case Verdict::OutOfRange:
        return "out of range";
    case Verdict::Absent:
        return "absent";
    case Verdict::Broken:
        break;
    }
    return "broken";
}

QString checkText(const std::vector<CameraCheck>& checks, CheckMode mode)
{
    QString text;
    for (const CameraCheck& check : checks) {
        text += check.camera.title() + ": " + resultWord(check, mode);
        if (check.state == State::Failed)
            text += QString(": ") + KX_CC_StatusText(check.status);
        text += '\n' + identityLines(check) + entryLines(check, mode);
        if (check.state == State::Checked)
            text += "  " + countsText(check, mode) + '\n';
    }
    return text;
}

std::string checkJson(const std::vector<CameraCheck>& checks, CheckMode mode)
{
    std::string text;
    for (const CameraCheck& check : checks)
        text += cameraJson(check, mode).dump() + "\n";
    return text;
}

int checkExitCode(const std::vector<CameraCheck>& checks)
{
    std::vector<int> codes;
    for (const CameraCheck& check : checks)
        codes.push_back(exitCodeOf(check));
    return gravestExitCode(codes);
}

} // namespace companion
