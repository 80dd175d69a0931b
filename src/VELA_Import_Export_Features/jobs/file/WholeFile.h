// Files that are written whole or not at all.
#pragma once

#include <QByteArray>
#include <QString>

namespace ie
{

// Whether a file of that name lies directly in the folder that it is joined to: a name taken from a camera
// must not lead out of it, and on Windows be a file's (WindowsNames.h) and no device's.
bool liesInFolder(const QString& fileName);

// In the system's local 8-bit encoding. Written beside the file of that name and then put in its place, so
// that of two writers at the same moment the last one wins, whole, and a failure (false) leaves the older
// file as it was. Permissions of an older file stay; a link is followed. Where the folder allows no second
// file, and into devices and pipes, it is written in place: then a failure leaves nothing of that name, or an
// empty file where the folder lets nobody remove it, unless it could not be opened.
bool writeWholeFile(const QString& path, const QString& text);
// The same of bytes as they are.
bool writeWholeBytes(const QString& path, const QByteArray& bytes);

} // namespace ie
