// What the companion asks of the operating system beyond Qt.
#pragma once

#include <QFile>
#include <QString>
#include <QStringList>

#include <functional>
#include <string>
#include <vector>

namespace companion
{

// What the program was called with, without its own name, in UTF-8. After the QCoreApplication of main().
// POSIX systems: the bytes as they came.
std::vector<std::string> programArguments(int argc, char** argv);

// The name of the effective user; its number where it has no name. Empty where nothing is known.
QString loginName();

// Whether this user has a folder of his own. Where HOME says which it is, it may say nothing.
bool hasHomeFolder();

// Keeps other companions from the open file until it is closed. Waits a second for them at most: then, and
// where files have no locks, the file is not locked.
void lock(const QFile& file);

// Whether a new file may take that name: nothing has it, or a regular file or a link, and no folder, pipe or
// device.
bool isReplaceable(const QString& path);

// Whether other people may put files into the folder, or take them away: it is theirs, or its permissions let
// everybody, or a group that is not this user's own.
bool mayOthersWrite(const QString& folder);

// Makes a folder of a name of its own in `parent`, for this user alone where the folder's rights are told by
// a mode; gives its path, or an empty text and why there is none.
QString newPrivateFolder(const QString& parent, QString& cause);

// Puts the file at `from` in the place of `to`, on the same disk, in one step: who looks at `to` sees the
// older file or the new one. A link of that name is replaced and not followed, and so is one of an older
// file's names; the older file's permissions stay where it is this user's. Gives the cause when it cannot be
// done, or an empty text.
QString putInPlace(const QString& from, const QString& to);

// The path as removeTree() takes it.
QByteArray treePath(const QString& path);
// Removes the file or folder with what is in it, links as links. From a signal handler as well.
void removeTree(const char* path);

// Windows: Ctrl-C, Ctrl-Break, the console's closing and logging off call `handler` with SIGINT or SIGTERM,
// on a thread of its own, from now on; null: nobody. After a closing the process may go on until main()
// returns, as long as the system lets it (5 s as it is set up). POSIX systems: nothing, these are signals
// there.
void onConsoleEvent(void (*handler)(int));

// A write beyond the limit on the size of files fails from now on, instead of ending the process.
void failWritesBeyondLimit();
// Whether one did, where that limit was not ignored already.
bool wasLimitMet();

// What of this host's network may keep packets from a camera that is, or should be, behind the interface
// ("eth1"; empty: not known): strict filtering of reverse paths there, link-local addresses on two
// interfaces. What can follow "; ", each; empty where nothing is known.
QStringList hostObstacles(const QString& interfaceName);

// Waits until there is something to read on the standard input; false when `mayWait` says no first. It is
// asked ten times a second: a signal alone does not end a read.
bool awaitInput(const std::function<bool()>& mayWait);

} // namespace companion
