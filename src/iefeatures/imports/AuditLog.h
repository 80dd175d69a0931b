// A record of what was done to cameras: JSON lines at the end of <user data folder>/Audit/iefeatures.jsonl,
// or of another file. A command leaves two lines a camera, one before it writes anything and one at its end:
// a first line without a second one is a command that crashed, or lost its machine.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/console/Console.h"
#include "iefeatures/console/Verdict.h"
#include "iefeatures/running/ObservedChanges.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace companion
{

// A file as it was read.
struct AuditFile
{
    QString path;   // absolute
    QString sha256; // hexadecimal; empty when it could not be read
};
AuditFile auditFile(const QString& path);

// One camera and what one command did to it.
struct AuditEntry
{
    QString command;
    std::optional<ListedCamera> source; // that the files are of
    std::vector<AuditFile> files;       // in the order of their use
    QStringList only;                   // of which features of them; empty: of all
    ListedCamera camera;
    QString firmware;        // empty: not known
    QString descriptionHash; // SHA-256, hexadecimal; empty: not known
    bool isKnown = true;     // what was changed and what not; else nothing is told of it
    std::vector<Change> changes;
    std::vector<Change> inDoubt;                    // writes that no answer came to
    QStringList notApplied;                         // features
    QString snapshot;                               // folder; empty: none
    QString userSet;                                // that it was saved into; empty: none
    CameraVerdict outcome = CameraVerdict::Applied; // its word is told, and the exit code it makes by itself
};

enum class AuditMoment
{
    Begins, // what is known before anything was written
    Ends
};

// The entry as one line, the line feed included. Time, user and host are those of the call. Of very many
// changes the first 5000 are told, and how many more there were.
QByteArray auditLine(const AuditEntry& entry, AuditMoment moment);

struct AuditRule
{
    bool isOn = true;
    QString file;            // empty: the one in the user's data folder
    bool isRequired = false; // without a line nothing is written to a camera
};

// Empty when there is no place for one: nothing is said of where the user's data is.
QString auditPath(const AuditRule& rule);

// The lines of one command. What has begun ends: where the command is left without an end, by an exception or
// otherwise, its cameras have failed, and nobody knows what was written to them.
class AuditTrail
{
public:
    AuditTrail(Console& console, const AuditRule& rule) : m_console(console), m_rule(rule) {}
    ~AuditTrail();
    AuditTrail(const AuditTrail&) = delete;
    AuditTrail& operator=(const AuditTrail&) = delete;

    // Adds the lines, each in one write, so that several companions may write at once; the folder is made.
    // What goes wrong is told once. False: nothing may be written to a camera, and what has begun has ended.
    bool begin(const std::vector<AuditEntry>& entries);
    void end(const std::vector<AuditEntry>& entries);
    // Copies a file that will not last into the folder files/ beside the log, under the name of its SHA-256.
    // As it was given where that cannot be done, or there is no log.
    AuditFile keep(const QString& path);

private:
    void append(const std::vector<AuditEntry>& entries, AuditMoment moment);
    void fail(const QString& sentence);

    Console& m_console;
    const AuditRule m_rule;
    QStringList m_told;              // of what went wrong
    std::vector<AuditEntry> m_begun; // and not ended
};

} // namespace companion
