// Folders that hold nothing anybody should find until the work on them is done.
#pragma once

#include <QString>

namespace companion
{

// Removes a folder, with all that is in it, when it goes; also when a second Ctrl-C ends the process at once.
// The folders that live at one time may be many; made and destroyed on any thread.
class UnfinishedFolder
{
public:
    UnfinishedFolder() = default; // none
    explicit UnfinishedFolder(const QString& path);
    ~UnfinishedFolder();
    UnfinishedFolder(UnfinishedFolder&& other) noexcept;
    UnfinishedFolder& operator=(UnfinishedFolder&& other) noexcept;

    const QString& path() const { return m_path; }
    // It stays, and is nobody's any more.
    void keep();

    // All that live. For a process that is about to end: safe in a signal handler.
    static void removeAll();

private:
    struct Note;
    QString m_path;
    Note* m_note = nullptr;
};

// Makes a new folder in `parent` that nobody but this user may look into. One without a path, and the cause,
// where none can be made.
UnfinishedFolder makePrivateFolder(const QString& parent, QString& cause);

} // namespace companion
