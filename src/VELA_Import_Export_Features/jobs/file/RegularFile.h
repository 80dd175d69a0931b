// Opening files that somebody else may have prepared.
#pragma once

#include <QFile>
#include <QString>

namespace ie
{

enum class LinkRule
{
    Followed,
    Refused // the name itself must be the file's
};

// Opens `file`, whose name is set and which is not open, only when it is a regular file (or, for writing,
// when it is made): a pipe would keep who opens it waiting for ever, a device would never end. Never waits,
// but on Windows for a second where another program holds the file.
// Gives the cause when it is not open then, or an empty text. Not for Truncate.
QString openRegular(QFile& file, QIODevice::OpenMode mode, LinkRule links = LinkRule::Followed);

// Why the file could not be opened, read or written, without the full stop that Windows ends its texts with.
QString causeOf(const QFileDevice& file);

} // namespace ie
