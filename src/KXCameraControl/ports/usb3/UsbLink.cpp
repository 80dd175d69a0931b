#include "KXCameraControl/ports/usb3/UsbLink.h"

#include "KXCameraControl/ports/Fields.h"
#include "KXCameraControl/ports/usb3/UsbNodes.h"

#include <algorithm>
#include <cstring>
#include <thread>

namespace kx
{

using namespace gencp;
using std::chrono::milliseconds;

namespace
{

// Long enough for the system to find out that what looks like noise is a pulled cable.
constexpr milliseconds kFaultPause{60};

bool mayBe(const KX_Usb3DeviceInfo& wanted, const UsbCamera& camera)
{
    return camera.vendorId == wanted.vendorId && camera.productId == wanted.productId;
}

// Cameras are known by their GUID wherever they hang; one that told none, by where it hangs.
bool isIt(const KX_Usb3DeviceInfo& wanted, const UsbCamera& camera, libusb_device_handle* handle)
{
    const std::string guid = textField(wanted.guid);
    if (guid.empty())
        return usbLocation(camera.device.get()) == textField(wanted.location);
    KX_Usb3DeviceInfo found{};
    putIdentifier(found.guid, UsbTexts(handle).of(camera.guidText));
    return textField(found.guid) == guid;
}

} // namespace

KX_Status UsbLink::fail(KX_Status status, std::string text)
{
    m_errorText = std::move(text);
    return status;
}

KX_Status UsbLink::open()
{
    close();
    m_context = newUsbContext();
    KX_Status status = fail(KX_E_NO_DEVICE, "no USB camera has the record's GUID or hangs where it says");
    if (!m_context)
        return fail(KX_E_NO_DEVICE, "there is no USB here");
    for (UsbCamera& camera : usbCameras(m_context.get())) {
        if (!mayBe(m_wanted, camera))
            continue;
        libusb_device_handle* raw = nullptr;
        const int code = libusb_open(camera.device.get(), &raw);
        UsbHandle handle(raw);
        if (code == 0 && isIt(m_wanted, camera, raw))
            return take(std::move(camera), std::move(handle));
        if (isUsbOpeningRefused(code))
            status = fail(KX_E_NETWORK, mayNotOpenText(camera));
        else if (isUsbInUse(code))
            status = fail(KX_E_CONTROL_REFUSED,
                          "USB " + usbLocation(camera.device.get()) + ": another program uses the camera");
    }
    return status;
}

KX_Status UsbLink::take(UsbCamera camera, UsbHandle handle)
{
    m_camera = std::move(camera);
    const int code = claimInterface(handle.get(), m_camera.interfaceNumber, m_patience);
    if (code == LIBUSB_ERROR_BUSY)
        return fail(KX_E_CONTROL_REFUSED, name() + ": another program uses the camera");
    if (code != 0)
        return fail(code == LIBUSB_ERROR_NO_DEVICE ? KX_E_NO_DEVICE : KX_E_NETWORK,
                    name() + ": " + libusb_strerror(static_cast<libusb_error>(code)));
    m_handle = std::move(handle);
    // Whoever had it before may have left in the middle of a transfer.
    libusb_clear_halt(m_handle.get(), m_camera.out.address);
    libusb_clear_halt(m_handle.get(), m_camera.in.address);
    return KX_OK;
}

void UsbLink::close()
{
    if (m_handle)
        libusb_release_interface(m_handle.get(), m_camera.interfaceNumber);
    m_handle.reset();
    m_camera = {};
    m_context.reset();
}

std::string UsbLink::name() const
{
    return m_camera.device ? "USB " + usbLocation(m_camera.device.get()) : "USB";
}

UsbPlace UsbLink::place() const
{
    return {libusb_get_bus_number(m_camera.device.get()), libusb_get_device_address(m_camera.device.get())};
}

GenCpLink::Outcome UsbLink::send(const Bytes& packet, Clock::time_point deadline)
{
    Bytes bytes(std::begin(kUsbPrefix), std::end(kUsbPrefix));
    bytes.insert(bytes.end(), packet.begin(), packet.end());
    size_t done = 0;
    return transfer(m_camera.out, bytes.data(), bytes.size(), done, deadline);
}

// A transfer of less than whole packets overflows as soon as the device sends more; one that is longer than
// an answer of whole packets does not end with it, unless the camera sends an empty packet behind.
GenCpLink::Outcome UsbLink::receive(Bytes& packet, Clock::time_point deadline)
{
    const size_t unit = m_camera.in.packetSize;
    Bytes bytes((std::max(m_expected, unit) + unit - 1) / unit * unit);
    size_t done = 0;
    const Outcome outcome = transfer(m_camera.in, bytes.data(), bytes.size(), done, deadline);
    if (outcome != Outcome::Done)
        return outcome;
    if (done < sizeof kUsbPrefix || std::memcmp(bytes.data(), kUsbPrefix, sizeof kUsbPrefix) != 0)
        return Outcome::Malformed;
    packet.assign(bytes.begin() + sizeof kUsbPrefix, bytes.begin() + static_cast<std::ptrdiff_t>(done));
    return Outcome::Done;
}

GenCpLink::Outcome UsbLink::transfer(const UsbEndpoint& endpoint, uint8_t* data, size_t size, size_t& done,
                                     Clock::time_point deadline)
{
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) // libusb takes 0 for ever
        return Outcome::TimedOut;
    int count = 0;
    const int code = libusb_bulk_transfer(m_handle.get(), endpoint.address, data, static_cast<int>(size),
                                          &count, static_cast<unsigned>(left));
    done = static_cast<size_t>(count);
    if (code == LIBUSB_ERROR_PIPE) {
        libusb_clear_halt(m_handle.get(), endpoint.address);
        return Outcome::TimedOut; // the camera would not: worth another try, and nothing to wait for
    }
    return judge(code);
}

GenCpLink::Outcome UsbLink::judge(int code)
{
    switch (code) {
    case 0:
        return Outcome::Done;
    case LIBUSB_ERROR_TIMEOUT:
        return Outcome::TimedOut;
    case LIBUSB_ERROR_OVERFLOW:
        return Outcome::Malformed;
    case LIBUSB_ERROR_NO_DEVICE:
        return Outcome::Gone;
    case LIBUSB_ERROR_IO:
        std::this_thread::sleep_for(kFaultPause);
        return Outcome::TimedOut;
    default:
        m_errorText = name() + ": " + libusb_strerror(static_cast<libusb_error>(code));
        return Outcome::Failed;
    }
}

} // namespace kx
