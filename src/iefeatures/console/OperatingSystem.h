// What the companion asks of the operating system beyond Qt.
#pragma once

#include <QFile>
#include <QString>

#include <functional>

namespace companion
{

// The name of the effective user; its number where it has no name. Empty where nothing is known.
QString loginName();

// Keeps other companions from the open file until it is closed. Waits a second for them at most: then, and
// where files have no locks, the file is not locked.
void lock(const QFile& file);

// Waits until there is something to read on the standard input; false when `mayWait` says no first. It is
// asked ten times a second: a signal alone does not end a read.
bool awaitInput(const std::function<bool()>& mayWait);

} // namespace companion
