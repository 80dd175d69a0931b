// One export over UDP: requests per exported feature, counted by the emulated camera, and peak memory.
// usage: bench_wire [FILE]   (default: the emulator's own description)
#include "jobs/worker/QOperateThread.h"

#include "camera_emulator/EmulatedCamera.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

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
    std::strcpy(reinterpret_cast<char*>(info.special.gige.modelName), "Bench");
    std::strcpy(reinterpret_cast<char*>(info.special.gige.serialNumber), "1");
    info.special.gige.ipAddress = 0x7F004901;
    return info;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("KX_DESCRIPTION_CACHE", "off"); // what is counted is a camera that nobody knows
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
