// What is left when any one request of a job goes wrong: what is told is what is in the camera and on the
// disk.
#include "companion/SweptSettings.h"
#include "support/RegisterByRegister.h"

#include <QDir>

using tests::Result;
using tests::runInProcess;
using tests::Settings;
using tests::Sweep;
using tests::SweptJob;

namespace
{

constexpr size_t kRuns = 1; // of each trouble, where not all are made

class SweptJobs : public tests::SweptSettings
{
protected:
    SweptJobs()
        : m_camera(addCamera("S1",
                             [](emu::CameraConfig& config) {
                                 config.description = description();
                                 config.seed = R"({"nodes": {"DeviceFirmwareVersion": "1.0"}})";
                             })),
          m_sweep(m_camera)
    {
        set(m_camera, 7);
        m_high = Settings::of(m_camera);
        m_fileText = fileText(exported("S1"));
        write("a.fpk", m_fileText);
        m_file = path("a.fpk");
        m_bagText = fileText(exported("S1", {"--format", "bag"}));
        write("a.bag", m_bagText);
        m_bag = path("a.bag");
        set(m_camera, 3);
        m_low = Settings::of(m_camera);
        QDir().mkdir(QString::fromStdString(path("to")));
    }
    ~SweptJobs() override { m_sweep.printSums(); }

    void begin(const Settings& settings)
    {
        settings.putInto(m_camera);
        SweptSettings::begin(m_camera);
    }

    void makeEmpty(const std::string& name) const
    {
        QDir(QString::fromStdString(path(name))).removeRecursively();
        QDir().mkdir(QString::fromStdString(path(name)));
    }

    void sweepOver(SweptJob job) { m_sweep.over(job, kRuns); }

    SweptJob exportOf(const std::string& format, const QByteArray& right, const tests::Arguments& more = {})
    {
        const std::string name = "to/EMU-1_S1.fpk";
        tests::Arguments words{"export", "--all", "--to", path("to"), "--format", format, "--json"};
        words.insert(words.end(), more.begin(), more.end());
        return {
            "export of " + format,
            [this, name] {
                write(name, "old");
                begin(m_high);
            },
            [words] { return runInProcess(words); },
            [this, name, right](const Result& run) { return exportObjections(run, fileText(name), right); }};
    }

    // Of a job that sets the camera.
    std::vector<std::string> settingObjections(const Result& run, const Settings& goal)
    {
        std::vector<std::string> found = tellingObjections(run, m_camera);
        if (run.code == 0 && !(Settings::of(m_camera) == goal))
            found.push_back("a camera that is not set was called set: " +
                            ::testing::PrintToString(Settings::of(m_camera).differences(goal)));
        return found;
    }

    SweptJob importOf(const std::string& file, const tests::Arguments& more)
    {
        std::string name = "import of " + file.substr(file.rfind('/') + 1);
        for (const std::string& word : more)
            name += ' ' + word;
        return {name,
                [this] {
                    begin(m_low);
                    makeEmpty("snapshots");
                },
                [file, more] {
                    tests::Arguments words{"import", file, "--all", "--json"};
                    words.insert(words.end(), more.begin(), more.end());
                    return runInProcess(words);
                },
                [this](const Result& run) { return settingObjections(run, m_high); }};
    }

    emu::EmulatedCamera& m_camera;
    Sweep m_sweep;
    Settings m_high; // what the files hold
    Settings m_low;
    std::string m_file;
    std::string m_bag;
    QByteArray m_fileText;
    QByteArray m_bagText;
};

} // namespace

TEST_F(SweptJobs, ExportOfAFeaturesFile)
{
    sweepOver(exportOf("xml", m_fileText));
}

TEST_F(SweptJobs, ExportOfAFeatureBag)
{
    sweepOver(exportOf("bag", m_bagText));
}

TEST_F(SweptJobs, ImportOfAFeaturesFile)
{
    sweepOver(importOf(m_file, {}));
}

TEST_F(SweptJobs, ImportWithSnapshotAndVerification)
{
    sweepOver(importOf(m_file, {"--snapshot", path("snapshots"), "--verify"}));
}

TEST_F(SweptJobs, ImportOfAFeatureBag)
{
    sweepOver(importOf(m_bag, {}));
}

// Other requests, and more of them.
TEST_F(SweptJobs, RegisterByRegister)
{
    const tests::RegisterByRegister off;
    sweepOver(exportOf("xml", m_fileText));
    sweepOver(importOf(m_file, {}));
}

// Reads beside others, without control and its heartbeat.
TEST_F(SweptJobs, SharedExport)
{
    sweepOver(exportOf("xml", m_fileText, {"--shared"}));
}

TEST_F(SweptJobs, Rollback)
{
    begin(m_low);
    makeEmpty("snapshots");
    ASSERT_EQ(import("a.fpk", {"--all", "--snapshot", path("snapshots")}).code, 0);
    sweepOver({"rollback", [this] { begin(m_high); },
               [this] {
                   return runInProcess({"rollback", path("snapshots"), "--all", "--json"});
               },
               [this](const Result& run) { return settingObjections(run, m_low); }});
}

TEST_F(SweptJobs, Clone)
{
    emu::EmulatedCamera& source = addCamera("S2", [this](emu::CameraConfig& config) {
        config.description = description();
        config.seed = m_camera.config().seed;
    });
    m_high.putInto(source);
    const SweptJob clone{"clone", [this] { begin(m_low); },
                         [] {
                             return runInProcess({"clone", "--from", "S2", "--to", "S1", "--yes", "--json"});
                         },
                         [this](const Result& run) { return settingObjections(run, m_high); }};
    sweepOver(clone);
    Sweep ofSource(source);
    ofSource.over(clone, kRuns);
    EXPECT_TRUE(Settings::of(source) == m_high);
    ofSource.printSums();
}
