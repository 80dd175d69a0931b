// One request and its answer: tries, PENDING_ACK, statuses.
#include "KXCameraControl/ports/gige/GvcpChannel.h"

#include <algorithm>
#include <cstdio>

namespace kx
{

using namespace gvcp;
using std::chrono::milliseconds;

namespace
{

constexpr milliseconds kBusyPause{50};

const char* commandText(uint16_t command)
{
    switch (command) {
    case DiscoveryCmd:
        return "discovery";
    case ReadRegCmd:
        return "reading register";
    case WriteRegCmd:
        return "writing register";
    case ReadMemCmd:
        return "reading memory at";
    default:
        return "writing memory at";
    }
}

// "reading register 0x00000A00 of 127.0.0.11"
std::string describe(const Bytes& command, const std::string& peer)
{
    std::string text = commandText(get16(&command[2]));
    if (command.size() >= kHeaderSize + 4) {
        char address[16];
        std::snprintf(address, sizeof address, " 0x%08X",
                      static_cast<unsigned>(get32(&command[kHeaderSize])));
        text += address;
    }
    return text + " of " + peer;
}

} // namespace

KX_Status GvcpChannel::open(uint32_t address, uint32_t localAddress, std::string& error)
{
    m_peer = formatAddress(address);
    // The interface may have another address than when the camera was found.
    if ((m_socket.open(localAddress) || m_socket.open(0)) && m_socket.connect({address, kPort}))
        return KX_OK;
    error = "no socket to " + m_peer + ": " + m_socket.errorText();
    return KX_E_NETWORK;
}

void GvcpChannel::close()
{
    m_socket.close();
}

void GvcpChannel::giveNextId(Bytes& command)
{
    m_lastId = nextId(m_lastId);
    setId(command, m_lastId);
}

GvcpAnswer GvcpChannel::request(Bytes command, const PayloadCheck& isWellFormed, const PortTimeouts& timeouts)
{
    const std::lock_guard lock(m_mutex);
    Exchange exchange{std::move(command), isWellFormed, timeouts.perTry,
                      Clock::now() + timeouts.longestPending};
    giveNextId(exchange.command);
    GvcpAnswer answer;
    for (unsigned left = timeouts.tries; left > 0; --left) {
        answer = tryOnce(exchange);
        if (answer.status == KX_E_BUSY && left > 1) {
            // A camera takes a repeated id for a repeated command and may repeat its answer.
            giveNextId(exchange.command);
            if (m_interrupt.waitUntil(Clock::now() + std::min(kBusyPause, timeouts.perTry)))
                return {KX_E_ABORTED, Success, {}, "interrupted"};
        } else if (answer.status != KX_E_NO_ANSWER) {
            break;
        }
    }
    const bool isOverdue =
        answer.status == KX_E_NO_ANSWER && exchange.sawPending && Clock::now() >= exchange.pendingEnd;
    if (answer.status == KX_E_NO_ANSWER && exchange.sawMalformed)
        answer = {KX_E_MALFORMED_ANSWER, Success, {}, "malformed answer"};
    else if (answer.status == KX_E_NO_ANSWER)
        answer.text = "no answer in " + std::to_string(timeouts.tries) + " tries";
    if (answer.status != KX_OK)
        answer.text = describe(exchange.command, m_peer) + ": " + answer.text;
    answer.isOverdue = isOverdue;
    return answer;
}

GvcpAnswer GvcpChannel::tryOnce(Exchange& exchange)
{
    Outcome outcome = m_socket.send(exchange.command);
    if (outcome == Outcome::Done)
        ++m_requestCount;
    Clock::time_point deadline = Clock::now() + exchange.perTry;
    Bytes datagram;
    while (outcome == Outcome::Done) {
        outcome = m_socket.receive(datagram, deadline, nullptr, &m_interrupt);
        if (outcome != Outcome::Done)
            break;
        if (auto answer = take(exchange, datagram, deadline))
            return *answer;
        // Other datagrams must not keep a request alive that nobody answers.
        if (Clock::now() >= deadline)
            outcome = Outcome::TimedOut;
    }
    if (outcome == Outcome::Woken)
        return {KX_E_ABORTED, Success, {}, "interrupted"};
    if (outcome == Outcome::Failed)
        return {KX_E_NETWORK, Success, {}, m_socket.errorText()};
    return {};
}

// Nothing when the datagram is not the answer that is waited for.
std::optional<GvcpAnswer> GvcpChannel::take(Exchange& exchange, const Bytes& datagram,
                                            Clock::time_point& deadline)
{
    GvcpVerdict verdict = judgeAnswer(exchange.command, exchange.isWellFormed, datagram);
    switch (verdict.kind) {
    case GvcpVerdict::Kind::Answer:
        return std::move(verdict.answer);
    case GvcpVerdict::Kind::Pending: {
        exchange.sawPending = true;
        const auto wanted = Clock::now() + verdict.time + exchange.perTry;
        deadline = std::max(deadline, std::min(wanted, exchange.pendingEnd));
        break;
    }
    case GvcpVerdict::Kind::Malformed:
        exchange.sawMalformed = true;
        break;
    case GvcpVerdict::Kind::Stray:
        break;
    }
    return std::nullopt;
}

} // namespace kx
