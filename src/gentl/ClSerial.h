// The serial library of a frame grabber, as its maker brings it (Camera Link 1.1, "API Functions"): the
// numbers and the functions of the standard under names of our own. The makers' own is the one of their own
// boards; the one that calls all of theirs (clallserial) has other parameters and is not needed.
#pragma once

#include <cstdint>

namespace clserial
{

using Port = void*;    // one that is open
using Error = int32_t; // what every function gives back

enum : Error
{
    Success = 0,
    ErrBufferTooSmall = -10001,
    ErrPortInUse = -10003,
    ErrTimeout = -10004,
    ErrInvalidIndex = -10005,
    ErrInvalidReference = -10006,
    ErrErrorNotFound = -10007,
    ErrBaudRateNotSupported = -10008
};

// Rates are the bits of gencp::kBaudRates; a port that was just opened has 9,600 baud.
//
// The functions, X(name, parameters, needed). Those that came with version 1.1 of the standard and are not
// needed: a library without them stays at one rate, is asked byte by byte, and has no words for its errors.
// clang-format off
#define CLSERIAL_FUNCTIONS(X)                                                         \
    X(clSerialInit, (uint32_t index, Port* port), true)                               \
    X(clSerialClose, (Port port), true)                                               \
    /* Waits for all of `size` bytes, for `time` ms */                                \
    X(clSerialRead, (Port port, char* data, uint32_t* size, uint32_t time), true)     \
    X(clSerialWrite, (Port port, char* data, uint32_t* size, uint32_t time), true)    \
    X(clGetNumSerialPorts, (uint32_t* count), true)                                   \
    X(clGetSerialPortIdentifier, (uint32_t index, char* id, uint32_t* size), true)    \
    X(clGetSupportedBaudRates, (Port port, uint32_t* rates), false)                   \
    X(clSetBaudRate, (Port port, uint32_t rate), false)                               \
    X(clGetNumBytesAvail, (Port port, uint32_t* count), false)                        \
    X(clFlushPort, (Port port), false)                                                \
    X(clGetErrorText, (Error error, char* text, uint32_t* size), false)
// clang-format on

} // namespace clserial
