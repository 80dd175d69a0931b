// A fresh address of 127.0.0.0/8 for every emulated camera of a test, so that all tests run in parallel.
#pragma once

#include "support/Datagrams.h"

#if defined(_WIN32)
#include <process.h>
#else
#include <unistd.h>
#endif

#include <atomic>
#include <stdexcept>
#include <string>

namespace tests
{

// Whether a camera could take UDP port 3956 of the address now.
inline bool isFreeForCamera(const std::string& address)
{
    const Descriptor probe = datagramSocket();
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_port = htons(3956);
    name.sin_addr.s_addr = ::inet_addr(address.c_str());
    const bool isFree = ::bind(probe, reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0;
    closeSocket(probe);
    return isFree;
}

// Unique within the process for 254 calls, and among processes as long as their ids differ in the lower bits;
// an address that has a camera is passed over. 127.0.0.0/16 stays free for people.
inline std::string freshLoopbackAddress()
{
    static std::atomic<unsigned> used{0};
    const auto process = static_cast<unsigned>(getpid());
    const std::string network =
        "127." + std::to_string(1 + process / 254 % 254) + "." + std::to_string(1 + process % 254) + ".";
    for (int attempt = 0; attempt < 254; ++attempt) {
        const std::string address = network + std::to_string(1 + used++ % 254);
        if (isFreeForCamera(address))
            return address;
    }
    throw std::runtime_error("no free address in " + network + "0/24");
}

} // namespace tests
