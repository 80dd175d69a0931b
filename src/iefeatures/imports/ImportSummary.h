// What one import job has come to, and the lines for people. A job's signals tell little of it: some results
// of the worker are silent, as is a feature bag whose camera could not be opened, and a feature that the
// camera refuses for ever ends as a success.
#pragma once

#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/running/JobRun.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace companion
{

struct ImportOutcome
{
    JobRecord record;
    CameraVerdict verdict = CameraVerdict::NotStarted;
    ie::IdentityComparisons identity = {}; // of an incompatible file, once identify() was told
    std::vector<EntryCheck> judged =
        {}; // what it was seen not to apply, once settle() was told; empty before
};

ImportOutcome examineImport(const JobRecord& record);

// Of an incompatible file: what the job was seen to compare.
void identify(ImportOutcome& result, const ie::FeaturesHeader& file);

// Gives the failed registers the names of the features that the features file has them under.
void nameRegisters(const NamedFeatures::Blocks& names, ImportOutcome& result);

// Takes what failedEntries() has given back with its natures. Where nothing but states and the like has
// failed the job has applied the file.
void settle(ImportOutcome& result, const std::vector<EntryCheck>& judged);

// What the job's signals have not told, a sentence each: why it failed.
QStringList importRemarks(const ImportOutcome& result);
// The features that a job which was not well has failed at; a sentence each.
QStringList failureRemarks(const ImportOutcome& result);
// Why the verdict is none on single features, a sentence; empty where it is.
QString importError(const ImportOutcome& result);

// What the job was seen not to apply.
std::vector<EntryCheck> failedEntries(const ImportOutcome& result);

// A header, a line a camera: model, serial number, requests on the wire, seconds, verdict; and
// "3 applied, 1 incomplete, 0 incompatible, 0 failed".
QString importTable(const std::vector<ImportOutcome>& results);

} // namespace companion
