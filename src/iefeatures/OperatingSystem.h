// What the companion asks of the operating system beyond Qt.
#pragma once

#include <QFile>
#include <QString>

namespace companion
{

// The name of the effective user; its number where it has no name. Empty where nothing is known.
QString loginName();

// Keeps other companions from the open file until it is closed. Waits a second for them at most: then, and
// where files have no locks, the file is not locked.
void lock(const QFile& file);

} // namespace companion
