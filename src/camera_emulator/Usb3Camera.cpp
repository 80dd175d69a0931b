#include "camera_emulator/Usb3Camera.h"

#include "gencp/Usb3Vision.h"

#include <algorithm>
#include <cstdio>

namespace emu
{

using namespace gencp;
using std::chrono::milliseconds;

namespace
{

constexpr uint8_t kOut = 0x01;
constexpr uint8_t kIn = 0x81;
constexpr uint8_t kGetDescriptor = 6;
constexpr uint8_t kStringDescriptor = 3;
constexpr milliseconds kTimeToAnswer{1000}; // the host fetches it

// Twelve digits as real ones have them; the same for the same serial number.
std::string guidOf(const std::string& serialNumber)
{
    uint32_t sum = 2166136261u;
    for (const char sign : serialNumber)
        sum = (sum ^ static_cast<uint8_t>(sign)) * 16777619u;
    char text[16];
    std::snprintf(text, sizeof text, "1209%08X", static_cast<unsigned>(sum));
    return text;
}

Bytes stringDescriptor(const std::string& text)
{
    Bytes bytes{0, kStringDescriptor};
    for (const char sign : text.substr(0, 126)) {
        bytes.push_back(static_cast<uint8_t>(sign));
        bytes.push_back(0);
    }
    bytes[0] = static_cast<uint8_t>(bytes.size());
    return bytes;
}

uint8_t lowOf(uint16_t number)
{
    return static_cast<uint8_t>(number);
}

uint8_t highOf(uint16_t number)
{
    return static_cast<uint8_t>(number >> 8);
}

void addInterface(Bytes& bytes, uint8_t number, uint8_t protocol, uint8_t endpoints)
{
    bytes.insert(bytes.end(), {9, 4, number, 0, endpoints, kUsbClass, kUsbSubclass, protocol, 0});
}

void addEndpoint(Bytes& bytes, uint8_t address, uint16_t packetSize)
{
    bytes.insert(bytes.end(), {7, 5, address, 2, lowOf(packetSize), highOf(packetSize), 0});
    bytes.insert(bytes.end(), {6, 0x30, 0, 0, 0, 0}); // SuperSpeed companion
}

// Texts are numbered as they stand in the information descriptor: GUID 1, vendor 2, and so on.
void addInfo(Bytes& bytes)
{
    bytes.insert(bytes.end(), {kUsbInfoSize, kUsbInfoType, kUsbInfoSubtype, 3, 0, 1, 0, 1, 0, 1, 0});
    for (uint8_t text = 1; text <= 8; ++text)
        bytes.push_back(text);
    bytes.push_back(0x08); // SuperSpeed
}

Bytes configuration(uint16_t packetSize)
{
    Bytes body{8, 11, 0, 3, kUsbClass, kUsbSubclass, 0, 0}; // the three interfaces are one function
    addInterface(body, 0, kUsbControlProtocol, 2);
    addInfo(body);
    addEndpoint(body, kOut, packetSize);
    addEndpoint(body, kIn, packetSize);
    addInterface(body, 1, 1, 1);
    addEndpoint(body, 0x82, packetSize);
    addInterface(body, 2, 2, 1);
    addEndpoint(body, 0x83, packetSize);
    const auto total = static_cast<uint16_t>(9 + body.size());
    Bytes bytes{9, 2, lowOf(total), highOf(total), 3, 1, 0, 0x80, 50};
    bytes.insert(bytes.end(), body.begin(), body.end());
    return bytes;
}

} // namespace

Usb3Camera::Usb3Camera(const CameraConfig& config, const Usb3Config& usb, UsbBus& bus)
    : GenCpShell(config, ByteOrder::Little), m_usb(usb), m_bus(bus)
{
    m_responder.mostBytes = m_usb.maxAck - sizeof kUsbPrefix - kHeaderSize;
    m_responder.writeNumber(kTechnologyRegisters + kUsbVersion, 0x00010001, 4);
    m_responder.writeNumber(kTechnologyRegisters + kUsbMaxCommandLength, m_usb.maxCommand, 4);
    m_responder.writeNumber(kTechnologyRegisters + kUsbMaxAckLength, m_usb.maxAck, 4);
    m_responder.writeNumber(kTechnologyRegisters + kUsbCurrentSpeed, 0x8, 4);
    m_responder.readOnly.add(kTechnologyRegisters, kUsbCurrentSpeed + 4);
    deliver();
}

std::string Usb3Camera::text(uint8_t number) const
{
    const std::string texts[] = {guid(),
                                 config().manufacturer,
                                 config().model,
                                 config().model,
                                 config().firmware,
                                 "Software camera",
                                 config().serial,
                                 m_name};
    return texts[number - 1];
}

Usb3Camera::~Usb3Camera()
{
    Usb3Camera::stop();
}

StartResult Usb3Camera::start()
{
    if (!m_core.problem.empty())
        return {StartCode::BadConfiguration, m_core.problem};
    if (!place().empty())
        return {};
    const std::string location = m_bus.plug(*this);
    const std::lock_guard lock(m_mutex);
    m_location = location;
    if (location.empty())
        return {StartCode::CannotBind, "The bus does not take the camera."};
    m_thread = std::thread(&Usb3Camera::awaitOrders, this);
    return {};
}

void Usb3Camera::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable())
        m_thread.join();
    m_isEnding = false;
    if (place().empty())
        return;
    m_bus.unplug(*this);
    const std::lock_guard lock(m_mutex);
    m_location.clear();
    m_outgoing.clear();
}

void Usb3Camera::awaitOrders()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_isEnding || m_isToRestart; });
        if (m_isEnding || !leave(lock))
            return;
        comeBack(lock);
    }
}

// Behind its last answer. False: the camera is stopped before it would be back.
bool Usb3Camera::leave(std::unique_lock<std::mutex>& lock)
{
    m_changed.wait_for(lock, kTimeToAnswer, [this] { return m_isEnding || m_outgoing.empty(); });
    lock.unlock();
    m_bus.unplug(*this);
    lock.lock();
    ++m_responder.counters.restarts;
    m_location.clear();
    m_outgoing.clear();
    return !m_changed.wait_for(lock, config().restartTime, [this] { return m_isEnding; });
}

void Usb3Camera::comeBack(std::unique_lock<std::mutex>& lock)
{
    powerUp();
    lock.unlock();
    const std::string location = m_bus.plug(*this);
    lock.lock();
    m_location = location;
}

std::string Usb3Camera::place() const
{
    const std::lock_guard lock(m_mutex);
    return m_location;
}

Bytes Usb3Camera::descriptors() const
{
    const uint16_t vendor = m_usb.vendorId;
    const uint16_t product = m_usb.productId;
    // USB 3.0, one configuration, its texts those of the information descriptor.
    Bytes bytes{18,
                1,
                0x00,
                0x03,
                0xEF,
                0x02,
                0x01,
                9,
                lowOf(vendor),
                highOf(vendor),
                lowOf(product),
                highOf(product),
                0x00,
                0x01,
                2,
                3,
                7,
                1};
    const Bytes config = configuration(m_usb.packetSize);
    bytes.insert(bytes.end(), config.begin(), config.end());
    if (m_usb.breakDescriptors)
        m_usb.breakDescriptors(bytes);
    return bytes;
}

std::optional<Bytes> Usb3Camera::control(const std::array<uint8_t, 8>& setup)
{
    const bool isText = setup[0] == 0x80 && setup[1] == kGetDescriptor && setup[3] == kStringDescriptor;
    if (!isText || setup[2] > 8)
        return std::nullopt;
    if (setup[2] == 0)
        return Bytes{4, kStringDescriptor, 0x09, 0x04}; // English
    return stringDescriptor(text(setup[2]));
}

bool Usb3Camera::bulkOut(uint8_t endpoint, const Bytes& data)
{
    const std::lock_guard lock(m_mutex);
    const bool isCommand = endpoint == kOut && data.size() >= sizeof kUsbPrefix &&
                           std::equal(std::begin(kUsbPrefix), std::end(kUsbPrefix), data.begin());
    m_longestCommand = std::max(m_longestCommand, data.size());
    if (!isCommand || data.size() > m_usb.maxCommand) {
        ++m_responder.counters.malformed;
        return false;
    }
    const auto replies =
        m_responder.handle(Bytes(data.begin() + sizeof kUsbPrefix, data.end()), Clock::now());
    for (const Reply& reply : replies) {
        Bytes packet(std::begin(kUsbPrefix), std::end(kUsbPrefix));
        packet.insert(packet.end(), reply.bytes.begin(), reply.bytes.end());
        m_longestAnswer = std::max(m_longestAnswer, packet.size());
        if (m_usb.breakAnswer)
            m_usb.breakAnswer(packet);
        m_outgoing.push_back({packet, reply.due});
    }
    if (m_isToRestart)
        m_changed.notify_all();
    return true;
}

std::optional<Bytes> Usb3Camera::bulkIn(uint8_t endpoint)
{
    milliseconds later{0};
    {
        const std::lock_guard lock(m_mutex);
        if (endpoint != kIn || m_outgoing.empty())
            return std::nullopt;
        const auto left = std::chrono::ceil<milliseconds>(m_outgoing.front().due - Clock::now());
        if (left.count() <= 0) {
            Bytes packet = std::move(m_outgoing.front().bytes);
            m_outgoing.pop_front();
            m_changed.notify_all();
            return packet;
        }
        later = left;
    }
    m_bus.askAgain(*this, later);
    return std::nullopt;
}

std::string Usb3Camera::guid() const
{
    return m_usb.guid.empty() ? guidOf(config().serial) : m_usb.guid;
}

size_t Usb3Camera::longestCommand() const
{
    const std::lock_guard lock(m_mutex);
    return m_longestCommand;
}

size_t Usb3Camera::longestAnswer() const
{
    const std::lock_guard lock(m_mutex);
    return m_longestAnswer;
}

} // namespace emu
