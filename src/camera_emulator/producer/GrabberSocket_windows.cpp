#include "camera_emulator/producer/GrabberSocket.h"

#include "camera_emulator/GrabberLine.h"

#include <winsock2.h>

#include <algorithm>
#include <cstdlib>

namespace producer
{

namespace
{

constexpr size_t kHead = 4;
constexpr DWORD kRestPatience = 1000; // ms; for what is left of a message that has begun

SOCKET socketOf(intptr_t value)
{
    return static_cast<SOCKET>(value);
}

// Once for the process that has loaded the producer, which may never end using it.
bool haveSockets()
{
    static const bool are = [] {
        WSADATA data{};
        return WSAStartup(MAKEWORD(2, 2), &data) == 0;
    }();
    return are;
}

bool receiveAll(SOCKET socket, uint8_t* data, size_t size)
{
    for (size_t done = 0; done < size;) {
        const int count =
            ::recv(socket, reinterpret_cast<char*>(data + done), static_cast<int>(size - done), 0);
        if (count <= 0)
            return false;
        done += static_cast<size_t>(count);
    }
    return true;
}

} // namespace

bool GrabberSocket::connect(const std::string& place)
{
    close();
    if (!haveSockets())
        return false;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<u_short>(std::strtoul(place.c_str(), nullptr, 10)));
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    m_socket = static_cast<intptr_t>(socket);
    const BOOL atOnce = TRUE;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&atOnce), sizeof atOnce);
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&kRestPatience),
               sizeof kRestPatience);
    if (::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0)
        return true;
    close();
    return false;
}

void GrabberSocket::close()
{
    if (m_socket != kNone)
        closesocket(socketOf(m_socket));
    m_socket = kNone;
}

bool GrabberSocket::isGone() const
{
    if (m_socket == kNone)
        return true;
    WSAPOLLFD entry{socketOf(m_socket), POLLIN, 0};
    if (WSAPoll(&entry, 1, 0) <= 0)
        return false;
    char next = 0;
    return (entry.revents & (POLLHUP | POLLERR)) != 0 || ::recv(socketOf(m_socket), &next, 1, MSG_PEEK) == 0;
}

bool GrabberSocket::send(const Bytes& message)
{
    Bytes frame(kHead);
    for (size_t i = 0; i < kHead; ++i)
        frame[i] = static_cast<uint8_t>(message.size() >> (8 * (kHead - 1 - i)));
    frame.insert(frame.end(), message.begin(), message.end());
    return ::send(socketOf(m_socket), reinterpret_cast<const char*>(frame.data()),
                  static_cast<int>(frame.size()), 0) == static_cast<int>(frame.size());
}

bool GrabberSocket::receive(Bytes& message, std::chrono::milliseconds patience)
{
    WSAPOLLFD entry{socketOf(m_socket), POLLIN, 0};
    uint8_t head[kHead] = {};
    if (WSAPoll(&entry, 1, static_cast<int>(patience.count())) <= 0 ||
        !receiveAll(socketOf(m_socket), head, kHead))
        return false;
    size_t size = 0;
    for (const uint8_t byte : head)
        size = size << 8 | byte;
    message.resize(std::min(size, emu::kGrabberMessage));
    return size > 0 && receiveAll(socketOf(m_socket), message.data(), message.size());
}

} // namespace producer
