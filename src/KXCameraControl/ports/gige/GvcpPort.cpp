// Memory and registers over the channel, cut to what one packet holds.
#include "KXCameraControl/ports/gige/GvcpPort.h"

#include <algorithm>
#include <cstring>

namespace kx
{

using namespace gvcp;

namespace
{

constexpr uint64_t kAddressEnd = uint64_t(1) << 32;
constexpr size_t kUrlSize = 512;

// WRITEREG_ACK and WRITEMEM_ACK: a reserved half word and an index.
constexpr size_t kWriteAckSize = 4;

} // namespace

KX_Status GvcpPort::fail(KX_Status status, std::string text)
{
    const std::lock_guard lock(m_mutex);
    m_lastError = std::move(text);
    return status;
}

KX_Status GvcpPort::failLost()
{
    const std::lock_guard lock(m_mutex);
    m_lastError = "the connection is lost: " + m_lossText;
    return KX_E_CONNECTION_LOST;
}

std::string GvcpPort::lastError() const
{
    const std::lock_guard lock(m_mutex);
    return m_lastError;
}

PortTimeouts GvcpPort::timeouts() const
{
    const std::lock_guard lock(m_mutex);
    return m_timeouts;
}

void GvcpPort::setTimeouts(const PortTimeouts& timeouts)
{
    const std::lock_guard lock(m_mutex);
    m_timeouts = timeouts;
}

void GvcpPort::setConnectionLostHandler(std::function<void(KX_Status)> handler)
{
    const std::lock_guard lock(m_handlerMutex);
    m_handler = std::move(handler);
}

KX_Status GvcpPort::checkUsable()
{
    if (!m_channel.isOpen())
        return fail(KX_E_CALL_ORDER, "the camera is not open");
    return m_control.isLost() ? failLost() : KX_OK;
}

KX_Status GvcpPort::checkWritable()
{
    const KX_Status status = checkUsable();
    if (status == KX_OK && m_privilege == 0)
        return fail(KX_E_GC_ACCESS, "the camera is open for reading only");
    return status;
}

// The protocol's addresses have 32 bits and name whole words.
KX_Status GvcpPort::checkAddress(uint64_t address, size_t size)
{
    if (address % 4 != 0)
        return fail(KX_E_GC_ACCESS, "the address " + std::to_string(address) + " is no multiple of 4");
    if (address >= kAddressEnd || size > kAddressEnd - address)
        return fail(KX_E_GC_ACCESS, "the address " + std::to_string(address) + " exceeds 32 bits");
    return KX_OK;
}

KX_Status GvcpPort::perform(const Bytes& command, const PayloadCheck& isWellFormed, Bytes& payload)
{
    GvcpAnswer answer = m_channel.request(command, isWellFormed, timeouts());
    if (answer.status == KX_OK) {
        payload = std::move(answer.payload);
        return KX_OK;
    }
    if (answer.refusal == AccessDenied)
        return judgeAccessDenied(answer);
    if (answer.isOverdue) { // as each further call would be
        loseConnection(answer);
        return fail(answer.status, answer.text);
    }
    // The heartbeat may have found the reason in the meantime.
    return m_control.isLost() ? failLost() : fail(answer.status, answer.text);
}

KX_Status GvcpPort::readPiece(uint32_t address, uint8_t* data, size_t size)
{
    const size_t onWire = (size + 3) / 4 * 4;
    Bytes payload;
    const KX_Status status = perform(encodeReadMemory(0, address, static_cast<uint16_t>(onWire)),
                                     holdsMemory(address, onWire), payload);
    if (status == KX_OK)
        std::memcpy(data, payload.data() + 4, size);
    return status;
}

KX_Status GvcpPort::readMemory(uint64_t address, void* data, size_t size)
{
    KX_Status status = checkUsable();
    if (status == KX_OK)
        status = checkAddress(address, size);
    for (size_t done = 0; status == KX_OK && done < size; done += kMaxReadMemory)
        status = readPiece(static_cast<uint32_t>(address + done), static_cast<uint8_t*>(data) + done,
                           std::min(size - done, kMaxReadMemory));
    return status;
}

KX_Status GvcpPort::writeMemory(uint64_t address, const void* data, size_t size)
{
    KX_Status status = checkWritable();
    if (status == KX_OK)
        status = checkAddress(address, size);
    if (status != KX_OK || size == 0)
        return status;
    const auto* begin = static_cast<const uint8_t*>(data);
    Bytes bytes(begin, begin + size);
    // Only whole words can be written: what lies behind the caller's bytes in the last one has to stay.
    if (const size_t rest = size % 4) {
        uint8_t lastWord[4];
        status = readPiece(static_cast<uint32_t>(address + size - rest), lastWord, sizeof lastWord);
        bytes.insert(bytes.end(), lastWord + rest, lastWord + sizeof lastWord);
    }
    for (size_t done = 0; status == KX_OK && done < bytes.size(); done += kMaxReadMemory) {
        Bytes payload;
        status = perform(encodeWriteMemory(0, static_cast<uint32_t>(address + done), bytes.data() + done,
                                           std::min(bytes.size() - done, kMaxReadMemory)),
                         holdsBytes(kWriteAckSize), payload);
    }
    return status;
}

KX_Status GvcpPort::readRegister(uint64_t address, uint32_t& value)
{
    KX_Status status = checkUsable();
    if (status == KX_OK)
        status = checkAddress(address, 4);
    std::vector<uint32_t> values;
    if (status == KX_OK)
        status = readBatch({static_cast<uint32_t>(address)}, values);
    if (status == KX_OK)
        value = values[0];
    return status;
}

KX_Status GvcpPort::writeRegister(uint64_t address, uint32_t value)
{
    KX_Status status = checkWritable();
    if (status == KX_OK)
        status = checkAddress(address, 4);
    Bytes payload;
    if (status == KX_OK)
        status = perform(encodeWriteRegisters(0, {{static_cast<uint32_t>(address), value}}),
                         holdsBytes(kWriteAckSize), payload);
    return status;
}

// One request; appends to `values`.
KX_Status GvcpPort::readBatch(const std::vector<uint32_t>& addresses, std::vector<uint32_t>& values)
{
    Bytes payload;
    const KX_Status status =
        perform(encodeReadRegisters(0, addresses), holdsBytes(addresses.size() * 4), payload);
    if (status == KX_OK)
        for (size_t i = 0; i < addresses.size(); ++i)
            values.push_back(get32(&payload[i * 4]));
    return status;
}

// Answers name no addresses: two registers whose values are known stand around the batch, so that one in
// another order is no answer.
KX_Status GvcpPort::readFramed(std::vector<uint32_t> addresses, std::vector<uint32_t>& values)
{
    addresses.insert(addresses.begin(), RegVersion);
    addresses.push_back(RegMacLow);
    std::vector<uint32_t> answers;
    const KX_Status status = readBatch(addresses, answers);
    if (status != KX_OK)
        return status;
    if (answers.front() != m_version || answers.back() != m_macLow)
        return fail(KX_E_MALFORMED_ANSWER, "the camera answers registers in another order");
    values.insert(values.end(), answers.begin() + 1, answers.end() - 1);
    return KX_OK;
}

KX_Status GvcpPort::readRegisters(const std::vector<uint32_t>& addresses, std::vector<uint32_t>& values)
{
    values.clear();
    KX_Status status = checkUsable();
    for (size_t i = 0; status == KX_OK && i < addresses.size(); ++i)
        status = checkAddress(addresses[i], 4);

    std::vector<uint32_t> read;
    while (status == KX_OK && read.size() < addresses.size()) {
        const auto begin = addresses.begin() + static_cast<ptrdiff_t>(read.size());
        const size_t count = std::min(addresses.size() - read.size(), m_registersPerRequest);
        const std::vector<uint32_t> batch(begin, begin + static_cast<ptrdiff_t>(count));
        status = count > 1 ? readFramed(batch, read) : readBatch(batch, read);
    }
    if (status == KX_OK)
        values = std::move(read);
    return status;
}

KX_Status GvcpPort::descriptionUrls(std::vector<std::string>& urls)
{
    urls.clear();
    for (const uint32_t address : {RegFirstUrl, RegSecondUrl}) {
        char text[kUrlSize];
        const KX_Status status = readMemory(address, text, sizeof text);
        if (status != KX_OK && status != KX_E_GC_ACCESS)
            return status;
        // A camera may lack one of the two.
        const size_t length = status == KX_OK ? strnlen(text, sizeof text) : 0;
        if (length > 0)
            urls.emplace_back(text, length);
    }
    return KX_OK;
}

} // namespace kx
