#include "KXCameraControl/ports/gentl/GenTlDiscovery.h"

#include "KXCameraControl/ports/Beside.h"
#include "KXCameraControl/ports/Fields.h"
#include "KXCameraControl/ports/Stamp.h"
#include "KXCameraControl/ports/gentl/GenTlDevices.h"
#include "KXCameraControl/ports/gentl/GenTlPort.h"
#include "KXCameraControl/ports/gentl/GenTlSettings.h"
#include "KXCameraControl/ports/gentl/HostedSearches.h"
#include "KXCameraControl/ports/gentl/MakersLibraries.h"

#include <cstdio>

namespace kx
{

namespace
{

constexpr uint32_t kGrown = 256 * 1024; // KiB of a helper that nobody has a camera open in

HostReply look(const std::string& producer, std::vector<GenTlDevice>& devices)
{
    HostReply reply;
    uint32_t memory = 0;
    if (const auto link = openConfigured(producer, nullptr, reply)) {
        reply = lookBehind(*link, devices);
        memory = link->memory();
    }
    rememberSearch(producer, reply);
    if (memory > kGrown)
        retireHost(producer);
    return reply;
}

std::vector<KX_DeviceEntry> entriesOf(const std::string& producer)
{
    std::vector<GenTlDevice> devices;
    if (!restsFromSearches(producer))
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
        searches.push_back(std::async(beside, entriesOf, producer));
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
    if (!producer.empty() && !restsFromSearches(producer))
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
    return record.special.cameraLink.deviceId[0] != 0;
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
    for (const std::string& producer : gentlProducers()) {
        for (const std::string& problem : settingsProblems(producer))
            problems.push_back(problem);
        const std::string problem = searchProblem(Hosted::Producer, producer);
        if (!problem.empty())
            problems.push_back(problem);
    }
    return problems;
}

Transport gentlTransport()
{
    return {KX_TRANSPORT_CAMERA_LINK, findGenTlCameras, gentlAvailability, gentlController, newGenTlPort,
            serialNumberOf,           gentlPlace,       gentlStamp,        isGenTl,         gentlProblems};
}

} // namespace kx
