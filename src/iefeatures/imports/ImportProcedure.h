// Imports with what stands around them: a snapshot before, the check and the camera's own user set behind,
// and the record of it all. Each step is done on all cameras at the same time before the next one begins; a
// camera that fails one has no further.
#pragma once

#include "iefeatures/check/CheckReport.h"
#include "iefeatures/console/Console.h"
#include "iefeatures/exports/ExportVerdict.h"
#include "iefeatures/imports/AuditLog.h"
#include "iefeatures/imports/CameraImport.h"
#include "iefeatures/imports/UserSet.h"

#include <map>
#include <vector>

namespace companion
{

struct ImportTask
{
    QString command;                             // for the audit log
    QString snapshots;                           // folder to take snapshots into; empty: none
    Unreadable unreadable = Unreadable::Refused; // of snapshots
    bool isVerified = false;                     // against the features file, where there is one
    QStringList ignored;                         // features whose difference does not count
    UserSet userSet;                             // saved where the verification is clean
    std::optional<ListedCamera> source;          // that the files are of, and were made for this task alone
    QStringList only;          // that features files were cut down to; empty: they are whole
    bool tellsChanges = false; // what was changed in the end
    bool isSummedUp = false;   // somebody else tells a line for each camera
    AuditRule audit;
    bool isForced = false; // also what no import should write (WriteSafety.h)
    ReportStyle style;
    bool isJson = false;
};

class ImportProcedure
{
public:
    ImportProcedure(Console& console, const ImportTask& task);

    // Does it all, or nothing where one of the files is none; tells messages as they come up and results at
    // the end, and gives an ExitCode.
    int run(const std::vector<ImportJob>& jobs);
    // What has come of each camera of that.
    std::vector<CameraVerdict> verdicts() const;

private:
    using Cameras = std::vector<CameraImport*>;
    Cameras going();

    void refuse();
    void refuseOtherKinds();
    void refuseDangers();
    std::vector<AuditFile> auditFilesOf(const ImportFiles& files);
    bool beginAudit();
    void doAllSteps();
    void takeSnapshots();
    void import(unsigned type, QString ImportFiles::*file);
    void settleOutcome(CameraImport& result, ImportOutcome outcome);
    void tellFailuresApart(const CameraImport& result, ImportOutcome& outcome);
    void tellFailures(const CameraImport& result);
    void verify();
    void saveUserSets();
    void cutShort();
    void tellInterrupted(const CameraImport& result);
    QString undoCommand(const CameraImport& result) const;
    void offerRollback(const CameraImport& result);
    void tellResults();
    Json resultJson(const CameraImport& result) const;
    AuditEntry auditEntryOf(const CameraImport& result) const;
    void audit();
    int exitCode() const;
    void tell(const ListedCamera& camera, const QString& text);

    Console& m_console;
    const ImportTask m_task;
    const CheckRule m_rule; // behind the import
    AuditTrail m_audit;
    std::map<SharedImportFiles, std::vector<AuditFile>> m_auditFiles;
    std::vector<CameraImport> m_results;
};

} // namespace companion
