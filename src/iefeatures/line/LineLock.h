// One command at a time writes to the cameras of a line.
#pragma once

#include <QLockFile>
#include <QString>

namespace companion
{

// A file beside the inventory, until this ends. One that a dead process has left counts for nothing.
class LineLock
{
public:
    explicit LineLock(const QString& inventory);

    // Empty: the line is this command's. Else who has it, and since when, a sentence.
    QString take();

private:
    const QString m_inventory;
    const QString m_path;
    QLockFile m_file;
};

} // namespace companion
