// What a worker says and does around its job: signals, connection, end report.
#include "JobFixture.h"

#include "jobs/rules/JobMemory.h"

#include <QMetaMethod>
#include <QTranslator>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <cstring>

using JobDispatch = JobFixture;

TEST(WorkerClass, DeclaresThreeSignalsAndNothingElse)
{
    const QMetaObject& meta = QOperateThread::staticMetaObject;
    EXPECT_STREQ(meta.className(), "QOperateThread");
    EXPECT_EQ(meta.superClass(), &QThread::staticMetaObject);
    ASSERT_EQ(meta.methodCount() - meta.methodOffset(), 3);
    EXPECT_EQ(meta.propertyCount(), QThread::staticMetaObject.propertyCount());

    const auto method = [&meta](int i) { return meta.method(meta.methodOffset() + i); };
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(method(i).methodType(), QMetaMethod::Signal);
    EXPECT_EQ(method(0).methodSignature(), QByteArray("SigBeginThread(long,uint)"));
    EXPECT_EQ(method(0).parameterNames(), QList<QByteArray>({"nDeviceID", "nThreadType"}));
    EXPECT_EQ(method(1).methodSignature(), QByteArray("SigEndThread(long,uint,QString)"));
    EXPECT_EQ(method(1).parameterNames(), QList<QByteArray>({"nDeviceID", "nThreadType", "strFilePath"}));
    EXPECT_EQ(method(2).methodSignature(), QByteArray("SigThreadInfo(long,QString,bool)"));
    EXPECT_EQ(method(2).parameterNames(), QList<QByteArray>({"nDeviceID", "strMsg", "bFailed"}));
}

TEST_F(JobDispatch, AFreshWorkerIsAnUnsetImport)
{
    EXPECT_TRUE(probe.running);
    EXPECT_EQ(probe.type, 2u);
    EXPECT_EQ(probe.device.nDeviceID, -1);
    EXPECT_TRUE(probe.path.isEmpty());
    EXPECT_EQ(probe.handle, nullptr);
    EXPECT_EQ(probe.errorCode, 0u);
    EXPECT_EQ(worker.ErrorCode(), 0u);

    run();
    EXPECT_EQ(trace().value(0), QString("begin -1 2"));
}

TEST_F(JobDispatch, AnUnknownTypeBeginsAndNeverEnds)
{
    for (const unsigned int type : {4u, 0xFFFFFFFFu}) {
        worker.SetXmlExportJob(device, folder.path());
        probe.type = type;
        run();
        EXPECT_EQ(takeTrace(), QStringList({QString("begin 7 %1").arg(type)}));
        EXPECT_TRUE(probe.running);
    }
}

TEST_F(JobDispatch, TheTypeChoosesTheJob)
{
    makeExportable();
    const QStringList marks = {"^FeatureLoad ", "^FeatureSave ", "^log \"Open xml failed", "^GetGenICamXML "};
    for (unsigned int type = 0; type < 4; ++type) {
        worker.SetXmlExportJob(device, folder.path());
        probe.type = type;
        run();
        const QStringList events = takeTrace();
        EXPECT_EQ(events.first(), QString("begin 7 %1").arg(type));
        EXPECT_EQ(events.last(), QString("end 7 %1 ").arg(type) + target());
        for (int job = 0; job < marks.size(); ++job)
            EXPECT_EQ(events.filter(QRegularExpression(marks[job])).size(), job == int(type) ? 1 : 0);
    }
}

TEST_F(JobDispatch, SetUpChangesTypeRecordAndPathOnly)
{
    probe.errorCode = 5;
    probe.running = false;
    probe.nodes["A"] = QDomElement();
    probe.featureNames = QStringList({"A"});
    probe.filter["GigE"] = QStringList({"A"});

    worker.SetXmlImportJob(device, "/tmp/in.fpk");
    EXPECT_EQ(probe.type, 2u);
    EXPECT_EQ(probe.path, QString("/tmp/in.fpk"));
    EXPECT_EQ(probe.device.nDeviceID, 7);
    EXPECT_EQ(std::memcmp(&probe.device.stDeviceInfo, &device.stDeviceInfo, sizeof(KX_DeviceInfo)), 0);

    StructDeviceInfo other = usbDevice("U", "S2", 8);
    other.nStatus = 13;
    worker.SetXmlExportJob(other, "/tmp/out");
    EXPECT_EQ(probe.type, 3u);
    EXPECT_EQ(probe.path, QString("/tmp/out"));
    EXPECT_EQ(probe.device.nDeviceID, 8);
    EXPECT_EQ(probe.device.nStatus, 13);
    EXPECT_EQ(std::memcmp(&probe.device.stDeviceInfo, &other.stDeviceInfo, sizeof(KX_DeviceInfo)), 0);

    EXPECT_EQ(probe.errorCode, 5u);
    EXPECT_FALSE(probe.running);
    EXPECT_TRUE(probe.nodes.contains("A"));
    EXPECT_EQ(probe.featureNames, QStringList({"A"}));
    EXPECT_EQ(probe.filter.value("GigE"), QStringList({"A"}));
    EXPECT_TRUE(trace().isEmpty());
}

TEST_F(JobDispatch, AnExportOpensExclusivelyAndClosesBeforeItEnds)
{
    makeExportable();
    runExport();
    const QStringList events = trace();
    EXPECT_EQ(events.mid(0, 3), QStringList({"begin 7 3", "CreateHandle S1", "OpenDevice 1 0"}));
    EXPECT_EQ(events.mid(events.size() - 3),
              QStringList({"CloseDevice", "DestroyHandle", "end 7 3 " + target()}));
    EXPECT_EQ(events.filter("begin").size(), 1);
    EXPECT_EQ(events.filter(QRegularExpression("^end ")).size(), 1);
    EXPECT_TRUE(events.filter(QRegularExpression("^info ")).isEmpty());
    EXPECT_EQ(probe.handle, nullptr);
}

TEST_F(JobDispatch, AHandleThatCannotBeMadeIsNotClosed)
{
    failCall("CreateHandle", KX_E_PARAMETER);
    runExport();
    EXPECT_EQ(trace(), QStringList({"begin 7 3", "CreateHandle S1 -> 80000004",
                                    "info 7 failed Failed to export features.Failed to open device.",
                                    "end 7 3 " + target()}));
}

TEST_F(JobDispatch, AHandleThatDidNotOpenIsClosedAndDestroyed)
{
    failCall("OpenDevice", KX_E_CONTROL_REFUSED);
    runExport();
    EXPECT_EQ(trace(), QStringList({"begin 7 3", "CreateHandle S1", "OpenDevice 1 0 -> 80000202",
                                    "info 7 failed Failed to export features.Failed to open device.",
                                    "CloseDevice", "DestroyHandle", "end 7 3 " + target()}));
    EXPECT_EQ(probe.handle, nullptr);
}

TEST_F(JobDispatch, StatusesOfCloseAndDestroyDoNotMatter)
{
    makeExportable();
    camera->addRule({"CloseDevice", KX_E_CONNECTION_LOST});
    camera->addRule({"DestroyHandle", KX_E_HANDLE});
    runExport();
    EXPECT_EQ(trace().mid(trace().size() - 3),
              QStringList({"CloseDevice -> 80000201", "DestroyHandle -> 80000000", "end 7 3 " + target()}));
    EXPECT_TRUE(infos().isEmpty());
}

TEST_F(JobDispatch, OpenDeviceLeavesTheHandleToTheCaller)
{
    failCall("OpenDevice", KX_E_NO_ANSWER);
    worker.SetXmlExportJob(device, folder.path());
    EXPECT_FALSE(probe.open());
    EXPECT_EQ(takeTrace(), QStringList({"CreateHandle S1", "OpenDevice 1 0 -> 80000200"}));
    EXPECT_NE(probe.handle, nullptr);
    probe.close();
    EXPECT_EQ(trace(), QStringList({"CloseDevice", "DestroyHandle", "end 7 3 " + target()}));
}

TEST_F(JobDispatch, CloseWithoutAHandleOnlyReportsTheEnd)
{
    worker.SetXmlExportJob(device, folder.path());
    probe.close();
    EXPECT_EQ(trace(), QStringList({"end 7 3 " + target()}));
}

TEST_F(JobDispatch, TheEndNamesTheFileByTheRecordsOwnPart)
{
    const auto endOf = [this](const StructDeviceInfo& record) {
        worker.SetXmlExportJob(record, "/out");
        probe.close();
        return takeTrace().value(0);
    };
    EXPECT_EQ(endOf(gigeDevice("G", "1", 1)), QString("end 1 3 /out/G_1.fpk"));
    EXPECT_EQ(endOf(usbDevice("U", "2", 2)), QString("end 2 3 /out/U_2.fpk"));
    EXPECT_EQ(endOf(cameraLinkDevice("C", "3", 3)), QString("end 3 3 /out/C_3.fpk"));

    StructDeviceInfo unknown = gigeDevice("G", "1", 4);
    unknown.stDeviceInfo.transportType = 2;
    EXPECT_EQ(endOf(unknown), QString("end 4 3 /out/_.fpk"));
}

TEST_F(JobDispatch, TheEndReadsTheRecordUpToItsZeros)
{
    worker.SetXmlExportJob(device, "/out");
    probe.close();
    EXPECT_EQ(tests::suiteCalls(),
              QStringList({"GetEncodeQStringFromUnChar(-1)", "GetEncodeQStringFromUnChar(-1)"}));
}

TEST_F(JobDispatch, TheEndPathIsJoinedByASlashWhateverThePathIs)
{
    worker.SetXmlExportJob(device, "/out/");
    probe.close();
    EXPECT_EQ(takeTrace(), QStringList({"end 7 3 /out//Cam_S1.fpk"}));

    worker.SetXmlImportJob(device, "/in/x.fpk"); // a file, yet joined all the same
    probe.close();
    EXPECT_EQ(takeTrace(), QStringList({"end 7 2 /in/x.fpk/Cam_S1.fpk"}));
}

TEST_F(JobDispatch, PercentSignsInNamesStay)
{
    worker.SetXmlExportJob(gigeDevice("M%2%1", "S%1", 7), "/out%2");
    probe.close();
    EXPECT_EQ(takeTrace(), QStringList({"end 7 3 /out%2/M%2%1_S%1.fpk"}));
}

TEST_F(JobDispatch, IsNoLongerRunningWhenTheEndIsReportedAndStaysSo)
{
    QList<bool> atBegin;
    QList<bool> atEnd;
    QObject::connect(
        &worker, &QOperateThread::SigBeginThread, &worker, [&] { atBegin.append(probe.running); },
        Qt::DirectConnection);
    QObject::connect(
        &worker, &QOperateThread::SigEndThread, &worker, [&] { atEnd.append(probe.running); },
        Qt::DirectConnection);
    runExport();
    runExport();
    EXPECT_EQ(atBegin, QList<bool>({true, false}));
    EXPECT_EQ(atEnd, QList<bool>({false, false}));
}

TEST_F(JobDispatch, AWorkerRunsAgainAfterItsEnd)
{
    makeExportable();
    runExport();
    const QStringList first = takeTrace();
    runExport();
    EXPECT_EQ(takeTrace(), first);
}

TEST_F(JobDispatch, TheDestructorLeavesTheConnectionAlone)
{
    KX_HANDLE left = nullptr;
    {
        QOperateThread shortLived;
        QOperateThreadProbe inside(shortLived);
        shortLived.SetXmlExportJob(device, folder.path());
        ASSERT_TRUE(inside.open());
        left = inside.handle;
        takeTrace();
    }
    EXPECT_TRUE(trace().isEmpty());
    KX_CC_CloseDevice(left);
    KX_CC_DestroyHandle(left);
}

TEST_F(JobDispatch, AsksTheCameraOnTheWorkersThreadOnly)
{
    runExport();
    std::set<std::thread::id> threads;
    for (const tests::TraceEntry& call : recorder.calls())
        threads.insert(call.thread);
    ASSERT_EQ(threads.size(), 1u);
    EXPECT_NE(*threads.begin(), std::this_thread::get_id());
}

TEST_F(JobDispatch, WorkersRunAtTheSameTime)
{
    tests::scriptedDevice("S2");
    tests::Gate gate;
    tests::setCallHook([&gate](const QByteArray&, const tests::TraceEntry& call) {
        if (call.operation == "OpenDevice")
            gate.pass();
    });
    QOperateThread other;
    worker.SetXmlExportJob(device, folder.path());
    other.SetXmlExportJob(gigeDevice("Cam", "S2", 8), folder.path());
    worker.start();
    other.start();
    gate.waitForArrivals(2); // both are inside their calls
    gate.open();
    EXPECT_TRUE(worker.wait(60000));
    EXPECT_TRUE(other.wait(60000));
}

namespace
{

class RecordingTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* source, const char* disambiguation,
                      int n) const override
    {
        if (QByteArray(context) != "QOperateThread")
            return {};
        asked.append(
            QStringList({source, disambiguation ? disambiguation : "none", QString::number(n)}).join('|'));
        return QString("translated: %1").arg(source);
    }
    mutable QStringList asked;
};

} // namespace

TEST_F(JobDispatch, UserTextsAreTranslatedAndLogLinesAreNot)
{
    RecordingTranslator translator;
    QCoreApplication::installTranslator(&translator);
    failNode("DeviceFirmwareVersion", KX_E_GC_PROPERTY);
    runExport();
    QCoreApplication::removeTranslator(&translator);

    EXPECT_EQ(translator.asked, QStringList({"Failed to save feature.%1|none|-1"}));
    EXPECT_EQ(infos(), QStringList({"info 7 failed translated: Failed to save feature."}));
    EXPECT_TRUE(logs().contains("log \"Get XML_NODE_FIRMWARE failed.\""));
}

TEST_F(JobDispatch, LogLinesAreCriticalAndCarryTheirPlace)
{
    makeExportable();
    failNode("DeviceFirmwareVersion", KX_E_GC_PROPERTY);
    runExport();
    const QList<tests::TraceEntry> lines = recorder.logs();
    ASSERT_EQ(lines.size(), 2);
    for (const tests::TraceEntry& line : lines) {
        EXPECT_EQ(line.level, QtCriticalMsg);
        EXPECT_EQ(line.file, QByteArray("..\\..\\src\\VELA_Import_Export_Features\\QOperateThread"));
        EXPECT_GT(line.line, 0);
    }
    EXPECT_EQ(lines[0].function, QByteArray("bool QOperateThread::GetStringRegNodePropertyValue("
                                            "const QString&, QString&, __int64*, int*)"));
    EXPECT_EQ(lines[1].function, QByteArray("bool QOperateThread::export_xml()"));
}

TEST_F(JobDispatch, BothBagJobsTranslateTheirTexts)
{
    const auto asked = [this](unsigned int type, const QByteArray& operation) {
        RecordingTranslator translator;
        QCoreApplication::installTranslator(&translator);
        failCall(operation, KX_E_FILE);
        worker.SetXmlExportJob(device, folder.path());
        probe.type = type;
        run();
        QCoreApplication::removeTranslator(&translator);
        return translator.asked;
    };
    EXPECT_EQ(asked(1, "FeatureSave"), QStringList({"Failed to save feature.%1|none|-1"}));
    EXPECT_TRUE(infos().value(0).startsWith("info 7 failed translated: Failed to save feature.["));
    takeTrace();
    EXPECT_EQ(asked(0, "FeatureLoad"), QStringList({"Failed to load feature.%1|none|-1"}));
    EXPECT_TRUE(infos().value(0).startsWith("info 7 failed translated: Failed to load feature.["));
}

TEST(DeviceRecord, HasItsMembersInOrder)
{
    EXPECT_EQ(offsetof(StructDeviceInfo, nDeviceID), 0u);
    EXPECT_EQ(offsetof(StructDeviceInfo, nStatus), 4u);
    EXPECT_EQ(offsetof(StructDeviceInfo, stDeviceInfo), 8u);
}

using JobDispatchDeathTest = JobDispatch;

// Qt ends the program then; who waited would come back when the camera answers.
TEST_F(JobDispatchDeathTest, TheDestructorDoesNotWait)
{
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_DEATH(
        {
            std::atomic<bool> hasArrived{false};
            tests::setCallHook([&](const QByteArray&, const tests::TraceEntry&) {
                hasArrived = true;
                std::this_thread::sleep_for(std::chrono::seconds(3)); // long enough to be met in it
            });
            {
                QOperateThread running;
                running.SetXmlExportJob(device, folder.path());
                running.start();
                while (!hasArrived)
                    std::this_thread::yield();
            }
            std::_Exit(0);
        },
        "");
}

TEST_F(JobDispatch, TwoCamerasOfOneFileNameNeverMixTheirFiles)
{
    tests::ScriptedDevice& other = tests::scriptedDevice("B_S1");
    makeExportable();
    other.setString("DeviceFirmwareVersion", QByteArray(9000, '2'));
    other.setDescription("<R/>");
    QOperateThread second;
    for (int round = 0; round < 200; ++round) {
        worker.SetXmlExportJob(gigeDevice("A_B", "S1", 7), folder.path());
        second.SetXmlExportJob(gigeDevice("A", "B_S1", 8), folder.path());
        worker.start();
        second.start();
        ASSERT_TRUE(worker.wait(60000) && second.wait(60000));
        const ie::LoadedFile file = ie::loadFeaturesFile(folder.filePath("A_B_S1.fpk"));
        ASSERT_EQ(file.failure, ie::LoadedFile::Failure::None);
        const ie::FeaturesHeader header = ie::readFeatures(file.document.documentElement()).header;
        EXPECT_EQ(header.model, header.firmware == "V1" ? QString("A_B") : QString("A"));
    }
    EXPECT_TRUE(infos().isEmpty());
}

// Where only the log would tell of a missing block, no exception ends the job.
TEST_F(JobDispatch, AJobThatRunsOutOfMemoryGivesItsCameraBackAndEnds)
{
    makeExportable();
    ie::setAllocateHook([](std::size_t) -> void* { throw std::bad_alloc(); });
    runExport();
    ie::setAllocateHook(nullptr);
    const QStringList events = takeTrace();
    EXPECT_EQ(
        events.mid(events.size() - 4),
        QStringList({"CloseDevice", "DestroyHandle", "info 7 failed Out of memory.", "end 7 3 " + target()}));
    EXPECT_EQ(worker.ErrorCode(), IMPORT_ERR_ABANDONED);
    EXPECT_EQ(probe.handle, nullptr);
    runExport();
    EXPECT_FALSE(takeTrace().contains("info 7 failed Out of memory."));
}
