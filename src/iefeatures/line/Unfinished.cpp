#include "iefeatures/line/Unfinished.h"

#include "iefeatures/console/Text.h"

#include "jobs/file/RegularFile.h"
#include "jobs/file/WholeFile.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace companion
{
namespace
{

constexpr qint64 kLargest = 1024 * 1024;

} // namespace

Unfinished::Unfinished(const QString& inventory) : m_path(inventory + ".unfinished.json") {}

QString Unfinished::read()
{
    QFile file(m_path);
    m_cameras.clear();
    if (!file.exists())
        return {};
    const QString cause = ie::openRegular(file, QIODevice::ReadOnly);
    const QJsonValue cameras =
        cause.isEmpty() ? QJsonDocument::fromJson(file.read(kLargest)).object()["cameras"] : QJsonValue();
    const QJsonArray names = cameras.toArray();
    for (const auto& name : names)
        m_cameras += name.toString();
    if (cameras.isArray())
        return {};
    return printable(m_path) + " should tell which cameras are not finished, and cannot be read" +
           (cause.isEmpty() ? QString() : ": " + cause) + '.';
}

QString Unfinished::add(const QStringList& cameras)
{
    QStringList now = m_cameras + cameras;
    now.removeDuplicates();
    return write(now);
}

QString Unfinished::remove(const QStringList& cameras)
{
    QStringList now = m_cameras;
    for (const QString& camera : cameras)
        now.removeAll(camera);
    return write(now);
}

QString Unfinished::write(const QStringList& cameras)
{
    if (cameras == m_cameras)
        return {};
    m_cameras = cameras;
    const QJsonObject object{{"cameras", QJsonArray::fromStringList(cameras)}};
    if (cameras.isEmpty())
        return QFile::remove(m_path) || !QFile::exists(m_path) ? QString()
                                                               : printable(m_path) + " cannot be removed.";
    return ie::writeWholeBytes(m_path, QJsonDocument(object).toJson())
               ? QString()
               : printable(m_path) + " cannot be written.";
}

} // namespace companion
