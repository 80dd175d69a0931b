// Many cameras, restless cameras, and cameras that leave during their jobs.
#include "BatchFixture.h"

#include <QPointer>
#include <QTimer>

namespace
{

class WindowLoad : public BatchFixture
{
protected:
    void SetUp() override { open(); }

    QPointer<QOperateThread> worker(const QByteArray& serial) const
    {
        return probe->workers.value(idOf(serial));
    }
    void expectUsable(int rows)
    {
        EXPECT_TRUE(window->isEnabled());
        EXPECT_FALSE(probe->loading->isVisible());
        EXPECT_EQ(probe->running, 0);
        probe->backButton->click();
        messages.clear();
        find(freeCameras(rows));
        for (int row = 0; row < rows; ++row)
            if (!isTicked(row))
                tick(row);
        runExportTogether(rows, folder.path());
        EXPECT_EQ(counts(), (QStringList{"0", QString::number(rows), "0"}));
        EXPECT_EQ(messages.size(), 1);
    }
};

} // namespace

TEST_F(WindowLoad, ThirtyTwoJobsAtOnce)
{
    readyCameras(32);
    EXPECT_EQ(headerState(), Qt::Checked);
    int most = 0;
    holdJobs();
    duringBatch([this] { return probe->running == 32; },
                [&] {
                    most = probe->running;
                    letJobsGo();
                });
    runExport(folder.path());
    EXPECT_EQ(most, 32);
    EXPECT_EQ(counts(), (QStringList{"0", "32", "0"}));
    EXPECT_EQ(messages.size(), 1);
    for (int i = 1; i <= 32; ++i) {
        EXPECT_TRUE(QFile::exists(exported("S" + QByteArray::number(i))));
        EXPECT_EQ(text(i - 1, Operation), "Exported.");
    }
    EXPECT_EQ(probe->workers.size(), 32);
}

TEST_F(WindowLoad, ADeviceThatLeavesDuringItsJobEndsTheBatch)
{
    readyCameras(1);
    holdJobs();
    QPointer<QOperateThread> leaving;
    duringBatch([this] { return probe->running == 1; },
                [&] {
                    leaving = worker("S1");
                    find({});
                    EXPECT_TRUE(leaving); // still in its job: not deleted under it
                    EXPECT_TRUE(probe->workers.isEmpty());
                });
    runExport(folder.path()); // comes back though the job hangs
    ASSERT_TRUE(actionDone);
    EXPECT_EQ(counts(), (QStringList{"0", "0", "1"}));
    EXPECT_EQ(messages.size(), 0);
    EXPECT_EQ(table().rowCount(), 10);
    letJobsGo();
    EXPECT_TRUE(waitFor([&] { return leaving.isNull(); })); // goes by itself
    EXPECT_EQ(counts(), (QStringList{"0", "0", "1"}));
    expectUsable(1);
}

TEST_F(WindowLoad, TheOtherJobsGoOnWhenOneDeviceLeaves)
{
    readyCameras(3);
    holdJobs();
    QPointer<QOperateThread> leaving;
    duringBatch([this] { return probe->running == 3; },
                [&] {
                    leaving = worker("S2");
                    find({{"S1"}, {"S3"}});
                    EXPECT_EQ(counts(), (QStringList{"2", "0", "1"}));
                    EXPECT_FALSE(window->isEnabled());
                    EXPECT_TRUE(probe->loading->isVisible());
                    letJobsGo();
                });
    runExport(folder.path());
    ASSERT_TRUE(actionDone);
    EXPECT_EQ(counts(), (QStringList{"0", "2", "1"}));
    EXPECT_EQ(operation("S1"), "Exported.");
    EXPECT_EQ(operation("S3"), "Exported.");
    EXPECT_EQ(messages.size(), 1);
    EXPECT_TRUE(waitFor([&] { return leaving.isNull(); }));
    expectUsable(3);
}

TEST_F(WindowLoad, ADeviceThatLeavesBeforeItsBeginIsHandledEndsItsJobToo)
{
    readyCameras(2);
    holdJobs();
    const FirstEvent first([this] {
        waitForHeldJobs(2); // both have begun,
        find({});
        EXPECT_EQ(probe->running, 0); // and of neither has the window heard
        EXPECT_TRUE(window->isEnabled());
        EXPECT_FALSE(probe->loading->isVisible());
        actionDone = true;
        probe->loading->close();
    });
    runExport(folder.path());
    ASSERT_TRUE(actionDone);
    EXPECT_EQ(counts(), (QStringList{"0", "0", "2"}));
    EXPECT_EQ(messages.size(), 0);
    letJobsGo();
    expectUsable(2);
}

TEST_F(WindowLoad, ADeviceThatComesBackDuringItsJobIsFreeOfIt)
{
    readyCameras(1);
    holdJobs();
    const int id = idOf("S1");
    duringBatch([this] { return probe->running == 1; },
                [this] {
                    find({});
                    find(freeCameras(1));
                    letJobsGo();
                });
    runExport(folder.path());
    ASSERT_TRUE(actionDone);
    handleEvents();
    EXPECT_EQ(idOf("S1"), id);
    EXPECT_EQ(operation("S1"), "");
    EXPECT_EQ(counts(), (QStringList{"0", "0", "1"}));
    expectUsable(1);
}

TEST_F(WindowLoad, TheWindowMayEndWhileAJobHangs)
{
    readyCameras(1);
    holdJobs();
    QPointer<QOperateThread> hanging;
    duringBatch([this] { return probe->running == 1; },
                [&] {
                    hanging = worker("S1");
                    find({});
                });
    runExport(folder.path());
    closeWindow();
    ASSERT_TRUE(hanging);
    letJobsGo();
    EXPECT_TRUE(waitFor([&] { return hanging.isNull(); }));
}

TEST_F(WindowLoad, AWorkerThatStillRunsIsLeftWhenTheWindowGoes)
{
    readyCameras(2);
    holdJobs();
    const QPointer<QOperateThread> running = probe->workerOf(idOf("S1"));
    const QPointer<QOperateThread> idle = probe->workerOf(idOf("S2"));
    running->SetXmlExportJob(item("S1")->data(0, Qt::UserRole + 3).value<StructDeviceInfo>(), folder.path());
    running->start(QThread::InheritPriority);
    waitForHeldJobs(1);
    QObject::connect(window.get(), &QObject::destroyed, [&] {
        EXPECT_FALSE(running->parent()) << "a running worker is deleted, which ends the program";
    });
    destroyWindow();
    ASSERT_TRUE(running);
    EXPECT_TRUE(running->isRunning());
    EXPECT_FALSE(idle);
    letJobsGo();
    EXPECT_TRUE(running->wait(10000));
    EXPECT_TRUE(QFile::exists(exported("S1")));
    delete running;
}

// Ten times a second for ten seconds, without the pauses.
TEST_F(WindowLoad, ACameraThatAppearsAndGoesAllTheTime)
{
    find(freeCameras(12));
    tick("S1");
    const int id = idOf("S12");
    for (int i = 0; i < 100; ++i) {
        find(freeCameras(11));
        EXPECT_EQ(table().rowCount(), 11);
        find(freeCameras(12));
        EXPECT_EQ(idOf("S12"), id);
        EXPECT_EQ(table().rowCount(), 12);
        EXPECT_EQ(tickedRows(), QList<int>{0});
        handleEvents();
    }
    EXPECT_TRUE(probe->importButton->isEnabled());
    EXPECT_EQ(rowOf("S12"), 11);
}

TEST_F(WindowLoad, ACameraThatAppearsAndGoesDuringItsOwnJobs)
{
    readyCameras(2);
    holdJobs();
    int flights = 0;
    QTimer restless(window.get());
    QObject::connect(&restless, &QTimer::timeout, [&] {
        find({{"S1"}});
        find(freeCameras(2));
        if (++flights == 20)
            letJobsGo();
    });
    duringBatch([this] { return probe->running == 2; }, [&] { restless.start(5); });
    runExport(folder.path());
    restless.stop();
    EXPECT_GE(flights, 20);
    EXPECT_EQ(counts(), (QStringList{"0", "1", "1"})); // one job that ended, one whose camera left it
    expectUsable(2);
}

TEST_F(WindowLoad, TwoHundredCameras)
{
    QVector<Camera> cameras = freeCameras(200);
    for (int i = 0; i < cameras.size(); ++i)
        cameras[i].interfaceName = i % 2 ? "eth1" : "eth0";
    find(cameras);
    EXPECT_EQ(table().rowCount(), 200);
    select(interfaceOf("S2"));
    EXPECT_EQ(hiddenRows().size(), 100);
    window->onSortTableWidget(Serial, false);
    EXPECT_EQ(text(0, Serial), "S99");
    EXPECT_TRUE(table().isRowHidden(0));
    clickHeaderBox();
    EXPECT_EQ(tickedRows().size(), 32);
    find({});
    EXPECT_EQ(table().rowCount(), 10);
}
