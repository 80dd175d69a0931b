#include "KXCameraControl/ports/gige/DiscoveryAnswers.h"

#include "KXCameraControl/ports/Fields.h"

#include <cstdio>

namespace kx
{

using namespace gvcp;

std::optional<KX_DeviceEntry> entryFrom(const AckPacket& ack, uint16_t id, uint32_t address,
                                        const Route& route)
{
    if (ack.id != id || ack.command != DiscoveryAck || ack.status != Success)
        return std::nullopt;
    const auto answer = parseDiscovery(ack.payload);
    if (!answer)
        return std::nullopt;
    KX_DeviceEntry entry = newEntry(KX_TRANSPORT_GIGE);
    KX_GigEDeviceInfo& gige = entry.info.special.gige;
    gige.macHigh = answer->macHigh;
    gige.macLow = answer->macLow;
    putText(gige.modelName, answer->model);
    putText(gige.serialNumber, answer->serialNumber);
    putText(gige.userDefinedName, answer->userName);
    putText(gige.manufacturerName, answer->manufacturer);
    putText(gige.deviceVersion, answer->deviceVersion);
    gige.ipAddress = address;
    gige.interfaceAddress = route.localAddress;
    entry.availability = KX_AVAILABILITY_UNREACHABLE;
    entry.interfaceMask = route.mask;
    std::snprintf(entry.interfaceName, sizeof entry.interfaceName, "%s", route.name.c_str());
    return entry;
}

std::optional<uint32_t> availabilityFrom(const AckPacket& ack)
{
    if (ack.status == Busy || ack.command == PendingAck)
        return std::nullopt;
    // Exclusive control by another host forbids even this.
    if (ack.status == AccessDenied)
        return KX_AVAILABILITY_IN_USE;
    const auto values = parseRegisterValues(ack.payload, 1);
    if (ack.status != Success || ack.command != ReadRegAck || !values)
        return KX_AVAILABILITY_UNREACHABLE;
    const bool isControlled = ((*values)[0] & (kPrivilegeExclusive | kPrivilegeControl)) != 0;
    return isControlled ? KX_AVAILABILITY_IN_USE : KX_AVAILABILITY_FREE;
}

std::optional<uint32_t> shownValue(const AckPacket& ack, uint16_t id)
{
    if (ack.id != id || ack.status == Busy || ack.command == PendingAck)
        return std::nullopt;
    const auto values = parseRegisterValues(ack.payload, 1);
    return ack.status == Success && ack.command == ReadRegAck && values ? (*values)[0] : 0;
}

} // namespace kx
