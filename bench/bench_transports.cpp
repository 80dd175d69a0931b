// One export of the emulator's own camera over each transport: requests and time for each feature, beside
// GigE Vision. The description is known already; opening and closing count.
#include "camera_emulator/EmulatedCamera.h"
#include "camera_emulator/GrabberCamera.h"
#include "camera_emulator/SerialCamera.h"
#include "jobs/worker/QOperateThread.h"
#ifdef IE_BENCH_USB
#include "camera_emulator/Usb3Camera.h"
#include "support/UsbStage.h"
#endif

#include "Measure.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <memory>

namespace
{

constexpr char kAddress[] = "127.0.73.3";

struct Line
{
    const char* name;
    std::unique_ptr<emu::Shell> camera;
};

std::vector<Line> lines(const QTemporaryDir& folder)
{
    const auto config = [](const char* serial) {
        emu::CameraConfig one;
        one.serial = serial;
        one.address = kAddress;
        return one;
    };
    const auto path = [&](const char* name) { return folder.filePath(name).toStdString(); };
    emu::SerialConfig fast;
    fast.link = path("fast");
    emu::SerialConfig slow;
    slow.link = path("slow");
    slow.isPaced = true;
    slow.supported = 0x1F; // up to 115,200 baud
    emu::GrabberConfig grabber;
    grabber.socket = path("grabber");
    std::vector<Line> all;
    all.push_back({"GigE Vision", std::make_unique<emu::EmulatedCamera>(config("gige"))});
    all.push_back({"GenTL", std::make_unique<emu::GrabberCamera>(config("gentl"), grabber)});
#ifdef IE_BENCH_USB
    static tests::UsbStage stage;
    all.push_back(
        {"USB3 Vision", std::make_unique<emu::Usb3Camera>(config("usb3"), emu::Usb3Config(), stage)});
#endif
    all.push_back({"terminal, as fast as it is", std::make_unique<emu::SerialCamera>(config("fast"), fast)});
    all.push_back({"terminal at 115,200 baud", std::make_unique<emu::SerialCamera>(config("slow"), slow)});
    qputenv("KX_CAMERA_ADDRESSES", kAddress);
    qputenv("KX_CAMERA_SERIAL_PORTS", (fast.link + "," + slow.link).c_str());
    qputenv("GENICAM_GENTL64_PATH", IE_BENCH_PRODUCERS);
    qputenv("CAMERA_EMULATOR_GENTL", grabber.socket.c_str());
    return all;
}

std::string serialOf(const KX_DeviceInfo& info)
{
    const uint8_t* const field = info.transportType == KX_TRANSPORT_GIGE ? info.special.gige.serialNumber
                                 : info.transportType == KX_TRANSPORT_USB3
                                     ? info.special.usb3.serialNumber
                                     : info.special.cameraLink.serialNumber;
    return reinterpret_cast<const char*>(field);
}

bool findRecord(const std::string& serial, StructDeviceInfo& record)
{
    KX_DeviceEntry entries[16];
    uint32_t count = 0;
    KX_CC_EnumDevices(KX_TRANSPORT_ALL, entries, 16, &count);
    for (uint32_t i = 0; i < count; ++i)
        if (serialOf(entries[i].info) == serial) {
            record.nDeviceID = 1;
            record.stDeviceInfo = entries[i].info;
            return true;
        }
    return false;
}

int featuresOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = file.readAll();
    return text.count("<Feature>") + text.count("<ComplexFeature ");
}

void exportInto(const StructDeviceInfo& record, const QString& folder)
{
    QOperateThread worker;
    worker.SetXmlExportJob(record, folder);
    worker.start();
    worker.wait();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (!qEnvironmentVariableIsSet("IE_BENCH_LOG"))
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    qputenv("KX_DESCRIPTION_CACHE", "off");
    qputenv("KX_CAMERA_INTERFACES", "none");
    qunsetenv("CLSERIALPATH");
    qunsetenv("KX_CAMERA_USB");
    QTemporaryDir folder;
    std::printf("%-28s %8s %9s %8s %9s %9s\n", "transport", "features", "requests", "each", "us each",
                "to GigE");
    double gige = 0;
    for (const Line& line : lines(folder)) {
        StructDeviceInfo record;
        const std::string serial = line.camera->config().serial;
        if (!line.camera->start() || !findRecord(serial, record)) {
            std::printf("%-28s is not found\n", line.name);
            continue;
        }
        exportInto(record, folder.path());
        const int features = featuresOf(folder.filePath(("EMU-1_" + serial + ".fpk").c_str()));
        const uint64_t before = line.camera->counters().requests();
        exportInto(record, folder.path());
        const uint64_t requests = line.camera->counters().requests() - before;
        const double seconds = bench::medianSeconds([&] { exportInto(record, folder.path()); });
        if (gige == 0)
            gige = seconds;
        std::printf("%-28s %8d %9llu %8.2f %9.0f %9.1f\n", line.name, features,
                    static_cast<unsigned long long>(requests), double(requests) / features,
                    seconds * 1e6 / features, seconds / gige);
        line.camera->stop();
    }
}
