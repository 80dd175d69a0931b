// How camera_emulator_gentl.cti reaches the emulated cameras: local sockets that keep messages apart. Each
// message begins with one of the letters below.
#pragma once

#include <cstddef>

namespace emu
{

// From the producer. Who, Open and Close are answered by a message with the same letter.
enum GrabberLetter : char
{
    GrabberWho = 'W',    // -> texts, each followed by a line feed, as GrabberField counts them
    GrabberOpen = 'O',   // and '1' for control, '0' for reading -> '1', or '0': somebody else has control
    GrabberClose = 'X',  // gives control back
    GrabberPacket = 'P', // and a GenCP packet, big-endian -> the same, with its answers when they are due
};

enum GrabberField
{
    FieldInterface,
    FieldLayer,
    FieldVendor,
    FieldModel,
    FieldSerial,
    FieldVersion,
    FieldUserName,
    FieldControl, // "1": somebody has control
    FieldFirstUrl,
    FieldSecondUrl,
    GrabberFieldCount
};

constexpr size_t kGrabberMessage = 64 * 1024; // at most

} // namespace emu
