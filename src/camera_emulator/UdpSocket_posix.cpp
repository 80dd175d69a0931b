#include "camera_emulator/UdpSocket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace emu
{
namespace
{

constexpr size_t kMaxDatagram = 65536;

sockaddr_in socketAddress(uint32_t address, uint16_t port)
{
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = htonl(address);
    result.sin_port = htons(port);
    return result;
}

} // namespace

UdpSocket::~UdpSocket()
{
    close();
}

UdpSocket::UdpSocket(UdpSocket&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

UdpSocket& UdpSocket::operator=(UdpSocket&& other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

std::optional<std::string> UdpSocket::bind(uint32_t address, uint16_t port, bool shared)
{
    close();
    m_descriptor = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const sockaddr_in name = socketAddress(address, port);
    const int on = 1;
    bool good = m_descriptor >= 0;
    if (good && shared)
        good = ::setsockopt(m_descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0;
    // For answers to everybody.
    good = good && ::setsockopt(m_descriptor, SOL_SOCKET, SO_BROADCAST, &on, sizeof on) == 0;
    good = good && ::bind(m_descriptor, reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0;
    if (good)
        return std::nullopt;
    const std::string reason = std::strerror(errno);
    close();
    return reason;
}

void UdpSocket::close()
{
    if (m_descriptor >= 0)
        ::close(std::exchange(m_descriptor, -1));
}

std::optional<Bytes> UdpSocket::receive(Peer& from)
{
    Bytes packet(kMaxDatagram);
    sockaddr_in name{};
    socklen_t nameSize = sizeof name;
    const ssize_t size = ::recvfrom(m_descriptor, packet.data(), packet.size(), 0,
                                    reinterpret_cast<sockaddr*>(&name), &nameSize);
    if (size < 0)
        return std::nullopt;
    packet.resize(static_cast<size_t>(size));
    from = {ntohl(name.sin_addr.s_addr), ntohs(name.sin_port)};
    return packet;
}

void UdpSocket::send(const Bytes& packet, Peer to)
{
    const sockaddr_in name = socketAddress(to.address, to.port);
    // UDP promises nothing: a packet that cannot be sent is a lost one.
    (void)::sendto(m_descriptor, packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&name),
                   sizeof name);
}

std::optional<std::string> EndSignal::open()
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return std::strerror(errno);
    close();
    m_isRaised = false;
    m_readEnd = ends[0];
    m_writeEnd = ends[1];
    return std::nullopt;
}

void EndSignal::raise()
{
    m_isRaised = true;
    (void)!::write(m_writeEnd, "", 1);
}

void EndSignal::close()
{
    for (int* end : {&m_readEnd, &m_writeEnd})
        if (*end >= 0)
            ::close(std::exchange(*end, -1));
}

void waitForTraffic(const UdpSocket& unicast, const UdpSocket& broadcast, const EndSignal& end,
                    std::optional<Clock::time_point> due)
{
    // poll() leaves negative descriptors out.
    pollfd entries[] = {
        {unicast.descriptor(), POLLIN, 0}, {broadcast.descriptor(), POLLIN, 0}, {end.m_readEnd, POLLIN, 0}};
    int timeout = -1;
    if (due) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - Clock::now()).count();
        timeout = static_cast<int>(std::clamp<int64_t>(left, 0, 60000));
    }
    (void)::poll(entries, 3, timeout);
}

} // namespace emu
