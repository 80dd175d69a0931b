#include "iefeatures/exports/ExportVerdict.h"

#include "companion/CompanionFixture.h"

#include "jobs/worker/QOperateThread.h"

#include <QFile>

using namespace companion;
using State = ExportResult::State;

namespace
{

class ExportSummary : public tests::CompanionTest
{
protected:
    static ListedCamera camera(const std::string& model, const std::string& serial)
    {
        return camerasFrom({tests::gigeEntry(model, serial)}).front();
    }

    JobOutcome jobWithFile(const QByteArray& text)
    {
        JobOutcome job;
        job.camera = camera("EMU-1", "S1");
        job.hasStarted = true;
        job.path = QString::fromStdString(path("EMU-1_S1.fpk"));
        QFile file(job.path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return job;
    }

    static CallWatch::Tally opened(bool wasRefused = false)
    {
        CallWatch::Tally tally;
        tally.wasOpened = true;
        tally.wasRefused = wasRefused;
        return tally;
    }

    // A feature bag, with what the camera library had to say about it.
    static CallWatch::Findings saved(KX_Status status, const QString& text)
    {
        CallWatch::Findings findings;
        findings.bagStatus = status;
        findings.bagText = text;
        return findings;
    }
};

const QByteArray kBagHead = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n"
                            "# GenApi persistence file (version 3.0.0)\n"
                            "# Device = V::M -- Device version = 1\n";

const char kTwoFeatures[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
                            "<FeaturesFile version=\"1.0.0\">\r\n"
                            "<DeviceFirmwareVersion>1</DeviceFirmwareVersion>\r\n"
                            "<DeviceModelName>M</DeviceModelName>\r\n"
                            "<Features>\r\n"
                            "<Feature>\r\n<Name>A</Name>\r\n<Type>StringReg</Type>\r\n<Value>a b</Value>\r\n"
                            "<Streamable>Yes</Streamable>\r\n</Feature>\r\n"
                            "<ComplexFeature name=\"B\" len=\"4\" reg=\"R\">\r\n"
                            "<RegValue address=\"256\" variables=\"\">1</RegValue>\r\n</ComplexFeature>\r\n"
                            "</Features>\r\n</FeaturesFile>";

} // namespace

TEST_F(ExportSummary, CountsFeatures)
{
    const ExportResult result = examineExport(jobWithFile(kTwoFeatures), opened());
    EXPECT_EQ(result.state, State::Written);
    EXPECT_EQ(result.features, 2);
    EXPECT_EQ(leftOutNote(result), "");
}

TEST_F(ExportSummary, NamesWhatCannotBeReadAgain)
{
    const JobOutcome job = jobWithFile(QByteArray(kTwoFeatures).replace("a b", "a<b&"));
    const ExportResult refused = examineExport(job, opened());
    EXPECT_EQ(refused.state, State::Failed);
    EXPECT_EQ(refused.leftOut, QStringList());
    EXPECT_THAT(refused.problem.toStdString(), ::testing::HasSubstr(" for the texts of A;"));

    const ExportResult kept = examineExport(job, opened(), {}, Unreadable::LeftOut);
    EXPECT_EQ(kept.state, State::Written);
    EXPECT_EQ(kept.features, 1);
    EXPECT_EQ(kept.leftOut, QStringList{"A"});
    EXPECT_FALSE(fileText("EMU-1_S1.fpk").contains("a<b&"));
}

// The job tells a failure, and the camera library has written the bag all the same.
TEST_F(ExportSummary, TellsTheFileOfAFeatureBagThatWasCut)
{
    JobOutcome job = jobWithFile(kBagHead + "# There are too many.\nWidth\t640\n");
    job.type = JOB_FEATURE_BAG_EXPORT;
    job.hasFailed = true;
    const CallWatch::Findings findings = saved(KX_E_INCOMPLETE, "There are too many.");
    const ExportResult cut = examineExport(job, opened(), findings);
    EXPECT_EQ(cut.state, State::Written);
    EXPECT_EQ(cut.features, 1);
    EXPECT_THAT(exportTable({cut}).toStdString(),
                ::testing::HasSubstr("EMU-1_S1.fpk\n1 exported, 0 failed\n"));
    EXPECT_EQ(exportExitCode({cut}, false), 1);
    EXPECT_EQ(examineExport(job, opened(), saved(KX_E_FILE, "")).state, State::Failed);
    EXPECT_EQ(exportRemarks(cut, findings), QStringList{"There are too many."});
}

TEST_F(ExportSummary, TellsWhatAWholeFeatureBagSaysOfItself)
{
    JobOutcome job = jobWithFile(kBagHead + "# There is no Height.\nWidth\t640\n");
    job.type = JOB_FEATURE_BAG_EXPORT;
    const ExportResult whole = examineExport(job, opened());
    EXPECT_FALSE(whole.isCut);
    EXPECT_EQ(whole.notes, QStringList{"There is no Height."});
    EXPECT_EQ(exportExitCode({whole}, false), 0);
    job.path = jobWithFile(kBagHead + "# There is nothing.\n").path;
    EXPECT_EQ(examineExport(job, opened()).notes, QStringList());
}

// Nothing is missing in the file; the camera is not as it was.
TEST_F(ExportSummary, TellsABagThatIsWholeFromOneThatWasCut)
{
    JobOutcome job = jobWithFile(kBagHead + "Width\t640\n");
    job.type = JOB_FEATURE_BAG_EXPORT;
    job.hasFailed = true;
    const ExportResult result =
        examineExport(job, opened(), saved(KX_E_INCOMPLETE, "Index could not be set back."));
    EXPECT_EQ(result.state, State::Written);
    EXPECT_FALSE(result.isCut);
    EXPECT_TRUE(result.isNotSetBack);
    EXPECT_EQ(exportExitCode({result}, false), 1);
}

// A value without a form is left out of every bag of that camera, and no snapshot fails for it.
TEST_F(ExportSummary, TellsWhatABagLeavesOutFromWhatWasCut)
{
    JobOutcome job = jobWithFile(kBagHead + "# The value of A has no form.\nWidth\t640\n");
    job.type = JOB_FEATURE_BAG_EXPORT;
    job.hasFailed = true;
    const CallWatch::Findings findings = saved(KX_E_INCOMPLETE, "Index could not be set back.");
    const ExportResult result = examineExport(job, opened(), findings);
    EXPECT_FALSE(result.isCut);
    EXPECT_TRUE(result.isNotSetBack);
    EXPECT_EQ(exportRemarks(result, findings),
              (QStringList{"The value of A has no form.", "Index could not be set back."}));
}

TEST_F(ExportSummary, LeavesTheFileOfAFailedJobAlone)
{
    JobOutcome job = jobWithFile("from yesterday");
    job.hasFailed = true;
    EXPECT_EQ(examineExport(job, opened(true)).state, State::Failed);
    EXPECT_EQ(fileText("EMU-1_S1.fpk"), "from yesterday");
}

TEST_F(ExportSummary, IsAFailureWhenCallsWereRefused)
{
    const ExportResult result = examineExport(jobWithFile(kTwoFeatures), opened(true));
    EXPECT_EQ(result.state, State::Failed);
    EXPECT_EQ(result.problem, "");
}

TEST_F(ExportSummary, IsAFailureWhenTheLineFailed)
{
    CallWatch::Tally tally = opened();
    tally.hasLineFailed = true;
    const ExportResult result = examineExport(jobWithFile(kTwoFeatures), tally);
    EXPECT_EQ(result.state, State::Failed);
    EXPECT_EQ(result.problem, "the line failed during the export; a file that lacks features is not kept.");
}

// Behind a line that has failed nothing can be read: that is no cause of its own.
TEST_F(ExportSummary, SaysTheFirstCauseOfAFailure)
{
    JobOutcome job = jobWithFile(kTwoFeatures);
    job.hasFailed = true;
    const ExportResult result = examineExport(job, opened());
    CallWatch::Findings findings;
    EXPECT_EQ(exportRemarks(result, findings), QStringList());
    findings.unreadable["DeviceFirmwareVersion"] = KX_E_GC_ACCESS;
    EXPECT_EQ(exportRemarks(result, findings), QStringList{QString("DeviceFirmwareVersion cannot be read: ") +
                                                           KX_CC_StatusText(KX_E_GC_ACCESS)});
    findings.lineFailure = FailedCall{"Width", false, 0, KX_E_CONNECTION_LOST};
    EXPECT_EQ(exportRemarks(result, findings),
              QStringList{QString("the line failed at Width: ") + KX_CC_StatusText(KX_E_CONNECTION_LOST)});
}

// A feature bag job does not say that it could not open its camera.
TEST_F(ExportSummary, IsAFailureWhenTheJobNeverGotToItsCamera)
{
    const ExportResult result = examineExport(jobWithFile("from yesterday"), {});
    EXPECT_EQ(result.state, State::Failed);
    EXPECT_EQ(exportRemarks(result, {}), QStringList{"the camera could not be opened."});
}

TEST_F(ExportSummary, CountsTheLinesOfAFeatureBag)
{
    JobOutcome job = jobWithFile("# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n# Device\nWidth\t640\nGain\t1\n");
    job.type = JOB_FEATURE_BAG_EXPORT;
    EXPECT_EQ(examineExport(job, opened()).features, 2);
}

TEST_F(ExportSummary, TellsAJobThatNeverStarted)
{
    JobOutcome job;
    job.camera = camera("EMU-1", "S1");
    EXPECT_EQ(examineExport(job, {}).state, State::NotStarted);
}

TEST_F(ExportSummary, PrintsOneLineACameraAndAClosingLine)
{
    ExportResult written{
        {camera("EMU-1", "S1"), true, false, "/out/EMU-1_S1.fpk", 1.239}, {}, State::Written, 102};
    written.tally.requests = 1259;
    ExportResult failed{{camera("Long model", "S22"), true, true, "/out/x.fpk", 0}, {}, State::Failed, 0};
    ExportResult waiting{{camera("E", "3"), false, false, "", 0}, {}, State::NotStarted, 0};

    EXPECT_EQ(exportTable({written, failed}),
              "MODEL       SERIAL  FEATURES  REQUESTS  SECONDS  PATH\n"
              "EMU-1       S1           102      1259     1.24  /out/EMU-1_S1.fpk\n"
              "Long model  S22            -         0     0.00  not written\n"
              "1 exported, 1 failed\n");
    EXPECT_TRUE(exportTable({written, failed, waiting}).endsWith("\n1 exported, 1 failed, 1 not started\n"));
    EXPECT_EQ(exportFates({written, failed, waiting}), "EMU-1 S1: /out/EMU-1_S1.fpk\n"
                                                       "Long model S22: not written\n"
                                                       "E 3: not written\n");
}

TEST_F(ExportSummary, ChoosesTheExitCode)
{
    ExportResult written;
    written.state = State::Written;
    ExportResult failed;
    failed.state = State::Failed;
    EXPECT_EQ(exportExitCode({written, written}, false), 0);
    EXPECT_EQ(exportExitCode({written, failed}, false), 1);
    EXPECT_EQ(exportExitCode({written, failed}, true), 130);
    EXPECT_EQ(exportExitCode({written}, true), 130);
}
