// Cameras of a line that a command has begun to set and has not ended with: a file beside the inventory. What
// nobody sees of a camera, its user set and the address that it keeps, is finished by the next command.
#pragma once

#include <QString>
#include <QStringList>

namespace companion
{

class Unfinished
{
public:
    explicit Unfinished(const QString& inventory);

    // What stands there. A sentence where it cannot be read, else an empty text.
    QString read();
    bool contains(const QString& camera) const { return m_cameras.contains(camera); }

    // By their names in the inventory: before they are written to, and when all is done. A sentence where the
    // file cannot be written, else an empty text.
    QString add(const QStringList& cameras);
    QString remove(const QStringList& cameras);

private:
    QString write(const QStringList& cameras);

    const QString m_path;
    QStringList m_cameras;
};

} // namespace companion
