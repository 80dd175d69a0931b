#include "iefeatures/replace/ReplacementJournal.h"

#include "iefeatures/console/Text.h"

#include "jobs/file/RegularFile.h"
#include "jobs/file/WholeFile.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace companion
{
namespace
{

constexpr qint64 kLargest = 64 * 1024;
constexpr int kHashDigits = 12;

// Names may hold what paths may not.
QString pathOf(const QString& inventory, const QString& camera)
{
    const QByteArray hash = QCryptographicHash::hash(camera.toUtf8(), QCryptographicHash::Sha256).toHex();
    return inventory + ".replace-" + QString::fromLatin1(hash.left(kHashDigits)) + ".json";
}

} // namespace

QString stepWord(ReplaceStep step)
{
    switch (step) {
    case ReplaceStep::Address:
        return "address";
    case ReplaceStep::Kind:
        return "model and firmware";
    case ReplaceStep::Features:
        return "features";
    case ReplaceStep::Name:
        return "name and kept address";
    case ReplaceStep::Kept:
        return "user set";
    case ReplaceStep::StartUp:
        return "start-up";
    case ReplaceStep::Restarted:
        return "restart";
    case ReplaceStep::Inventory:
        break;
    }
    return "inventory";
}

bool ReplacementRecord::isOf(const ListedCamera& camera) const
{
    if (!mac.isEmpty() || !camera.mac.isEmpty())
        return mac == camera.mac;
    return guid == camera.guid && model == camera.model && serial == camera.serial;
}

QString ReplacementRecord::title() const
{
    const QString identity = mac.isEmpty() ? guid : mac;
    return printable(model + ' ' + serial + (identity.isEmpty() ? QString() : " (" + identity + ')'));
}

ReplacementRecord recordOf(const ListedCamera& camera)
{
    return {camera.mac, camera.guid, camera.model, camera.serial, QDateTime::currentDateTimeUtc(), {}};
}

ReplacementJournal::ReplacementJournal(const QString& inventory, const QString& camera)
    : m_path(pathOf(inventory, camera))
{}

std::optional<ReplacementRecord> ReplacementJournal::read(QString& problem) const
{
    QFile file(m_path);
    if (!file.exists())
        return {};
    const QString cause = ie::openRegular(file, QIODevice::ReadOnly);
    const QJsonObject object =
        cause.isEmpty() ? QJsonDocument::fromJson(file.read(kLargest)).object() : QJsonObject();
    ReplacementRecord record{object["mac"].toString(),
                             object["guid"].toString(),
                             object["model"].toString(),
                             object["serial"].toString(),
                             QDateTime::fromString(object["begun"].toString(), Qt::ISODate),
                             {}};
    const QJsonArray steps = object["steps"].toArray();
    for (const auto& step : steps)
        record.steps += step.toString();
    if (!record.model.isEmpty() && record.begun.isValid())
        return record;
    problem = printable(m_path) + " should tell of a replacement that has begun, and cannot be read" +
              (cause.isEmpty() ? QString() : ": " + cause) + '.';
    return {};
}

QString ReplacementJournal::write(const ReplacementRecord& record) const
{
    const QJsonObject object{{"mac", record.mac},
                             {"guid", record.guid},
                             {"model", record.model},
                             {"serial", record.serial},
                             {"begun", record.begun.toString(Qt::ISODate)},
                             {"steps", QJsonArray::fromStringList(record.steps)}};
    return ie::writeWholeBytes(m_path, QJsonDocument(object).toJson())
               ? QString()
               : printable(m_path) + " cannot be written.";
}

QString ReplacementJournal::remove() const
{
    return QFile::remove(m_path) || !QFile::exists(m_path) ? QString()
                                                           : printable(m_path) + " cannot be removed.";
}

} // namespace companion
