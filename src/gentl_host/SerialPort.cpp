#include "gentl_host/SerialPort.h"

#include <algorithm>

namespace gentl_host
{

namespace
{

constexpr uint32_t kFirstRate = 0x1; // 9,600 baud
constexpr size_t kSpare = 64;        // what a library writes too much lands here first

} // namespace

void SerialPort::mustBeOpen() const
{
    if (!m_isOpen)
        throw Failure{Outcome::Bad, clserial::Success, "no port is open"};
}

void SerialPort::open(Caller& call, uint32_t index)
{
    if (m_isOpen)
        throw Failure{Outcome::Bad, clserial::Success, "a port is open"};
    m_port = m_library.open(call, index);
    m_isOpen = true;
    m_rates = kFirstRate;
    // A library without one of the two stays at the rate that ports begin with.
    if (m_library.clGetSupportedBaudRates && m_library.clSetBaudRate &&
        call(m_library.clGetSupportedBaudRates, m_port, &m_rates) != clserial::Success)
        m_rates = kFirstRate;
}

void SerialPort::close(Caller& call)
{
    if (std::exchange(m_isOpen, false))
        call(m_library.clSerialClose, m_port);
}

void SerialPort::setRate(Caller& call, uint32_t bit)
{
    mustBeOpen();
    if ((m_rates & bit) == 0)
        throw Failure{Outcome::Refused, clserial::ErrBaudRateNotSupported, "the port has no such rate"};
    if (m_library.clSetBaudRate)
        m_library.must(call, call(m_library.clSetBaudRate, m_port, bit));
    if (m_library.clFlushPort)
        m_library.must(call, call(m_library.clFlushPort, m_port));
}

uint32_t SerialPort::write(Caller& call, Bytes data, uint32_t time)
{
    mustBeOpen();
    auto size = static_cast<uint32_t>(data.size());
    const auto error =
        call(m_library.clSerialWrite, m_port, reinterpret_cast<char*>(data.data()), &size, time);
    if (error != clserial::ErrTimeout)
        m_library.must(call, error);
    call.checkLength(size, data.size());
    return error == clserial::Success ? static_cast<uint32_t>(data.size()) : size;
}

uint32_t SerialPort::readSome(Caller& call, char* data, uint32_t size, uint32_t time)
{
    uint32_t done = size;
    const auto error = call(m_library.clSerialRead, m_port, data, &done, time);
    if (error == clserial::ErrTimeout)
        return 0;
    m_library.must(call, error);
    call.checkLength(done, size);
    return done;
}

// A library waits for as many bytes as it is asked for: one is waited for, and what there is by then is taken
// along.
Bytes SerialPort::read(Caller& call, size_t most, uint32_t time)
{
    mustBeOpen();
    Bytes data(most + kSpare);
    char* const room = reinterpret_cast<char*>(data.data());
    uint32_t size = readSome(call, room, 1, time);
    uint32_t waiting = 0;
    if (size > 0 && m_library.clGetNumBytesAvail)
        m_library.must(call, call(m_library.clGetNumBytesAvail, m_port, &waiting));
    waiting = std::min<uint32_t>(waiting, static_cast<uint32_t>(most) - size);
    if (size > 0 && waiting > 0)
        size += readSome(call, room + size, waiting, time);
    data.resize(size);
    return data;
}

} // namespace gentl_host
