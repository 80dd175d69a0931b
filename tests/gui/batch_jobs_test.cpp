// Whole batches: the dialogs before them, real workers on scripted cameras, the summary after them.
#include "BatchFixture.h"

#include <QSet>

namespace
{

class BatchJobs : public BatchFixture
{
protected:
    void SetUp() override { open(); }

    void fail(const QByteArray& serial)
    {
        tests::scriptedDevice(serial).addRule({"OpenDevice", KX_E_NO_ANSWER});
    }
    bool allBegun(int count) const { return probe->running == count; }
    QString userFolder() const { return folder.filePath("user"); }
    QStringList captions() const { return {probe->runningText->text(), probe->successText->text()}; }
    // Serial numbers of the cameras whose jobs began.
    QStringList started() const
    {
        QStringList serials;
        for (const tests::TraceEntry& call : tests::Recorder::instance().calls("CreateHandle"))
            serials << call.name;
        serials.sort();
        return serials;
    }
};

} // namespace

TEST_F(BatchJobs, ThreeImportsOfWhichOneFails)
{
    readyCameras(3);
    fail("S2");
    holdJobs();
    QStringList atLaunch, whileHeld;
    const QString file = importFile();
    duringBatch([this] { return allBegun(3); },
                [&] {
                    whileHeld = counts();
                    EXPECT_FALSE(window->isEnabled());
                    EXPECT_TRUE(probe->loading->isModal());
                    EXPECT_EQ(probe->loading->LabelText(), "Importing features...");
                    EXPECT_EQ(probe->stack->currentWidget(), probe->progressPage);
                    EXPECT_EQ(captions(), (QStringList{" Importing", " Imported."}));
                    EXPECT_EQ(operation("S1"), "Start importing...");
                    EXPECT_EQ(probe->lastPath, ""); // remembered only after the batch
                    letJobsGo();
                });
    runImport(file);
    ASSERT_TRUE(actionDone);
    EXPECT_EQ(whileHeld, (QStringList{"3", "0", "0"}));
    EXPECT_EQ(counts(), (QStringList{"0", "2", "1"}));
    EXPECT_EQ(operation("S1"), "Imported.");
    EXPECT_EQ(operation("S3"), "Imported.");
    EXPECT_EQ(operation("S2"), "Failed to import features.Failed to open device.");
    EXPECT_EQ(tip("S2"), "The Reasons of Failure :\r\nFailed to import features.Failed to open device.");
    EXPECT_EQ(table().item(1, Operation)->foreground(), QBrush(Qt::red));
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0].text, "Importing process is over.");
    EXPECT_TRUE(window->isEnabled());
    EXPECT_FALSE(probe->loading->isVisible());
    EXPECT_EQ(probe->stack->currentWidget(), probe->progressPage); // until Back
    EXPECT_EQ(probe->lastPath, file);
    EXPECT_EQ(probe->operateType, 0);
}

TEST_F(BatchJobs, TheTaskBarTellsHowManyJobsHaveEnded)
{
    readyCameras(3);
    fail("S2");
    QStringList beforeTheSummary;
    whileMessageIsShown = [&](const ORBCustom::DialogRequest&) { beforeTheSummary = taskbar; };
    runExportTogether(3, folder.path());
    ASSERT_TRUE(actionDone);
    ASSERT_EQ(taskbar.size(), 5) << taskbar.join(' ').toStdString();
    EXPECT_EQ(taskbar[0], "0/3");
    EXPECT_TRUE(taskbar[1].startsWith("1/3"));
    EXPECT_TRUE(taskbar[2].startsWith("2/3"));
    EXPECT_EQ(taskbar[3], "3/3 failed");
    EXPECT_EQ(taskbar[4], "end");
    EXPECT_EQ(beforeTheSummary, taskbar); // a person may not be there to close it
    taskbar.clear();
    runExportTogether(3, folder.path());
    EXPECT_EQ(taskbar.value(0), "0/3"); // the failure before is another batch's
}

TEST_F(BatchJobs, ExportsWriteAFilePerCamera)
{
    readyCameras(2);
    holdJobs();
    duringBatch([this] { return allBegun(2); },
                [&] {
                    EXPECT_EQ(probe->loading->LabelText(), "Exporting features...");
                    EXPECT_EQ(captions(), (QStringList{" Exporting", " Exported."}));
                    EXPECT_EQ(operation("S1"), "Start exporting...");
                    for (const QOperateThread* worker : qAsConst(probe->workers)) {
                        EXPECT_EQ(worker->priority(), QThread::InheritPriority);
                        EXPECT_EQ(worker->parent(), window.get());
                    }
                    letJobsGo();
                });
    runExport(folder.path());
    ASSERT_TRUE(actionDone);
    EXPECT_EQ(counts(), (QStringList{"0", "2", "0"}));
    EXPECT_TRUE(QFile::exists(exported("S1")));
    EXPECT_TRUE(QFile::exists(exported("S2")));
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0].kind, ORBCustom::DialogRequest::SaveDone);
    const QStringList files = {exported("S1"), exported("S2")};
    EXPECT_TRUE(files.contains(QDir::fromNativeSeparators(messages[0].path)));
    EXPECT_EQ(probe->lastPath, folder.path());
    EXPECT_EQ(probe->operateType, 1);
}

TEST_F(BatchJobs, AllFailingEndsWithoutASummary)
{
    readyCameras(3);
    for (const char* serial : {"S1", "S2", "S3"})
        fail(serial);
    runExportTogether(3, folder.path());
    EXPECT_EQ(counts(), (QStringList{"0", "0", "3"}));
    EXPECT_EQ(messages.size(), 0);
    EXPECT_TRUE(window->isEnabled());
}

TEST_F(BatchJobs, TheFileDialogIsAskedAsGiven)
{
    readyCameras(1);
    runImport("");
    ASSERT_EQ(fileQuestions.size(), 1);
    EXPECT_EQ(fileQuestions[0].parent, window.get());
    EXPECT_EQ(fileQuestions[0].caption, "Select Import File");
    EXPECT_EQ(fileQuestions[0].start, userFolder());
    EXPECT_EQ(fileQuestions[0].filter, "Import File(*.fpk)");
    runExport("");
    ASSERT_EQ(folderQuestions.size(), 1);
    EXPECT_EQ(folderQuestions[0].parent, window.get());
    EXPECT_EQ(folderQuestions[0].caption, "Export Features");
    EXPECT_EQ(folderQuestions[0].start, userFolder());
    speakChinese();
    runImport("");
    runExport("");
    EXPECT_EQ(fileQuestions[1].caption, "选择导入文件");
    EXPECT_EQ(fileQuestions[1].filter, "导入文件(*.fpk)");
    EXPECT_EQ(folderQuestions[1].caption, "导出属性");
}

TEST_F(BatchJobs, ACancelledDialogChangesOnlyTheCaptions)
{
    readyCameras(1);
    table().item(0, Operation)->setText("kept");
    whileFileDialogIsOpen = [this] { EXPECT_EQ(captions(), (QStringList{"", ""})); };
    runImport("");
    EXPECT_EQ(captions(), (QStringList{" Importing", " Imported."}));
    runExport("");
    EXPECT_EQ(captions(), (QStringList{" Exporting", " Exported."}));
    EXPECT_EQ(probe->operateType, -1);
    EXPECT_EQ(probe->lastPath, "");
    EXPECT_EQ(operation("S1"), "kept");
    EXPECT_EQ(probe->stack->currentWidget(), probe->buttonPage);
    EXPECT_TRUE(probe->workers.isEmpty());
    EXPECT_TRUE(window->isEnabled());
}

TEST_F(BatchJobs, ImportAndExportShareTheLastPath)
{
    readyCameras(1);
    const QString file = importFile();
    runImport(file);
    runExport(folder.path());
    runImport("");
    EXPECT_EQ(folderQuestions[0].start, file); // the file's path, as it is
    EXPECT_EQ(fileQuestions[1].start, folder.path());
    open();
    readyCameras(1);
    runImport("");
    EXPECT_EQ(fileQuestions[2].start, userFolder()); // not kept beyond the program's end
    EXPECT_FALSE(QFile::exists(configFile()));
}

TEST_F(BatchJobs, WithoutATickedDeviceNothingStarts)
{
    find(freeCameras(2));
    table().item(0, Operation)->setText("old");
    table().setDetailTip(0, Operation, "old tip");
    fileAnswer = "/some/file.fpk";
    window->OnBtnImport();
    EXPECT_EQ(operation("S1"), ""); // cleared all the same
    EXPECT_EQ(tip("S1"), "");
    EXPECT_EQ(probe->lastPath, "/some/file.fpk");
    EXPECT_EQ(probe->operateType, -1);
    EXPECT_EQ(probe->stack->currentWidget(), probe->buttonPage);
    EXPECT_TRUE(window->isEnabled());
    EXPECT_EQ(messages.size(), 0);
    EXPECT_TRUE(probe->workers.isEmpty());
}

TEST_F(BatchJobs, HiddenUntickedAndUnknownDevicesAreLeftOut)
{
    readyCameras(4);
    tick("S1");
    table().setRowHidden(rowOf("S2"), true);
    table().item(rowOf("S3"), Check)->setData(Qt::UserRole + 1, 4711);
    runExport(folder.path());
    EXPECT_EQ(started(), QStringList("S4"));
}

TEST_F(BatchJobs, AVisiblePlaceholderEndsTheCollection)
{
    readyCameras(4);
    delete table().takeItem(rowOf("S3"), Check);
    runExportTogether(2, folder.path());
    EXPECT_EQ(started(), (QStringList{"S1", "S2"}));
    // A hidden one does not, though the window then finds no row for the job behind it.
    tests::Recorder::instance().clear();
    table().setRowHidden(2, true);
    runExportTogether(2, folder.path());
    EXPECT_TRUE(waitFor([this] { return started() == QStringList{"S1", "S2", "S4"}; }));
}

TEST_F(BatchJobs, TheRecordIsTheTreesNotTheRows)
{
    readyCameras(1);
    tests::scriptedDevice("NEW");
    QTreeWidgetItem* camera = item("S1");
    StructDeviceInfo device = camera->data(0, Qt::UserRole + 3).value<StructDeviceInfo>();
    device.stDeviceInfo = entryOf({"NEW"}).info;
    camera->setData(0, Qt::UserRole + 3, QVariant::fromValue(device));
    runExport(folder.path());
    EXPECT_EQ(started(), QStringList("NEW"));
}

TEST_F(BatchJobs, ASecondBatchUsesTheSameWorkerAndCountsOnce)
{
    readyCameras(1);
    runExport(folder.path());
    const QMap<int, QOperateThread*> workers = probe->workers;
    ASSERT_EQ(workers.keys(), QList<int>{idOf("S1")});
    runExport(folder.path());
    EXPECT_EQ(probe->workers, workers);
    EXPECT_EQ(counts(), (QStringList{"0", "1", "0"}));
    EXPECT_EQ(messages.size(), 2);
    runImport(importFile());
    EXPECT_EQ(probe->workers, workers);
    EXPECT_EQ(counts(), (QStringList{"0", "1", "0"}));
    EXPECT_EQ(operation("S1"), "Imported.");
}

TEST_F(BatchJobs, ABatchStartsItsCountsAtNought)
{
    readyCameras(2);
    fail("S1");
    runExportTogether(2, folder.path());
    ASSERT_EQ(counts(), (QStringList{"0", "1", "1"}));
    tests::scriptedDevice("S1").clearRules();
    tick("S2");
    probe->backButton->click();
    runExport(folder.path());
    EXPECT_EQ(counts(), (QStringList{"0", "1", "0"}));
    EXPECT_EQ(operation("S2"), ""); // cleared in every row
}

TEST_F(BatchJobs, SignalsAreHandledOnTheWindowsThread)
{
    readyCameras(2);
    QSet<QThread*> threads;
    QObject::connect(
        table().model(), &QAbstractItemModel::dataChanged, table().model(),
        [&] { threads << QThread::currentThread(); }, Qt::DirectConnection);
    runExportTogether(2, folder.path());
    EXPECT_EQ(threads, QSet<QThread*>{QThread::currentThread()});
}

TEST_F(BatchJobs, ClosingIsRefusedWhileAJobRunsAndNotAfter)
{
    readyCameras(1);
    window->show();
    holdJobs();
    duringBatch([this] { return allBegun(1); },
                [this] {
                    EXPECT_FALSE(window->close());
                    EXPECT_TRUE(window->isVisible());
                    QTest::keyClick(window.get(), Qt::Key_Escape);
                    EXPECT_TRUE(window->isVisible());
                    EXPECT_EQ(messages.size(), 0);
                    letJobsGo();
                });
    runExport(folder.path());
    ASSERT_TRUE(actionDone);
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->close());
    EXPECT_FALSE(window->isVisible());
}

TEST_F(BatchJobs, ClosingIsNotRefusedBeforeTheFirstBeginIsHandled)
{
    readyCameras(1);
    window->show();
    holdJobs();
    QOperateThread* worker = probe->workerOf(idOf("S1"));
    worker->SetXmlExportJob(item("S1")->data(0, Qt::UserRole + 3).value<StructDeviceInfo>(), folder.path());
    worker->start(QThread::InheritPriority);
    waitForHeldJobs(1);
    ASSERT_TRUE(worker->isRunning());
    EXPECT_TRUE(window->close());
    letJobsGo();
    worker->wait();
}

TEST_F(BatchJobs, ALanguageChangeDuringABatchClearsItsTexts)
{
    readyCameras(1);
    holdJobs();
    duringBatch([this] { return allBegun(1); },
                [this] {
                    speakChinese();
                    EXPECT_EQ(operation("S1"), "");
                    EXPECT_EQ(probe->loading->LabelText(), "正在导出属性...");
                    EXPECT_EQ(captions(), (QStringList{" 正在导出", " 导出成功"}));
                    letJobsGo();
                });
    runExport(folder.path());
    ASSERT_TRUE(actionDone);
    EXPECT_EQ(operation("S1"), "已导出。");
    EXPECT_EQ(counts(), (QStringList{"0", "1", "0"}));
}
