// A record of what was done to cameras: JSON lines at the end of <user data folder>/Audit/iefeatures.jsonl.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/console/Verdict.h"
#include "iefeatures/running/ObservedChanges.h"

#include <QString>
#include <QStringList>

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
    QString source;               // serial number of the camera that they are of; empty: not known
    std::vector<AuditFile> files; // in the order of their use
    ListedCamera camera;
    QString firmware;        // empty: not known
    QString descriptionHash; // SHA-256, hexadecimal; empty: not known
    std::vector<Change> changes;
    QStringList notApplied;                         // features
    QString snapshot;                               // folder; empty: none
    QString userSet;                                // that it was saved into; empty: none
    CameraVerdict outcome = CameraVerdict::Applied; // its word is told, and the exit code it makes by itself
};

// The entry as one line, the line feed included. Time, user and host are those of the call. Of very many
// changes the first 5000 are told, and how many more there were.
QByteArray auditLine(const AuditEntry& entry);

QString auditPath();
// Adds the lines, each in one write, so that several companions may write at once; the folder is made. Gives
// what went wrong as a sentence, or an empty text.
QString appendToAudit(const std::vector<AuditEntry>& entries);

} // namespace companion
