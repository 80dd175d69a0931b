#include "jobs/file/WholeFile.h"

#include <QFile>
#include <QTextStream>

namespace ie
{

bool liesInFolder(const QString& fileName)
{
#if defined(Q_OS_WIN)
    return !fileName.contains('/') && !fileName.contains('\\') && !fileName.contains(':');
#else
    return !fileName.contains('/');
#endif
}

// A disk that fills up must not leave half a file that looks whole: what cannot be written whole is removed.
bool writeWholeFile(const QString& path, const QString& text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    // No codec on purpose: the system's local 8-bit encoding, whatever the file's declaration says.
    QTextStream stream(&file);
    stream << text;
    stream.flush();
    file.close();
    if (stream.status() == QTextStream::Ok && file.error() == QFileDevice::NoError)
        return true;
    file.remove();
    return false;
}

} // namespace ie
