#include "iefeatures/line/LineLock.h"

#include "iefeatures/console/Text.h"

#include "jobs/file/RegularFile.h"

#include <QDateTime>
#include <QFileInfo>

namespace companion
{

namespace
{

// Why what has the name cannot be a lock; empty: it can, or nothing has it.
QString obstacle(const QString& path)
{
    QFile file(path);
    const QString cause = ie::openRegular(file, QIODevice::ReadOnly, ie::LinkRule::Refused);
    const QFileInfo about(path);
    return about.exists() || about.isSymLink() ? cause : QString();
}

} // namespace

LineLock::LineLock(const QString& inventory)
    : m_inventory(inventory), m_path(inventory + ".lock"), m_file(m_path)
{
    m_file.setStaleLockTime(0); // only the death of who has it ends it
}

QString LineLock::take()
{
    const QString line = printable(m_inventory);
    // Before the lock's file reads it, which would wait for the other end of a pipe.
    const QString cause = obstacle(m_path);
    if (!cause.isEmpty())
        return line + " cannot be locked: " + printable(m_path) + " is in the way (" + cause + ").";
    if (m_file.tryLock(0))
        return {};
    qint64 process = 0;
    QString host;
    QString program;
    if (m_file.error() != QLockFile::LockFailedError || !m_file.getLockInfo(&process, &host, &program))
        return line + " cannot be locked: " + printable(m_path) + " cannot be written.";
    const QString since = QFileInfo(m_path).lastModified().toUTC().toString("yyyy-MM-dd HH:mm:ss 'UTC'");
    return line + QString(" is worked on by %1 (process %2 on %3) since %4.")
                      .arg(printable(program))
                      .arg(process)
                      .arg(printable(host), since);
}

} // namespace companion
