// Sockets by the same few names on every system.
#pragma once

#if defined(_WIN32)
#include <winsock2.h>

#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

#include <cstddef>

namespace tests
{

#if defined(_WIN32)
using Descriptor = SOCKET;

inline Descriptor datagramSocket()
{
    static const int started = [] {
        WSADATA about;
        return WSAStartup(MAKEWORD(2, 2), &about);
    }();
    static_cast<void>(started);
    return ::socket(AF_INET, SOCK_DGRAM, 0);
}
inline void closeSocket(Descriptor descriptor)
{
    ::closesocket(descriptor);
}
inline int await(pollfd* entries, unsigned long count, int milliseconds)
{
    return ::WSAPoll(entries, count, milliseconds);
}
inline long sendTo(Descriptor descriptor, const void* data, size_t size)
{
    return ::send(descriptor, static_cast<const char*>(data), static_cast<int>(size), 0);
}
inline long receiveFrom(Descriptor descriptor, void* data, size_t size)
{
    return ::recv(descriptor, static_cast<char*>(data), static_cast<int>(size), 0);
}
#else
using Descriptor = int;

inline Descriptor datagramSocket()
{
    return ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
}
inline void closeSocket(Descriptor descriptor)
{
    ::close(descriptor);
}
inline int await(pollfd* entries, nfds_t count, int milliseconds)
{
    return ::poll(entries, count, milliseconds);
}
inline long sendTo(Descriptor descriptor, const void* data, size_t size)
{
    return ::send(descriptor, data, size, 0);
}
inline long receiveFrom(Descriptor descriptor, void* data, size_t size)
{
    return ::recv(descriptor, data, size, 0);
}
#endif

} // namespace tests
