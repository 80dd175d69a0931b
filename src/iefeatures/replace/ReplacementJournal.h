// How far the replacement of a camera has come: a file beside the inventory, so that a command that was
// stopped, or failed, can be given again.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

namespace companion
{

// The steps, in their order.
enum class ReplaceStep
{
    Address,   // it can be reached
    Kind,      // its model and firmware are right
    Features,  // it is set as the files say
    Name,      // name, address and switches are kept in it
    Kept,      // its user set holds all of it
    StartUp,   // it starts with that set
    Restarted, // and has done so
    Inventory  // it stands there
};
constexpr ReplaceStep kReplaceSteps[] = {ReplaceStep::Address,   ReplaceStep::Kind,     ReplaceStep::Features,
                                         ReplaceStep::Name,      ReplaceStep::Kept,     ReplaceStep::StartUp,
                                         ReplaceStep::Restarted, ReplaceStep::Inventory};
// "address", "model and firmware"
QString stepWord(ReplaceStep step);

// One replacement that has begun.
struct ReplacementRecord
{
    QString mac; // of the new camera; empty: its transport has none
    QString guid;
    QString model;
    QString serial;
    QDateTime begun;   // UTC
    QStringList steps; // done, by their words

    bool has(ReplaceStep step) const { return steps.contains(stepWord(step)); }
    bool isOf(const ListedCamera& camera) const;
    QString title() const; // "EMU-1 0300 (02:00:00:00:00:01)"
};
ReplacementRecord recordOf(const ListedCamera& camera);

class ReplacementJournal
{
public:
    // `camera`: by its name in the inventory.
    ReplacementJournal(const QString& inventory, const QString& camera);

    // Nothing where none has begun. What cannot be read is told in `problem`, a sentence.
    std::optional<ReplacementRecord> read(QString& problem) const;
    // Takes the place of what stands there, in one step. A sentence where that cannot be done, else empty.
    QString write(const ReplacementRecord& record) const;
    // The replacement is over.
    QString remove() const;

    const QString& path() const { return m_path; }

private:
    const QString m_path;
};

} // namespace companion
