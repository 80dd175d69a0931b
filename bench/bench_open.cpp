// What opening a camera asks of it, without and with a description that was fetched before; what a guarded
// import asks, which opens the camera several times; what sixteen cameras of one description cost.
// usage: bench_open [FILE]...   (default: all descriptions of the folder KX_DESCRIPTIONS)
#include "EmulatorProcess.h"
#include "Measure.h"

#include "iefeatures/commands/Companion.h"
#include "iefeatures/console/ExitCode.h"
#include "jobs/worker/QOperateThread.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <list>
#include <sstream>

namespace
{

emu::CameraConfig camera(const QString& description, int number)
{
    emu::CameraConfig config;
    config.address = "127.0.75." + std::to_string(number);
    config.model = "Bench";
    config.serial = std::to_string(number);
    config.descriptionFile = description.toStdString();
    config.seed = R"({"nodes": {"DeviceFirmwareVersion": "1.0.0"}})";
    return config;
}

bool openAndClose(const emu::CameraConfig& config)
{
    const KX_DeviceInfo device = bench::deviceInfo(config);
    KX_HANDLE handle = nullptr;
    // Patient: the machines that run this are busy, and a request that is sent again is one more.
    const bool isGood = KX_CC_CreateHandle(&handle, &device) == KX_OK &&
                        KX_CC_SetTimeout(handle, 2000, 3) == KX_OK &&
                        KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0) == KX_OK;
    KX_CC_DestroyHandle(handle);
    return isGood;
}

void useFolder(const QString& folder)
{
    qputenv("KX_DESCRIPTION_CACHE", folder.toLocal8Bit());
}

// Requests of a process that does nothing else.
template <typename Work>
unsigned requestsOf(bench::EmulatorProcess& cameras, Work work)
{
    bench::costOf(work);
    return unsigned(cameras.takeCounters().requests());
}

void measureOpening(const QString& path)
{
    const emu::CameraConfig plain = camera(path, 1);
    emu::CameraConfig zipped = camera(path, 2);
    zipped.zipped = true;
    bench::EmulatorProcess cameras({plain, zipped});
    const QTemporaryDir folder;
    const double blocks = double(QFileInfo(path).size()) / 512;
    useFolder("off");
    const unsigned without = requestsOf(cameras, [&] { return openAndClose(plain); });
    useFolder(folder.path());
    requestsOf(cameras, [&] { return openAndClose(plain) && openAndClose(zipped); });
    const unsigned with = requestsOf(cameras, [&] { return openAndClose(plain); });
    const unsigned withZip = requestsOf(cameras, [&] { return openAndClose(zipped); });
    std::printf("%-28s %4.0f blocks: %u requests, %.2f a block + 10 (target: at most 1.05); "
                "kept: %u, as an archive %u (target: at most 20)\n",
                qPrintable(QFileInfo(path).fileName()), blocks, without, (without - 10.0) / blocks, with,
                withZip);
}

// As the program does it, without its output.
bool companionDoes(const std::vector<std::string>& arguments)
{
    std::ostringstream out, err;
    companion::Console console(out, err, false, false);
    const int code = companion::runCompanion(arguments, {console, companion::enumerateCameras});
    // Some descriptions have features that take no value: what counts here is the way there.
    return code == companion::ExitWell || code == companion::ExitNotAllApplied ||
           code == companion::ExitJobFailed;
}

void measureGuardedImport(const QString& path)
{
    const emu::CameraConfig config = camera(path, 1);
    bench::EmulatorProcess cameras({config});
    const QTemporaryDir folder;
    const std::string to = folder.path().toStdString();
    useFolder("off");
    qputenv("KX_CAMERA_ADDRESSES", config.address.c_str());
    requestsOf(cameras, [&] { return companionDoes({"export", "--all", "--to", to}); });
    const std::string file = to + "/Bench_1.fpk";
    if (!QFile::exists(QString::fromStdString(file))) {
        std::printf("%-28s no export\n", qPrintable(QFileInfo(path).fileName()));
        return;
    }
    const unsigned alone = requestsOf(cameras, [&] {
        return companionDoes({"import", file, "--all", "--no-audit"});
    });
    const unsigned guarded = requestsOf(cameras, [&] {
        return companionDoes({"import", file, "--all", "--no-audit", "--snapshot", to, "--verify"});
    });
    std::printf("%-28s import %u requests, with --snapshot --verify %u: ratio %.2f (target: at most 1.40)\n",
                qPrintable(QFileInfo(path).fileName()), alone, guarded, double(guarded) / alone);
}

// Exports of all cameras at once.
bool exportAll(const std::vector<emu::CameraConfig>& configs)
{
    const QTemporaryDir folder;
    std::list<QOperateThread> workers;
    for (const emu::CameraConfig& config : configs) {
        StructDeviceInfo device;
        device.nDeviceID = long(workers.size());
        device.stDeviceInfo = bench::deviceInfo(config);
        workers.emplace_back().SetXmlExportJob(device, folder.path());
    }
    for (QOperateThread& worker : workers)
        worker.start();
    for (QOperateThread& worker : workers)
        worker.wait();
    return size_t(QDir(folder.path()).entryList(QDir::Files).size()) == configs.size();
}

template <typename Member>
double median(const std::vector<bench::Cost>& costs, Member member)
{
    std::vector<double> values;
    for (const bench::Cost& cost : costs)
        values.push_back(cost.*member);
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

std::vector<bench::Cost> costsOfExports(const std::vector<emu::CameraConfig>& configs)
{
    std::vector<bench::Cost> costs;
    for (int run = 0; run < 5; ++run)
        costs.push_back(bench::costOf([&] { return exportAll(configs); }));
    return costs;
}

// What a generic tool that reads all values takes of the processor; 0 where there is none.
double toolSeconds(const emu::CameraConfig& config)
{
    std::vector<double> values;
    for (int run = 0; run < 5; ++run) {
        rusage before, after;
        getrusage(RUSAGE_CHILDREN, &before);
        const std::string command = "arv-tool-0.8 -a " + config.address + " values > /dev/null 2>&1";
        if (std::system(command.c_str()) != 0)
            return 0;
        getrusage(RUSAGE_CHILDREN, &after);
        const auto seconds = [](const rusage& usage) {
            return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                   double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
        };
        values.push_back(seconds(after) - seconds(before));
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Beside ours: how quick the machine is just now shows in both.
void compareWithTool(const emu::CameraConfig& config, double processor)
{
    const double tool = toolSeconds(config);
    if (tool > 0)
        std::printf("  processor %.3f s, of arv-tool-0.8 values %.3f s: ratio %.2f (target: at most 1)\n",
                    processor, tool, processor / tool);
}

void measureManyCameras(const QString& path)
{
    useFolder("off");
    std::printf("%s\n", qPrintable(QFileInfo(path).fileName()));
    for (const int latency : {0, 1}) {
        std::vector<emu::CameraConfig> configs;
        for (int number = 1; number <= 16; ++number) {
            configs.push_back(camera(path, number));
            configs.back().zipped = true;
            configs.back().latency = std::chrono::milliseconds(latency);
        }
        const bench::EmulatorProcess cameras(configs);
        const auto one = costsOfExports({configs[0]});
        const auto all = costsOfExports(configs);
        const double wire = median(one, &bench::Cost::seconds) - median(one, &bench::Cost::processorSeconds);
        const double processor = median(all, &bench::Cost::processorSeconds);
        const double cores = double(sysconf(_SC_NPROCESSORS_ONLN));
        std::printf(
            "  %d ms a request: one export %.3f s, processor %.3f s (target for 250 features: at most 0.06); "
            "sixteen %.3f s, processor %.3f s: ratio %.2f to the larger of wire and processor (target: at "
            "most 1.2)\n",
            latency, median(one, &bench::Cost::seconds), median(one, &bench::Cost::processorSeconds),
            median(all, &bench::Cost::seconds), processor,
            median(all, &bench::Cost::seconds) / std::max(wire, processor / cores));
        if (latency == 0)
            compareWithTool(configs[0], median(one, &bench::Cost::processorSeconds));
        std::printf(
            "  peak memory %.1f MB for one, %.1f MB for sixteen: %.1f MB for each further camera (target: at "
            "most 10)\n",
            median(one, &bench::Cost::peakMegabytes), median(all, &bench::Cost::peakMegabytes),
            (median(all, &bench::Cost::peakMegabytes) - median(one, &bench::Cost::peakMegabytes)) / 15);
    }
}

} // namespace

int main(int argc, char** argv)
{
    QStringList paths;
    for (int i = 1; i < argc; ++i)
        paths += QString::fromLocal8Bit(argv[i]);
    const QDir folder(qEnvironmentVariable("KX_DESCRIPTIONS"));
    if (paths.isEmpty() && qEnvironmentVariableIsSet("KX_DESCRIPTIONS"))
        for (const QFileInfo& file : folder.entryInfoList({"*.xml"}, QDir::Files))
            paths += file.filePath();
    if (paths.isEmpty()) {
        std::puts("SKIPPED: name descriptions, or a folder of them in KX_DESCRIPTIONS");
        return 0;
    }
    qputenv("KX_CAMERA_INTERFACES", "none");
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    for (const QString& path : paths)
        measureOpening(path);
    for (const QString& path : paths)
        measureGuardedImport(path);
    const auto isSmaller = [](const QString& a, const QString& b) {
        return QFileInfo(a).size() < QFileInfo(b).size();
    };
    measureManyCameras(*std::max_element(paths.begin(), paths.end(), isSmaller));
}
