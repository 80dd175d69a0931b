// An import with what stands around it: a snapshot before, the check and the camera's own user set behind,
// and the record of it all. Each step is done on all cameras at the same time before the next one begins; a
// camera that fails one has no further.
#pragma once

#include "iefeatures/check/CheckReport.h"
#include "iefeatures/console/Console.h"
#include "iefeatures/exports/ExportVerdict.h"
#include "iefeatures/files/FeaturesFileInput.h"
#include "iefeatures/imports/AuditLog.h"
#include "iefeatures/imports/CameraImport.h"
#include "iefeatures/imports/UserSet.h"

#include <vector>

namespace companion
{

struct ImportTask
{
    QString command;                             // for the audit log
    QString bag;                                 // a feature bag to load first; empty: none
    QString features;                            // a features file to import; empty: none
    QString snapshots;                           // folder to take snapshots into; empty: none
    Unreadable unreadable = Unreadable::Refused; // of snapshots
    bool isVerified = false;                     // against the features file
    UserSet userSet;                             // saved where the verification is clean
    std::optional<ListedCamera> source;          // that the files are of, and were made for this task alone
    QStringList only;                            // that the features file was cut down to; empty: it is whole
    QString original;                            // then what it was cut from
    bool tellsChanges = false;                   // what was changed in the end
    AuditRule audit;
    bool isForced = false; // also what no import should write (WriteSafety.h)
    Detail detail = Detail::Attention;
    bool isJson = false;
};

class ImportProcedure
{
public:
    ImportProcedure(Console& console, const ImportTask& task);

    // Does it all, or nothing where the features file is none; tells messages as they come up and results at
    // the end, and gives an ExitCode.
    int run(const std::vector<ListedCamera>& cameras);

private:
    using Cameras = std::vector<CameraImport*>;
    Cameras going();

    void refuse();
    void refuseDangers();
    bool beginAudit();
    void doAllSteps();
    void takeSnapshots();
    void import(unsigned type, const QString& file);
    void tellFailuresApart(std::vector<ImportOutcome>& outcomes);
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
    // the features file, as it was before anything was done, or a fault of either
    const FeaturesFileInput m_input;
    const NamedFeatures m_named; // by either file
    AuditTrail m_audit;
    std::vector<AuditFile> m_files;
    std::vector<CameraImport> m_results;
};

} // namespace companion
