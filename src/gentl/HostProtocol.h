// What the camera library and ie_gentl_host say to each other.
//
// The helper is started with the path of its library, a GenTL producer or a grabber's serial library, as its
// one argument and the control channel as descriptor kControlDescriptor, on Windows as its standard input. On
// that the library sends Connect, with one or two further channels: the first carries requests, each answered
// before the next is sent; the second one tells of a device's loss, by one message without content. The
// helper ends when the control channel closes, a session when its own does.
//
// While a request runs, the helper sends a Note before each call into the producer (the function's name):
// whoever waits knows what hangs or crashed, and each call has its own time. Requests whose answer is a list
// send an Item each. An Answer ends them.
#pragma once

#include <cstdint>

namespace gentl
{

// Changes with every change of this file; told by the answer to Load.
constexpr uint32_t kProtocolVersion = 2;
constexpr int kControlDescriptor = 3;

constexpr uint32_t kMostInterfaces = 64;
constexpr uint32_t kMostDevices = 256; // of one interface
constexpr uint32_t kMostUrls = 8;
constexpr uint32_t kMostRegisters = 128; // of one ReadRegisters
constexpr uint32_t kMostSerialPorts = 64;

enum class Request : uint32_t
{
    Connect = 1, // the control channel alone
    Load,        // -> version, memory in use in KiB; loads the producer and opens its system module
    Look,        // -> Items: interface id and name, device id, vendor, model, serial, version, layer (texts),
                 //    access status; answer: what some interface had against it (text, "": nothing)
    Interfaces,  // -> Items: id
    Open,        // interface id, device id, access flags; empty ids: the interface, the system
    Urls,        // -> Items: url
    Read,        // address, size -> block
    Write,       // address, block
    ReadRegisters, // count, addresses (32 bits) -> block, 4 bytes each
    IsThere,       // -> 1, or 0 once the device that is open was lost
    Close,

    // Of a serial library.
    LoadSerial,      // -> version, memory in use in KiB
    ListSerialPorts, // -> Items: the library's word for the port of that index
    OpenSerialPort,  // index; at 9,600 baud
    SetSerialRate,   // bit of the rate; what has arrived and was not read is forgotten
    WriteSerial,     // ms, block -> bytes written: all or, when the time is over, fewer
    ReadSerial,      // ms, bytes at most -> block; empty: the time is over
};

enum class Reply : uint32_t
{
    Note = 1, // text
    Item,
    Answer // an Outcome; Refused: error code, text; Bad: text
};

enum class Outcome : uint32_t
{
    Done,
    Refused, // the producer answered with an error
    Bad,     // the producer gave what the standard does not allow
    Unusable // it cannot be loaded at all
};

// What the helper ends with.
enum HostExit : int
{
    ExitDone = 0,
    ExitUsage = 2,
    ExitMemory = 113 // the producer took more memory than it may; no code of an aborted program
};

} // namespace gentl
