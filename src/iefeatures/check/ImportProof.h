// What a camera holds of what a features file says: everything that the file names is read again, over a
// connection that takes no control and writes nothing.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/running/CallWatch.h"

#include <QString>
#include <QStringList>

#include <string>
#include <vector>

namespace companion
{

enum class Standing
{
    Applied,    // it was changed, and has the file's value
    Unchanged,  // it had the file's value before
    Coerced,    // the camera made a value of it that is less than an increment, or a float's precision, off
    NotApplied, // another value, or none can be read
    Absent,     // the camera has no such feature
    Skipped     // imports leave it alone
};

struct Verified
{
    QString feature;
    QString register_; // address; empty for a plain feature
    Standing standing = Standing::NotApplied;
    QString wanted; // as the file has it
    QString found;  // the same form; empty when it cannot be read
    QString reason; // a sentence; of what was not applied
};

struct Verification
{
    ListedCamera camera;
    QString problem; // why there is none, a sentence; empty otherwise
    std::vector<Verified> features;

    // Nothing is missing: every feature is applied, unchanged or coerced.
    bool isClean() const;
    // The names of those that are not applied or absent, each once.
    QStringList missing() const;
};

// What is known of a camera from the import: what was changed, and what failed with which status.
struct ImportTraces
{
    std::vector<Change> changes;
    std::vector<FailedCall> failures;
};

// Blocks until all is read.
Verification verify(const ListedCamera& camera, const QString& featuresFile, const ImportTraces& traces);

// "EMU-1 S1: 3 applied, 40 unchanged, 1 coerced, 2 not applied, 0 absent", and a line for each feature that
// is not as the file says.
QString verificationText(const Verification& verification);
// {"verify":"...","device":1,...}, one line.
std::string verificationJson(const Verification& verification);

} // namespace companion
