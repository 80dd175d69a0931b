// Many jobs in one process, as a window runs them in a week: eight cameras over a line that loses one packet
// in a hundred, the last of them coming and going. SOAK_JOBS says how many; a few hundred without.
#include "companion/CompanionFixture.h"

#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/files/FeaturesFileInput.h"
#include "iefeatures/running/CallWatch.h"
#include "jobs/worker/QOperateThread.h"
#include "support/ComingAndGoing.h"
#include "support/FileBytes.h"
#include "support/Flatness.h"

#include <QDir>
#include <QFile>

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <random>

using std::chrono::milliseconds;

namespace
{

constexpr size_t kCameras = 8;
constexpr size_t kWarmUpJobs = 100;
constexpr size_t kShortJobs = 280;
constexpr uint64_t kRegisters = 0x20000; // all that are settings lie below

const char kOtherSettings[] = R"({"nodes": {"Width": 320, "Height": 240, "ExposureTime": 2500,
    "TestPattern": 1, "ReverseY": true, "AcquisitionFrameRate": 30, "GammaReg": 500, "StatusLevel": 150}})";

// Until the last camera goes or comes: both for less and for longer than a job waits.
milliseconds nextMove()
{
    static std::mt19937 random(17);
    return milliseconds(std::uniform_int_distribution<int>(20, 1200)(random));
}

class JobsSoak : public tests::CompanionTest
{
protected:
    JobsSoak()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {}); // the jobs' log
        qputenv("KX_DESCRIPTION_CACHE", path("descriptions").c_str());
        for (size_t i = 0; i < kCameras; ++i)
            m_emulated.push_back(&addCamera("S" + std::to_string(i + 1)));
        std::vector<KX_DeviceEntry> found;
        EXPECT_EQ(companion::enumerateCameras(found), KX_OK);
        m_listed = companion::camerasFrom(found);
        EXPECT_EQ(m_listed.size(), kCameras);
        m_workers.resize(kCameras);
        emu::Faults lossy;
        lossy.loseRequests = 200;
        lossy.loseAnswers = 200;
        for (emu::EmulatedCamera* camera : m_emulated) {
            m_settings.push_back(camera->peek(0, kRegisters));
            camera->setFaults(lossy);
        }
        for (const char* name : {"features", "bags"})
            QDir().mkpath(QString::fromStdString(path(name)));
        m_guest = std::make_unique<tests::ComingAndGoing>(std::vector{m_emulated.back()}, nextMove);
    }
    ~JobsSoak() override
    {
        m_guest.reset();
        qInstallMessageHandler(nullptr);
    }

    QString file(const char* kind, size_t camera) const
    {
        return QString::fromStdString(path(kind)) + "/" + "EMU-1_S" + QString::number(camera + 1) + ".fpk";
    }

    // A worker lives as long as its camera is there.
    QOperateThread& worker(size_t camera)
    {
        std::unique_ptr<QOperateThread>& kept = m_workers[camera];
        if (!kept || (camera == kCameras - 1 && m_guestsWorkerIsOf != m_guest->moves())) {
            kept = std::make_unique<QOperateThread>();
            QObject::connect(
                kept.get(), &QOperateThread::SigThreadInfo, kept.get(),
                [this, camera](long, const QString& text, bool isFailure) {
                    if (camera == kCameras - 1)
                        m_guestsFailures += isFailure;
                    else
                        EXPECT_FALSE(isFailure) << camera << ": " << text.toStdString();
                },
                Qt::DirectConnection);
        }
        return *kept;
    }

    // One job on each camera at once.
    void runBatch(const std::function<void(QOperateThread&, size_t camera)>& setUp)
    {
        const companion::CallWatch watch(m_listed, [] { return false; });
        for (size_t i = 0; i < kCameras; ++i) {
            QOperateThread& one = worker(i);
            setUp(one, i);
            one.start();
        }
        m_guestsWorkerIsOf = m_guest->moves();
        for (const auto& one : m_workers)
            one->wait();
        // The jobs themselves tell nobody of a camera that a bag could not open.
        for (size_t i = 0; i < kCameras - 1; ++i)
            EXPECT_EQ(findingsOf(watch, i), "") << i;
        m_jobs += kCameras;
    }

    void putBack(size_t camera) { m_emulated[camera]->poke(0, m_settings[camera]); }

    // Nothing that disturbed the guest's imports is to be seen in its exports.
    void exportAll(const char* kind)
    {
        const bool isBag = kind == std::string("bags");
        const unsigned before = m_guest->moves();
        putBack(kCameras - 1);
        runBatch([&](QOperateThread& one, size_t camera) {
            QFile::remove(file(kind, camera));
            const QString folder = QString::fromStdString(path(kind));
            isBag ? one.SetFeatureBagExportJob(m_listed[camera].device, folder)
                  : one.SetXmlExportJob(m_listed[camera].device, folder);
        });
        const bool wasGuestThere = m_guest->moves() == before && before % 2 == 0;
        for (size_t i = 0; i < kCameras; ++i)
            if (i < kCameras - 1 || (wasGuestThere && m_guestsFailures == 0))
                expectFirst(kind, i);
        m_guestsFailures = 0;
    }

    void expectFirst(const char* kind, size_t camera)
    {
        const QByteArray now = tests::bytesOf(file(kind, camera));
        QByteArray& first = m_first[kind][camera];
        if (first.isEmpty())
            first = now;
        EXPECT_FALSE(now.isEmpty()) << file(kind, camera).toStdString();
        EXPECT_TRUE(now == first) << file(kind, camera).toStdString() << " is not as the first one was";
        ++m_equalFiles;
    }

    void importAll(const char* kind)
    {
        for (emu::EmulatedCamera* camera : m_emulated)
            EXPECT_EQ(camera->change(kOtherSettings), std::vector<std::string>());
        runBatch([&](QOperateThread& one, size_t camera) {
            kind == std::string("bags") ? one.SetFeatureBagImportJob(m_listed[camera].device, file(kind, 0))
                                        : one.SetXmlImportJob(m_listed[camera].device, file(kind, 0));
        });
        for (size_t i = 0; i < kCameras - 1; ++i)
            EXPECT_EQ(m_emulated[i]->node("Width"), emu::NodeValue(int64_t(640))) << i;
    }

    std::string findingsOf(const companion::CallWatch& watch, size_t camera) const
    {
        const auto findings = watch.findings(m_listed[camera].device.nDeviceID);
        return (findings.openingFailure + companion::lineRemark(findings) + findings.bagText).toStdString();
    }

    void verifyAll()
    {
        const companion::FeaturesFileInput input = companion::readFeaturesFile(file("features", 0));
        ASSERT_TRUE(input.isGood()) << input.error.toStdString();
        std::vector<companion::CameraCheck> checks(kCameras);
        companion::inParallel(kCameras, [&](size_t i) {
            checks[i] = companion::checkCamera(m_listed[i], input.content, {companion::CheckMode::Verify},
                                               [] { return true; });
        });
        for (size_t i = 0; i < kCameras - 1; ++i)
            EXPECT_EQ(checks[i].notApplied(), QStringList()) << checks[i].error.toStdString();
        m_jobs += kCameras;
    }

    void runRound()
    {
        exportAll("features");
        importAll("features");
        verifyAll();
        exportAll("bags");
        importAll("bags");
    }

    std::unique_ptr<tests::ComingAndGoing> m_guest;
    size_t m_jobs = 0;
    size_t m_equalFiles = 0;

private:
    std::vector<emu::EmulatedCamera*> m_emulated;
    std::vector<emu::Bytes> m_settings;
    std::vector<companion::ListedCamera> m_listed;
    std::vector<std::unique_ptr<QOperateThread>> m_workers;
    std::map<std::string, std::map<size_t, QByteArray>> m_first;
    unsigned m_guestsWorkerIsOf = 0; // moves of the guest when it began
    std::atomic<unsigned> m_guestsFailures{0};
};

} // namespace

TEST_F(JobsSoak, LeavesNothingBehind)
{
    const size_t wanted = size_t(qMax(qEnvironmentVariableIntValue("SOAK_JOBS"), int(kShortJobs)));
    tests::Flatness figures(4 * 1024, 512);
    while (m_jobs < wanted && !HasFailure()) {
        runRound();
        m_guest->holdAll();
        if (m_jobs < kWarmUpJobs + kCameras)
            figures.warmUp(m_jobs);
        else
            figures.expectFlat(m_jobs);
        m_guest->letGo();
    }
    std::printf("%zu jobs, %zu files as the first ones were, the last camera left %u times\n", m_jobs,
                m_equalFiles, m_guest->moves() / 2);
    EXPECT_GT(m_guest->moves(), 4u);
}
