// What has come of one camera in an import, step by step and all together.
#pragma once

#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/imports/ImportFiles.h"
#include "iefeatures/imports/ImportSummary.h"
#include "iefeatures/imports/Snapshot.h"
#include "iefeatures/imports/UserSet.h"

#include <optional>
#include <vector>

namespace companion
{

struct CameraImport
{
    ListedCamera camera;
    SharedImportFiles files;                // that it is set by
    bool isRefused = false;                 // before anything was done; `check` says why
    std::optional<SnapshotResult> snapshot; // when one was asked for
    std::vector<ImportOutcome> jobs;        // feature bag, features file; those that were begun
    std::optional<CameraCheck> check;       // behind the jobs, what they were seen to do laid over it
    SavedSet::State userSet = SavedSet::State::NotSaved;
    QString userSetProblem;  // a sentence
    bool isCutShort = false; // an interrupt came before the last step that was asked for
};

// Whether the next step may be done: nothing but single features has gone wrong.
bool goesOn(const CameraImport& result);

// All steps together, in the one shape that is told: the check where there is one, else what the jobs were
// seen not to apply. A check that was completed has the last word on what the jobs have left.
CameraCheck reportOf(const CameraImport& result);

// As one job: the verdict of all, with the effort of all.
ImportOutcome summed(const CameraImport& result);

// What all jobs have changed in the end, in the order of the first writes, registers with the names of their
// features.
std::vector<Change> changesOf(const CameraImport& result);
// Writes that the line failed, saving a user set among them: the camera may have carried them out.
std::vector<Change> inDoubt(const CameraImport& result);
// Features of the files that no job has come to.
QStringList notReached(const CameraImport& result);

} // namespace companion
