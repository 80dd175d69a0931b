#include "iefeatures/imports/AuditLog.h"

#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/OperatingSystem.h"
#include "iefeatures/console/Text.h"

#include "jobs/file/RegularFile.h"

#include <SuiteTools/SuiteTools.h>

#include <nlohmann/json.hpp>

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSysInfo>

namespace companion
{
namespace
{

using Json = nlohmann::ordered_json;

constexpr size_t kMostChanges = 5000;

Json textOrNull(const QString& text)
{
    return text.isEmpty() ? Json() : Json(text.toStdString());
}

Json cameraJson(const AuditEntry& entry)
{
    return {{"serial", entry.camera.serial.toStdString()},
            {"model", entry.camera.model.toStdString()},
            {"userName", entry.camera.userName.toStdString()},
            {"address", entry.camera.address.toStdString()},
            {"firmware", textOrNull(entry.firmware)},
            {"descriptionSha256", textOrNull(entry.descriptionHash)}};
}

Json filesJson(const std::vector<AuditFile>& files)
{
    Json list = Json::array();
    for (const AuditFile& file : files)
        list.push_back({{"path", file.path.toStdString()}, {"sha256", textOrNull(file.sha256)}});
    return list;
}

Json changeJson(const Change& change)
{
    Json json;
    json["feature"] = textOrNull(change.feature);
    if (change.isRegister)
        json["register"] = change.address;
    if (!change.under.isEmpty())
        json["under"] = change.under.toStdString();
    json["from"] = change.from.isNull() ? Json() : Json(change.from.toStdString());
    json["to"] = change.to.toStdString();
    return json;
}

Json changesJson(const std::vector<Change>& changes)
{
    Json list = Json::array();
    for (size_t i = 0; i < changes.size() && i < kMostChanges; ++i)
        list.push_back(changeJson(changes[i]));
    return list;
}

Json textsJson(const QStringList& texts)
{
    Json list = Json::array();
    for (const QString& text : texts)
        list.push_back(text.toStdString());
    return list;
}

Json sourceJson(const ListedCamera& camera)
{
    return {{"serial", camera.serial.toStdString()},
            {"model", camera.model.toStdString()},
            {"userName", camera.userName.toStdString()},
            {"address", camera.address.toStdString()}};
}

void addEnd(const AuditEntry& entry, Json& line)
{
    line["snapshot"] = textOrNull(entry.snapshot);
    line["changes"] = changesJson(entry.changes);
    if (entry.changes.size() > kMostChanges)
        line["moreChanges"] = entry.changes.size() - kMostChanges;
    line["notApplied"] = textsJson(entry.notApplied);
    line["userSet"] = textOrNull(entry.userSet);
    line["outcome"] = verdictWord(entry.outcome).toStdString();
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
    Json line = {{"time", QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toStdString()},
                 {"event", moment == AuditMoment::Begins ? "begins" : "ends"},
                 {"user", loginName().toStdString()},
                 {"host", QSysInfo::machineHostName().toStdString()},
                 {"command", entry.command.toStdString()},
                 {"source", entry.source ? sourceJson(*entry.source) : Json()},
                 {"files", filesJson(entry.files)}};
    if (!entry.only.isEmpty())
        line["only"] = textsJson(entry.only);
    line["camera"] = cameraJson(entry);
    if (moment == AuditMoment::Ends)
        addEnd(entry, line);
    return QByteArray::fromStdString(line.dump()) + '\n';
}

// Without a home folder the documents would be those of "/".
QString auditPath(const AuditRule& rule)
{
    if (!rule.file.isEmpty())
        return rule.file;
    if (qEnvironmentVariableIsEmpty("HOME") && qEnvironmentVariableIsEmpty("VELA_USER_DATA"))
        return {};
    return VELAInterface::userDataPath() + "/Audit/iefeatures.jsonl";
}

bool AuditTrail::begin(const std::vector<AuditEntry>& entries)
{
    append(entries, AuditMoment::Begins);
    if (!m_hasFailed || !m_rule.isRequired)
        return true;
    m_console.err(
        std::string("Nothing was written to a camera, since --require-audit wants a line of it.\n"));
    return false;
}

void AuditTrail::end(const std::vector<AuditEntry>& entries)
{
    append(entries, AuditMoment::Ends);
}

void AuditTrail::append(const std::vector<AuditEntry>& entries, AuditMoment moment)
{
    if (!m_rule.isOn || m_hasFailed)
        return;
    const QString path = auditPath(m_rule);
    if (path.isEmpty())
        return fail(
            "The audit log has no place, since neither HOME nor VELA_USER_DATA is set; --audit names one.");
    QByteArrayList lines;
    for (const AuditEntry& entry : entries)
        lines += auditLine(entry, moment);
    if (const QString problem = appendLines(path, lines); !problem.isEmpty())
        fail(problem);
}

void AuditTrail::fail(const QString& sentence)
{
    if (!m_hasFailed)
        m_console.err(sentence + '\n');
    m_hasFailed = true;
}

AuditFile AuditTrail::keep(const QString& path)
{
    const AuditFile file = auditFile(path);
    const QString log = auditPath(m_rule);
    if (!m_rule.isOn || log.isEmpty() || file.sha256.isEmpty())
        return file;
    const QString folder = QFileInfo(log).absolutePath() + "/files";
    const QString kept = folder + '/' + file.sha256 + ".fpk";
    if (QDir().mkpath(folder) && (QFileInfo::exists(kept) || QFile::copy(path, kept)))
        return {kept, file.sha256};
    fail("The file cannot be kept for the audit log: " + printable(kept));
    return file;
}

} // namespace companion
