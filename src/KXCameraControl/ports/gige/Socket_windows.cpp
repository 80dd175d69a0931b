// UDP sockets and network interfaces of Windows.
#include "KXCameraControl/ports/gige/Socket.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <iphlpapi.h>
#include <mswsock.h>
#undef interface

#include <algorithm>
#include <system_error>
#include <utility>

namespace kx
{
namespace
{

// Far more than any GVCP packet; what is longer arrives cut, and the length in its header gives it away.
constexpr size_t kMaxDatagram = 2048;

// Sockets are kernel handles, of which 32 bits count on 64-bit systems too.
SOCKET systemSocket(int descriptor)
{
    return static_cast<SOCKET>(descriptor);
}

// Winsock is begun once in this process, and ends with it.
void beginWinsock()
{
    static const int begun = [] {
        WSADATA about;
        return WSAStartup(MAKEWORD(2, 2), &about);
    }();
    static_cast<void>(begun);
}

std::string textOf(int error)
{
    return std::system_category().message(error);
}

sockaddr_in toSystem(Endpoint endpoint)
{
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_addr.s_addr = htonl(endpoint.address);
    name.sin_port = htons(endpoint.port);
    return name;
}

int newSocket()
{
    beginWinsock();
    const SOCKET made = ::socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    u_long isNonBlocking = 1;
    if (made == INVALID_SOCKET)
        return -1;
    if (::ioctlsocket(made, static_cast<long>(FIONBIO), &isNonBlocking) == 0)
        return static_cast<int>(made);
    ::closesocket(made);
    return -1;
}

bool bindTo(int descriptor, Endpoint local)
{
    const sockaddr_in name = toSystem(local);
    return ::bind(systemSocket(descriptor), reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0;
}

bool connectTo(int descriptor, Endpoint peer)
{
    const sockaddr_in name = toSystem(peer);
    return ::connect(systemSocket(descriptor), reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0;
}

Endpoint nameOf(int descriptor)
{
    sockaddr_in name{};
    int size = sizeof name;
    if (::getsockname(systemSocket(descriptor), reinterpret_cast<sockaddr*>(&name), &size) != 0)
        return {};
    return {ntohl(name.sin_addr.s_addr), ntohs(name.sin_port)};
}

bool mayBroadcastFrom(int descriptor)
{
    const BOOL on = TRUE;
    return ::setsockopt(systemSocket(descriptor), SOL_SOCKET, SO_BROADCAST,
                        reinterpret_cast<const char*>(&on), sizeof on) == 0;
}

// One absent camera among those that are asked would make the next receive() fail for all of them.
void leaveRefusalsOut(int descriptor)
{
    BOOL off = FALSE;
    DWORD ignored = 0;
    ::WSAIoctl(systemSocket(descriptor), SIO_UDP_CONNRESET, &off, sizeof off, nullptr, 0, &ignored, nullptr,
               nullptr);
}

// The wait that is left, over and over: a timeout here counts whole milliseconds of a coarse clock.
int pollUntil(WSAPOLLFD* entries, size_t count, Clock::time_point deadline)
{
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        const int timeout = static_cast<int>(std::clamp<int64_t>(left, 0, 3600000));
        const int ready = ::WSAPoll(entries, static_cast<ULONG>(count), timeout);
        if (ready != 0 || Clock::now() >= deadline)
            return ready;
    }
}

// There is no room to send in for a moment: the datagram is lost, as datagrams get lost.
bool isCrowded(int error)
{
    return error == WSAENOBUFS || error == WSAEWOULDBLOCK;
}

bool meansNobodyThere(int error)
{
    return error == WSAECONNRESET || error == WSAECONNREFUSED || error == WSAEHOSTUNREACH ||
           error == WSAEHOSTDOWN;
}

uint32_t maskOf(unsigned prefixLength)
{
    return prefixLength == 0 ? 0 : ~uint32_t(0) << (32 - std::min(prefixLength, 32u));
}

std::string utf8Of(const wchar_t* text)
{
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<size_t>(std::max(size, 1)), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), size, nullptr, nullptr);
    utf8.resize(utf8.size() - 1);
    return utf8;
}

// Lines from point to point have nobody to broadcast to.
bool isSearched(const IP_ADAPTER_ADDRESSES& adapter)
{
    return adapter.OperStatus == IfOperStatusUp && adapter.IfType != IF_TYPE_PPP &&
           adapter.IfType != IF_TYPE_TUNNEL;
}

void addInterfaces(const IP_ADAPTER_ADDRESSES& adapter, std::vector<NetworkInterface>& found)
{
    for (auto* entry = adapter.FirstUnicastAddress; entry; entry = entry->Next) {
        if (entry->Address.lpSockaddr->sa_family != AF_INET)
            continue;
        const auto* name = reinterpret_cast<const sockaddr_in*>(entry->Address.lpSockaddr);
        const uint32_t mask = maskOf(entry->OnLinkPrefixLength);
        NetworkInterface added{utf8Of(adapter.FriendlyName), ntohl(name->sin_addr.s_addr), mask,
                               INADDR_BROADCAST, adapter.IfType == IF_TYPE_SOFTWARE_LOOPBACK};
        // Cameras with an address of another network hear the limited broadcast only; the loopback has none.
        if (added.isLoopback)
            added.broadcast = added.address | ~mask;
        found.push_back(added);
    }
}

} // namespace

std::vector<NetworkInterface> networkInterfaces()
{
    constexpr ULONG flags = GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER;
    std::vector<IP_ADAPTER_ADDRESSES> room(64);
    ULONG result = ERROR_BUFFER_OVERFLOW;
    for (int attempt = 0; attempt < 3 && result == ERROR_BUFFER_OVERFLOW; ++attempt) {
        auto size = static_cast<ULONG>(room.size() * sizeof room.front());
        result = ::GetAdaptersAddresses(AF_INET, flags, nullptr, room.data(), &size);
        if (result == ERROR_BUFFER_OVERFLOW)
            room.resize(size / sizeof room.front() + 1);
    }
    std::vector<NetworkInterface> found;
    if (result != NO_ERROR)
        return found;
    for (const IP_ADAPTER_ADDRESSES* adapter = room.data(); adapter; adapter = adapter->Next)
        if (isSearched(*adapter))
            addInterfaces(*adapter, found);
    return found;
}

// Only sockets can be waited for together with sockets: this one sends to itself.
WakeSignal::WakeSignal()
{
    m_readEnd = newSocket();
    if (m_readEnd >= 0 && bindTo(m_readEnd, {INADDR_LOOPBACK, 0}) && connectTo(m_readEnd, nameOf(m_readEnd)))
        m_writeEnd = m_readEnd;
}

WakeSignal::~WakeSignal()
{
    if (m_readEnd >= 0)
        ::closesocket(systemSocket(m_readEnd));
}

void WakeSignal::raise()
{
    ::send(systemSocket(m_writeEnd), "", 1, 0);
}

void WakeSignal::clear()
{
    char bytes[64];
    while (::recv(systemSocket(m_readEnd), bytes, sizeof bytes, 0) > 0) {
    }
}

bool WakeSignal::waitUntil(Clock::time_point deadline) const
{
    WSAPOLLFD entry{systemSocket(m_readEnd), POLLRDNORM, 0};
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
    m_errorText = textOf(::WSAGetLastError());
    close();
    return false;
}

bool UdpSocket::open(uint32_t localAddress, bool mayBroadcast)
{
    close();
    m_descriptor = newSocket();
    const bool isGood = keep(m_descriptor >= 0 && bindTo(m_descriptor, {localAddress, 0}) &&
                             (!mayBroadcast || mayBroadcastFrom(m_descriptor)));
    if (isGood && mayBroadcast)
        leaveRefusalsOut(m_descriptor);
    return isGood;
}

// A socket with an interface's address sends by this interface here, and hears what is for everybody there.
bool UdpSocket::openAt(const NetworkInterface& place)
{
    m_source = place.address;
    return open(place.address, true);
}

uint32_t UdpSocket::localAddress() const
{
    return nameOf(m_descriptor).address;
}

bool UdpSocket::connect(Endpoint peer)
{
    return keep(connectTo(m_descriptor, peer));
}

void UdpSocket::close()
{
    if (m_descriptor >= 0)
        ::closesocket(systemSocket(std::exchange(m_descriptor, -1)));
}

Outcome UdpSocket::send(const std::vector<uint8_t>& datagram)
{
    const auto attempt = [&] {
        return ::send(systemSocket(m_descriptor), reinterpret_cast<const char*>(datagram.data()),
                      static_cast<int>(datagram.size()), 0);
    };
    // The refusal of an earlier datagram may be told here instead of sending.
    if (attempt() >= 0 || (meansNobodyThere(::WSAGetLastError()) && attempt() >= 0))
        return Outcome::Done;
    const int error = ::WSAGetLastError();
    if (isCrowded(error))
        return Outcome::Done;
    if (meansNobodyThere(error))
        return Outcome::Refused;
    m_errorText = textOf(error);
    return Outcome::Failed;
}

Outcome UdpSocket::sendTo(Endpoint peer, const std::vector<uint8_t>& datagram)
{
    const sockaddr_in name = toSystem(peer);
    if (::sendto(systemSocket(m_descriptor), reinterpret_cast<const char*>(datagram.data()),
                 static_cast<int>(datagram.size()), 0, reinterpret_cast<const sockaddr*>(&name),
                 sizeof name) >= 0)
        return Outcome::Done;
    const int error = ::WSAGetLastError();
    if (isCrowded(error))
        return Outcome::Done;
    m_errorText = textOf(error);
    return Outcome::Failed;
}

Outcome UdpSocket::waitReadable(Clock::time_point deadline, const WakeSignal* wake)
{
    WSAPOLLFD entries[] = {{systemSocket(m_descriptor), POLLRDNORM, 0}, {INVALID_SOCKET, POLLRDNORM, 0}};
    if (wake)
        entries[1].fd = systemSocket(wake->m_readEnd);
    const int ready = pollUntil(entries, wake ? 2 : 1, deadline);
    if (ready == 0)
        return Outcome::TimedOut;
    if (ready > 0)
        return entries[1].revents != 0 ? Outcome::Woken : Outcome::Done;
    m_errorText = textOf(::WSAGetLastError());
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
        int nameSize = sizeof name;
        const int size =
            ::recvfrom(systemSocket(m_descriptor), reinterpret_cast<char*>(datagram.data()),
                       static_cast<int>(datagram.size()), 0, reinterpret_cast<sockaddr*>(&name), &nameSize);
        const int error = size < 0 ? ::WSAGetLastError() : 0;
        // One that is too long is told as an error, with the bytes that there was room for.
        if (size >= 0 || error == WSAEMSGSIZE) {
            datagram.resize(size >= 0 ? static_cast<size_t>(size) : kMaxDatagram);
            if (from)
                *from = {ntohl(name.sin_addr.s_addr), ntohs(name.sin_port)};
            return Outcome::Done;
        }
        if (meansNobodyThere(error))
            return Outcome::Refused;
        if (error != WSAEWOULDBLOCK) {
            m_errorText = textOf(error);
            return Outcome::Failed;
        }
    }
}

std::optional<size_t> UdpSocket::waitForAny(const std::vector<UdpSocket>& sockets, Clock::time_point deadline)
{
    std::vector<WSAPOLLFD> entries;
    for (const UdpSocket& socket : sockets)
        entries.push_back({systemSocket(socket.m_descriptor), POLLRDNORM, 0});
    if (pollUntil(entries.data(), entries.size(), deadline) <= 0)
        return std::nullopt;
    const auto ready = std::find_if(entries.begin(), entries.end(),
                                    [](const WSAPOLLFD& entry) { return entry.revents != 0; });
    return static_cast<size_t>(ready - entries.begin());
}

} // namespace kx
