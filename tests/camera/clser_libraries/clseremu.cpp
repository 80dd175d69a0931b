// A grabber's serial library for tests: its ports are the system's lines that CLSEREMU_PORTS names (separated
// by commas). CLSEREMU_FAULTS ("clSerialRead=hang@40,clSetBaudRate=crash") makes it fail at the n-th call of
// a function and at all behind that: crash, hang, refuse, or long (more bytes than there is room for are
// told). Built without the functions that a library may lack, it is one of those.
#include "KXCameraControl/ports/cameralink/Terminal.h"
#include "gencp/SerialFrame.h"
#include "gentl/ClSerial.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace clserial;
using kx::SerialLine;
using std::chrono::milliseconds;

namespace
{

std::vector<std::string> listOf(const char* variable)
{
    const char* setting = std::getenv(variable);
    std::istringstream stream(setting ? setting : "");
    std::vector<std::string> parts;
    for (std::string part; std::getline(stream, part, ',');)
        parts.push_back(part);
    return parts;
}

// The fault that the call meets; empty: none.
std::string faultOf(const std::string& function)
{
    static std::mutex mutex;
    static std::map<std::string, int> calls;
    const std::lock_guard lock(mutex);
    const int count = ++calls[function];
    for (const std::string& fault : listOf("CLSEREMU_FAULTS")) {
        const size_t equals = fault.find('=');
        const size_t at = fault.find('@');
        const int first = at == std::string::npos ? 1 : std::atoi(fault.c_str() + at + 1);
        if (fault.substr(0, equals) == function && count >= first)
            return fault.substr(equals + 1, at - equals - 1);
    }
    return {};
}

// What the fault asks for; true: the call is refused.
bool fails(const std::string& fault)
{
    if (fault == "crash")
        abort();
    while (fault == "hang")
        std::this_thread::sleep_for(std::chrono::hours(1));
    return fault == "refuse";
}

bool meets(const char* function)
{
    return fails(faultOf(function));
}

constexpr Error kRefused = -10500; // one of this maker's own

// A port of the board, with what has arrived and was not asked for yet.
class BoardPort
{
public:
    explicit BoardPort(const std::string& name) : m_line(kx::newTerminal(name)) {}

    SerialLine& line() { return *m_line; }

    // All there is; false: the line fails.
    bool gather(SerialLine::Clock::time_point end)
    {
        uint8_t piece[4096];
        size_t count = 0;
        const SerialLine::Outcome outcome = m_line->read(piece, sizeof piece, count, end);
        if (outcome == SerialLine::Outcome::Done)
            m_arrived.append(reinterpret_cast<const char*>(piece), count);
        return outcome == SerialLine::Outcome::Done || outcome == SerialLine::Outcome::TimedOut;
    }
    std::string& arrived() { return m_arrived; }

private:
    const std::unique_ptr<SerialLine> m_line;
    std::string m_arrived;
};

BoardPort& boardPort(Port port)
{
    return *static_cast<BoardPort*>(port);
}

[[maybe_unused]] Error giveText(const std::string& words, char* text, uint32_t* size)
{
    const bool fits = words.size() < *size;
    if (fits)
        std::memcpy(text, words.c_str(), words.size() + 1);
    *size = static_cast<uint32_t>(words.size() + 1);
    return fits ? Success : ErrBufferTooSmall;
}

} // namespace

#ifdef _WIN32
#define EXPORTED extern "C" __declspec(dllexport) Error
#else
#define EXPORTED extern "C" __attribute__((visibility("default"))) Error
#endif

EXPORTED clSerialInit(uint32_t index, Port* port)
{
    if (meets("clSerialInit"))
        return kRefused;
    const std::vector<std::string> ports = listOf("CLSEREMU_PORTS");
    if (index >= ports.size())
        return ErrInvalidIndex;
    auto opened = std::make_unique<BoardPort>(ports[index]);
    const KX_Status status = opened->line().open();
    if (status != KX_OK)
        return status == KX_E_CONTROL_REFUSED ? ErrPortInUse : kRefused;
    *port = opened.release();
    return Success;
}

EXPORTED clSerialClose(Port port)
{
    meets("clSerialClose");
    delete &boardPort(port);
    return Success;
}

EXPORTED clSerialRead(Port port, char* data, uint32_t* size, uint32_t time)
{
    const std::string fault = faultOf("clSerialRead");
    if (fails(fault))
        return kRefused;
    if (fault == "long") {
        *size += 1000;
        return Success;
    }
    const auto end = SerialLine::Clock::now() + milliseconds(time);
    std::string& arrived = boardPort(port).arrived();
    while (arrived.size() < *size) {
        if (!boardPort(port).gather(end))
            return kRefused;
        if (arrived.size() < *size && SerialLine::Clock::now() >= end)
            return ErrTimeout;
    }
    arrived.copy(data, *size);
    arrived.erase(0, *size);
    return Success;
}

EXPORTED clSerialWrite(Port port, char* data, uint32_t* size, uint32_t time)
{
    if (meets("clSerialWrite"))
        return kRefused;
    switch (boardPort(port).line().write(reinterpret_cast<const uint8_t*>(data), *size,
                                         SerialLine::Clock::now() + milliseconds(time))) {
    case SerialLine::Outcome::Done:
        return Success;
    case SerialLine::Outcome::TimedOut:
        *size = 0;
        return ErrTimeout;
    default:
        return kRefused;
    }
}

#ifndef CLSEREMU_1_0

EXPORTED clGetNumSerialPorts(uint32_t* count)
{
    if (meets("clGetNumSerialPorts"))
        return kRefused;
    *count = static_cast<uint32_t>(listOf("CLSEREMU_PORTS").size());
    return Success;
}

EXPORTED clGetSerialPortIdentifier(uint32_t index, char* id, uint32_t* size)
{
    const std::string fault = faultOf("clGetSerialPortIdentifier");
    if (fault == "long") {
        *size += 1000;
        return Success;
    }
    return giveText("Emulated board, port " + std::string(1, static_cast<char>('A' + index)), id, size);
}

#endif
#ifndef CLSEREMU_PLAIN

EXPORTED clGetSupportedBaudRates(Port, uint32_t* rates)
{
    if (meets("clGetSupportedBaudRates"))
        return kRefused;
    *rates = 0xFF;
    return Success;
}

EXPORTED clSetBaudRate(Port port, uint32_t rate)
{
    if (meets("clSetBaudRate"))
        return kRefused;
    for (const gencp::BaudRate& one : gencp::kBaudRates)
        if (one.bit == rate && boardPort(port).line().setBaudRate(one.baud))
            return Success;
    return ErrBaudRateNotSupported;
}

EXPORTED clGetNumBytesAvail(Port port, uint32_t* count)
{
    if (meets("clGetNumBytesAvail") || !boardPort(port).gather(SerialLine::Clock::now()))
        return kRefused;
    *count = static_cast<uint32_t>(boardPort(port).arrived().size());
    return Success;
}

EXPORTED clFlushPort(Port port)
{
    if (meets("clFlushPort"))
        return kRefused;
    const bool isWell = boardPort(port).gather(SerialLine::Clock::now());
    boardPort(port).arrived().clear();
    return isWell ? Success : kRefused;
}

EXPORTED clGetErrorText(Error error, char* text, uint32_t* size)
{
    if (error == kRefused)
        return giveText("the board refuses", text, size);
    return error == ErrPortInUse ? giveText("the port is in use", text, size) : ErrErrorNotFound;
}

#endif
