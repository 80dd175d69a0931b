#include "camera_emulator/UdpSocket.h"

#include <winsock2.h>

#include <mswsock.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace emu
{
namespace
{

constexpr size_t kMaxDatagram = 65536;
constexpr uint32_t kEverybody = 0xFFFFFFFF;

// Sockets are kernel handles, of which 32 bits count on 64-bit systems too.
SOCKET systemSocket(int descriptor)
{
    return descriptor < 0 ? INVALID_SOCKET : static_cast<SOCKET>(descriptor);
}

sockaddr_in socketAddress(uint32_t address, uint16_t port)
{
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = htonl(address);
    result.sin_port = htons(port);
    return result;
}

std::string lastError()
{
    return std::system_category().message(::WSAGetLastError());
}

// Winsock is begun once in this process, and ends with it.
int newSocket()
{
    static const int begun = [] {
        WSADATA about;
        return WSAStartup(MAKEWORD(2, 2), &about);
    }();
    const SOCKET made = begun == 0 ? ::socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP) : INVALID_SOCKET;
    u_long isNonBlocking = 1;
    if (made != INVALID_SOCKET)
        ::ioctlsocket(made, static_cast<long>(FIONBIO), &isNonBlocking);
    return made == INVALID_SOCKET ? -1 : static_cast<int>(made);
}

bool switchOn(int descriptor, int option)
{
    const BOOL on = TRUE;
    return ::setsockopt(systemSocket(descriptor), SOL_SOCKET, option, reinterpret_cast<const char*>(&on),
                        sizeof on) == 0;
}

// A client that went away must not make the camera deaf to the next one.
void leaveRefusalsOut(int descriptor)
{
    BOOL off = FALSE;
    DWORD ignored = 0;
    ::WSAIoctl(systemSocket(descriptor), SIO_UDP_CONNRESET, &off, sizeof off, nullptr, 0, &ignored, nullptr,
               nullptr);
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

// Where the limited broadcast is no address to bind to, what is for everybody arrives at a socket of any
// address.
std::optional<std::string> UdpSocket::bind(uint32_t address, uint16_t port, bool shared)
{
    close();
    m_descriptor = newSocket();
    const auto isBoundTo = [&](uint32_t place) {
        const sockaddr_in name = socketAddress(place, port);
        return ::bind(systemSocket(m_descriptor), reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0;
    };
    const bool good = m_descriptor >= 0 && (!shared || switchOn(m_descriptor, SO_REUSEADDR)) &&
                      switchOn(m_descriptor, SO_BROADCAST) &&
                      (isBoundTo(address) || (address == kEverybody && isBoundTo(INADDR_ANY)));
    if (good) {
        leaveRefusalsOut(m_descriptor);
        return std::nullopt;
    }
    const std::string reason = lastError();
    close();
    return reason;
}

void UdpSocket::close()
{
    if (m_descriptor >= 0)
        ::closesocket(systemSocket(std::exchange(m_descriptor, -1)));
}

std::optional<Bytes> UdpSocket::receive(Peer& from)
{
    Bytes packet(kMaxDatagram);
    sockaddr_in name{};
    int nameSize = sizeof name;
    const int size =
        ::recvfrom(systemSocket(m_descriptor), reinterpret_cast<char*>(packet.data()),
                   static_cast<int>(packet.size()), 0, reinterpret_cast<sockaddr*>(&name), &nameSize);
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
    ::sendto(systemSocket(m_descriptor), reinterpret_cast<const char*>(packet.data()),
             static_cast<int>(packet.size()), 0, reinterpret_cast<const sockaddr*>(&name), sizeof name);
}

// Only sockets can be waited for together with sockets: this one sends to itself.
std::optional<std::string> EndSignal::open()
{
    close();
    m_isRaised = false;
    m_readEnd = newSocket();
    sockaddr_in name = socketAddress(INADDR_LOOPBACK, 0);
    int size = sizeof name;
    const SOCKET own = systemSocket(m_readEnd);
    if (m_readEnd >= 0 && ::bind(own, reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0 &&
        ::getsockname(own, reinterpret_cast<sockaddr*>(&name), &size) == 0 &&
        ::connect(own, reinterpret_cast<const sockaddr*>(&name), size) == 0)
        return std::nullopt;
    const std::string reason = lastError();
    close();
    return reason;
}

void EndSignal::raise()
{
    m_isRaised = true;
    ::send(systemSocket(m_readEnd), "", 1, 0);
}

void EndSignal::close()
{
    if (m_readEnd >= 0)
        ::closesocket(systemSocket(std::exchange(m_readEnd, -1)));
}

void waitForTraffic(const UdpSocket& unicast, const UdpSocket& broadcast, const EndSignal& end,
                    std::optional<Clock::time_point> due)
{
    WSAPOLLFD entries[3];
    ULONG count = 0;
    for (const int descriptor : {unicast.descriptor(), broadcast.descriptor(), end.m_readEnd})
        if (descriptor >= 0)
            entries[count++] = {systemSocket(descriptor), POLLRDNORM, 0};
    int timeout = -1;
    if (due) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - Clock::now()).count();
        timeout = static_cast<int>(std::clamp<int64_t>(left, 0, 60000));
    }
    ::WSAPoll(entries, count, timeout);
}

} // namespace emu
