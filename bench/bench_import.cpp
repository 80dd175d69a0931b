// Imports over UDP: camera-library calls and time per feature when nothing and when everything differs, eight
// cameras against one when each answer takes a millisecond, and, over all descriptions of KX_DESCRIPTIONS,
// requests when nothing and when twenty numbers differ.
// usage: bench_import [DESCRIPTION]...   (with descriptions: the requests over these alone)
#include "Measure.h"
#include "RealCamera.h"

#include "jobs/worker/QOperateThread.h"

#include "camera_emulator/EmulatedCamera.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <list>
#include <memory>
#include <vector>

namespace
{

constexpr uint32_t kValues = 0x100000;    // registers of the plain features
constexpr uint32_t kRegisters = 0x200000; // and of the complex ones

// `count` integers and as many registers of four bytes.
std::string description(int count)
{
    std::string list;
    std::string nodes;
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        const std::string place = "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>";
        list += "<pFeature>Value" + number + "</pFeature><pFeature>Block" + number + "</pFeature>";
        nodes += "<Integer Name=\"Value" + number + "\"><pValue>Reg" + number + "</pValue></Integer>" +
                 "<IntReg Name=\"Reg" + number + "\"><Address>" + std::to_string(kValues + 4u * unsigned(i)) +
                 "</Address>" + place + "<Endianess>BigEndian</Endianess></IntReg>" +
                 "<Register Name=\"Block" + number + "\"><Address>" +
                 std::to_string(kRegisters + 4u * unsigned(i)) + "</Address>" + place + "</Register>";
    }
    return "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" "
           "SchemaSubMinorVersion=\"0\" "
           "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\"><Category Name=\"Root\"><pFeature>All"
           "</pFeature></Category><Category Name=\"All\">" +
           list +
           "</Category><StringReg Name=\"DeviceFirmwareVersion\"><Address>0x10000</Address><Length>32"
           "</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></StringReg>" +
           nodes + "<Port Name=\"Device\"/></RegisterDescription>";
}

// Calls on the camera library, all cameras together.
std::atomic<int> g_reads{0};
std::atomic<int> g_writes{0};

int count(void*, const KX_CallEvent* event)
{
    const uint32_t operation = event->operation;
    if (event->finished &&
        ((operation >= KX_OP_GET_BOOL && operation <= KX_OP_GET_STRING) || operation == KX_OP_READ_MEMORY))
        ++g_reads;
    if (event->finished &&
        ((operation >= KX_OP_SET_BOOL && operation <= KX_OP_EXECUTE) || operation == KX_OP_WRITE_MEMORY))
        ++g_writes;
    return 0;
}

// A camera that answers, the file of its first export, and what imports that file.
class Line
{
public:
    Line(int number, int features, std::chrono::milliseconds latency) : m_features(features)
    {
        emu::CameraConfig config;
        config.address = "127.0.74." + std::to_string(number);
        config.model = "Bench";
        config.description = description(features);
        config.seed = R"({"nodes": {"DeviceFirmwareVersion": "1.0.0"}})";
        config.latency = latency;
        m_camera = std::make_unique<emu::EmulatedCamera>(config);
        const emu::StartResult started = m_camera->start();
        if (!started)
            std::fprintf(stderr, "%s\n", started.message.c_str());
        m_device.nDeviceID = number;
        m_device.stDeviceInfo.transportType = KX_TRANSPORT_GIGE;
        m_device.stDeviceInfo.layout = KX_DEVICE_INFO_LAYOUT;
        KX_GigEDeviceInfo& gige = m_device.stDeviceInfo.special.gige;
        std::strcpy(reinterpret_cast<char*>(gige.modelName), "Bench");
        gige.ipAddress = 0x7F004A00u + unsigned(number);
        m_worker.SetXmlExportJob(m_device, m_folder.path());
        m_worker.start();
        m_worker.wait();
        m_worker.SetXmlImportJob(m_device, m_folder.path() + "/Bench_.fpk");
    }

    void startImport() { m_worker.start(); }
    void wait() { m_worker.wait(); }

    // Another value in every register.
    void changeAll()
    {
        for (uint32_t i = 0; i < uint32_t(m_features); ++i) {
            m_camera->pokeWord(kValues + 4 * i, m_camera->peekWord(kValues + 4 * i) + 1);
            m_camera->pokeWord(kRegisters + 4 * i, m_camera->peekWord(kRegisters + 4 * i) + 1);
        }
    }
    bool isAsExported() const
    {
        const emu::Bytes zeros(size_t(m_features) * 4, 0);
        return m_camera->peek(kValues, zeros.size()) == zeros &&
               m_camera->peek(kRegisters, zeros.size()) == zeros;
    }

private:
    const int m_features;
    std::unique_ptr<emu::EmulatedCamera> m_camera;
    QTemporaryDir m_folder;
    StructDeviceInfo m_device;
    QOperateThread m_worker;
};

void import(std::list<Line>& lines)
{
    for (Line& line : lines)
        line.startImport();
    for (Line& line : lines)
        line.wait();
}

void measureCalls(int features)
{
    std::list<Line> lines;
    lines.emplace_back(1, features, std::chrono::milliseconds(0));
    const double all = 2.0 * features;

    g_reads = g_writes = 0;
    import(lines);
    std::printf(
        "%d features, nothing differs: %.2f reads (target: 1.00) and %.2f writes (target: 0) per feature\n",
        2 * features, g_reads / all, g_writes / all);
    const double seconds = bench::medianSeconds([&] { import(lines); });
    std::printf("    %.1f us per feature, opening included\n", seconds * 1e6 / all);

    lines.front().changeAll();
    g_reads = g_writes = 0;
    import(lines);
    std::printf(
        "%d features, everything differs: %.2f reads (target: at most 2.00) and %.2f writes per feature%s\n",
        2 * features, g_reads / all, g_writes / all,
        lines.front().isAsExported() ? "" : "; NOT ALL CAME BACK");
    const double changed = bench::medianSeconds([&] {
        lines.front().changeAll();
        import(lines);
    });
    std::printf("    %.1f us per feature, opening included\n", changed * 1e6 / all);
}

double secondsOfImport(int cameras)
{
    std::list<Line> lines;
    for (int i = 0; i < cameras; ++i)
        lines.emplace_back(10 + i, 100, std::chrono::milliseconds(1));
    return bench::medianSeconds([&] { import(lines); });
}

constexpr int kChanges = 20;
constexpr int kFewChanges = 5;

// Requests after opening: for each feature of the file, and for each that differs beyond those.
void printTable(const QStringList& descriptions)
{
    std::printf("%-26s %8s %6s %9s %8s %9s %8s\n", "description", "features", "lines", "unchanged", "each",
                "changed", "each");
    std::vector<double> each, more, few;
    for (const QString& description : descriptions) {
        bench::RealCamera camera(description);
        camera.exportFile();
        const bench::ExportedFile file = camera.exportedFile();
        if (file.features == 0)
            continue;        // no firmware version, no file
        camera.importFile(); // what a camera does not take back as it is settles first
        const uint64_t unchanged = camera.importFile().requests;
        const int changes = camera.changeNumbers(kChanges);
        const uint64_t changed = camera.importFile().requests;
        each.push_back(double(unchanged) / file.features);
        const double perChange = (double(changed) - double(unchanged)) / std::max(1, changes);
        (changes >= kFewChanges ? more : few).push_back(perChange);
        std::printf("%-26s %8d %6d %9llu %8.3f %5llu/%-3d %8.2f\n",
                    qPrintable(QFileInfo(description).completeBaseName()), file.features, file.lines,
                    static_cast<unsigned long long>(unchanged), each.back(),
                    static_cast<unsigned long long>(changed), changes, perChange);
    }
    if (each.empty())
        return;
    std::sort(each.begin(), each.end());
    std::printf(
        "unchanged, requests per feature: median %.3f (target: at most 0.10), worst %.3f (target: at most "
        "0.25)\n",
        each[each.size() / 2], each.back());
    const auto worst = [](const std::vector<double>& of) {
        return of.empty() ? 0.0 : *std::max_element(of.begin(), of.end());
    };
    std::printf(
        "requests more for each that differs: worst %.2f (target: at most 3); where fewer than %d do, "
        "what the first write makes old weighs more: worst %.2f\n",
        worst(more), kFewChanges, worst(few));
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("KX_DESCRIPTION_CACHE", "off"); // what is counted is a camera that nobody knows
    const QCoreApplication application(argc, argv);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    if (argc > 1) {
        printTable(application.arguments().mid(1));
        return 0;
    }
    KX_CC_SetCallObserver(nullptr, count, nullptr);
    measureCalls(1000);
    const double one = secondsOfImport(1);
    const double eight = secondsOfImport(8);
    std::printf(
        "1 ms an answer: one camera %.3f s, eight cameras %.3f s, ratio %.2f (target: at most 1.50)\n", one,
        eight, eight / one);
    printTable(bench::realDescriptions());
}
