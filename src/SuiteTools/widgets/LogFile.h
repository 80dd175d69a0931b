// A file of the log that is rolled when it has grown.
#pragma once

#include "LogSettings.h"

#include <QFile>

namespace VELAInterface
{

// Lines go to the disk as they are written. One thread at a time.
class LogFile
{
public:
    explicit LogFile(LogAppender settings);

    // Makes the folder and opens the file; false where the system refuses.
    bool open();
    // Appends bytes as they are. A file that has reached its size is called NAME.1 first, what was NAME.1
    // becomes NAME.2 and so on, and the last one that may be kept is dropped. Where that fails the file grows
    // on.
    void write(const QByteArray& bytes);

    const LogAppender& settings() const { return m_settings; }

private:
    bool openFile(QIODevice::OpenMode mode);
    void roll();

    LogAppender m_settings;
    QFile m_file;
    qint64 m_size = 0;
};

} // namespace VELAInterface
