// One export over UDP: requests per exported feature, counted by the emulated camera, and peak memory.
// usage: bench_wire [FILE]   (default: all descriptions of KX_DESCRIPTIONS, and the emulator's own)
#include "RealCamera.h"

#include "jobs/worker/QOperateThread.h"

#include "camera_emulator/EmulatedCamera.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr char kAddress[] = "127.0.73.1";

// The camera lives in a process of its own, so that the memory measured is the export's alone. It answers
// through `toParent` when it listens, and with its counters when `fromParent` is closed.
[[noreturn]] void runCamera(const char* description, int fromParent, int toParent)
{
    emu::CameraConfig config;
    config.address = kAddress;
    config.model = "Bench";
    config.serial = "1";
    if (description) {
        config.descriptionFile = description;
        config.seed = R"({"nodes": {"DeviceFirmwareVersion": "1.0.0"}})";
    }
    emu::EmulatedCamera camera(config);
    const emu::StartResult started = camera.start();
    if (!started)
        std::fprintf(stderr, "%s\n", started.message.c_str());
    char byte = started ? 'r' : 'f';
    if (write(toParent, &byte, 1) != 1 || !started)
        _exit(1);
    while (read(fromParent, &byte, 1) > 0)
        ;
    const emu::Counters counters = camera.counters();
    if (write(toParent, &counters, sizeof counters) != sizeof counters)
        _exit(1);
    _exit(0);
}

KX_DeviceInfo deviceInfo()
{
    KX_DeviceInfo info;
    std::memset(&info, 0, sizeof info);
    info.transportType = KX_TRANSPORT_GIGE;
    info.layout = KX_DEVICE_INFO_LAYOUT;
    std::strcpy(reinterpret_cast<char*>(info.special.gige.modelName), "Bench");
    std::strcpy(reinterpret_cast<char*>(info.special.gige.serialNumber), "1");
    info.special.gige.ipAddress = 0x7F004901;
    return info;
}

// Requests after opening, for each feature of the file.
void printTable(const QStringList& descriptions)
{
    std::printf("%-26s %8s %6s %9s %9s %9s %8s %10s\n", "description", "features", "lines", "opening",
                "1.05+10", "exporting", "each", "arv-tool");
    std::vector<double> each;
    for (int i = 0; i < descriptions.size(); ++i) {
        bench::RealCamera camera(descriptions[i]);
        const bench::JobCost cost = camera.exportFile();
        const bench::ExportedFile file = camera.exportedFile();
        const uint64_t tool = camera.toolRequests();
        std::printf("%-26s %8d %6d %9llu %9.0f %9llu ",
                    qPrintable(QFileInfo(descriptions[i]).completeBaseName()), file.features, file.lines,
                    static_cast<unsigned long long>(cost.opening), 1.05 * double(camera.blocks()) + 10,
                    static_cast<unsigned long long>(cost.requests));
        if (file.features > 0)
            each.push_back(double(cost.requests) / file.features);
        const QString perFeature = file.features > 0 ? QString::number(each.back(), 'f', 3) : "-";
        std::printf("%9s ", qPrintable(perFeature));
        std::printf("%10s\n", tool > 0 ? qPrintable(QString::number(tool)) : "-");
    }
    if (each.empty())
        return;
    std::sort(each.begin(), each.end());
    std::printf(
        "requests per feature: median %.3f (target: at most 0.10), worst %.3f (target: at most 0.25)\n",
        each[each.size() / 2], each.back());
}

// With each answer a millisecond late.
void printSlowLine(const QString& description)
{
    bench::RealCamera camera(description, std::chrono::milliseconds(1));
    const bench::JobCost cost = camera.exportFile();
    std::printf(
        "1 ms an answer, %s: %d features in %.3f s after opening (target: 380 in 0.25 s), %llu requests\n",
        qPrintable(QFileInfo(description).completeBaseName()), camera.exportedFile().features, cost.seconds,
        static_cast<unsigned long long>(cost.requests));
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("KX_DESCRIPTION_CACHE", "off"); // what is counted is a camera that nobody knows
    const QStringList descriptions = bench::realDescriptions();
    if (argc == 1 && !descriptions.empty()) {
        const QCoreApplication application(argc, argv);
        if (!qEnvironmentVariableIsSet("IE_BENCH_LOG"))
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        printTable(descriptions);
        for (const QString& description : descriptions)
            printSlowLine(description);
        return 0;
    }
    int down[2], up[2];
    if (pipe(down) != 0 || pipe(up) != 0)
        return 1;
    if (fork() == 0) {
        close(down[1]);
        runCamera(argc > 1 ? argv[1] : nullptr, down[0], up[1]);
    }
    close(up[1]);
    char ready = 0;
    if (read(up[0], &ready, 1) != 1 || ready != 'r')
        return 1;

    QCoreApplication application(argc, argv);
    rusage before;
    getrusage(RUSAGE_SELF, &before);
    QTemporaryDir folder;
    StructDeviceInfo device;
    device.nDeviceID = 1;
    device.stDeviceInfo = deviceInfo();
    QOperateThread worker;
    if (!qEnvironmentVariableIsSet("IE_BENCH_LOG"))
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    worker.SetXmlExportJob(device, folder.path());
    QElapsedTimer timer;
    timer.start();
    worker.start(QThread::InheritPriority);
    worker.wait();
    const qint64 elapsed = timer.nsecsElapsed();
    rusage after;
    getrusage(RUSAGE_SELF, &after);

    close(down[1]);
    emu::Counters counters;
    if (read(up[0], &counters, sizeof counters) != sizeof counters)
        return 1;
    wait(nullptr);

    QFile file(folder.filePath("Bench_1.fpk"));
    if (!file.open(QIODevice::ReadOnly)) {
        std::puts("the export wrote no file");
        return 1;
    }
    const QByteArray text = file.readAll();
    const int plain = text.count("<Feature>"), complex = text.count("<ComplexFeature "),
              lines = text.count("<RegValue ");
    std::printf(
        "%d plain and %d complex features (%d register lines), %llu requests: %.2f per feature or line\n",
        plain, complex, lines, static_cast<unsigned long long>(counters.requests()),
        double(counters.requests()) / std::max(1, plain + lines));
    std::printf("%.3f s, %.1f us per request\n", double(elapsed) / 1e9,
                double(elapsed) / 1e3 / double(counters.requests()));
    std::printf("peak memory %.1f MB, %.1f MB above the start (target: under 120 MB)\n",
                double(after.ru_maxrss) / 1024, double(after.ru_maxrss - before.ru_maxrss) / 1024);
}
