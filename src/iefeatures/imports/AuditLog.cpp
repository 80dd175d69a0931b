#include "iefeatures/imports/AuditLog.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/OperatingSystem.h"
#include "iefeatures/console/Text.h"

#include "jobs/file/RegularFile.h"
#include "jobs/file/WholeFile.h"

#include <SuiteTools/SuiteTools.h>

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSysInfo>

namespace companion
{
namespace
{

constexpr size_t kMostChanges = 5000;

// What the line tells of a camera in all moments; its number in a list says nothing tomorrow.
Json lastingJson(const ListedCamera& camera)
{
    Json object = cameraJson(camera);
    object.erase("number");
    return object;
}

Json examinedJson(const AuditEntry& entry)
{
    Json object = lastingJson(entry.camera);
    object["firmware"] = jsonUnlessEmpty(entry.firmware);
    object["description_sha256"] = jsonUnlessEmpty(entry.descriptionHash);
    return object;
}

Json filesJson(const std::vector<AuditFile>& files)
{
    Json list = Json::array();
    for (const AuditFile& file : files)
        list.push_back({{"path", json(file.path)}, {"sha256", jsonUnlessEmpty(file.sha256)}});
    return list;
}

Json changeJson(const Change& change)
{
    Json object;
    object["feature"] = jsonUnlessEmpty(change.feature);
    if (change.isRegister)
        object["register"] = change.address;
    if (!change.under.isEmpty())
        object["under"] = json(change.under);
    object["from"] = jsonUnlessNull(change.from);
    object["to"] = jsonUnlessNull(change.to);
    return object;
}

Json changesJson(const std::vector<Change>& changes)
{
    Json list = Json::array();
    for (size_t i = 0; i < changes.size() && i < kMostChanges; ++i)
        list.push_back(changeJson(changes[i]));
    return list;
}

void addEnd(const AuditEntry& entry, Json& line)
{
    line["snapshot"] = jsonUnlessEmpty(entry.snapshot);
    line["changes"] = entry.isKnown ? changesJson(entry.changes) : Json();
    if (entry.changes.size() > kMostChanges)
        line["more_changes"] = entry.changes.size() - kMostChanges;
    if (!entry.inDoubt.empty())
        line["in_doubt"] = changesJson(entry.inDoubt);
    line["not_applied"] = entry.isKnown ? json(entry.notApplied) : Json();
    line["user_set"] = jsonUnlessEmpty(entry.userSet);
    line["outcome"] = json(verdictWord(entry.outcome));
    line["exit"] = int(exitCodeOf(entry.outcome));
}

// A line that a full disk has cut must not swallow the one that follows it.
bool endsInTheMiddle(const QString& path)
{
    QFile file(path);
    if (!ie::openRegular(file, QIODevice::ReadOnly).isEmpty() || file.size() == 0)
        return false;
    char last = '\n';
    file.seek(file.size() - 1);
    file.getChar(&last);
    return last != '\n';
}

// Gives why it could not be done, or an empty text.
QString appendLines(const QString& path, const QByteArrayList& lines)
{
    const QString problem = "The audit log cannot be written: " + printable(path);
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()))
        return problem;
    const auto mode = QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered;
    if (const QString cause = ie::openRegular(file, mode, ie::LinkRule::Refused); !cause.isEmpty())
        return problem + " (" + cause + ')';
    lock(file);
    file.seek(file.size()); // where others have written meanwhile; Windows appends behind what it has opened
    for (const QByteArray& text : lines) {
        const QByteArray line = (endsInTheMiddle(path) ? "\n" : "") + text;
        if (file.write(line) != line.size())
            return problem;
    }
    return {};
}

} // namespace

AuditFile auditFile(const QString& path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const bool isRead = ie::openRegular(file, QIODevice::ReadOnly).isEmpty() && hash.addData(&file);
    return {QFileInfo(path).absoluteFilePath(), isRead ? QString(hash.result().toHex()) : QString()};
}

QByteArray auditLine(const AuditEntry& entry, AuditMoment moment)
{
    Json line = {{"time", json(QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs))},
                 {"event", moment == AuditMoment::Begins ? "begins" : "ends"},
                 {"user", json(loginName())},
                 {"host", json(QSysInfo::machineHostName())},
                 {"command", json(entry.command)},
                 {"source", entry.source ? lastingJson(*entry.source) : Json()},
                 {"files", filesJson(entry.files)}};
    if (!entry.only.isEmpty())
        line["only"] = json(entry.only);
    line["camera"] = examinedJson(entry);
    if (moment == AuditMoment::Ends)
        addEnd(entry, line);
    return QByteArray::fromStdString(lineOf(line));
}

// Without a home folder the documents would be those of "/".
QString auditPath(const AuditRule& rule)
{
    if (!rule.file.isEmpty())
        return rule.file;
    if (!hasHomeFolder() && qEnvironmentVariableIsEmpty("VELA_USER_DATA"))
        return {};
    return VELAInterface::userDataPath() + "/Audit/iefeatures.jsonl";
}

AuditTrail::~AuditTrail()
{
    try {
        for (AuditEntry& entry : m_begun) {
            entry.outcome = CameraVerdict::Failed;
            entry.isKnown = false;
            m_console.err(entry.camera.title() + ": what was written to it is not known.\n");
        }
        append(m_begun, AuditMoment::Ends);
    } catch (...) {
        return; // no memory: as after a crash, the first line stands alone
    }
}

bool AuditTrail::begin(const std::vector<AuditEntry>& entries)
{
    m_begun = entries;
    append(entries, AuditMoment::Begins);
    if (m_told.isEmpty() || !m_rule.isRequired)
        return true;
    m_console.err(
        std::string("Nothing was written to a camera, since --require-audit wants a line of it.\n"));
    end(entries);
    return false;
}

void AuditTrail::end(const std::vector<AuditEntry>& entries)
{
    m_begun.clear();
    append(entries, AuditMoment::Ends);
}

void AuditTrail::append(const std::vector<AuditEntry>& entries, AuditMoment moment)
{
    if (!m_rule.isOn || entries.empty())
        return;
    const QString path = auditPath(m_rule);
    QByteArrayList lines;
    for (const AuditEntry& entry : entries)
        lines += auditLine(entry, moment);
    const QString problem =
        path.isEmpty()
            ? "The audit log has no place, since neither HOME nor VELA_USER_DATA is set; --audit names one."
            : appendLines(path, lines);
    fail(problem);
}

void AuditTrail::fail(const QString& sentence)
{
    if (sentence.isEmpty() || m_told.contains(sentence))
        return;
    m_console.err(sentence + '\n');
    m_told += sentence;
}

AuditFile AuditTrail::keep(const QString& path)
{
    const AuditFile file = auditFile(path);
    const QString log = auditPath(m_rule);
    if (!m_rule.isOn || log.isEmpty() || file.sha256.isEmpty())
        return file;
    const QString folder = QFileInfo(log).absolutePath() + "/files";
    const QString kept = folder + '/' + file.sha256 + ".fpk";
    QFile original(path);
    // One that has the name may be somebody else's.
    if (QDir().mkpath(folder) &&
        (auditFile(kept).sha256 == file.sha256 || (ie::openRegular(original, QIODevice::ReadOnly).isEmpty() &&
                                                   ie::writeWholeBytes(kept, original.readAll()))))
        return {kept, file.sha256};
    fail("The file cannot be kept for the audit log: " + printable(kept));
    return file;
}

} // namespace companion
