#include "iefeatures/imports/ImportSummary.h"

#include "companion/CompanionFixture.h"
#include "iefeatures/console/ExitCode.h"

#include "jobs/worker/QOperateThread.h"

using namespace companion;
using State = ImportOutcome::State;

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

State stateOf(const JobRecord& record)
{
    return examineImport(record).state;
}

} // namespace

TEST(ImportSummary, KnowsWhatTheWorkersResultMeans)
{
    EXPECT_EQ(stateOf(JobRecord()), State::NotStarted);
    EXPECT_EQ(stateOf(silent()), State::Applied);
    EXPECT_EQ(stateOf(withCode(IMPORT_OK, true)), State::BadFile);
    EXPECT_EQ(stateOf(withCode(IMPORT_ERR_NO_FEATURES, false)), State::Failed);
    EXPECT_EQ(stateOf(withCode(IMPORT_ERR_VERSION, true)), State::Incompatible);
    EXPECT_EQ(stateOf(withCode(IMPORT_ERR_VERSION, false)), State::Applied);
    EXPECT_EQ(stateOf(withCode(IMPORT_ERR_MODEL, true)), State::Incompatible);
    EXPECT_EQ(stateOf(withCode(IMPORT_ERR_APPLY, false)), State::Failed);
}

TEST(ImportSummary, TellsWhatTheCameraRefusedFromALineThatFailed)
{
    EXPECT_EQ(stateOf(withFailure(KX_E_GC_ACCESS)), State::Incomplete);
    EXPECT_EQ(stateOf(withFailure(KX_E_DEVICE)), State::Failed);
    // A firmware that could not be asked is no other firmware.
    JobRecord record = withFailure(KX_E_NO_ANSWER);
    record.job.errorCode = IMPORT_ERR_MODEL;
    record.job.hasFailed = true;
    EXPECT_EQ(stateOf(record), State::Failed);
}

TEST(ImportSummary, KnowsAJobThatNeverGotToItsCamera)
{
    JobRecord record = silent(JOB_FEATURE_BAG_IMPORT);
    record.tally.wasOpened = false;
    EXPECT_EQ(stateOf(record), State::Failed);
    EXPECT_EQ(importRemarks(examineImport(record)), QStringList{"the camera could not be opened."});
}

TEST(ImportSummary, CountsAnInterruptedJobAsFailed)
{
    JobRecord record = withFailure(KX_E_ABORTED);
    record.tally.wasRefused = true;
    EXPECT_EQ(stateOf(record), State::Failed);
    EXPECT_EQ(importRemarks(examineImport(record)),
              QStringList{"interrupted; a part of the file may have been applied."});
}

TEST(ImportSummary, KnowsWhatTheBagsStatusMeans)
{
    EXPECT_EQ(stateOf(withBag(KX_OK)), State::Applied);
    EXPECT_EQ(stateOf(withBag(KX_E_INCOMPLETE)), State::Incomplete);
    EXPECT_EQ(stateOf(withBag(KX_E_FILE)), State::BadFile);
    EXPECT_EQ(stateOf(withBag(KX_E_FILE_FORMAT)), State::BadFile);
    EXPECT_EQ(stateOf(withBag(KX_E_CONNECTION_LOST)), State::Failed);
}

TEST(ImportSummary, NamesAFewAndCountsTheRest)
{
    JobRecord record = silent();
    for (int i = 0; i < 23; ++i)
        record.findings.failures.push_back({QString("F%1").arg(i), false, 0, KX_E_GC_RANGE});
    const QStringList remarks = importRemarks(examineImport(record));
    ASSERT_EQ(remarks.size(), 21);
    EXPECT_EQ(remarks.first(), "F0 did not take its value: The value is out of the feature's range.");
    EXPECT_EQ(remarks.last(), "3 more did not take their values.");
}

TEST(ImportSummary, GivesTheExitCodeOfACamera)
{
    EXPECT_EQ(companion::importExitCode(State::Applied), 0);
    EXPECT_EQ(companion::importExitCode(State::Incomplete), 4);
    EXPECT_EQ(companion::importExitCode(State::Incompatible), 5);
    EXPECT_EQ(companion::importExitCode(State::BadFile), 6);
    EXPECT_EQ(companion::importExitCode(State::Failed), 1);
    EXPECT_EQ(companion::importExitCode(State::NotStarted), 1);
}

TEST(ImportSummary, TakesTheGravestExitCodeOfAll)
{
    using companion::gravestExitCode;
    EXPECT_EQ(gravestExitCode({}), 0);
    EXPECT_EQ(gravestExitCode({0, 0}), 0);
    EXPECT_EQ(gravestExitCode({0, 4}), 4);
    EXPECT_EQ(gravestExitCode({4, 5}), 5);
    EXPECT_EQ(gravestExitCode({6, 5}), 6);
    EXPECT_EQ(gravestExitCode({6, 1}), 1);
    EXPECT_EQ(gravestExitCode({130, 1}), 130);
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
