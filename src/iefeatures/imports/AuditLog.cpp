#include "iefeatures/imports/AuditLog.h"

#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/OperatingSystem.h"
#include "iefeatures/console/Text.h"

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

// A line that a full disk has cut must not swallow the one that follows it.
bool endsInTheMiddle(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() == 0)
        return false;
    char last = '\n';
    file.seek(file.size() - 1);
    file.getChar(&last);
    return last != '\n';
}

} // namespace

AuditFile auditFile(const QString& path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const bool isRead = QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly) && hash.addData(&file);
    return {QFileInfo(path).absoluteFilePath(), isRead ? QString(hash.result().toHex()) : QString()};
}

QByteArray auditLine(const AuditEntry& entry)
{
    Json line = {{"time", QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toStdString()},
                 {"user", loginName().toStdString()},
                 {"host", QSysInfo::machineHostName().toStdString()},
                 {"command", entry.command.toStdString()},
                 {"source", textOrNull(entry.source)},
                 {"files", filesJson(entry.files)},
                 {"camera", cameraJson(entry)},
                 {"snapshot", textOrNull(entry.snapshot)},
                 {"changes", changesJson(entry.changes)}};
    if (entry.changes.size() > kMostChanges)
        line["moreChanges"] = entry.changes.size() - kMostChanges;
    line["notApplied"] = Json::array();
    for (const QString& name : entry.notApplied)
        line["notApplied"].push_back(name.toStdString());
    line["userSet"] = textOrNull(entry.userSet);
    line["outcome"] = verdictWord(entry.outcome).toStdString();
    line["exit"] = int(exitCodeOf(entry.outcome));
    return QByteArray::fromStdString(line.dump()) + '\n';
}

QString auditPath()
{
    return VELAInterface::userDataPath() + "/Audit/iefeatures.jsonl";
}

QString appendToAudit(const std::vector<AuditEntry>& entries)
{
    const QString path = auditPath();
    const QString problem = "The audit log cannot be written: " + printable(path);
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::Append | QIODevice::Unbuffered))
        return problem;
    lock(file);
    for (const AuditEntry& entry : entries) {
        const QByteArray line = (endsInTheMiddle(path) ? "\n" : "") + auditLine(entry);
        if (file.write(line) != line.size())
            return problem;
    }
    return {};
}

} // namespace companion
