#include "camera_emulator/producer/GrabberSocket.h"

#include "camera_emulator/GrabberLine.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace producer
{

bool GrabberSocket::connect(const std::string& place)
{
    close();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, place.c_str(), std::min(place.size(), sizeof address.sun_path - 1));
    const int socket = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    m_socket = socket;
    if (socket >= 0 && ::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0)
        return true;
    close();
    return false;
}

void GrabberSocket::close()
{
    if (m_socket != kNone)
        ::close(static_cast<int>(m_socket));
    m_socket = kNone;
}

bool GrabberSocket::isGone() const
{
    pollfd entry{static_cast<int>(m_socket), 0, 0};
    return m_socket == kNone || (::poll(&entry, 1, 0) > 0 && (entry.revents & (POLLHUP | POLLERR)) != 0);
}

bool GrabberSocket::send(const Bytes& message)
{
    return ::send(static_cast<int>(m_socket), message.data(), message.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(message.size());
}

bool GrabberSocket::receive(Bytes& message, std::chrono::milliseconds patience)
{
    const int socket = static_cast<int>(m_socket);
    pollfd entry{socket, POLLIN, 0};
    if (::poll(&entry, 1, static_cast<int>(patience.count())) <= 0)
        return false;
    message.resize(emu::kGrabberMessage);
    const ssize_t size = ::recv(socket, message.data(), message.size(), 0);
    message.resize(static_cast<size_t>(std::max<ssize_t>(size, 0)));
    return size > 0;
}

} // namespace producer
