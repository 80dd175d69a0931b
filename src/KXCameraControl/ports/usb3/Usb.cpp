#include "KXCameraControl/ports/usb3/Usb.h"

#include "KXCameraControl/ports/usb3/UsbNodes.h"
#include "gencp/Usb3Vision.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace kx
{

using namespace gencp;
using std::chrono::milliseconds;

namespace
{

struct ConfigFree
{
    void operator()(libusb_config_descriptor* config) const { libusb_free_config_descriptor(config); }
};
using UsbConfig = std::unique_ptr<libusb_config_descriptor, ConfigFree>;

UsbConfig activeConfig(libusb_device* device)
{
    libusb_config_descriptor* config = nullptr;
    return UsbConfig(libusb_get_active_config_descriptor(device, &config) == 0 ? config : nullptr);
}

const libusb_interface_descriptor* controlInterface(const libusb_config_descriptor& config)
{
    for (int i = 0; config.interface && i < config.bNumInterfaces; ++i) {
        const libusb_interface& interface = config.interface[i];
        if (interface.num_altsetting < 1)
            continue;
        const libusb_interface_descriptor& first = interface.altsetting[0];
        if (first.bInterfaceClass == kUsbClass && first.bInterfaceSubClass == kUsbSubclass &&
            first.bInterfaceProtocol == kUsbControlProtocol)
            return &first;
    }
    return nullptr;
}

bool takeEndpoints(const libusb_interface_descriptor& interface, UsbCamera& camera)
{
    // libusb keeps the numbers of descriptors that are cut off, and has nothing behind them.
    for (int i = 0; interface.endpoint && i < interface.bNumEndpoints; ++i) {
        const libusb_endpoint_descriptor& endpoint = interface.endpoint[i];
        const bool isBulk = (endpoint.bmAttributes & LIBUSB_TRANSFER_TYPE_MASK) == LIBUSB_TRANSFER_TYPE_BULK;
        if (!isBulk || endpoint.wMaxPacketSize == 0)
            continue;
        UsbEndpoint& mine = (endpoint.bEndpointAddress & LIBUSB_ENDPOINT_IN) != 0 ? camera.in : camera.out;
        mine = {endpoint.bEndpointAddress, endpoint.wMaxPacketSize};
    }
    return camera.in.packetSize > 0 && camera.out.packetSize > 0;
}

// Null where there is none, or one that is cut off.
const uint8_t* deviceInfo(const libusb_interface_descriptor& interface)
{
    const auto length = static_cast<size_t>(std::max(interface.extra_length, 0));
    for (size_t at = 0; at + 3 <= length;) {
        const uint8_t* one = interface.extra + at;
        const size_t size = std::max<size_t>(one[0], 2); // a length of 0 must not hold up the walk
        if (one[1] == kUsbInfoType && one[2] == kUsbInfoSubtype && size >= kUsbInfoSize &&
            at + size <= length)
            return one;
        at += size;
    }
    return nullptr;
}

void takeTexts(const uint8_t* info, const libusb_device_descriptor& device, UsbCamera& camera)
{
    if (info) {
        camera.guidText = info[UsbInfoGuid];
        camera.vendorText = info[UsbInfoVendor];
        camera.modelText = info[UsbInfoModel];
        camera.serialText = info[UsbInfoSerialNumber];
        camera.userNameText = info[UsbInfoUserName];
    } else { // what every USB device may have
        camera.vendorText = device.iManufacturer;
        camera.modelText = device.iProduct;
        camera.serialText = device.iSerialNumber;
    }
}

std::optional<UsbCamera> cameraIn(libusb_device* device)
{
    const UsbConfig config = activeConfig(device);
    const auto* interface = config ? controlInterface(*config) : nullptr;
    libusb_device_descriptor descriptor{};
    UsbCamera camera;
    if (!interface || !takeEndpoints(*interface, camera) ||
        libusb_get_device_descriptor(device, &descriptor) != 0)
        return std::nullopt;
    camera.interfaceNumber = interface->bInterfaceNumber;
    camera.vendorId = descriptor.idVendor;
    camera.productId = descriptor.idProduct;
    takeTexts(deviceInfo(*interface), descriptor, camera);
    camera.device.reset(libusb_ref_device(device));
    return camera;
}

void appendUtf8(std::string& text, uint32_t sign)
{
    const auto add = [&](uint32_t byte) { text += static_cast<char>(byte); };
    if (sign < 0x80) {
        add(sign);
    } else if (sign < 0x800) {
        add(0xC0 | sign >> 6);
        add(0x80 | (sign & 0x3F));
    } else if (sign < 0x10000) {
        add(0xE0 | sign >> 12);
        add(0x80 | (sign >> 6 & 0x3F));
        add(0x80 | (sign & 0x3F));
    } else {
        add(0xF0 | sign >> 18);
        add(0x80 | (sign >> 12 & 0x3F));
        add(0x80 | (sign >> 6 & 0x3F));
        add(0x80 | (sign & 0x3F));
    }
}

// String descriptors are UTF-16LE. Up to a zero, which cameras put behind short texts in fixed fields.
std::string utf8(const uint8_t* bytes, size_t size)
{
    const auto unit = [&](size_t at) { return uint32_t{bytes[at]} | uint32_t{bytes[at + 1]} << 8; };
    std::string text;
    for (size_t at = 0; at + 2 <= size && unit(at) != 0; at += 2) {
        uint32_t sign = unit(at);
        const uint32_t low = at + 4 <= size ? unit(at + 2) : 0;
        if (sign >= 0xD800 && sign < 0xDC00 && low >= 0xDC00 && low < 0xE000) {
            sign = 0x10000 + ((sign - 0xD800) << 10) + (low - 0xDC00);
            at += 2;
        } else if (sign >= 0xD800 && sign < 0xE000) {
            sign = 0xFFFD;
        }
        appendUtf8(text, sign);
    }
    return text;
}

} // namespace

UsbContext newUsbContext()
{
    const char* setting = std::getenv("KX_CAMERA_USB");
    if (setting && std::strcmp(setting, "none") == 0)
        return nullptr;
    libusb_context* context = nullptr;
    return UsbContext(libusb_init(&context) == 0 ? context : nullptr);
}

std::vector<UsbCamera> usbCameras(libusb_context* context)
{
    std::vector<UsbCamera> cameras;
    libusb_device** list = nullptr;
    const ssize_t count = libusb_get_device_list(context, &list);
    for (ssize_t i = 0; i < count; ++i)
        if (auto camera = cameraIn(list[i]))
            cameras.push_back(std::move(*camera));
    if (count >= 0)
        libusb_free_device_list(list, 1);
    return cameras;
}

std::string usbLocation(libusb_device* device)
{
    uint8_t ports[8]; // seven is the deepest that USB allows
    const int count = libusb_get_port_numbers(device, ports, sizeof ports);
    std::string text = std::to_string(libusb_get_bus_number(device));
    for (int i = 0; i < count; ++i)
        text += (i == 0 ? "-" : ".") + std::to_string(ports[i]);
    return text;
}

std::string mayNotOpenText(const UsbCamera& camera)
{
    return "USB " + usbLocation(camera.device.get()) + ": " + usbOpeningHelp();
}

UsbTexts::UsbTexts(libusb_device_handle* handle) : m_handle(handle)
{
    const auto languages = descriptor(0);
    m_answers = languages.size() >= 2;
    if (m_answers)
        m_language = static_cast<uint16_t>(languages[0] | languages[1] << 8);
}

std::string UsbTexts::of(uint8_t number)
{
    if (number == 0 || !m_answers)
        return {};
    const auto bytes = descriptor(number);
    return utf8(bytes.data(), bytes.size());
}

std::vector<uint8_t> UsbTexts::descriptor(uint8_t number)
{
    constexpr unsigned kPatience = 200; // ms
    uint8_t bytes[255];
    const int got = libusb_control_transfer(m_handle, LIBUSB_ENDPOINT_IN, LIBUSB_REQUEST_GET_DESCRIPTOR,
                                            static_cast<uint16_t>(LIBUSB_DT_STRING << 8 | number), m_language,
                                            bytes, sizeof bytes, kPatience);
    m_answers = m_answers && got != LIBUSB_ERROR_TIMEOUT;
    if (got < 2 || bytes[1] != LIBUSB_DT_STRING)
        return {};
    const int size = std::min<int>(got, bytes[0]);
    return size < 2 ? std::vector<uint8_t>() : std::vector<uint8_t>(bytes + 2, bytes + size);
}

int claimInterface(libusb_device_handle* handle, int number, milliseconds patience)
{
    constexpr milliseconds kPause{10};
    const auto end = std::chrono::steady_clock::now() + patience;
    int code = libusb_claim_interface(handle, number);
    while (code == LIBUSB_ERROR_BUSY && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(kPause);
        code = libusb_claim_interface(handle, number);
    }
    return code;
}

} // namespace kx
