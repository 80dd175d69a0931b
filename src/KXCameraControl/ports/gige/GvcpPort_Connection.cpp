// How a camera is opened, kept and given back.
#include "KXCameraControl/ports/gige/GvcpPort.h"

#include "KXCameraControl/ports/Fields.h"

#include <algorithm>

namespace kx
{

using namespace gvcp;
using std::chrono::milliseconds;

namespace
{

constexpr uint32_t kDefaultHeartbeatTimeout = 3000; // ms, the standard's
constexpr milliseconds kShortestBeat{20};
constexpr milliseconds kLongestBeat{1000};
constexpr unsigned kReleaseTries = 3; // within the time of one

uint32_t privilegeOf(uint32_t accessMode)
{
    switch (accessMode) {
    case KX_ACCESS_EXCLUSIVE:
        return kPrivilegeExclusive;
    case KX_ACCESS_CONTROL:
        return kPrivilegeControl;
    default:
        return 0;
    }
}

} // namespace

KX_Status GvcpPort::open(uint32_t accessMode, uint16_t switchOverKey)
{
    if (isOpen())
        return fail(KX_E_CALL_ORDER, "the camera is open already");
    if (accessMode != KX_ACCESS_MONITOR && privilegeOf(accessMode) == 0)
        return fail(KX_E_PARAMETER, "unknown access mode " + std::to_string(accessMode));
    const KX_Status status = connectAndTake(accessMode, switchOverKey);
    if (status != KX_OK)
        close();
    return status;
}

KX_Status GvcpPort::connectAndTake(uint32_t accessMode, uint16_t switchOverKey)
{
    if (m_device.ipAddress == 0) // to the system: this host
        return fail(KX_E_NO_DEVICE, "the device information has no address");
    std::string error;
    KX_Status status = m_channel.open(m_device.ipAddress, m_device.interfaceAddress, error);
    if (status != KX_OK)
        return fail(status, error);
    status = findCamera();
    if (status == KX_OK && accessMode != KX_ACCESS_MONITOR)
        status = takeControl(privilegeOf(accessMode), switchOverKey);
    milliseconds interval{0};
    if (status == KX_OK)
        status = readAbilities(interval);
    if (status == KX_OK && m_privilege != 0)
        m_control.start(
            interval, [this] { return beat(); }, [this](KX_Status reason) { tellLoss(reason); });
    return status;
}

// Addresses move between cameras: the one that answers has to be the one that was chosen.
KX_Status GvcpPort::findCamera()
{
    const std::string address = formatAddress(m_device.ipAddress);
    const GvcpAnswer answer = m_channel.request(
        encodeDiscovery(0), [](const Bytes& payload) { return parseDiscovery(payload).has_value(); },
        timeouts());
    if (answer.status == KX_E_NO_ANSWER)
        return fail(KX_E_NO_DEVICE, "nobody answers at " + address);
    if (answer.status != KX_OK)
        return fail(answer.status, answer.text);
    const Discovery found = *parseDiscovery(answer.payload);
    const std::string serial = textField(m_device.serialNumber);
    // The field of the device information is one byte shorter than the register, for its terminating zero.
    if (!serial.empty() && serial != found.serialNumber.substr(0, sizeof m_device.serialNumber - 1))
        return fail(KX_E_NO_DEVICE, "the camera at " + address + " has the serial number " +
                                        found.serialNumber + " instead of " + serial);
    const bool hasMac = m_device.macHigh != 0 || m_device.macLow != 0;
    if (hasMac && (m_device.macHigh != found.macHigh || m_device.macLow != found.macLow))
        return fail(KX_E_NO_DEVICE, "the camera at " + address + " has another MAC address");
    m_isBigEndian = found.isBigEndian;
    m_version = found.version;
    m_macLow = found.macLow;
    m_names = {found.manufacturer, found.model, found.deviceVersion};
    return KX_OK;
}

KX_Status GvcpPort::takeControl(uint32_t privilege, uint16_t switchOverKey)
{
    // GigE Vision 2.x: the key of a switch-over stands in the upper half of the register.
    const GvcpAnswer answer = writeControl(uint32_t(switchOverKey) << 16 | privilege, timeouts());
    if (answer.refusal == AccessDenied)
        return fail(KX_E_CONTROL_REFUSED, answer.text);
    if (answer.status != KX_OK)
        return fail(answer.status, answer.text);
    m_privilege = privilege;
    return KX_OK;
}

// A register that the camera does not have counts as `fallback`.
KX_Status GvcpPort::readAbility(uint32_t address, uint32_t fallback, uint32_t& value)
{
    const KX_Status status = readRegister(address, value);
    if (status != KX_E_GC_ACCESS)
        return status;
    value = fallback;
    return KX_OK;
}

KX_Status GvcpPort::readAbilities(milliseconds& heartbeatInterval)
{
    uint32_t capabilities = 0;
    KX_Status status = readAbility(RegCapabilities, 0, capabilities);
    m_registersPerRequest =
        (capabilities & kCapabilityConcatenation) != 0 ? kMaxReadRegisters - 2 : 1; // see readFramed()
    if (status != KX_OK || m_privilege == 0)
        return status;
    uint32_t heartbeat = 0;
    status = readAbility(RegHeartbeatTimeout, kDefaultHeartbeatTimeout, heartbeat);
    heartbeatInterval = std::clamp(milliseconds(heartbeat / 3), kShortestBeat, kLongestBeat);
    return status;
}

void GvcpPort::close()
{
    if (!m_channel.isOpen())
        return;
    m_channel.interrupt();
    m_control.stop();
    m_channel.resume();
    // A camera that has vanished must not hold up whoever leaves it; it drops our control by itself. One that
    // has only lost the packet must not keep it, or it refuses who opens it next, for seconds.
    if (m_privilege != 0 && !m_control.isLost())
        writeControl(0, {timeouts().perTry / int(kReleaseTries), kReleaseTries, milliseconds(0)});
    m_control.reset();
    m_privilege = 0;
    m_channel.close();
}

GvcpAnswer GvcpPort::readControl()
{
    const auto isOneWord = [](const Bytes& payload) { return payload.size() == 4; };
    return m_channel.request(encodeReadRegisters(0, {RegControlPrivilege}), isOneWord, timeouts());
}

GvcpAnswer GvcpPort::writeControl(uint32_t value, const PortTimeouts& patience)
{
    const auto isWriteAck = [](const Bytes& payload) { return payload.size() == 4; };
    return m_channel.request(encodeWriteRegisters(0, {{RegControlPrivilege, value}}), isWriteAck, patience);
}

// KX_OK: control is ours. KX_E_CONNECTION_LOST: it is not. Others: the camera did not say.
// Reading comes first, as writing would take back what was given up in the meantime, without a word of what
// another host may have changed. Reading alone does not tell whose control it is: only a write of ours is
// refused then.
GvcpAnswer GvcpPort::checkControl()
{
    const std::string camera = "the camera at " + formatAddress(m_device.ipAddress);
    GvcpAnswer answer = readControl();
    const uint32_t held = answer.status == KX_OK ? get32(answer.payload.data()) : m_privilege;
    if ((held & (kPrivilegeExclusive | kPrivilegeControl)) == 0)
        return {KX_E_CONNECTION_LOST, Success, {}, camera + " has ended our control"};
    const bool isOurs = (held & m_privilege) != 0;
    if (answer.status == KX_OK && isOurs)
        answer = writeControl(m_privilege, timeouts());
    if (answer.refusal == AccessDenied || !isOurs)
        return {KX_E_CONNECTION_LOST, Success, {}, "another host has taken control of " + camera};
    return answer;
}

// The camera denies access to one register, or to a host that has no control any more.
KX_Status GvcpPort::judgeAccessDenied(const GvcpAnswer& denied)
{
    if (m_privilege == 0)
        return readControl().refusal == AccessDenied
                   ? fail(KX_E_CONTROL_REFUSED, "another host has exclusive control; " + denied.text)
                   : fail(KX_E_GC_ACCESS, denied.text);
    const GvcpAnswer control = checkControl();
    if (control.status == KX_OK)
        return fail(KX_E_GC_ACCESS, denied.text);
    if (control.status == KX_E_CONNECTION_LOST)
        loseConnection(control);
    return fail(control.status, control.text);
}

void GvcpPort::loseConnection(const GvcpAnswer& reason)
{
    {
        const std::lock_guard lock(m_mutex);
        m_lossText = reason.text;
    }
    m_control.reportLoss(reason.status);
}

void GvcpPort::beat()
{
    const GvcpAnswer control = checkControl();
    // A camera that is busy or odd may be better at the next beat.
    if (control.status == KX_E_CONNECTION_LOST || control.status == KX_E_NO_ANSWER ||
        control.status == KX_E_NETWORK)
        loseConnection(control);
}

void GvcpPort::tellLoss(KX_Status reason)
{
    const std::lock_guard lock(m_handlerMutex);
    if (m_handler)
        m_handler(reason);
}

} // namespace kx
