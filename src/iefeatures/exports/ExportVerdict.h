// What an export has come to: the lines for people and the exit code.
#pragma once

#include "iefeatures/console/Console.h"
#include "iefeatures/running/CallWatch.h"
#include "iefeatures/running/JobBatch.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace companion
{

struct ExportResult
{
    enum class State
    {
        Written,
        Failed,
        NotStarted
    };

    JobOutcome job;
    CallWatch::Tally tally;
    State state = State::NotStarted;
    int features = 0;   // blocks of the written file, lines of a feature bag
    bool isCut = false; // a feature bag that lacks something, as the camera library has told
};

// Counts the written features. A file that was written although calls of its job were refused lacks features
// without showing it: it is removed and the job counts as failed.
// `bagStatus`: of saving a feature bag. KX_E_INCOMPLETE is a failure with a file.
ExportResult examineExport(const JobOutcome& job, const CallWatch::Tally& tally, KX_Status bagStatus = KX_OK);
// What the job's signals have not told; a sentence each.
QStringList exportRemarks(const ExportResult& result, const CallWatch::Findings& findings);

// A header, a line a camera: model, serial number, features written, requests on the wire, seconds, path; and
// "4 exported, 0 failed".
QString exportTable(const std::vector<ExportResult>& results);
// "model serial: path" or "model serial: not written", a line a camera.
QString exportFates(const std::vector<ExportResult>& results);

// The fields of the object of one camera: "exported", "incomplete" (a feature bag that lacks something),
// "failed" or "not started".
Json exportJson(const ExportResult& result, const QStringList& remarks);

int exportExitCode(const std::vector<ExportResult>& results, bool isInterrupted);

} // namespace companion
