#include "KXCameraControl/ports/gencp/GenCpPort.h"

#include "KXCameraControl/ports/Refusal.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <thread>

namespace kx
{

using namespace gencp;
using Clock = GenCpLink::Clock;
using Outcome = GenCpLink::Outcome;
using std::chrono::milliseconds;

namespace
{

// What every camera takes before it has told its limits (GenCP 1.3, "Maximum Command Transfer Length").
constexpr size_t kSmallestLimit = 64;
constexpr size_t kLargestLimit = 64 * 1024;
constexpr milliseconds kLongestBelieved{60000}; // of a camera's word on its own slowness
constexpr milliseconds kBusyPause{50};
constexpr unsigned kMaxManifestEntries = 64;

std::string hex(uint64_t number)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%08llX", static_cast<unsigned long long>(number));
    return text;
}

std::string describe(const CommandPacket& command, const GenCpLink& link)
{
    const std::string what = command.command == ReadMemCmd ? "reading" : "writing";
    return what + " memory at " + hex(get(command.scd.data(), 8, link.byteOrder())) + " of " + link.name();
}

// As GigE Vision cameras name their descriptions, and the digest of the file where the camera gives one.
std::string urlOf(const ManifestEntry& entry)
{
    char text[96];
    std::snprintf(text, sizeof text, "Local:camera.%s;%llX;%llX",
                  entry.format == static_cast<uint8_t>(FileFormat::Zip) ? "zip" : "xml",
                  static_cast<unsigned long long>(entry.address),
                  static_cast<unsigned long long>(entry.size));
    std::string url = text;
    for (const uint8_t byte : entry.sha1) {
        std::snprintf(text, sizeof text, "%02x", byte);
        url += (url.find('?') == std::string::npos ? "?SHA1=" : "") + std::string(text);
    }
    return url;
}

} // namespace

GenCpPort::GenCpPort(std::unique_ptr<GenCpLink> link, std::string serialNumber)
    : m_link(std::move(link)), m_serialNumber(std::move(serialNumber)), m_maxCommand(kSmallestLimit),
      m_maxAck(kSmallestLimit)
{}

KX_Status GenCpPort::fail(KX_Status status, std::string text)
{
    m_error = std::move(text);
    return status;
}

KX_Status GenCpPort::open(uint32_t accessMode, uint16_t)
{
    if (isOpen())
        return fail(KX_E_CALL_ORDER, "the camera is open already");
    if (accessMode != KX_ACCESS_EXCLUSIVE && accessMode != KX_ACCESS_CONTROL &&
        accessMode != KX_ACCESS_MONITOR)
        return fail(KX_E_PARAMETER, "unknown access mode " + std::to_string(accessMode));
    const KX_Status status = openAs(accessMode);
    if (status != KX_OK) {
        const std::string reason = m_error;
        close();
        m_error = reason;
    }
    return status;
}

KX_Status GenCpPort::openAs(uint32_t accessMode)
{
    if (const KX_Status status = m_link->open())
        return fail(status, m_link->errorText());
    m_readOnly = accessMode == KX_ACCESS_MONITOR;
    m_isSettled = false;
    m_silence.end();
    m_longestResponse = milliseconds(0);
    m_maxCommand = m_maxAck = kSmallestLimit;
    // Nothing has to be kept alive; the thread is there to tell of a loss.
    m_watch.start(
        std::chrono::hours(1), [] {}, [this](KX_Status reason) { tellLoss(reason); });
    KX_Status status = settle();
    if (status == KX_OK)
        status = readLongestResponse();
    if (status == KX_OK)
        status = readLimits();
    if (status == KX_OK)
        status = checkCamera();
    m_isSettled = status == KX_OK;
    return status;
}

void GenCpPort::close()
{
    m_watch.stop();
    m_link->close();
    m_watch.reset();
}

// Lines move between cameras: the one that answers has to be the one that was chosen.
KX_Status GenCpPort::checkCamera()
{
    if (m_serialNumber.empty())
        return KX_OK;
    std::string found;
    const KX_Status status = readText(RegSerialNumber, found);
    // The field of the device information is one byte shorter than the register, for its terminating zero.
    if (status == KX_OK && m_serialNumber != found.substr(0, kTextSize - 1))
        return fail(KX_E_NO_DEVICE, "the camera at " + m_link->name() + " has the serial number " + found +
                                        " instead of " + m_serialNumber);
    return status;
}

KX_Status GenCpPort::readLongestResponse()
{
    uint64_t time = 0;
    const KX_Status status = readNumber(RegLongestResponseTime, 4, time);
    if (status == KX_OK)
        m_longestResponse = std::min(milliseconds(time), kLongestBelieved);
    return status == KX_E_GC_ACCESS ? KX_OK : status;
}

void GenCpPort::setLimits(size_t command, size_t ack)
{
    m_maxCommand = std::clamp(command, kSmallestLimit, kLargestLimit);
    m_maxAck = std::clamp(ack, kSmallestLimit, kLargestLimit);
}

void GenCpPort::setConnectionLostHandler(std::function<void(KX_Status)> handler)
{
    const std::lock_guard lock(m_handlerMutex);
    m_handler = std::move(handler);
}

void GenCpPort::reportLoss(std::string reason)
{
    {
        const std::lock_guard lock(m_lossMutex);
        if (m_lossText.empty() || !m_watch.isLost())
            m_lossText = std::move(reason);
    }
    m_watch.reportLoss(KX_E_CONNECTION_LOST);
}

void GenCpPort::tellLoss(KX_Status reason)
{
    const std::lock_guard lock(m_handlerMutex);
    if (m_handler)
        m_handler(reason);
}

KX_Status GenCpPort::checkUsable()
{
    if (!isOpen())
        return fail(KX_E_CALL_ORDER, "the camera is not open");
    if (!m_watch.isLost())
        return KX_OK;
    const std::lock_guard lock(m_lossMutex);
    return fail(KX_E_CONNECTION_LOST, "the connection is lost: " + m_lossText);
}

KX_Status GenCpPort::request(uint16_t command, Bytes scd, size_t ackSize, Bytes& answer)
{
    if (const KX_Status status = checkUsable())
        return status;
    const Clock::time_point begin = Clock::now();
    Exchange exchange{
        {AckRequired, command, ++m_lastId, std::move(scd)}, ackSize, begin + m_timeouts.longestPending};
    Answer result;
    for (unsigned left = m_timeouts.tries; left > 0; --left) {
        result = tryOnce(exchange);
        if (result.status == KX_E_BUSY && left > 1) {
            std::this_thread::sleep_for(std::min(kBusyPause, m_timeouts.perTry));
            exchange.command.id = ++m_lastId; // a repeated id might get the repeated answer
            exchange.command.flags = AckRequired;
        } else if (result.status != KX_E_NO_ANSWER) {
            break;
        } else {
            exchange.command.flags = AckRequired | Repeated;
        }
    }
    if (result.status == KX_OK) {
        answer = std::move(result.scd);
        return KX_OK;
    }
    const bool isOverdue =
        result.status == KX_E_NO_ANSWER && exchange.sawPending && Clock::now() >= exchange.pendingEnd;
    const bool isUnanswered = result.status == KX_E_NO_ANSWER || result.status == KX_E_NETWORK;
    if (result.status == KX_E_CONNECTION_LOST || (isUnanswered && isLostBySilence(begin)))
        return checkUsable();
    if (result.status == KX_E_NO_ANSWER && exchange.sawMalformed)
        result = {KX_E_MALFORMED_ANSWER, {}, "malformed answer"};
    else if (result.status == KX_E_NO_ANSWER)
        result.text = "no answer in " + std::to_string(m_timeouts.tries) + " tries";
    if (isOverdue) // as each further call would be
        reportLoss(m_link->name() + " asks for more time without end");
    return fail(result.status, describe(exchange.command, *m_link) + ": " + result.text);
}

bool GenCpPort::isLostBySilence(Clock::time_point begin)
{
    if (!m_isSettled || !m_silence.isTooLong(begin))
        return false;
    reportLoss(m_link->name() + " does not answer any more");
    return true;
}

GenCpPort::Answer GenCpPort::tryOnce(Exchange& exchange)
{
    const Bytes packet = encodeCommand(exchange.command, m_link->byteOrder());
    const size_t onWire = packet.size() + kHeaderSize + exchange.ackSize + 2 * m_link->prefixSize();
    Clock::time_point deadline =
        Clock::now() + std::max(m_timeouts.perTry, m_longestResponse) + m_link->wireTime(onWire);
    ++m_requestCount;
    m_link->expect(kHeaderSize + exchange.ackSize);
    Outcome outcome = m_link->send(packet, deadline);
    Answer answer;
    Bytes received;
    while (outcome == Outcome::Done || outcome == Outcome::Malformed) {
        outcome = m_link->receive(received, deadline);
        if (outcome == Outcome::Done && judge(exchange, received, deadline, answer))
            return answer;
        exchange.sawMalformed = exchange.sawMalformed || outcome == Outcome::Malformed;
        // Other packets must not keep a request alive that nobody answers.
        if (outcome != Outcome::Gone && outcome != Outcome::Failed && Clock::now() >= deadline)
            outcome = Outcome::TimedOut;
    }
    if (outcome == Outcome::Gone) {
        reportLoss(m_link->lossText());
        return {KX_E_CONNECTION_LOST, {}, {}};
    }
    if (outcome == Outcome::Failed)
        return {KX_E_NETWORK, {}, m_link->errorText()};
    return {};
}

// False when the packet is not the answer that is waited for.
bool GenCpPort::judge(Exchange& exchange, const Bytes& packet, Clock::time_point& deadline, Answer& answer)
{
    auto ack = decodeAck(packet.data(), packet.size(), m_link->byteOrder());
    if (ack)
        m_silence.end();
    if (ack && ack->id != exchange.command.id)
        return false; // late answer to an earlier command
    if (ack && ack->command == PendingAck) {
        if (const auto time = parsePendingAck(ack->scd, m_link->byteOrder())) {
            exchange.sawPending = true;
            const auto wanted = Clock::now() + milliseconds(*time) + m_timeouts.perTry;
            deadline = std::max(deadline, std::min(wanted, exchange.pendingEnd));
            return false;
        }
    } else if (ack && ack->command == exchange.command.command + 1 && ack->status != Success) {
        answer = {statusOfRefusal(ack->status), {}, refusalText(ack->status)};
        return true;
    } else if (ack && ack->command == exchange.command.command + 1 &&
               (exchange.command.command == WriteMemCmd || ack->scd.size() == exchange.ackSize)) {
        answer = {KX_OK, std::move(ack->scd), {}};
        return true;
    }
    exchange.sawMalformed = true;
    return false;
}

KX_Status GenCpPort::readPiece(uint64_t address, uint8_t* data, size_t size)
{
    Bytes answer;
    const KX_Status status = request(
        ReadMemCmd, readMemoryScd(address, static_cast<uint16_t>(size), m_link->byteOrder()), size, answer);
    if (status == KX_OK)
        std::memcpy(data, answer.data(), size);
    return status;
}

// A camera may write less than it was given (GenCP 1.3, "WriteMem Acknowledge": length written); 0 and an
// answer without the length come from cameras that do not count.
KX_Status GenCpPort::writePiece(uint64_t address, const uint8_t* data, size_t size)
{
    Bytes answer;
    const KX_Status status =
        request(WriteMemCmd, writeMemoryScd(address, data, size, m_link->byteOrder()), 4, answer);
    if (status != KX_OK || answer.size() < 4)
        return status;
    const uint64_t written = get(&answer[2], 2, m_link->byteOrder());
    if (written != 0 && written != size)
        return fail(KX_E_DEVICE, "writing memory at " + hex(address) + " of " + m_link->name() + ": " +
                                     std::to_string(written) + " of " + std::to_string(size) +
                                     " bytes were written");
    return KX_OK;
}

// Whole words: many cameras want what follows aligned.
size_t GenCpPort::largestPiece(size_t limit, size_t head) const
{
    return (std::min(limit - m_link->prefixSize() - kHeaderSize, kMaxScd) - head) / 4 * 4;
}

KX_Status GenCpPort::readMemory(uint64_t address, void* data, size_t size)
{
    const size_t most = largestPiece(m_maxAck, 0);
    KX_Status status = checkUsable();
    for (size_t done = 0; status == KX_OK && done < size; done += most)
        status = readPiece(address + done, static_cast<uint8_t*>(data) + done, std::min(size - done, most));
    return status;
}

KX_Status GenCpPort::writeMemory(uint64_t address, const void* data, size_t size)
{
    const size_t most = largestPiece(m_maxCommand, kWriteHeadSize);
    KX_Status status = checkUsable();
    if (status == KX_OK && m_readOnly)
        return fail(KX_E_GC_ACCESS, "the camera is open for reading only");
    for (size_t done = 0; status == KX_OK && done < size; done += most)
        status =
            writePiece(address + done, static_cast<const uint8_t*>(data) + done, std::min(size - done, most));
    return status;
}

KX_Status GenCpPort::readRegister(uint64_t address, uint32_t& value)
{
    uint8_t bytes[4];
    const KX_Status status = readMemory(address, bytes, sizeof bytes);
    if (status == KX_OK)
        value = static_cast<uint32_t>(get(bytes, sizeof bytes, ByteOrder::Big));
    return status;
}

KX_Status GenCpPort::writeRegister(uint64_t address, uint32_t value)
{
    uint8_t bytes[4];
    put(bytes, value, sizeof bytes, ByteOrder::Big);
    return writeMemory(address, bytes, sizeof bytes);
}

KX_Status GenCpPort::readRegisters(const std::vector<uint32_t>& addresses, std::vector<uint32_t>& values)
{
    values.clear();
    std::vector<uint32_t> read;
    for (const uint32_t address : addresses) {
        uint32_t value = 0;
        if (const KX_Status status = readRegister(address, value))
            return status;
        read.push_back(value);
    }
    values = std::move(read);
    return KX_OK;
}

KX_Status GenCpPort::readNumber(uint64_t address, size_t size, uint64_t& number)
{
    uint8_t bytes[8];
    const KX_Status status = readMemory(address, bytes, size);
    if (status == KX_OK)
        number = get(bytes, size, m_link->byteOrder());
    return status;
}

KX_Status GenCpPort::writeNumber(uint64_t address, size_t size, uint64_t number)
{
    Bytes bytes;
    append(bytes, number, size, m_link->byteOrder());
    return writePiece(address, bytes.data(), size);
}

KX_Status GenCpPort::readText(uint64_t address, std::string& text)
{
    char bytes[kTextSize];
    const KX_Status status = readMemory(address, bytes, sizeof bytes);
    if (status == KX_OK)
        text.assign(bytes, strnlen(bytes, sizeof bytes));
    return status;
}

KX_Status GenCpPort::readNames()
{
    m_names = {};
    KX_Status status = readText(RegManufacturer, m_names.manufacturer);
    if (status == KX_OK)
        status = readText(RegModel, m_names.model);
    return status == KX_OK ? readText(RegDeviceVersion, m_names.deviceVersion) : status;
}

KX_Status GenCpPort::descriptionUrls(std::vector<std::string>& urls)
{
    urls.clear();
    KX_Status status = readNames();
    if (status == KX_OK)
        status = readManifest(urls);
    // A manifest that points nowhere: the camera has no description, and is there all the same.
    return status == KX_E_GC_ACCESS ? KX_OK : status;
}

KX_Status GenCpPort::readManifest(std::vector<std::string>& urls)
{
    uint64_t table = 0;
    uint64_t count = 0;
    KX_Status status = readNumber(RegManifestTable, 8, table);
    if (status == KX_OK)
        status = readNumber(table, 8, count);
    for (uint64_t i = 0; status == KX_OK && i < std::min<uint64_t>(count, kMaxManifestEntries); ++i) {
        uint8_t bytes[kManifestEntrySize];
        status = readMemory(table + 8 + i * kManifestEntrySize, bytes, sizeof bytes);
        if (status != KX_OK)
            break;
        const ManifestEntry entry = parseManifestEntry(bytes, m_link->byteOrder());
        if (entry.fileType != 0)
            continue;
        urls.push_back(urlOf(entry));
    }
    return status;
}

} // namespace kx
