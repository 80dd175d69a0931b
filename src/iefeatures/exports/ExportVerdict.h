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
    int features = 0;          // blocks of the written file, lines of a feature bag
    QStringList notes = {};    // of a feature bag: what it says itself that it leaves out and nobody has told
    bool isCut = false;        // a feature bag for which there was too much, as it says itself
    bool isNotSetBack = false; // a selector is not what it was before a feature bag was saved
    QString problem = {};      // why the file is not kept, which the job has not told: a sentence
    QStringList leftOut = {};  // features that were taken out of the file, for nobody could read them again
};

enum class Unreadable
{
    Refused, // a file that cannot be read back
    LeftOut  // what makes it so
};
inline constexpr char kSkipUnreadableHelp[] =
    "Leave out features whose texts an import could not read again, and keep the file";

// Looks at the file that the job has written (`job.path`, where it was written) and counts its features. A
// features file that was written although calls of its job were refused, or the line failed, lacks features
// without showing it, and one that cannot be read back (ReadBack.h) is none: then the job counts as failed.
// With Unreadable::LeftOut the file is written again without what cannot be read back.
// Of a feature bag, `findings` have what became of saving it. KX_E_INCOMPLETE is a failure with a file.
ExportResult examineExport(const JobOutcome& job, const CallWatch::Tally& tally,
                           const CallWatch::Findings& findings = {},
                           Unreadable unreadable = Unreadable::Refused);
// What to tell of a file that is kept although something was left out of it; a sentence, or an empty text.
QString leftOutNote(const ExportResult& result);
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
