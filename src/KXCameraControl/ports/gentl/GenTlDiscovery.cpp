#include "KXCameraControl/ports/gentl/GenTlDiscovery.h"

#include "KXCameraControl/ports/Fields.h"
#include "KXCameraControl/ports/Stamp.h"
#include "KXCameraControl/ports/gentl/GenTlDevices.h"
#include "KXCameraControl/ports/gentl/GenTlPort.h"
#include "KXCameraControl/ports/gentl/GenTlSettings.h"
#include "KXCameraControl/ports/gentl/Producers.h"

#include <cstdio>
#include <future>
#include <map>
#include <mutex>

namespace kx
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kRest{30};
constexpr uint32_t kGrown = 256 * 1024; // KiB of a helper that nobody has a camera open in

struct LastSearch
{
    std::string problem;
    Clock::time_point restsUntil;
};

// What came of the last searches. Never destroyed: threads may outlive main.
struct Searches
{
    std::mutex mutex;
    std::map<std::string, LastSearch> byProducer;
};

Searches& searches()
{
    static auto* const instance = new Searches;
    return *instance;
}

bool isResting(const std::string& producer)
{
    Searches& all = searches();
    const std::lock_guard lock(all.mutex);
    const auto last = all.byProducer.find(producer);
    return last != all.byProducer.end() && Clock::now() < last->second.restsUntil;
}

void remember(const std::string& producer, const HostReply& reply)
{
    Searches& all = searches();
    const std::lock_guard lock(all.mutex);
    LastSearch& last = all.byProducer[producer];
    last.problem = reply.text;
    last.restsUntil = reply.status == KX_OK ? Clock::time_point() : Clock::now() + kRest;
}

HostReply look(const std::string& producer, std::vector<GenTlDevice>& devices)
{
    HostReply reply;
    uint32_t memory = 0;
    if (const auto link = openConfigured(producer, nullptr, reply)) {
        reply = lookBehind(*link, devices);
        memory = link->memory();
    }
    remember(producer, reply);
    if (memory > kGrown)
        retireHost(producer);
    return reply;
}

std::vector<KX_DeviceEntry> entriesOf(const std::string& producer)
{
    std::vector<GenTlDevice> devices;
    if (!isResting(producer))
        look(producer, devices);
    std::vector<KX_DeviceEntry> entries;
    for (const GenTlDevice& device : devices) {
        KX_DeviceEntry entry = newEntry(KX_TRANSPORT_CAMERA_LINK);
        entry.info = recordOf(producer, device);
        entry.availability = availabilityOf(device);
        std::snprintf(entry.interfaceName, sizeof entry.interfaceName, "%s", device.interfaceName.c_str());
        entries.push_back(entry);
    }
    return entries;
}

// What a producer has against it is no failure of the search: gentlProblems() tells of it.
KX_Status findGenTlCameras(std::vector<KX_DeviceEntry>& entries)
{
    std::vector<std::future<std::vector<KX_DeviceEntry>>> searches;
    for (const std::string& producer : gentlProducers())
        searches.push_back(std::async(std::launch::async, entriesOf, producer));
    for (auto& search : searches)
        for (const KX_DeviceEntry& entry : search.get())
            entries.push_back(entry);
    return KX_OK;
}

KX_Status gentlAvailability(const KX_DeviceInfo& record, uint32_t& availability)
{
    availability = KX_AVAILABILITY_UNREACHABLE;
    const std::string producer = producerOf(record);
    std::vector<GenTlDevice> devices;
    if (!producer.empty() && !isResting(producer))
        look(producer, devices);
    if (const auto device = deviceOf(record, producer, devices))
        availability = availabilityOf(*device);
    return KX_OK;
}

// GenTL tells that somebody has a device, not who.
KX_Status gentlController(const KX_DeviceInfo&, KX_Controller&)
{
    return KX_E_NOT_SUPPORTED;
}

std::unique_ptr<Port> newGenTlPort(const KX_DeviceInfo& record)
{
    return std::make_unique<GenTlPort>(record);
}

bool isGenTl(const KX_DeviceInfo& record)
{
    return record.special.cameraLink.producerId[0] != 0;
}

std::string serialNumberOf(const KX_DeviceInfo& record)
{
    return textField(record.special.cameraLink.serialNumber);
}

std::string gentlPlace(const KX_DeviceInfo& record)
{
    const KX_CameraLinkDeviceInfo& info = record.special.cameraLink;
    return textField(info.portId) + "\n" + textField(info.producerId) + "\n" + textField(info.interfaceId) +
           "\n" + textField(info.deviceId);
}

// Producers come with software that is installed; what they find behind their grabbers they do not tell
// unasked.
uint32_t gentlStamp()
{
    const std::vector<std::string> producers = gentlProducers();
    Stamp stamp;
    for (const std::string& producer : producers)
        stamp.add(producer.c_str(), producer.size() + 1);
    return producers.empty() ? 0 : stamp.value();
}

} // namespace

std::vector<std::string> gentlProblems()
{
    std::vector<std::string> problems;
    Searches& all = searches();
    for (const std::string& producer : gentlProducers()) {
        const std::string unfit = producerFileProblem(producer);
        for (const std::string& problem : settingsProblems(producer))
            problems.push_back(problem);
        const std::lock_guard lock(all.mutex);
        const auto last = all.byProducer.find(producer);
        if (!unfit.empty())
            problems.push_back("The GenTL producer " + producer + " " + unfit + ".");
        else if (last != all.byProducer.end() && !last->second.problem.empty())
            problems.push_back(last->second.problem);
    }
    return problems;
}

Transport gentlTransport()
{
    return {KX_TRANSPORT_CAMERA_LINK, findGenTlCameras, gentlAvailability, gentlController, newGenTlPort,
            serialNumberOf,           gentlPlace,       gentlStamp,        isGenTl,         gentlProblems};
}

} // namespace kx
