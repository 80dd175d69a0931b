#include "iefeatures/check/ImportProof.h"

#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/files/FeaturesFileInput.h"

#include <SuiteTools/SuiteTools.h>

#include <nlohmann/json.hpp>

#include <algorithm>

namespace companion
{
namespace
{

// What became of one thing that the file names, as the import was seen to go.
class Traces
{
public:
    Traces(const ImportTraces& traces, const EntryCheck& entry, int64_t address)
        : m_traces(traces), m_entry(entry), m_address(address)
    {}

    bool isChanged() const
    {
        return std::any_of(m_traces.changes.begin(), m_traces.changes.end(),
                           [this](const Change& change) { return isIt(change); });
    }
    // A sentence; empty when nothing was refused.
    QString refusal() const
    {
        const auto failure = std::find_if(m_traces.failures.begin(), m_traces.failures.end(),
                                          [this](const FailedCall& call) { return isIt(call); });
        return failure == m_traces.failures.end() ? QString() : KX_CC_StatusText(failure->status);
    }

private:
    template <class Trace>
    bool isIt(const Trace& trace) const
    {
        return trace.isRegister == m_entry.isRegister &&
               (trace.isRegister ? trace.address == m_address : trace.feature == m_entry.feature);
    }

    const ImportTraces& m_traces;
    const EntryCheck& m_entry;
    const int64_t m_address;
};

Standing standingOf(Verdict verdict, const Traces& traces)
{
    switch (verdict) {
    case Verdict::Same:
        return traces.isChanged() ? Standing::Applied : Standing::Unchanged;
    case Verdict::Coerced:
        return Standing::Coerced;
    case Verdict::Absent:
        return Standing::Absent;
    case Verdict::Skipped:
        return Standing::Skipped;
    default:
        return Standing::NotApplied;
    }
}

Verified verifiedOf(const EntryCheck& entry, const ImportTraces& importTraces)
{
    const qint64 address = VELAInterface::string2Int(entry.address);
    const Traces traces(importTraces, entry, address);
    Verified verified{entry.feature,     {},          standingOf(entry.verdict, traces), entry.fileValue,
                      entry.cameraValue, entry.reason};
    if (!entry.address.isEmpty())
        verified.register_ = QString::number(address);
    if (verified.standing != Standing::NotApplied)
        return verified;
    const QString refusal = traces.refusal();
    if (!refusal.isEmpty())
        verified.reason = refusal;
    else if (entry.reason.isEmpty())
        verified.reason = "The camera holds another value.";
    return verified;
}

QString problemOf(const CameraCheck& check)
{
    switch (check.state) {
    case CameraCheck::State::Interrupted:
        return "Interrupted.";
    case CameraCheck::State::Failed:
        return KX_CC_StatusText(check.status);
    case CameraCheck::State::Incompatible:
        return "The file belongs to another model, firmware, board type or version.";
    case CameraCheck::State::Checked:
        break;
    }
    return {};
}

const char* wordOf(Standing standing)
{
    switch (standing) {
    case Standing::Applied:
        return "applied";
    case Standing::Unchanged:
        return "unchanged";
    case Standing::Coerced:
        return "coerced";
    case Standing::NotApplied:
        return "not applied";
    case Standing::Absent:
        return "absent";
    case Standing::Skipped:
        break;
    }
    return "skipped";
}

constexpr Standing kStandings[] = {Standing::Applied,    Standing::Unchanged, Standing::Coerced,
                                   Standing::NotApplied, Standing::Absent,    Standing::Skipped};

auto countOf(const Verification& verification, Standing standing)
{
    return std::count_if(verification.features.begin(), verification.features.end(),
                         [standing](const Verified& feature) { return feature.standing == standing; });
}

// Not worth a line to people.
bool isAsExpected(const Verified& feature)
{
    return feature.standing == Standing::Applied || feature.standing == Standing::Unchanged ||
           feature.standing == Standing::Skipped;
}

QString titleOf(const Verified& feature)
{
    const QString name = printable(feature.feature);
    return feature.register_.isEmpty() ? name : name + " (register " + feature.register_ + ')';
}

QString line(const Verified& feature)
{
    QString text = "  " + titleOf(feature);
    text += QString(": ") + wordOf(feature.standing) + ", file " + printable(feature.wanted);
    if (!feature.found.isEmpty())
        text += ", camera " + printable(feature.found);
    return text + (feature.reason.isEmpty() ? QString() : ": " + feature.reason) + '\n';
}

} // namespace

bool Verification::isClean() const
{
    return problem.isEmpty() && countOf(*this, Standing::NotApplied) == 0 &&
           countOf(*this, Standing::Absent) == 0;
}

QStringList Verification::missing() const
{
    QStringList names;
    for (const Verified& verified : features)
        if (verified.standing == Standing::NotApplied || verified.standing == Standing::Absent)
            names += verified.feature;
    names.removeDuplicates();
    return names;
}

Verification verify(const ListedCamera& camera, const QString& featuresFile, const ImportTraces& traces)
{
    Verification verification{camera, {}, {}};
    const FeaturesFileInput file = readFeaturesFile(featuresFile);
    if (!file.problem.isNull()) {
        verification.problem = "The file cannot be read again.";
        return verification;
    }
    const CameraCheck check =
        checkCamera(camera, file.content, CheckMode::Verify, [] { return !Interrupt::isRequested(); });
    verification.problem = problemOf(check);
    for (const EntryCheck& entry : check.entries)
        verification.features.push_back(verifiedOf(entry, traces));
    return verification;
}

QString verificationText(const Verification& verification)
{
    QString text = verification.camera.title() + ": ";
    if (!verification.problem.isEmpty())
        return text + "not verified: " + verification.problem + '\n';
    QStringList counts;
    for (const Standing standing : kStandings)
        counts += QString("%1 %2").arg(countOf(verification, standing)).arg(wordOf(standing));
    text += counts.join(", ") + '\n';
    for (const Verified& feature : verification.features)
        if (!isAsExpected(feature))
            text += line(feature);
    return text;
}

std::string verificationJson(const Verification& verification)
{
    nlohmann::ordered_json json = {{"verify", verification.isClean() ? "clean" : "differs"},
                                   {"device", verification.camera.device.nDeviceID}};
    if (!verification.problem.isEmpty()) {
        json["verify"] = "failed";
        json["problem"] = verification.problem.toStdString();
        return json.dump() + "\n";
    }
    for (const Standing standing : kStandings)
        json[wordOf(standing)] = countOf(verification, standing);
    json["features"] = nlohmann::ordered_json::array();
    for (const Verified& feature : verification.features) {
        nlohmann::ordered_json entry = {{"feature", feature.feature.toStdString()}};
        if (!feature.register_.isEmpty())
            entry["register"] = feature.register_.toLongLong();
        entry["verdict"] = wordOf(feature.standing);
        entry["file"] = feature.wanted.toStdString();
        entry["camera"] = feature.found.isEmpty() ? nlohmann::ordered_json()
                                                  : nlohmann::ordered_json(feature.found.toStdString());
        if (!feature.reason.isEmpty())
            entry["reason"] = feature.reason.toStdString();
        json["features"].push_back(entry);
    }
    return json.dump() + "\n";
}

} // namespace companion
