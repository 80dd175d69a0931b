#include "LogFile.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

namespace VELAInterface
{

LogFile::LogFile(LogAppender settings) : m_settings(std::move(settings)), m_file(m_settings.file) {}

bool LogFile::open()
{
    QDir().mkpath(QFileInfo(m_settings.file).absolutePath());
    return openFile(m_settings.append ? QIODevice::Append : QIODevice::WriteOnly | QIODevice::Truncate);
}

bool LogFile::openFile(QIODevice::OpenMode mode)
{
    const bool isOpen = m_file.open(mode | QIODevice::WriteOnly | QIODevice::Unbuffered);
    m_size = isOpen ? m_file.size() : 0;
    return isOpen;
}

void LogFile::write(const QByteArray& bytes)
{
    if (m_settings.maxSize >= 0 && m_size >= m_settings.maxSize && m_size > 0)
        roll();
    m_file.write(bytes);
    m_size += bytes.size();
}

// Only files that stand in an unbroken row move up: one behind a gap stays where it is.
void LogFile::roll()
{
    const auto name = [this](int i) {
        return i == 0 ? m_settings.file : m_settings.file + '.' + QString::number(i);
    };
    m_file.close();
    int free = 1;
    while (free < m_settings.backups && QFile::exists(name(free)))
        ++free;
    QFile::remove(name(free));
    bool moved = true;
    for (; free > 0 && moved; --free)
        moved = QFile::rename(name(free - 1), name(free));
    openFile(QIODevice::Append);
}

} // namespace VELAInterface
