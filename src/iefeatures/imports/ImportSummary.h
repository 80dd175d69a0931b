// What an import has come to: the lines for people and scripts and the exit code. A job's signals tell little
// of it: some results of the worker are silent, as is a feature bag whose camera could not be opened, and a
// feature that the camera refuses for ever ends as a success.
#pragma once

#include "iefeatures/running/JobRun.h"

#include <QString>
#include <QStringList>

#include <string>
#include <vector>

namespace companion
{

struct ImportOutcome
{
    enum class State
    {
        Applied,
        Incomplete,   // some features did not take their value
        Incompatible, // the file belongs to another camera or version; nothing was written
        BadFile,      // cannot be read, or is no such file
        Failed,
        NotStarted
    };

    JobRecord record;
    State state = State::NotStarted;
};

ImportOutcome examineImport(const JobRecord& record);

// Gives the failed registers the names of the features that the features file has them under.
void nameRegisters(const CallWatch::Blocks& names, std::vector<ImportOutcome>& results);

// What the job's signals have not told, a sentence each: why it failed, what did not take.
QStringList importRemarks(const ImportOutcome& result);

// A header, a line a camera: model, serial number, requests on the wire, seconds, result; and
// "3 applied, 1 incomplete, 0 incompatible, 0 failed".
QString importTable(const std::vector<ImportOutcome>& results);
// {"result":"incomplete","device":1,"notApplied":["Width"]}, an object a line for each camera.
std::string importJson(const std::vector<ImportOutcome>& results);

// As in the table.
QString importWord(ImportOutcome::State state);
// What a job was seen not to apply, by name.
QStringList notApplied(const CallWatch::Findings& findings);

// The exit code of one camera.
int importExitCode(ImportOutcome::State state);

} // namespace companion
