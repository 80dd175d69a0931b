#include "iefeatures/console/UnfinishedFolder.h"

#include "iefeatures/console/OperatingSystem.h"

#include <QDir>

#include <atomic>
#include <utility>

namespace companion
{

// A signal handler walks over the notes: none is ever freed, one whose folder is gone is used again.
struct UnfinishedFolder::Note
{
    std::atomic<bool> isTaken{true};
    std::atomic<bool> isGood{false};
    char path[4096]; // as the system has them at most
    Note* next = nullptr;

    static std::atomic<Note*> all;

    static Note* take()
    {
        for (Note* note = all; note; note = note->next)
            if (!note->isTaken.exchange(true))
                return note;
        Note* note = new Note;
        note->next = all;
        while (!all.compare_exchange_weak(note->next, note)) {
        }
        return note;
    }

    void give()
    {
        isGood = false;
        isTaken = false;
    }
};

std::atomic<UnfinishedFolder::Note*> UnfinishedFolder::Note::all{nullptr};

UnfinishedFolder::UnfinishedFolder(const QString& path) : m_path(path), m_note(Note::take())
{
    qstrncpy(m_note->path, treePath(path).constData(), sizeof m_note->path);
    m_note->isGood = true;
}

UnfinishedFolder::~UnfinishedFolder()
{
    if (!m_note)
        return;
    QDir(m_path).removeRecursively();
    keep();
}

UnfinishedFolder::UnfinishedFolder(UnfinishedFolder&& other) noexcept
    : m_path(std::move(other.m_path)), m_note(std::exchange(other.m_note, nullptr))
{}

UnfinishedFolder& UnfinishedFolder::operator=(UnfinishedFolder&& other) noexcept
{
    std::swap(m_path, other.m_path);
    std::swap(m_note, other.m_note);
    return *this;
}

void UnfinishedFolder::keep()
{
    if (m_note)
        std::exchange(m_note, nullptr)->give();
}

void UnfinishedFolder::removeAll()
{
    for (Note* note = Note::all; note; note = note->next)
        if (note->isGood)
            removeTree(note->path);
}

UnfinishedFolder makePrivateFolder(const QString& parent, QString& cause)
{
    const QString path = newPrivateFolder(parent, cause);
    if (!path.isEmpty())
        return UnfinishedFolder(path);
    return {};
}

} // namespace companion
