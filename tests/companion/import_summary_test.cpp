#include "iefeatures/imports/ImportSummary.h"

#include "companion/CompanionFixture.h"
#include "iefeatures/check/ImportProof.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/imports/CameraImport.h"

#include "jobs/worker/QOperateThread.h"

using namespace companion;
using Verdict = CameraVerdict;

namespace
{

// A job on an open camera that said nothing.
JobRecord silent(unsigned type = JOB_FEATURE_XML_IMPORT)
{
    JobRecord record;
    record.job.camera = camerasFrom({tests::gigeEntry("EMU-1", "S1")}).front();
    record.job.hasStarted = true;
    record.job.type = type;
    record.tally.wasOpened = true;
    return record;
}

JobRecord withCode(unsigned code, bool hasFailed)
{
    JobRecord record = silent();
    record.job.errorCode = code;
    record.job.hasFailed = hasFailed;
    return record;
}

JobRecord withFailure(KX_Status status)
{
    JobRecord record = silent();
    record.findings.failures = {{"Width", false, 0, status}};
    return record;
}

JobRecord withBag(KX_Status status)
{
    JobRecord record = silent(JOB_FEATURE_BAG_IMPORT);
    record.findings.bagStatus = status;
    return record;
}

Verdict verdictOf(const JobRecord& record)
{
    return examineImport(record).verdict;
}

} // namespace

TEST(ImportSummary, KnowsWhatTheWorkersResultMeans)
{
    EXPECT_EQ(verdictOf(JobRecord()), Verdict::NotStarted);
    EXPECT_EQ(verdictOf(silent()), Verdict::Applied);
    EXPECT_EQ(verdictOf(withCode(IMPORT_OK, true)), Verdict::UnreadableFile);
    EXPECT_EQ(verdictOf(withCode(IMPORT_ERR_NO_FEATURES, false)), Verdict::BadFile);
    EXPECT_EQ(verdictOf(withCode(IMPORT_ERR_VERSION, true)), Verdict::Incompatible);
    EXPECT_EQ(verdictOf(withCode(IMPORT_ERR_VERSION, false)), Verdict::Applied);
    EXPECT_EQ(verdictOf(withCode(IMPORT_ERR_MODEL, true)), Verdict::Incompatible);
    EXPECT_EQ(verdictOf(withCode(IMPORT_ERR_APPLY, false)), Verdict::Incomplete);
}

TEST(ImportSummary, TellsWhatTheCameraRefusedFromALineThatFailed)
{
    EXPECT_EQ(verdictOf(withFailure(KX_E_GC_ACCESS)), Verdict::Incomplete);
    EXPECT_EQ(verdictOf(withFailure(KX_E_DEVICE)), Verdict::Failed);
    // A firmware that could not be asked is no other firmware.
    JobRecord record = withFailure(KX_E_NO_ANSWER);
    record.job.errorCode = IMPORT_ERR_MODEL;
    record.job.hasFailed = true;
    EXPECT_EQ(verdictOf(record), Verdict::Failed);
}

TEST(ImportSummary, KnowsAJobThatNeverGotToItsCamera)
{
    JobRecord record = silent(JOB_FEATURE_BAG_IMPORT);
    record.tally.wasOpened = false;
    EXPECT_EQ(verdictOf(record), Verdict::Failed);
    EXPECT_EQ(importRemarks(examineImport(record)), QStringList{"the camera could not be opened."});
}

TEST(ImportSummary, KnowsAnInterruptedJob)
{
    JobRecord record = withFailure(KX_E_ABORTED);
    record.tally.wasRefused = true;
    EXPECT_EQ(verdictOf(record), Verdict::Interrupted);
    EXPECT_EQ(importRemarks(examineImport(record)),
              QStringList{"interrupted; a part of the file may have been applied."});
}

TEST(ImportSummary, KnowsWhatTheBagsStatusMeans)
{
    EXPECT_EQ(verdictOf(withBag(KX_OK)), Verdict::Applied);
    EXPECT_EQ(verdictOf(withBag(KX_E_INCOMPLETE)), Verdict::Incomplete);
    EXPECT_EQ(verdictOf(withBag(KX_E_FILE)), Verdict::UnreadableFile);
    EXPECT_EQ(verdictOf(withBag(KX_E_FILE_FORMAT)), Verdict::BadFile);
    EXPECT_EQ(verdictOf(withBag(KX_E_CONNECTION_LOST)), Verdict::Failed);
}

// Entries say whether a refusal matters, of jobs that came to their end, and of no others.
TEST(ImportSummary, IsSettledByEntriesWhereTheJobCameToItsEnd)
{
    EntryCheck same;
    same.verdict = EntryVerdict::Unchanged;
    const auto settled = [](const JobRecord& record, const std::vector<EntryCheck>& judged) {
        ImportOutcome result = examineImport(record);
        settle(result, judged);
        return result.verdict;
    };
    const JobRecord refused = withFailure(KX_E_GC_ACCESS);
    EXPECT_EQ(settled(refused, {same}), Verdict::Applied);
    EXPECT_EQ(settled(refused, {}), Verdict::Incomplete);
    EXPECT_EQ(settled(withCode(IMPORT_ERR_APPLY, true), {same}), Verdict::Incomplete);
    JobRecord interrupted = silent();
    interrupted.tally.wasRefused = true;
    EXPECT_EQ(settled(interrupted, {same}), Verdict::Interrupted);
}

TEST(ImportSummary, NamesAFewAndCountsTheRest)
{
    JobRecord record = silent();
    for (int i = 0; i < 23; ++i)
        record.findings.failures.push_back({QString("F%1").arg(i), false, 0, KX_E_GC_RANGE});
    const QStringList remarks = failureRemarks(examineImport(record));
    ASSERT_EQ(remarks.size(), 21);
    EXPECT_EQ(remarks.first(), "F0 did not take its value: The value is out of the feature's range.");
    EXPECT_EQ(remarks.last(), "3 more did not take their values.");
}

TEST(ExitCode, FollowsFromTheVerdict)
{
    EXPECT_EQ(exitCodeOf(Verdict::Applied), 0);
    EXPECT_EQ(exitCodeOf(Verdict::Ready), 0);
    EXPECT_EQ(exitCodeOf(Verdict::Incomplete), 4);
    EXPECT_EQ(exitCodeOf(Verdict::Incompatible), 5);
    EXPECT_EQ(exitCodeOf(Verdict::BadFile), 5);
    EXPECT_EQ(exitCodeOf(Verdict::UnreadableFile), 6);
    EXPECT_EQ(exitCodeOf(Verdict::NotStarted), 1);
    EXPECT_EQ(exitCodeOf(Verdict::Failed), 1);
    EXPECT_EQ(exitCodeOf(Verdict::Interrupted), 130);
}

TEST(ExitCode, IsThatOfTheGravestVerdict)
{
    EXPECT_EQ(gravest({}), Verdict::Applied);
    EXPECT_EQ(gravest({Verdict::Applied, Verdict::Ready}), Verdict::Ready);
    EXPECT_EQ(gravest({Verdict::Applied, Verdict::Incomplete}), Verdict::Incomplete);
    EXPECT_EQ(gravest({Verdict::Incomplete, Verdict::Incompatible}), Verdict::Incompatible);
    EXPECT_EQ(gravest({Verdict::UnreadableFile, Verdict::BadFile}), Verdict::UnreadableFile);
    EXPECT_EQ(gravest({Verdict::UnreadableFile, Verdict::Failed}), Verdict::Failed);
    EXPECT_EQ(gravest({Verdict::Interrupted, Verdict::Failed}), Verdict::Interrupted);
}

namespace
{

EntryCheck entryOf(const char* feature, EntryVerdict verdict)
{
    EntryCheck entry;
    entry.feature = feature;
    entry.judge(verdict);
    return entry;
}

class Proof : public ::testing::Test
{
protected:
    // "Width unchanged, Gain not applied"
    QString told() const
    {
        QStringList words;
        for (const EntryCheck& entry : check.entries)
            words += entry.title() + ' ' + verdictWord(entry.verdict);
        return words.join(", ");
    }

    CameraCheck check{{}, Verdict::Applied, {}, {}, {}};
    ImportTraces traces;
};

} // namespace

TEST_F(Proof, PartsWhatWasChangedFromWhatWasSoBefore)
{
    EntryCheck word = entryOf("Gain", EntryVerdict::Unchanged);
    word.isRegister = true;
    word.address = 16;
    EntryCheck other = word;
    other.address = 20;
    check.entries = {entryOf("Width", EntryVerdict::Unchanged), entryOf("Height", EntryVerdict::Unchanged),
                     word, other};
    traces.changes = {{"Width", false, 0, "1", "2"}, {"Gain", true, 16, "00", "01"}};
    layOver(check, traces);
    EXPECT_EQ(told(), "Width applied, Height unchanged, Gain (register 0x00000010) applied, Gain (register "
                      "0x00000014) unchanged");
    EXPECT_EQ(check.verdict, Verdict::Applied);
}

// A camera that has refused a value has not made one of it, however near its own one is.
TEST_F(Proof, KnowsWhatWasRefused)
{
    check.entries = {entryOf("Width", EntryVerdict::Coerced), entryOf("Height", EntryVerdict::Coerced),
                     entryOf("Gain", EntryVerdict::Unchanged)};
    traces.failures = {failedEntry({"Width", false, 0, KX_E_GC_RANGE}),
                       failedEntry({"Gain", false, 0, KX_E_GC_ACCESS})};
    layOver(check, traces);
    EXPECT_EQ(told(), "Width not applied, Height coerced, Gain unchanged");
    EXPECT_EQ(check.entries[0].reason, KX_CC_StatusText(KX_E_GC_RANGE));
    EXPECT_EQ(check.verdict, Verdict::Incomplete);
}

// What was refused and turned out to be nobody's setting takes nothing back.
TEST_F(Proof, DoesNotCountARefusalThatNobodyMinds)
{
    check.entries = {entryOf("Width", EntryVerdict::Coerced)};
    traces.failures = {failedEntry({"Width", false, 0, KX_E_GC_RANGE})};
    traces.failures[0].judge(EntryVerdict::Automatic, "WidthAuto moves it");
    layOver(check, traces);
    EXPECT_EQ(told(), "Width coerced");
    EXPECT_EQ(check.verdict, Verdict::Applied);
}

TEST_F(Proof, TakesInWhatTheFileDoesNotName)
{
    check.entries = {entryOf("Width", EntryVerdict::Unchanged)};
    traces.failures = {failedEntry({"OfTheBag", false, 0, KX_E_GC_RANGE}),
                       failedEntry({{}, true, 4096, KX_E_GC_ACCESS})};
    layOver(check, traces);
    EXPECT_EQ(told(), "Width unchanged, OfTheBag not applied, register 0x00001000 not applied");
    EXPECT_EQ(check.notApplied(), (QStringList{"OfTheBag", "register 0x00001000"}));
    EXPECT_EQ(check.verdict, Verdict::Incomplete);
}

TEST_F(Proof, LeavesACheckAloneThatWasNotCompleted)
{
    check.verdict = Verdict::Failed;
    traces.failures = {failedEntry({"Width", false, 0, KX_E_GC_RANGE})};
    layOver(check, traces);
    EXPECT_EQ(check.verdict, Verdict::Failed);
    EXPECT_TRUE(check.entries.empty());
}

namespace
{

CameraImport importOf(const std::vector<ImportOutcome>& jobs)
{
    CameraImport result;
    result.files = std::make_shared<companion::ImportFiles>();
    result.jobs = jobs;
    return result;
}

} // namespace

TEST(CameraImport, AddsItsStepsUpToTheGravest)
{
    EXPECT_EQ(reportOf(CameraImport()).verdict, Verdict::NotStarted);
    const ImportOutcome applied = examineImport(silent());
    const ImportOutcome incomplete = examineImport(withFailure(KX_E_GC_RANGE));
    EXPECT_EQ(reportOf(importOf({applied, applied})).verdict, Verdict::Applied);
    EXPECT_EQ(reportOf(importOf({incomplete, applied})).verdict, Verdict::Incomplete);
    EXPECT_EQ(reportOf(importOf({incomplete, applied})).notApplied(), QStringList{"Width"});

    CameraImport doubted = importOf({applied});
    doubted.userSet = companion::SavedSet::State::InDoubt;
    ASSERT_EQ(inDoubt(doubted).size(), 1u);
    EXPECT_EQ(inDoubt(doubted).front().feature, "UserSetSave");

    CameraImport result = importOf({applied});
    result.userSetProblem = "UserSet1 was not saved.";
    EXPECT_EQ(reportOf(result).verdict, Verdict::Failed);
    EXPECT_EQ(reportOf(result).error, "UserSet1 was not saved.");
    result.isCutShort = true;
    EXPECT_EQ(reportOf(result).verdict, Verdict::Interrupted);
}

// What a job could not write has reached its value all the same, or has not.
TEST(CameraImport, BelievesTheCheckBeforeTheJobs)
{
    CameraImport result = importOf({examineImport(withFailure(KX_E_GC_RANGE))});
    result.check = CameraCheck{{}, Verdict::Applied, {}, {}, {}};
    EXPECT_EQ(reportOf(result).verdict, Verdict::Applied);
    result.check->verdict = Verdict::Failed;
    EXPECT_EQ(reportOf(result).verdict, Verdict::Failed);
    result.check->verdict = Verdict::NotStarted; // something was written all the same
    EXPECT_EQ(reportOf(result).verdict, Verdict::Interrupted);
}

TEST(CameraImport, WithoutItsSnapshotIsNotStarted)
{
    CameraImport result;
    result.snapshot = SnapshotResult();
    result.snapshot->problems = QStringList{"the export failed."};
    EXPECT_FALSE(goesOn(result));
    EXPECT_EQ(reportOf(result).verdict, Verdict::NotStarted);
    EXPECT_EQ(reportOf(result).error, "the export failed.");
}

namespace
{

// Events as the camera library tells them.
class WritesThatFail : public ::testing::Test
{
protected:
    void node(uint32_t operation, const char* name, KX_Status status)
    {
        KX_CallEvent event{};
        event.operation = operation;
        event.finished = 1;
        event.nodeName = name;
        event.status = status;
        calls.take(event);
    }
    void memory(uint32_t operation, int64_t address, KX_Status status)
    {
        KX_CallEvent event{};
        event.operation = operation;
        event.finished = 1;
        event.address = address;
        event.status = status;
        calls.take(event);
    }
    // "Width Gain 4096"
    QString open() const
    {
        QStringList words;
        for (const FailedCall& failure : calls.failures())
            words += failure.isRegister ? QString::number(failure.address) : failure.feature;
        return words.join(' ');
    }

    FailedCalls calls;
};

} // namespace

TEST_F(WritesThatFail, KeepsWritesThatFailed)
{
    node(KX_OP_GET_INT, "Width", KX_OK);
    node(KX_OP_SET_INT, "Width", KX_E_GC_RANGE);
    node(KX_OP_SET_FLOAT, "Gain", KX_E_GC_ACCESS);
    memory(KX_OP_WRITE_MEMORY, 4096, KX_E_GC_ACCESS);
    EXPECT_EQ(open(), "Gain Width 4096");
}

TEST_F(WritesThatFail, ForgetsWhatALaterWriteHasSet)
{
    node(KX_OP_SET_INT, "Width", KX_E_GC_RANGE);
    memory(KX_OP_WRITE_MEMORY, 4096, KX_E_GC_ACCESS);
    node(KX_OP_SET_INT, "Width", KX_OK);
    memory(KX_OP_WRITE_MEMORY, 4096, KX_OK);
    EXPECT_EQ(open(), "");
}

TEST_F(WritesThatFail, ForgetsWhatALaterReadFoundInOrder)
{
    node(KX_OP_SET_INT, "Width", KX_E_GC_RANGE);
    memory(KX_OP_WRITE_MEMORY, 4096, KX_E_GC_ACCESS);
    node(KX_OP_GET_INT, "Width", KX_OK);
    memory(KX_OP_READ_MEMORY, 4096, KX_OK);
    EXPECT_EQ(open(), "");
}

TEST_F(WritesThatFail, IsNotMisledByALookBehindAFailedWrite)
{
    memory(KX_OP_WRITE_MEMORY, 4096, KX_E_GC_ACCESS);
    memory(KX_OP_READ_MEMORY, 4096, KX_OK);
    EXPECT_EQ(open(), "4096");
    memory(KX_OP_READ_MEMORY, 4096, KX_OK);
    EXPECT_EQ(open(), "");
}

TEST_F(WritesThatFail, KeepsReadsAndQuestionsThatTheLineFailed)
{
    node(KX_OP_GET_ENUM, "DeviceScanType", KX_E_NO_ANSWER);
    node(KX_OP_GET_ACCESS_MODE, "GainReg", KX_E_CONNECTION_LOST);
    node(KX_OP_GET_INT, "Absent", KX_E_GC_PROPERTY);
    memory(KX_OP_READ_MEMORY, 4096, KX_E_GC_ACCESS);
    EXPECT_EQ(open(), "DeviceScanType GainReg");
    node(KX_OP_GET_ACCESS_MODE, "GainReg", KX_OK);
    EXPECT_EQ(open(), "DeviceScanType");
}

// The groups are those of the camera library: whatever it does not call "not applicable" counts.
TEST_F(WritesThatFail, KeepsReadsThatFailedInAnyWayButARefusalOfOurOwn)
{
    node(KX_OP_GET_INT, "Width", KX_E_INTERNAL);
    node(KX_OP_GET_INT, "Height", KX_E_PARAMETER);
    node(KX_OP_GET_INT, "Gain", KX_E_ABORTED);
    EXPECT_EQ(open(), "Width");
}

TEST_F(WritesThatFail, ForgetsNoWriteForAQuestionThatWasAnswered)
{
    node(KX_OP_SET_INT, "Width", KX_E_GC_RANGE);
    node(KX_OP_GET_ACCESS_MODE, "Width", KX_OK);
    EXPECT_EQ(open(), "Width");
}
