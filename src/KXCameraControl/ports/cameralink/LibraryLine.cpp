#include "KXCameraControl/ports/cameralink/LibraryLine.h"

#include "gencp/SerialFrame.h"
#include "gentl/ClSerial.h"

#include <algorithm>
#include <cstring>
#include <thread>

namespace kx
{

using namespace gentl;
using std::chrono::milliseconds;

namespace
{

// Of one call that waits: a port is left alone soon when somebody closes it, and a library that does not come
// back in time is told from one that waits.
constexpr milliseconds kLongestWait{500};

Writer message(Request request)
{
    return Writer().u32(static_cast<uint32_t>(request));
}

uint32_t waitUntil(SerialLine::Clock::time_point deadline)
{
    const auto left = std::chrono::ceil<milliseconds>(deadline - SerialLine::Clock::now());
    const milliseconds most = std::min(kLongestWait, gentlCallTime() / 2);
    return static_cast<uint32_t>(std::clamp(left, milliseconds(0), most).count());
}

KX_Status statusOfOpening(const HostReply& reply)
{
    if (reply.status != KX_E_DEVICE)
        return reply.status;
    switch (reply.code) {
    case clserial::ErrPortInUse:
        return KX_E_CONTROL_REFUSED;
    case clserial::ErrInvalidIndex:
        return KX_E_NO_DEVICE;
    default:
        return KX_E_NETWORK;
    }
}

} // namespace

LibraryLine::LibraryLine(std::string library, uint32_t index, std::string portName)
    : m_library(std::move(library)), m_index(index), m_portName(std::move(portName))
{}

HostReply LibraryLine::ask(const Writer& message)
{
    HostReply reply = m_link->request(message);
    if (reply.status != KX_OK)
        m_errorText = reply.text;
    return reply;
}

KX_Status LibraryLine::open()
{
    HostReply reply;
    m_link = HostLink::open(m_library, nullptr, reply, Hosted::SerialLibrary);
    m_errorText = reply.text;
    const KX_Status status = m_link ? take() : reply.status;
    if (status != KX_OK)
        m_link.reset();
    return status;
}

KX_Status LibraryLine::take()
{
    const auto end = Clock::now() + kLookPatience;
    for (;;) {
        const KX_Status status = statusOfOpening(ask(message(Request::OpenSerialPort).u32(m_index)));
        if (status != KX_E_CONTROL_REFUSED || Clock::now() >= end)
            return status;
        std::this_thread::sleep_for(kLookPause);
    }
}

void LibraryLine::close()
{
    if (m_link && !m_link->isOver())
        m_link->request(message(Request::Close));
    m_link.reset();
}

bool LibraryLine::setBaudRate(uint32_t baud)
{
    const auto* const rate = std::find_if(std::begin(gencp::kBaudRates), std::end(gencp::kBaudRates),
                                          [&](const gencp::BaudRate& one) { return one.baud == baud; });
    return rate != std::end(gencp::kBaudRates) &&
           ask(message(Request::SetSerialRate).u32(rate->bit)).status == KX_OK;
}

SerialLine::Outcome LibraryLine::meaningOf(const HostReply& reply)
{
    switch (reply.status) {
    case KX_OK:
        return Outcome::Done;
    case KX_E_NO_ANSWER:
    case KX_E_CONNECTION_LOST:
        return Outcome::Gone;
    default:
        return Outcome::Failed;
    }
}

SerialLine::Outcome LibraryLine::write(const uint8_t* data, size_t size, Clock::time_point deadline)
{
    for (size_t done = 0; done < size;) {
        const HostReply reply = ask(message(Request::WriteSerial)
                                        .u32(waitUntil(deadline))
                                        .block(data + done, std::min(size - done, kMaxBlock)));
        if (reply.status != KX_OK)
            return meaningOf(reply);
        done += Reader(reply.content).u32();
        if (done < size && Clock::now() >= deadline)
            return Outcome::TimedOut;
    }
    return Outcome::Done;
}

SerialLine::Outcome LibraryLine::read(uint8_t* data, size_t capacity, size_t& size,
                                      Clock::time_point deadline)
{
    const auto most = static_cast<uint32_t>(std::min(capacity, kMaxBlock));
    for (;;) {
        const HostReply reply = ask(message(Request::ReadSerial).u32(waitUntil(deadline)).u32(most));
        if (reply.status != KX_OK)
            return meaningOf(reply);
        const Bytes block = Reader(reply.content).block();
        size = std::min<size_t>(block.size(), most);
        if (size > 0) {
            std::memcpy(data, block.data(), size);
            return Outcome::Done;
        }
        if (Clock::now() >= deadline)
            return Outcome::TimedOut;
    }
}

} // namespace kx
