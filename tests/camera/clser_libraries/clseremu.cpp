// A grabber's serial library for tests: its ports are the terminals that CLSEREMU_PORTS names (separated by
// commas). CLSEREMU_FAULTS ("clSerialRead=hang@40,clSetBaudRate=crash") makes it fail at the n-th call of a
// function and at all behind that: crash, hang, refuse, or long (more bytes than there is room for are told).
// Built without the functions that a library may lack, it is one of those.
#include "gencp/SerialFrame.h"
#include "gentl/ClSerial.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

using namespace clserial;
using Clock = std::chrono::steady_clock;

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

// True: the call is refused.
bool meets(const char* function)
{
    const std::string fault = faultOf(function);
    if (fault == "crash")
        abort();
    while (fault == "hang")
        pause();
    return fault == "refuse";
}

constexpr Error kRefused = -10500; // one of this maker's own

int descriptorOf(Port port)
{
    return static_cast<int>(reinterpret_cast<intptr_t>(port)) - 1;
}

bool setRate(int line, uint32_t baud)
{
    termios settings{};
    if (tcgetattr(line, &settings) != 0 || cfsetspeed(&settings, baud) != 0)
        return false;
    cfmakeraw(&settings);
    return tcsetattr(line, TCSADRAIN, &settings) == 0;
}

bool waitFor(int line, short what, Clock::time_point end)
{
    pollfd entry{line, what, 0};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    return poll(&entry, 1, static_cast<int>(std::max<int64_t>(left, 0))) > 0 && (entry.revents & what) != 0;
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

#define EXPORTED extern "C" __attribute__((visibility("default"))) Error

EXPORTED clSerialInit(uint32_t index, Port* port)
{
    if (meets("clSerialInit"))
        return kRefused;
    const std::vector<std::string> ports = listOf("CLSEREMU_PORTS");
    if (index >= ports.size())
        return ErrInvalidIndex;
    const int line = open(ports[index].c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (line < 0)
        return kRefused;
    if (flock(line, LOCK_EX | LOCK_NB) != 0) {
        close(line);
        return ErrPortInUse;
    }
    setRate(line, 9600);
    tcflush(line, TCIFLUSH);
    *port = reinterpret_cast<Port>(static_cast<intptr_t>(line + 1));
    return Success;
}

EXPORTED clSerialClose(Port port)
{
    meets("clSerialClose");
    close(descriptorOf(port));
    return Success;
}

EXPORTED clSerialRead(Port port, char* data, uint32_t* size, uint32_t time)
{
    const std::string fault = faultOf("clSerialRead");
    if (fault == "crash")
        abort();
    while (fault == "hang")
        pause();
    if (fault == "refuse")
        return kRefused;
    if (fault == "long") {
        *size += 1000;
        return Success;
    }
    const auto end = Clock::now() + std::chrono::milliseconds(time);
    for (uint32_t done = 0; done < *size;) {
        if (!waitFor(descriptorOf(port), POLLIN, end))
            return ErrTimeout;
        const ssize_t count = read(descriptorOf(port), data + done, *size - done);
        if (count <= 0)
            return kRefused;
        done += static_cast<uint32_t>(count);
    }
    return Success;
}

EXPORTED clSerialWrite(Port port, char* data, uint32_t* size, uint32_t time)
{
    if (meets("clSerialWrite"))
        return kRefused;
    const auto end = Clock::now() + std::chrono::milliseconds(time);
    uint32_t done = 0;
    while (done < *size && waitFor(descriptorOf(port), POLLOUT, end)) {
        const ssize_t count = write(descriptorOf(port), data + done, *size - done);
        if (count < 0)
            return kRefused;
        done += static_cast<uint32_t>(count);
    }
    const bool isWhole = done == *size;
    *size = done;
    return isWhole ? Success : ErrTimeout;
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
        if (one.bit == rate && setRate(descriptorOf(port), one.baud))
            return Success;
    return ErrBaudRateNotSupported;
}

EXPORTED clGetNumBytesAvail(Port port, uint32_t* count)
{
    int waiting = 0;
    if (meets("clGetNumBytesAvail") || ioctl(descriptorOf(port), FIONREAD, &waiting) != 0)
        return kRefused;
    *count = static_cast<uint32_t>(waiting);
    return Success;
}

EXPORTED clFlushPort(Port port)
{
    if (meets("clFlushPort"))
        return kRefused;
    tcflush(descriptorOf(port), TCIFLUSH);
    return Success;
}

EXPORTED clGetErrorText(Error error, char* text, uint32_t* size)
{
    if (error == kRefused)
        return giveText("the board refuses", text, size);
    return error == ErrPortInUse ? giveText("the port is in use", text, size) : ErrErrorNotFound;
}

#endif
