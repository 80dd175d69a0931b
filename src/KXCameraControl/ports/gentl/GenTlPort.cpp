#include "KXCameraControl/ports/gentl/GenTlPort.h"

#include "KXCameraControl/ports/gentl/GenTlSettings.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace kx
{

using namespace gentl;

namespace
{

// Small enough for a slow line's answer to come within the time of one call.
constexpr size_t kPiece = 4096;
constexpr std::chrono::milliseconds kBusyPause{50};

std::string hex(uint64_t number)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%08llX", static_cast<unsigned long long>(number));
    return text;
}

Writer message(Request request)
{
    return Writer().u32(static_cast<uint32_t>(request));
}

int32_t flagsOf(uint32_t accessMode)
{
    switch (accessMode) {
    case KX_ACCESS_MONITOR:
        return AccessReadOnly;
    case KX_ACCESS_CONTROL:
        return AccessControl;
    default:
        return AccessExclusive;
    }
}

} // namespace

KX_Status GenTlPort::fail(KX_Status status, std::string text)
{
    m_error = std::move(text);
    return status;
}

KX_Status GenTlPort::open(uint32_t accessMode, uint16_t)
{
    if (isOpen())
        return fail(KX_E_CALL_ORDER, "the camera is open already");
    if (accessMode != KX_ACCESS_EXCLUSIVE && accessMode != KX_ACCESS_CONTROL &&
        accessMode != KX_ACCESS_MONITOR)
        return fail(KX_E_PARAMETER, "unknown access mode " + std::to_string(accessMode));
    const KX_Status status = openDevice(accessMode);
    if (status != KX_OK) {
        const std::string reason = m_error;
        close();
        m_error = reason;
    }
    return status;
}

KX_Status GenTlPort::connect(const std::string& producer, Channel& loss)
{
    HostReply reply;
    m_link = openConfigured(producer, &loss, reply);
    return m_link ? KX_OK : fail(reply.status, reply.text);
}

// Looking first is what makes a producer know its devices; and they move between interfaces.
KX_Status GenTlPort::openDevice(uint32_t accessMode)
{
    const std::string producer = producerOf(m_record);
    if (producer.empty())
        return fail(KX_E_NO_DEVICE, "the camera's GenTL producer is in none of the folders that "
                                    "GENICAM_GENTL64_PATH names");
    if (const KX_Status status = connect(producer, m_losses))
        return status;
    std::vector<GenTlDevice> devices;
    const HostReply look = lookBehind(*m_link, devices);
    if (look.status != KX_OK)
        return fail(look.status, look.text);
    const auto device = deviceOf(m_record, producer, devices);
    if (!device)
        return fail(KX_E_NO_DEVICE, look.text.empty()
                                        ? "the GenTL producer " + producer + " does not list the camera"
                                        : look.text);
    const HostReply opened = m_link->request(
        message(Request::Open).text(device->interface).text(device->device).i32(flagsOf(accessMode)));
    if (opened.status != KX_OK)
        return failOpening(opened);
    m_names = {device->vendor, device->model, device->version};
    m_readOnly = accessMode == KX_ACCESS_MONITOR;
    m_isOpen = true;
    m_isLost = false;
    m_silence.end();
    m_isClosing = false;
    m_watcher = std::thread([this] { watch(); });
    return KX_OK;
}

KX_Status GenTlPort::openModule(std::unique_ptr<HostLink> link, const std::string& interface)
{
    m_link = std::move(link);
    const HostReply opened =
        m_link->request(message(Request::Open).text(interface).text({}).i32(AccessExclusive));
    if (opened.status != KX_OK)
        return failOpening(opened);
    m_readOnly = false;
    m_isOpen = true;
    return KX_OK;
}

KX_Status GenTlPort::failOpening(const HostReply& reply)
{
    if (reply.status != KX_E_DEVICE)
        return fail(reply.status, reply.text);
    switch (reply.code) {
    case ErrResourceInUse:
    case ErrAccessDenied:
    case ErrBusy:
        return fail(KX_E_CONTROL_REFUSED, reply.text);
    case ErrInvalidId:
    case ErrInvalidIndex:
        return fail(KX_E_NO_DEVICE, reply.text);
    case ErrTimeout:
        return fail(KX_E_NO_ANSWER, reply.text);
    default:
        return fail(KX_E_DEVICE, reply.text);
    }
}

void GenTlPort::close()
{
    m_isClosing = true;
    m_losses.shutDown();
    if (m_watcher.joinable())
        m_watcher.join();
    m_losses.close();
    if (m_isOpen && !m_link->isOver())
        m_link->request(message(Request::Close));
    m_isOpen = false;
    if (m_link)
        m_requestCount += m_link->requestCount();
    m_link.reset();
    m_urls.clear();
}

void GenTlPort::setConnectionLostHandler(std::function<void(KX_Status)> handler)
{
    const std::lock_guard lock(m_handlerMutex);
    m_handler = std::move(handler);
}

// Something comes when the device was lost; the end of the channel is that of the helper.
void GenTlPort::watch()
{
    Bytes ignored;
    m_losses.receive(ignored, std::nullopt);
    if (m_isClosing && !m_isLost)
        return;
    m_isLost = true;
    const std::lock_guard lock(m_handlerMutex);
    if (m_handler)
        m_handler(KX_E_CONNECTION_LOST);
}

// Found by a request: the watcher tells it.
void GenTlPort::lose()
{
    m_isLost = true;
    m_losses.shutDown();
}

KX_Status GenTlPort::checkUsable()
{
    if (!isOpen())
        return fail(KX_E_CALL_ORDER, "the camera is not open");
    if (m_isLost)
        return fail(KX_E_CONNECTION_LOST,
                    "the connection to the camera behind " + m_link->producer() + " is lost");
    return KX_OK;
}

HostReply GenTlPort::request(const Writer& message)
{
    HostReply reply = m_link->request(message);
    for (unsigned left = m_timeouts.tries; reply.code == ErrBusy && left > 1; --left) {
        std::this_thread::sleep_for(kBusyPause);
        reply = m_link->request(message);
    }
    return reply;
}

// Producers give the same number for a camera that refuses a register and for a fault of the line that has
// passed by now: only the first of them comes again.
KX_Status GenTlPort::ask(const Writer& message, const std::string& what, HostReply& reply)
{
    if (const KX_Status status = checkUsable())
        return status;
    const Silence::Clock::time_point begin = Silence::Clock::now();
    reply = request(message);
    KX_Status status = reply.status == KX_OK ? KX_OK : meaningOf(reply);
    if (status == KX_E_GC_ACCESS && (reply.code == ErrIo || reply.code == ErrError)) {
        reply = request(message);
        status = reply.status == KX_OK ? KX_OK : meaningOf(reply);
    }
    if (status != KX_E_NO_ANSWER)
        m_silence.end();
    else if (m_silence.isTooLong(begin)) {
        lose();
        return checkUsable();
    }
    return status == KX_OK ? KX_OK : fail(status, what + ": " + reply.text);
}

KX_Status GenTlPort::meaningOf(const HostReply& reply)
{
    if (reply.status != KX_E_DEVICE) {
        if (m_link->isOver())
            lose();
        return reply.status;
    }
    switch (reply.code) {
    case ErrAccessDenied:
    case ErrInvalidAddress:
    case ErrInvalidParameter:
    case ErrInvalidValue:
    case ErrNotImplemented:
    case ErrNotAvailable:
    case ErrBufferTooSmall:
        return KX_E_GC_ACCESS;
    case ErrBusy:
        return KX_E_BUSY;
    default:
        return judgeSilence();
    }
}

// Producers give the same number for a camera that refuses a register, one that does not answer, and one that
// is gone.
KX_Status GenTlPort::judgeSilence()
{
    if (!isDeviceThere()) {
        lose();
        return KX_E_CONNECTION_LOST;
    }
    return isMemoryReadable() ? KX_E_GC_ACCESS : KX_E_NO_ANSWER;
}

bool GenTlPort::isDeviceThere()
{
    const HostReply reply = m_link->request(message(Request::IsThere));
    return reply.status == KX_OK ? Reader(reply.content).u32() != 0 : !m_link->isOver();
}

// Reads what can be read without any effect: the first bytes of the description.
bool GenTlPort::isMemoryReadable()
{
    for (const std::string& url : m_urls) {
        const size_t separator = url.find(';');
        if (separator == std::string::npos)
            continue;
        const uint64_t address = std::strtoull(url.c_str() + separator + 1, nullptr, 16);
        if (m_link->request(message(Request::Read).u64(address).u32(4)).status == KX_OK)
            return true;
    }
    return false;
}

KX_Status GenTlPort::readMemory(uint64_t address, void* data, size_t size)
{
    KX_Status status = checkUsable();
    for (size_t done = 0; status == KX_OK && done < size; done += kPiece) {
        const size_t piece = std::min(size - done, kPiece);
        HostReply reply;
        status = ask(message(Request::Read).u64(address + done).u32(static_cast<uint32_t>(piece)),
                     "reading memory at " + hex(address + done), reply);
        const Bytes block = Reader(reply.content).block();
        if (status == KX_OK && block.size() != piece)
            return fail(KX_E_MALFORMED_ANSWER, "the helper of " + m_link->producer() + " talks nonsense");
        if (status == KX_OK)
            std::memcpy(static_cast<uint8_t*>(data) + done, block.data(), piece);
    }
    return status;
}

KX_Status GenTlPort::writeMemory(uint64_t address, const void* data, size_t size)
{
    KX_Status status = checkUsable();
    if (status == KX_OK && m_readOnly)
        return fail(KX_E_GC_ACCESS, "the camera is open for reading only");
    for (size_t done = 0; status == KX_OK && done < size; done += kPiece) {
        HostReply reply;
        status = ask(message(Request::Write)
                         .u64(address + done)
                         .block(static_cast<const uint8_t*>(data) + done, std::min(size - done, kPiece)),
                     "writing memory at " + hex(address + done), reply);
    }
    return status;
}

KX_Status GenTlPort::readRegister(uint64_t address, uint32_t& value)
{
    uint8_t bytes[4];
    const KX_Status status = readMemory(address, bytes, sizeof bytes);
    if (status == KX_OK)
        value = uint32_t(bytes[0]) << 24 | uint32_t(bytes[1]) << 16 | uint32_t(bytes[2]) << 8 | bytes[3];
    return status;
}

KX_Status GenTlPort::writeRegister(uint64_t address, uint32_t value)
{
    const uint8_t bytes[4] = {uint8_t(value >> 24), uint8_t(value >> 16), uint8_t(value >> 8),
                              uint8_t(value)};
    return writeMemory(address, bytes, sizeof bytes);
}

size_t GenTlPort::registersPerRequest() const
{
    return kMostRegisters;
}

KX_Status GenTlPort::readRegisters(const std::vector<uint32_t>& addresses, std::vector<uint32_t>& values)
{
    values.clear();
    std::vector<uint32_t> read;
    for (size_t first = 0; first < addresses.size(); first += kMostRegisters) {
        const size_t count = std::min<size_t>(addresses.size() - first, kMostRegisters);
        Writer wanted = message(Request::ReadRegisters).u32(static_cast<uint32_t>(count));
        for (size_t i = 0; i < count; ++i)
            wanted.u32(addresses[first + i]);
        HostReply reply;
        if (const KX_Status status = ask(wanted, "reading registers", reply))
            return status;
        const Bytes block = Reader(reply.content).block();
        if (block.size() != 4 * count)
            return fail(KX_E_MALFORMED_ANSWER, "the helper of " + m_link->producer() + " talks nonsense");
        for (size_t i = 0; i < block.size(); i += 4)
            read.push_back(uint32_t(block[i]) << 24 | uint32_t(block[i + 1]) << 16 |
                           uint32_t(block[i + 2]) << 8 | block[i + 3]);
    }
    values = std::move(read);
    return KX_OK;
}

KX_Status GenTlPort::descriptionUrls(std::vector<std::string>& urls)
{
    urls.clear();
    HostReply reply;
    if (const KX_Status status = ask(message(Request::Urls), "asking for the description", reply))
        return status;
    for (const Bytes& item : reply.items)
        urls.push_back(Reader(item).text());
    m_urls = urls;
    return KX_OK;
}

} // namespace kx
