// How a batch ends when a camera leaves it, and what a job of an earlier batch may still do.
#include "BatchFixture.h"

#include "support/Recorder.h"

#include <QPointer>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

namespace
{

constexpr unsigned int kExport = 3;

class BatchEnds : public BatchFixture
{
protected:
    void SetUp() override
    {
        open();
        tests::setCallHook([this](const QByteArray& serial, const tests::TraceEntry& call) {
            if (call.operation != "CreateHandle")
                return;
            const int arrival = m_arrivals++;
            if (arrival < m_held)
                m_first.pass();
            if (serial == "S3" || arrival == m_heldLonger)
                m_longer.pass();
        });
    }
    ~BatchEnds() override
    {
        letAllGo();
        waitForAllWorkers(); // they pass gates of this test
    }

    // The first `held` jobs wait before they open their cameras; that of S3 waits longer, and so does the one
    // that comes as number `longer`, counted from 0.
    void hold(int held, int longer = -1)
    {
        m_held = held;
        m_heldLonger = longer;
    }
    void letFirstGo() { m_first.open(); }
    void letAllGo()
    {
        m_first.open();
        m_longer.open();
    }
    // Comes back though workers of the batch before are held. Where it does not within ten seconds, it fails,
    // and ends what hangs by letting every job go.
    void exportAgain()
    {
        std::promise<void> returned;
        std::thread watch([this, back = returned.get_future()] {
            if (back.wait_for(std::chrono::seconds(10)) == std::future_status::ready)
                return;
            ADD_FAILURE() << "the second batch waits for a worker of the first one";
            letAllGo();
        });
        runExport(folder.path());
        returned.set_value();
        watch.join();
    }
    QString lost() const { return probe->failedLabel->toolTip(); }
    bool allBegun(int count) const { return probe->running == count; }

    // A batch that is over for the window while its workers still run.
    void endWithoutItsWorkers(const QVector<QByteArray>& ended)
    {
        duringBatch([this, ended] { return allBegun(ended.size()); },
                    [this, ended] {
                        for (const QByteArray& serial : ended)
                            window->onEndThread(idOf(serial), kExport, "/early/" + serial);
                    });
        runExport(folder.path());
        ASSERT_TRUE(actionDone);
        ASSERT_TRUE(window->isEnabled());
        messages.clear();
        actionDone = false;
    }

private:
    std::atomic<int> m_arrivals{0};
    std::atomic<int> m_held{0};
    std::atomic<int> m_heldLonger{-1};
    tests::Gate m_first, m_longer;
};

} // namespace

TEST_F(BatchEnds, TheSummaryComesWhenTheLastJobEndsBecauseItsCameraLeft)
{
    readyCameras(3);
    hold(3);
    duringBatch([this] { return allBegun(3); },
                [this] {
                    letFirstGo();
                    ASSERT_TRUE(waitFor([this] { return probe->succeeded == 2; }));
                    EXPECT_EQ(messages.size(), 0);
                    find(freeCameras(2));
                });
    runExport(folder.path());
    ASSERT_TRUE(actionDone);
    EXPECT_EQ(counts(), (QStringList{"0", "2", "1"}));
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0].text, "Exporting process is over.");
    const QStringList files = {exported("S1"), exported("S2")};
    EXPECT_TRUE(files.contains(QDir::fromNativeSeparators(messages[0].path)))
        << messages[0].path.toStdString();
    EXPECT_TRUE(window->isEnabled());
    EXPECT_FALSE(probe->loading->isVisible());
}

TEST_F(BatchEnds, AnImportsSummaryToo)
{
    readyCameras(3);
    hold(3);
    duringBatch([this] { return allBegun(3); },
                [this] {
                    letFirstGo();
                    ASSERT_TRUE(waitFor([this] { return probe->succeeded == 2; }));
                    find(freeCameras(2));
                });
    runImport(importFile());
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0].text, "Importing process is over.");
}

TEST_F(BatchEnds, ACameraThatLeavesDuringItsJobIsNamed)
{
    const tests::LogCapture capture;
    readyCameras(2);
    hold(2);
    duringBatch([this] { return allBegun(2); },
                [this] {
                    find({});
                    EXPECT_EQ(lost(), "Left during their jobs :\nCam (S1)\nCam (S2)");
                });
    runExport(folder.path());
    ASSERT_TRUE(actionDone);
    EXPECT_EQ(tests::Recorder::instance().logTexts(),
              (QStringList{"Device Cam (S1) left during its job.", "Device Cam (S2) left during its job."}));
    EXPECT_EQ(messages.size(), 0);
    letFirstGo();
    readyCameras(2);
    runExportTogether(2, folder.path()); // takes the hook over
    EXPECT_EQ(lost(), "");               // another batch
    find({});
    EXPECT_EQ(lost(), ""); // its jobs were over
}

TEST_F(BatchEnds, AWorkerThatWasOverKeepsItsJobsOutcome)
{
    readyCameras(1);
    hold(1);
    duringBatch([this] { return allBegun(1); },
                [this] {
                    const QPointer<QOperateThread> worker = probe->workers.value(idOf("S1"));
                    letFirstGo();
                    worker->wait(); // its signals wait in the event queue
                    EXPECT_EQ(probe->running, 1);
                    find({});
                });
    runExport(folder.path());
    ASSERT_TRUE(actionDone);
    EXPECT_EQ(counts(), (QStringList{"0", "1", "0"}));
    EXPECT_EQ(messages.size(), 1);
    EXPECT_EQ(lost(), "");
    EXPECT_TRUE(probe->workers.isEmpty());
}

TEST_F(BatchEnds, AWorkerThatIsStillBusyIsReplaced)
{
    readyCameras(1);
    hold(1);
    endWithoutItsWorkers({"S1"});
    const QPointer<QOperateThread> busy = probe->workers.value(idOf("S1"));
    exportAgain();
    ASSERT_TRUE(busy);
    EXPECT_TRUE(busy->isRunning());
    EXPECT_NE(probe->workers.value(idOf("S1")), busy.data());
    EXPECT_EQ(counts(), (QStringList{"0", "1", "0"}));
    EXPECT_EQ(messages.size(), 1);
    letFirstGo();
    EXPECT_TRUE(waitFor([&] { return busy.isNull(); }));
    EXPECT_EQ(counts(), (QStringList{"0", "1", "0"}));
    EXPECT_EQ(messages.size(), 1);
}

TEST_F(BatchEnds, TheEndOfAReplacedWorkerChangesNoCount)
{
    readyCameras(1);
    hold(1, 1);
    endWithoutItsWorkers({"S1"});
    const QPointer<QOperateThread> busy = probe->workers.value(idOf("S1"));
    duringBatch([this] { return allBegun(1); },
                [&] {
                    letFirstGo();
                    EXPECT_TRUE(waitFor([&] { return busy.isNull(); }));
                    EXPECT_EQ(counts(), (QStringList{"1", "0", "0"})); // the new one's job
                    EXPECT_EQ(operation("S1"), "Start exporting...");
                    letAllGo();
                });
    exportAgain();
    ASSERT_TRUE(actionDone);
    EXPECT_EQ(counts(), (QStringList{"0", "1", "0"}));
    EXPECT_EQ(messages.size(), 1);
}

TEST_F(BatchEnds, AJobOfAnEarlierBatchCountsInNone)
{
    readyCameras(2);
    hold(2);
    endWithoutItsWorkers({"S1", "S1"}); // the job of S2 has not ended
    const QPointer<QOperateThread> late = probe->workers.value(idOf("S2"));
    tick("S2"); // unticked: not part of the second batch
    probe->backButton->click();
    exportAgain();
    EXPECT_EQ(counts(), (QStringList{"0", "1", "0"}));
    ASSERT_TRUE(late->isRunning());
    letFirstGo();
    EXPECT_TRUE(waitFor([this] { return operation("S2") == "Exported."; }));
    EXPECT_EQ(counts(), (QStringList{"0", "1", "0"}));
    EXPECT_EQ(messages.size(), 1);
    // It is free again.
    tick("S2");
    runExportTogether(2, folder.path());
    EXPECT_EQ(probe->workers.value(idOf("S2")), late.data());
    EXPECT_EQ(counts(), (QStringList{"0", "2", "0"}));
}

TEST_F(BatchEnds, ACameraWithAJobOfAnEarlierBatchLeavesWithoutACount)
{
    readyCameras(2);
    hold(2);
    endWithoutItsWorkers({"S1", "S1"});
    tick("S2");
    probe->backButton->click();
    exportAgain();
    find(freeCameras(1));
    EXPECT_EQ(counts(), (QStringList{"0", "1", "0"}));
    EXPECT_EQ(lost(), "");
    EXPECT_EQ(messages.size(), 1);
}

TEST_F(BatchEnds, SignalsThatWaitFromAReplacedWorkerAreNobodys)
{
    readyCameras(3);
    tick("S2");
    hold(2);
    duringBatch([this] { return allBegun(2); },
                [this] {
                    letFirstGo();
                    ASSERT_TRUE(waitFor([this] { return probe->succeeded == 1; }));
                    QOperateThread* worker = probe->workers.value(idOf("S3"));
                    letAllGo();
                    worker->wait();                                   // its end waits in the queue,
                    window->onEndThread(idOf("S2"), kExport, "/f/x"); // and the batch is over
                });
    runExport(folder.path());
    exportAgain();
    for (QOperateThread* worker : qAsConst(probe->workers))
        worker->wait();
    handleEvents();
    EXPECT_EQ(counts(), (QStringList{"0", "2", "0"}));
}

TEST_F(BatchEnds, SignalsThatWaitFromAWorkerThatIsGoneAreNobodys)
{
    find(freeCameras(1));
    const int id = idOf("S1");
    QOperateThread* worker = probe->workerOf(id);
    std::thread([&] {
        emit worker->SigBeginThread(id, kExport);
        emit worker->SigThreadInfo(id, "told too late", false);
        emit worker->SigEndThread(id, kExport, "/f/x");
    }).join();
    find({});
    find(freeCameras(1)); // its row is there again
    handleEvents();
    EXPECT_EQ(idOf("S1"), id);
    EXPECT_EQ(operation("S1"), "");
    EXPECT_EQ(probe->running, 0);
    EXPECT_EQ(counts(), (QStringList{"0", "0", "0"}));
    EXPECT_EQ(messages.size(), 0);
}

TEST_F(BatchEnds, CamerasThatLeaveBeforeTheirJobsBeganEndTheBatchWithTheLast)
{
    readyCameras(2);
    hold(2);
    int left = 0;
    FirstEvent first([&] {
        find(freeCameras(1));
        EXPECT_EQ(counts(), (QStringList{"0", "0", "1"}));
        EXPECT_FALSE(window->isEnabled());
        EXPECT_TRUE(probe->loading->isVisible());
        find({});
        EXPECT_TRUE(window->isEnabled());
        EXPECT_FALSE(probe->loading->isVisible());
        left = 2;
        probe->loading->close();
    });
    runExport(folder.path());
    EXPECT_EQ(left, 2);
    EXPECT_EQ(taskbar, (QStringList{"0/2", "1/2 failed", "2/2 failed", "end"}));
    EXPECT_EQ(counts(), (QStringList{"0", "0", "2"}));
    EXPECT_EQ(messages.size(), 0);
}
