// What is left when any one request of a job goes wrong on a line that is no network.
#include "companion/SweptSettings.h"
#include "support/AllTransports.h"

#include <QDir>

using tests::Arguments;
using tests::Result;
using tests::runInProcess;
using tests::Settings;
using tests::Sweep;
using tests::SweptJob;
using tests::Transport;

namespace
{

constexpr size_t kRuns = 1; // of each trouble, where not all are made
constexpr size_t kFewRuns = 0;

class SweptTransport : public tests::SweptSettings, public testing::WithParamInterface<Transport>
{
protected:
    SweptTransport() : m_camera(m_lines.add(GetParam(), config())), m_sweep(m_camera)
    {
        qputenv("KX_GENTL_TIMEOUT", "3000");
        set(m_camera, 7);
        m_high = Settings::of(m_camera);
        m_fileText = fileText(exported("S1"));
        write("a.fpk", m_fileText);
        m_bagText = fileText(exported("S1", {"--format", "bag"}));
        write("a.bag", m_bagText);
        set(m_camera, 3);
        m_low = Settings::of(m_camera);
        QDir().mkdir(QString::fromStdString(path("to")));
    }
    ~SweptTransport() override
    {
        m_sweep.printSums();
        qunsetenv("KX_GENTL_TIMEOUT");
    }

    static emu::CameraConfig config()
    {
        emu::CameraConfig config;
        config.serial = "S1";
        config.description = description();
        config.seed = R"({"nodes": {"DeviceFirmwareVersion": "1.0"}})";
        return config;
    }

    void begin(const Settings& settings)
    {
        settings.putInto(m_camera);
        SweptSettings::begin(m_camera);
    }

    SweptJob exportOf(const std::string& format, const QByteArray& right)
    {
        const std::string name = "to/EMU-1_S1.fpk";
        return {
            "export of " + format,
            [this, name] {
                write(name, "old");
                begin(m_high);
            },
            [this, format] {
                return runInProcess({"export", "--all", "--to", path("to"), "--format", format, "--json"});
            },
            [this, name, right](const Result& run) { return exportObjections(run, fileText(name), right); }};
    }

    SweptJob importOf(const std::string& file)
    {
        return {"import of " + file, [this] { begin(m_low); },
                [this, file] {
                    return runInProcess({"import", path(file), "--all", "--json"});
                },
                [this](const Result& run) {
                    std::vector<std::string> found = tellingObjections(run, m_camera);
                    if (run.code == 0 && !(Settings::of(m_camera) == m_high))
                        found.push_back("a camera that is not set was called set");
                    return found;
                }};
    }

    void sweepOver(SweptJob job, size_t runs)
    {
        job.filesOfReturn = GetParam() == Transport::GenTl ? 0 : 1; // umockdev's, of what lies in /dev
        m_sweep.over(job, runs);
    }

    tests::AllTransports m_lines;
    emu::Shell& m_camera;
    Sweep m_sweep;
    Settings m_high; // what the files hold
    Settings m_low;
    QByteArray m_fileText;
    QByteArray m_bagText;
};

} // namespace

TEST_P(SweptTransport, ExportOfAFeaturesFile)
{
    sweepOver(exportOf("xml", m_fileText), kRuns);
}

TEST_P(SweptTransport, ImportOfAFeaturesFile)
{
    sweepOver(importOf("a.fpk"), kRuns);
}

TEST_P(SweptTransport, ExportOfAFeatureBag)
{
    sweepOver(exportOf("bag", m_bagText), kFewRuns);
}

TEST_P(SweptTransport, ImportOfAFeatureBag)
{
    sweepOver(importOf("a.bag"), kFewRuns);
}

INSTANTIATE_TEST_SUITE_P(Over, SweptTransport,
                         testing::Values(Transport::Usb3, Transport::Serial, Transport::Clser,
                                         Transport::GenTl),
                         tests::transportName);
