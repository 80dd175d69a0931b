// What makes one emulated camera. The texts land in fixed fields of the bootstrap registers and are cut to
// them.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>

namespace emu
{

struct CameraConfig
{
    std::string address;            // dotted quad of a local interface; port 3956 of it is taken
    std::string mask = "255.0.0.0"; // of its network, as 127.0.0.0/8 has it
    std::string mac;                // "02:00:00:00:00:01"; empty: one that is made of the address

    // Whether `address` is what the camera keeps. If not it is as delivered: nothing is kept, DHCP and
    // link-local addresses are switched on, and `address` is the link-local one.
    bool isPersistent = true;
    std::string dhcpAddress;                    // that a server gives it at power-up; empty: there is none
    std::string linkLocalAddress;               // at power-up without another; empty: `address`
    std::chrono::milliseconds restartTime{100}; // from DeviceReset until it answers again
    // Who moves the address to where the camera's packets go: told when the camera itself takes one or gives
    // it up, on the camera's thread. Empty: the address is one that the host has anyway.
    std::function<void(uint32_t address, uint32_t mask, bool isTaken)> plumb;

    // The GenICam description: the text, or a file that holds it (a text wins); with neither, the emulator's
    // own, which then also takes the emulator's own seed.
    std::string description;
    std::string descriptionFile;

    std::string manufacturer = "Emulated cameras"; // 31 bytes
    std::string model = "EMU-1";                   // 31
    std::string firmware = "1.0.0";                // 31, the device version of discovery
    std::string serial = "EMU0001";                // 15
    std::string userName;                          // 15

    std::string seed; // JSON as in Seed.h; applied after the built-in one

    bool zipped =
        false; // first URL names the zipped description, the second the plain one; else the other way
    // URL texts to serve instead; {name}, {address}, {length} and {schema} are replaced by those of the plain
    // (zipped: the zipped) description. 511 bytes.
    std::string firstUrl;
    std::string secondUrl;
    size_t descriptionLimit = std::numeric_limits<size_t>::max(); // bytes of the description that are served

    bool concatenation =
        true; // several registers per READREG and WRITEREG, and the capability bit that says so
    bool answersEverybody = true;         // to a search from another network that says that this is welcome
    bool broadcast = false;               // answer broadcast discovery as well
    std::chrono::milliseconds latency{0}; // from each request to its answer
};

} // namespace emu
