// Files that are written whole or not at all.
#pragma once

#include <QString>

namespace ie
{

// Whether a file of that name lies directly in the folder that it is joined to: a name taken from a camera
// must not lead out of it.
bool liesInFolder(const QString& fileName);

// In the system's local 8-bit encoding. False: nothing of that name is left, unless it could not be opened.
bool writeWholeFile(const QString& path, const QString& text);

} // namespace ie
