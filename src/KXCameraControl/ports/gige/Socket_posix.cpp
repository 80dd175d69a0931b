// UDP sockets and network interfaces of POSIX systems.
#include "KXCameraControl/ports/gige/Socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace kx
{
namespace
{

// Far more than any GVCP packet; what is longer arrives cut, and the length in its header gives it away.
constexpr size_t kMaxDatagram = 2048;

sockaddr_in toSystem(Endpoint endpoint)
{
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_addr.s_addr = htonl(endpoint.address);
    name.sin_port = htons(endpoint.port);
    return name;
}

uint32_t addressOf(const sockaddr* name)
{
    sockaddr_in ip;
    std::memcpy(&ip, name, sizeof ip);
    return ntohl(ip.sin_addr.s_addr);
}

// poll() again after a signal, with the time that is left.
int pollUntil(pollfd* entries, size_t count, Clock::time_point deadline)
{
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        const int timeout = static_cast<int>(std::clamp<int64_t>(left, 0, 3600000));
        const int ready = ::poll(entries, static_cast<nfds_t>(count), timeout);
        if (ready >= 0 || errno != EINTR)
            return ready;
    }
}

// What goes with a datagram that shall say that it comes from this address of ours.
class SourceNote
{
public:
    explicit SourceNote(uint32_t address)
    {
        in_pktinfo source{};
        source.ipi_spec_dst.s_addr = htonl(address);
        auto* header = reinterpret_cast<cmsghdr*>(m_room);
        header->cmsg_level = IPPROTO_IP;
        header->cmsg_type = IP_PKTINFO;
        header->cmsg_len = CMSG_LEN(sizeof source);
        std::memcpy(CMSG_DATA(header), &source, sizeof source);
    }
    void addTo(msghdr& message)
    {
        message.msg_control = m_room;
        message.msg_controllen = sizeof m_room;
    }

private:
    alignas(cmsghdr) char m_room[CMSG_SPACE(sizeof(in_pktinfo))] = {};
};

// There is no room to send in for a moment: the datagram is lost, as datagrams get lost.
bool isCrowded(int error)
{
    return error == ENOBUFS || error == EAGAIN || error == ENOMEM;
}

// Again behind a signal: nothing was sent.
template <typename Send>
ssize_t sent(const Send& send)
{
    ssize_t count = send();
    while (count < 0 && errno == EINTR)
        count = send();
    return count;
}

bool meansNobodyThere(int error)
{
    return error == ECONNREFUSED || error == EHOSTUNREACH || error == EHOSTDOWN;
}

} // namespace

std::vector<NetworkInterface> networkInterfaces()
{
    std::vector<NetworkInterface> found;
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0)
        return found;
    for (const ifaddrs* entry = list; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET || !(entry->ifa_flags & IFF_UP))
            continue;
        const uint32_t mask = entry->ifa_netmask ? addressOf(entry->ifa_netmask) : INADDR_BROADCAST;
        NetworkInterface interface {
            entry->ifa_name, addressOf(entry->ifa_addr), mask, INADDR_BROADCAST,
                (entry->ifa_flags & IFF_LOOPBACK) != 0
        };
        // Cameras with an address of another network hear the limited broadcast only. The loopback has no
        // such thing, its own network's broadcast address works.
        if (interface.isLoopback)
            interface.broadcast = interface.address | ~mask;
        if (interface.isLoopback || (entry->ifa_flags & IFF_BROADCAST))
            found.push_back(interface);
    }
    ::freeifaddrs(list);
    return found;
}

WakeSignal::WakeSignal()
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0) {
        m_readEnd = ends[0];
        m_writeEnd = ends[1];
    }
}

WakeSignal::~WakeSignal()
{
    if (m_readEnd >= 0)
        ::close(m_readEnd);
    if (m_writeEnd >= 0)
        ::close(m_writeEnd);
}

void WakeSignal::raise()
{
    // A full pipe is a raised signal as well.
    (void)!::write(m_writeEnd, "", 1);
}

void WakeSignal::clear()
{
    char bytes[64];
    while (::read(m_readEnd, bytes, sizeof bytes) > 0) {
    }
}

bool WakeSignal::waitUntil(Clock::time_point deadline) const
{
    pollfd entry{m_readEnd, POLLIN, 0};
    return pollUntil(&entry, 1, deadline) > 0;
}

UdpSocket::~UdpSocket()
{
    close();
}

UdpSocket::UdpSocket(UdpSocket&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1)), m_source(other.m_source),
      m_errorText(std::move(other.m_errorText))
{}

UdpSocket& UdpSocket::operator=(UdpSocket&& other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    std::swap(m_source, other.m_source);
    std::swap(m_errorText, other.m_errorText);
    return *this;
}

bool UdpSocket::keep(bool good)
{
    if (good)
        return true;
    m_errorText = std::strerror(errno);
    close();
    return false;
}

bool UdpSocket::open(uint32_t localAddress, bool mayBroadcast)
{
    close();
    m_descriptor = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const sockaddr_in local = toSystem({localAddress, 0});
    const int on = 1;
    return keep(m_descriptor >= 0 &&
                ::bind(m_descriptor, reinterpret_cast<const sockaddr*>(&local), sizeof local) == 0 &&
                (!mayBroadcast || ::setsockopt(m_descriptor, SOL_SOCKET, SO_BROADCAST, &on, sizeof on) == 0));
}

// A socket with the interface's address hears neither answers to everybody nor those of cameras whose route
// back leads elsewhere; one that is bound to the device does, and tells its address with each datagram.
bool UdpSocket::openAt(const NetworkInterface& interface)
{
    const auto isBound = [&] {
        return ::setsockopt(m_descriptor, SOL_SOCKET, SO_BINDTODEVICE, interface.name.data(),
                            static_cast<socklen_t>(interface.name.size())) == 0;
    };
    if (interface.isLoopback || !open(0, true) || !isBound())
        return open(interface.address, true);
    m_source = interface.address;
    return true;
}

uint32_t UdpSocket::localAddress() const
{
    sockaddr_in name{};
    socklen_t size = sizeof name;
    return ::getsockname(m_descriptor, reinterpret_cast<sockaddr*>(&name), &size) == 0
               ? ntohl(name.sin_addr.s_addr)
               : 0;
}

bool UdpSocket::connect(Endpoint peer)
{
    const sockaddr_in name = toSystem(peer);
    return keep(::connect(m_descriptor, reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0);
}

void UdpSocket::close()
{
    if (m_descriptor >= 0)
        ::close(std::exchange(m_descriptor, -1));
}

Outcome UdpSocket::send(const std::vector<uint8_t>& datagram)
{
    // The refusal of an earlier datagram is told here instead of sending; this one has not been tried yet.
    const auto send = [&] { return ::send(m_descriptor, datagram.data(), datagram.size(), 0); };
    ssize_t count = sent(send);
    if (count < 0 && errno == ECONNREFUSED)
        count = sent(send);
    if (count >= 0 || isCrowded(errno))
        return Outcome::Done;
    if (meansNobodyThere(errno))
        return Outcome::Refused;
    m_errorText = std::strerror(errno);
    return Outcome::Failed;
}

Outcome UdpSocket::sendTo(Endpoint peer, const std::vector<uint8_t>& datagram)
{
    sockaddr_in name = toSystem(peer);
    iovec content{const_cast<uint8_t*>(datagram.data()), datagram.size()};
    msghdr message{};
    message.msg_name = &name;
    message.msg_namelen = sizeof name;
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    SourceNote note(m_source);
    if (m_source != 0)
        note.addTo(message);
    if (sent([&] { return ::sendmsg(m_descriptor, &message, 0); }) >= 0 || isCrowded(errno))
        return Outcome::Done;
    m_errorText = std::strerror(errno);
    return Outcome::Failed;
}

Outcome UdpSocket::waitReadable(Clock::time_point deadline, const WakeSignal* wake)
{
    // poll() leaves negative descriptors out.
    pollfd entries[] = {{m_descriptor, POLLIN, 0}, {wake ? wake->m_readEnd : -1, POLLIN, 0}};
    const int ready = pollUntil(entries, 2, deadline);
    if (ready == 0)
        return Outcome::TimedOut;
    if (ready > 0)
        return entries[1].revents != 0 ? Outcome::Woken : Outcome::Done;
    m_errorText = std::strerror(errno);
    return Outcome::Failed;
}

Outcome UdpSocket::receive(std::vector<uint8_t>& datagram, Clock::time_point deadline, Endpoint* from,
                           const WakeSignal* wake)
{
    for (;;) {
        const Outcome ready = waitReadable(deadline, wake);
        if (ready != Outcome::Done)
            return ready;
        datagram.resize(kMaxDatagram);
        sockaddr_in name{};
        socklen_t nameSize = sizeof name;
        const ssize_t size = ::recvfrom(m_descriptor, datagram.data(), datagram.size(), 0,
                                        reinterpret_cast<sockaddr*>(&name), &nameSize);
        if (size >= 0) {
            datagram.resize(static_cast<size_t>(size));
            if (from)
                *from = {ntohl(name.sin_addr.s_addr), ntohs(name.sin_port)};
            return Outcome::Done;
        }
        if (meansNobodyThere(errno))
            return Outcome::Refused;
        // A datagram with a wrong checksum wakes poll() and is gone then.
        if (errno != EAGAIN && errno != EINTR) {
            m_errorText = std::strerror(errno);
            return Outcome::Failed;
        }
    }
}

std::optional<size_t> UdpSocket::waitForAny(const std::vector<UdpSocket>& sockets, Clock::time_point deadline)
{
    std::vector<pollfd> entries;
    for (const UdpSocket& socket : sockets)
        entries.push_back({socket.m_descriptor, POLLIN, 0});
    if (pollUntil(entries.data(), entries.size(), deadline) <= 0)
        return std::nullopt;
    const auto ready =
        std::find_if(entries.begin(), entries.end(), [](const pollfd& entry) { return entry.revents != 0; });
    return static_cast<size_t>(ready - entries.begin());
}

} // namespace kx
