#include "RealCamera.h"

#include "companion/RealSeed.h"
#include "jobs/file/FeaturesFile.h"
#include "support/LoopbackAddress.h"
#include "support/OwnDescription.h"

#include <QDir>
#include <QFile>

#include <cstdlib>
#include <cstring>

namespace bench
{

namespace
{

using Clock = std::chrono::steady_clock;

emu::CameraConfig configOf(const QString& description, std::chrono::milliseconds latency)
{
    emu::CameraConfig config;
    config.address = tests::freshLoopbackAddress();
    config.model = "Bench";
    config.serial = "1";
    config.latency = latency;
    config.descriptionFile = description.toStdString();
    QFile file(description);
    tests::OwnDescription own;
    if (file.open(QIODevice::ReadOnly) && own.index.index(QString::fromUtf8(file.readAll())))
        config.seed = tests::seedFor(own.nodes).toStdString();
    return config;
}

} // namespace

QStringList realDescriptions()
{
    const QDir folder(qEnvironmentVariable("KX_DESCRIPTIONS"));
    QStringList paths;
    if (qEnvironmentVariableIsSet("KX_DESCRIPTIONS"))
        for (const QString& name : folder.entryList({"*.xml"}, QDir::Files, QDir::Name))
            paths += folder.filePath(name);
    return paths;
}

RealCamera::RealCamera(const QString& description, std::chrono::milliseconds latency)
    : m_camera(configOf(description, latency))
{
    const emu::StartResult started = m_camera.start();
    if (!started)
        std::fprintf(stderr, "%s\n", started.message.c_str());
    m_device.nDeviceID = 1;
    m_device.stDeviceInfo.transportType = KX_TRANSPORT_GIGE;
    m_device.stDeviceInfo.layout = KX_DEVICE_INFO_LAYOUT;
    KX_GigEDeviceInfo& gige = m_device.stDeviceInfo.special.gige;
    std::strcpy(reinterpret_cast<char*>(gige.modelName), "Bench");
    gige.ipAddress = ntohl(::inet_addr(m_camera.config().address.c_str()));
    KX_CC_SetCallObserver(nullptr, watch, this);
}

RealCamera::~RealCamera()
{
    KX_CC_SetCallObserver(nullptr, nullptr, nullptr);
}

int RealCamera::watch(void* self, const KX_CallEvent* event)
{
    auto* const camera = static_cast<RealCamera*>(self);
    if (event->operation == KX_OP_OPEN && event->finished) {
        camera->m_atOpen = camera->asked();
        camera->m_openAt = Clock::now();
    }
    return 0;
}

uint64_t RealCamera::asked() const
{
    const emu::Counters counters = m_camera.counters();
    return counters.requests() - counters.controlRequests;
}

JobCost RealCamera::run()
{
    const uint64_t before = asked();
    m_worker.start();
    m_worker.wait();
    JobCost cost;
    cost.opening = m_atOpen - before;
    cost.requests = asked() - m_atOpen;
    cost.seconds = std::chrono::duration<double>(Clock::now() - m_openAt).count();
    cost.error = m_worker.ErrorCode();
    return cost;
}

QString RealCamera::path() const
{
    return m_folder.filePath("Bench_.fpk");
}

JobCost RealCamera::exportFile()
{
    m_worker.SetXmlExportJob(m_device, m_folder.path());
    return run();
}

JobCost RealCamera::importFile()
{
    m_worker.SetXmlImportJob(m_device, path());
    return run();
}

ExportedFile RealCamera::exportedFile() const
{
    QFile file(path());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray text = file.readAll();
    const int plain = text.count("<Feature>");
    return {plain + text.count("<ComplexFeature "), plain + text.count("<RegValue ")};
}

// Only numbers that the camera takes back as they are: others are an import's failures, not its changes.
int RealCamera::changeNumbers(int count)
{
    std::vector<std::pair<std::string, int64_t>> settable;
    KX_HANDLE handle = nullptr;
    KX_CC_CreateHandle(&handle, &m_device.stDeviceInfo);
    KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0);
    const ie::LoadedFile file = ie::loadFeaturesFile(path());
    for (const auto& entry : ie::readFeatures(file.document.documentElement()).entries) {
        const std::string name = entry.plain.name.toStdString();
        KX_IntegerValue value{};
        const bool isNumber = !entry.isComplex && entry.plain.type.startsWith("Int") && m_camera.node(name);
        if (isNumber && KX_CC_GetIntValueEx(handle, name.c_str(), &value) == KX_OK &&
            value.current + value.increment <= value.maximum &&
            KX_CC_SetIntValueEx(handle, name.c_str(), value.current) == KX_OK)
            settable.emplace_back(name, value.current + value.increment);
    }
    const auto all = int(settable.size());
    int changed = 0;
    for (int i = 0; i < std::min(count, all); ++i) {
        const auto& [name, value] = settable[size_t(i) * size_t(all) / size_t(std::min(count, all))];
        changed += KX_CC_SetIntValueEx(handle, name.c_str(), value) == KX_OK;
    }
    KX_CC_DestroyHandle(handle);
    return changed;
}

uint64_t RealCamera::toolRequests()
{
    const uint64_t before = asked();
    const std::string command = "arv-tool-0.8 -a " + m_camera.config().address + " values > /dev/null 2>&1";
    return std::system(command.c_str()) == 0 ? asked() - before : 0;
}

} // namespace bench
