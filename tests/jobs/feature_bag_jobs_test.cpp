// The two jobs that let the camera library carry all features in one file of its own.
#include "JobFixture.h"

namespace
{

class FeatureBagJobs : public JobFixture
{
protected:
    FeatureBagJobs()
    {
        tests::suiteScript().velaCode = [](unsigned int status) { return int(status ^ 0xFu); };
        tests::suiteScript().sdkCode = [](unsigned int code) { return QString("[%1]").arg(code, 0, 16); };
        tests::suiteScript().errorDescription = [](int code) {
            return QString("{%1}").arg(static_cast<unsigned int>(code), 0, 16);
        };
    }

    void runBag(unsigned int type, const QString& path)
    {
        takeTrace();
        worker.SetXmlImportJob(device, path);
        probe.type = type;
        run();
    }
    void save() { runBag(1, folder.path()); }
    void load() { runBag(0, bag()); }
    QString bag() const { return folder.filePath("bag.fpk"); }
};

} // namespace

TEST_F(FeatureBagJobs, SavesUnderTheNameThatTheEndReports)
{
    save();
    EXPECT_EQ(trace(),
              QStringList({"begin 7 1", "CreateHandle S1", "OpenDevice 1 0", "FeatureSave " + target(),
                           "CloseDevice", "DestroyHandle", "end 7 1 " + target()}));
    EXPECT_EQ(tests::suiteCalls(),
              QStringList({"GetEncodeQStringFromUnChar(-1)", "GetEncodeQStringFromUnChar(-1)",
                           "GetEncodeQStringFromUnChar(-1)", "GetEncodeQStringFromUnChar(-1)"}));
    EXPECT_FALSE(QFile::exists(target())); // the file is the library's business
}

TEST_F(FeatureBagJobs, SavesUnderTheNamesOfTheRecordsOwnPart)
{
    for (const StructDeviceInfo& record : {usbDevice("U", "S1", 7), cameraLinkDevice("U", "S1", 7)}) {
        device = record;
        save();
        EXPECT_EQ(trace().filter("FeatureSave"), QStringList({"FeatureSave " + folder.path() + "/U_S1.fpk"}));
    }
    device = cameraLinkDevice("U", "S1", 7);
    device.stDeviceInfo.transportType = 2;
    save();
    EXPECT_EQ(trace().filter("FeatureSave"), QStringList({"FeatureSave " + folder.path() + "/_.fpk"}));
}

// What the library says of an error is no template.
TEST_F(FeatureBagJobs, AnErrorsTextIsTakenAsItIs)
{
    tests::suiteScript().errorDescription = [](int) { return QString("50%1 of %2"); };
    failCall("FeatureSave", KX_E_FILE);
    save();
    EXPECT_EQ(trace().filter("info"),
              QStringList({"info 7 failed Failed to save feature.[8000030f]50%1 of %2"}));
}

TEST_F(FeatureBagJobs, LoadsTheFileAsItIsNamed)
{
    load(); // there is no such file: not the worker's business
    EXPECT_EQ(trace(), QStringList({"begin 7 0", "CreateHandle S1", "OpenDevice 1 0", "FeatureLoad " + bag(),
                                    "CloseDevice", "DestroyHandle", "end 7 0 " + bag() + "/Cam_S1.fpk"}));
}

TEST_F(FeatureBagJobs, PathsGoToTheLibraryInLatin1)
{
    const QString path = QString::fromUtf8("/a/\xC3\xA9\xE4\xB8\xAD.fpk");
    runBag(0, path);
    EXPECT_EQ(recorder.calls("FeatureLoad").value(0).name, QByteArray("/a/\xE9?.fpk"));
    EXPECT_EQ(trace().last(), "end 7 0 " + path + "/Cam_S1.fpk");

    device = gigeDevice("C\xC3\xA9", "S1", 7);
    runBag(1, QString::fromUtf8("/\xE4\xB8\xAD"));
    EXPECT_EQ(recorder.calls("FeatureSave").value(0).name, QByteArray("/?/C\xE9_S1.fpk"));
    EXPECT_EQ(trace().last(), QString::fromUtf8("end 7 1 /\xE4\xB8\xAD/C\xC3\xA9_S1.fpk"));
}

// Deliberately without a word, unlike the XML jobs.
TEST_F(FeatureBagJobs, ACameraWithoutHandleEndsThemInSilence)
{
    failCall("CreateHandle", KX_E_MEMORY);
    save();
    EXPECT_EQ(trace(), QStringList({"begin 7 1", "CreateHandle S1 -> 80000005", "end 7 1 " + target()}));
    load();
    EXPECT_EQ(trace(),
              QStringList({"begin 7 0", "CreateHandle S1 -> 80000005", "end 7 0 " + bag() + "/Cam_S1.fpk"}));
}

TEST_F(FeatureBagJobs, ACameraThatDoesNotOpenEndsThemInSilence)
{
    failCall("OpenDevice", KX_E_CONTROL_REFUSED);
    save();
    EXPECT_EQ(trace(), QStringList({"begin 7 1", "CreateHandle S1", "OpenDevice 1 0 -> 80000202",
                                    "CloseDevice", "DestroyHandle", "end 7 1 " + target()}));
    load();
    EXPECT_EQ(trace(), QStringList({"begin 7 0", "CreateHandle S1", "OpenDevice 1 0 -> 80000202",
                                    "CloseDevice", "DestroyHandle", "end 7 0 " + bag() + "/Cam_S1.fpk"}));
    EXPECT_EQ(probe.handle, nullptr);
}

TEST_F(FeatureBagJobs, AFailedSaveIsReportedBeforeTheCameraIsClosed)
{
    failCall("FeatureSave", KX_E_FILE);
    save();
    EXPECT_EQ(trace(), QStringList({"begin 7 1", "CreateHandle S1", "OpenDevice 1 0",
                                    "FeatureSave " + target() + " -> 80000300",
                                    "log \"KX_CC_FeatureSave failed.[8000030f]\"",
                                    "info 7 failed Failed to save feature.[8000030f]{8000030f}",
                                    "CloseDevice", "DestroyHandle", "end 7 1 " + target()}));
    EXPECT_EQ(recorder.logs().value(0).level, QtCriticalMsg);
}

TEST_F(FeatureBagJobs, AFailedLoadIsReportedBeforeTheCameraIsClosed)
{
    failCall("FeatureLoad", KX_E_INCOMPLETE);
    load();
    EXPECT_EQ(trace(), QStringList({"begin 7 0", "CreateHandle S1", "OpenDevice 1 0",
                                    "FeatureLoad " + bag() + " -> 80000303",
                                    "log \"KX_CC_FeatureLoad failed.[8000030c]\"",
                                    "info 7 failed Failed to load feature.[8000030c]{8000030c}",
                                    "CloseDevice", "DestroyHandle", "end 7 0 " + bag() + "/Cam_S1.fpk"}));
    EXPECT_EQ(recorder.logs().value(0).level, QtCriticalMsg);
}

TEST_F(FeatureBagJobs, StatusesThatTheXmlJobsTolerateAreFailuresHere)
{
    for (const KX_Status status : {KX_E_PARAMETER, KX_E_GC_GENERIC, KX_E_GC_ACCESS, KX_Status(1)}) {
        failCall("FeatureLoad", status);
        load();
        EXPECT_EQ(logs().size(), 1) << status;
        EXPECT_EQ(infos().size(), 1) << status;
        EXPECT_EQ(tests::suiteCalls("SDKCode2VELACode").last(),
                  QString("SDKCode2VELACode(%1)").arg(status, 0, 16));
    }
}

TEST_F(FeatureBagJobs, TheLibrarysOwnTextsFitTogether)
{
    tests::resetSuiteTools();
    failCall("FeatureLoad", KX_E_FILE);
    load();
    ASSERT_EQ(infos().size(), 1);
    EXPECT_TRUE(infos()[0].startsWith("info 7 failed Failed to load feature.")) << infos()[0].toStdString();
    EXPECT_FALSE(infos()[0].contains("%1"));
    EXPECT_GT(infos()[0].size(), QString("info 7 failed Failed to load feature.").size());
}

TEST_F(FeatureBagJobs, NothingElseIsAskedOfTheCamera)
{
    makeExportable();
    save();
    EXPECT_EQ(recorder.calls().size(), 5);
    load();
    EXPECT_EQ(recorder.calls().size(), 5);
    EXPECT_TRUE(probe.nodes.isEmpty());
}
