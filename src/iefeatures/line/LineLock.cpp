#include "iefeatures/line/LineLock.h"

#include "iefeatures/console/Text.h"

#include <QDateTime>
#include <QFileInfo>

namespace companion
{

LineLock::LineLock(const QString& inventory)
    : m_inventory(inventory), m_path(inventory + ".lock"), m_file(m_path)
{
    m_file.setStaleLockTime(0); // only the death of who has it ends it
}

QString LineLock::take()
{
    if (m_file.tryLock(0))
        return {};
    const QString line = printable(m_inventory);
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
