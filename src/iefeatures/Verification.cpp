#include "iefeatures/Verification.h"

#include "iefeatures/CameraConnection.h"
#include "iefeatures/Interrupt.h"
#include "iefeatures/Text.h"

#include <FeaturesFile.h>
#include <JobRules.h>
#include <SuiteTools/SuiteTools.h>
#include <XmlDepth.h>

#include <nlohmann/json.hpp>

#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <optional>

namespace companion
{
namespace
{

constexpr qint64 kLargestRegister = 16 * 1024 * 1024;

std::optional<ie::FeaturesContent> readFile(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    const QString text = QString::fromUtf8(file.readAll());
    QDomDocument document;
    if (!ie::isSafeToParse(text) || !document.setContent(text))
        return {};
    return ie::readFeatures(document.documentElement());
}

// A value as the file would have it, and how far off another one may be to count as the camera's rounding.
struct Reading
{
    KX_Status status = KX_OK;
    QString text;
    double tolerance = 0; // numbers less than this apart
};

Reading readInteger(KX_HANDLE handle, const char* name)
{
    KX_IntegerValue value{};
    const KX_Status status = KX_CC_GetIntValueEx(handle, name, &value);
    return {status, ie::integerText(value.current), double(value.increment)};
}

Reading readFloat(KX_HANDLE handle, const char* name)
{
    KX_FloatValue value{};
    const KX_Status status = KX_CC_GetFloatValue(handle, name, &value);
    const double precision = std::abs(double(value.current)) * 1e-6; // some 7 digits are a float's
    return {status, ie::floatText(double(value.current)), std::max(precision, 2e-6)};
}

Reading readBoolean(KX_HANDLE handle, const char* name)
{
    bool value = false;
    const KX_Status status = KX_CC_GetBoolValue(handle, name, &value);
    return {status, ie::booleanText(value)};
}

Reading readEntry(KX_HANDLE handle, const char* name)
{
    KX_EnumValue value{};
    const KX_Status status = KX_CC_GetEnumValue(handle, name, &value);
    return {status, ie::enumerationText(value.current)};
}

Reading readText(KX_HANDLE handle, const char* name)
{
    KX_StringValue value{};
    const KX_Status status = KX_CC_GetStringValue(handle, name, &value);
    return {status, VELAInterface::char2QStringLocale(value.current, -1)};
}

Reading readPlain(KX_HANDLE handle, const QString& type, const QString& name)
{
    const QByteArray bytes = name.toLatin1();
    if (type == "Boolean")
        return readBoolean(handle, bytes);
    if (type == "Enumeration")
        return readEntry(handle, bytes);
    if (type == "Integer" || type == "IntReg")
        return readInteger(handle, bytes);
    if (type == "Float")
        return readFloat(handle, bytes);
    if (type == "StringReg")
        return readText(handle, bytes);
    return {KX_E_GC_LOGICAL, {}};
}

bool isCoerced(const Reading& reading, const QString& wanted)
{
    bool isNumber = false;
    const double number = wanted.toDouble(&isNumber);
    return isNumber && reading.tolerance > 0 &&
           std::abs(reading.text.toDouble() - number) < reading.tolerance;
}

// A Boolean is applied as true from 1 on.
bool isEqual(const ie::PlainFeature& feature, const QString& found)
{
    return feature.type == "Boolean" ? (feature.value.toInt() >= 1) == (found == "1")
                                     : feature.value == found;
}

// Imports do not write the protected ones; who holds control is another matter now than it was then.
bool isLeftAlone(const QString& name)
{
    return ie::isProtectedFeature(name) || name == "GevCCP";
}

class Verifier
{
public:
    Verifier(const Camera& camera, KX_HANDLE handle, const ImportTraces& traces)
        : m_handle(handle), m_traces(traces),
          m_isGigE(camera.device.stDeviceInfo.transportType == KX_TRANSPORT_GIGE)
    {}

    Verified plain(const ie::PlainFeature& feature) const
    {
        Verified verified{feature.name, {}, Standing::NotApplied, feature.value, {}, {}};
        const Reading reading = readPlain(m_handle, feature.type, feature.name);
        const auto is = [&](const FailedCall& failure) {
            return !failure.isRegister && failure.feature == feature.name;
        };
        const auto was = [&](const Change& change) {
            return !change.isRegister && change.feature == feature.name;
        };
        judge(verified, reading, isEqual(feature, reading.text), is, was);
        if (isLeftAlone(feature.name))
            verified.standing = Standing::Skipped;
        return verified;
    }

    Verified entry(const ie::ComplexFeature& block, const ie::RegisterValue& value) const
    {
        const QString wanted = value.to.isEmpty() ? value.content : value.to;
        const QString address = QString::number(value.address);
        Verified verified{block.name, address, Standing::NotApplied, wanted, {}, {}};
        const Reading reading = readRegister(value.address, block.length);
        const auto is = [&](const FailedCall& failure) {
            return failure.isRegister && failure.address == value.address;
        };
        const auto was = [&](const Change& change) {
            return change.isRegister && change.address == value.address;
        };
        judge(verified, reading, beginsWith(reading.text, wanted), is, was);
        if (verified.standing == Standing::NotApplied && value.address % 4 != 0)
            verified.reason = "Imports skip registers at addresses that are no multiple of 4.";
        return verified;
    }

private:
    // More values than the register has words are not written, and words without a value are kept.
    static bool beginsWith(const QString& found, const QString& wanted)
    {
        const QStringList words = found.split(',');
        const QStringList values = wanted.split(',').mid(0, words.size());
        return words.mid(0, values.size()) == values;
    }

    template <class IsFailure, class IsChange>
    void judge(Verified& verified, const Reading& reading, bool isAsWanted, IsFailure isFailure,
               IsChange isChange) const
    {
        if (reading.status != KX_OK) {
            const bool isAbsent = reading.status == KX_E_GC_PROPERTY;
            verified.standing = isAbsent ? Standing::Absent : Standing::NotApplied;
            verified.reason = KX_CC_StatusText(reading.status);
            return;
        }
        verified.found = reading.text;
        if (isAsWanted) {
            const auto& changes = m_traces.changes;
            const bool isChanged = std::any_of(changes.begin(), changes.end(), isChange);
            verified.standing = isChanged ? Standing::Applied : Standing::Unchanged;
            return;
        }
        if (isCoerced(reading, verified.wanted)) {
            verified.standing = Standing::Coerced;
            return;
        }
        const auto& failures = m_traces.failures;
        const auto failure = std::find_if(failures.begin(), failures.end(), isFailure);
        verified.reason =
            failure == failures.end() ? "The camera holds another value." : KX_CC_StatusText(failure->status);
    }

    Reading readRegister(qint64 address, qint64 length) const
    {
        if (length < 1 || length > kLargestRegister)
            return {KX_E_PARAMETER, {}};
        QVector<quint32> words(int((length + 3) / 4), 0);
        const bool swaps = m_isGigE && length == 4;
        const KX_Status status = address % 4 == 2 ? readBetween(address, swaps, words[0])
                                                  : readWords(address, length, swaps, words);
        return {status, ie::wordsText(words)};
    }

    KX_Status readWords(qint64 address, qint64 length, bool swaps, QVector<quint32>& words) const
    {
        QByteArray bytes(words.size() * 4, '\0');
        const KX_Status status = KX_CC_ReadMemory(m_handle, bytes.data(), address, length);
        for (int i = 0; i < words.size(); ++i) {
            const auto word = qFromLittleEndian<quint32>(bytes.constData() + 4 * i);
            words[i] = swaps ? qbswap(word) : word;
        }
        return status;
    }

    // Some cameras read at multiples of 4 only. As the export does: out of two reads, the halves exchanged.
    KX_Status readBetween(qint64 address, bool swaps, quint32& word) const
    {
        char both[8] = {};
        KX_Status status = KX_CC_ReadMemory(m_handle, both, address - 2, 4);
        if (status == KX_OK)
            status = KX_CC_ReadMemory(m_handle, both + 4, address + 2, 4);
        const auto raw = qFromLittleEndian<quint32>(both + 2);
        word = swaps ? qbswap(raw) : raw << 16 | raw >> 16;
        return status;
    }

    const KX_HANDLE m_handle;
    const ImportTraces& m_traces;
    const bool m_isGigE;
};

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

Verification verify(const Camera& camera, const QString& featuresFile, const ImportTraces& traces)
{
    Verification verification{camera, {}, {}};
    const auto content = readFile(featuresFile);
    if (!content) {
        verification.problem = "The file cannot be read again.";
        return verification;
    }
    const CameraConnection line(camera.device.stDeviceInfo, KX_ACCESS_MONITOR);
    if (line.status() != KX_OK)
        verification.problem = KX_CC_StatusText(line.status());
    const Verifier verifier(camera, line.handle(), traces);
    for (const auto& entry : content->entries) {
        if (verification.problem.isEmpty() && Interrupt::isRequested())
            verification.problem = "Interrupted.";
        if (!verification.problem.isEmpty())
            break;
        if (!entry.isComplex)
            verification.features.push_back(verifier.plain(entry.plain));
        for (const ie::RegisterValue& value : entry.complex.values)
            verification.features.push_back(verifier.entry(entry.complex, value));
    }
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

QString planText(const Verification& verification)
{
    const QString title = verification.camera.title() + ": ";
    if (!verification.problem.isEmpty())
        return title + "cannot be looked at: " + verification.problem + '\n';
    QString lines;
    int count = 0;
    for (const Verified& feature : verification.features) {
        if (isAsExpected(feature))
            continue;
        ++count;
        lines += "  " + titleOf(feature) + ": " +
                 (feature.found.isEmpty() ? feature.reason
                                          : printable(feature.found) + " -> " + printable(feature.wanted)) +
                 '\n';
    }
    return title + QString("%1 of %2 differ\n").arg(count).arg(verification.features.size()) + lines;
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
