// The port that one session has open in a grabber's serial library.
#pragma once

#include "gentl_host/SerialLibrary.h"

namespace gentl_host
{

class SerialPort
{
public:
    explicit SerialPort(SerialLibrary& library) : m_library(library) {}

    // All of them throw Failure.
    void open(Caller& call, uint32_t index);
    void close(Caller& call); // idempotent
    void setRate(Caller& call, uint32_t bit);
    // How many bytes went within the time, in ms.
    uint32_t write(Caller& call, Bytes data, uint32_t time);
    // What there is as soon as there is anything; empty: nothing came within the time.
    Bytes read(Caller& call, size_t most, uint32_t time);

private:
    void mustBeOpen() const;
    uint32_t readSome(Caller& call, char* data, uint32_t size, uint32_t time);

    SerialLibrary& m_library;
    bool m_isOpen = false;
    clserial::Port m_port = nullptr; // null is a port as any other
    uint32_t m_rates = 0;
};

} // namespace gentl_host
