// ARP probes by a packet socket (RFC 5227, "Probing an Address"; Linux: CAP_NET_RAW), and a connection
// attempt.
#include "KXCameraControl/ports/gige/Neighbours.h"

#include "gvcp/Gvcp.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <netinet/if_ether.h>
#include <netinet/in.h>
#include <netpacket/packet.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kx
{
namespace
{

using std::chrono::milliseconds;

constexpr int kProbes = 3;
constexpr milliseconds kPerProbe{250};
constexpr uint16_t kSomePort = 80;

class Descriptor
{
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return m_number; }

private:
    const int m_number;
};

bool isReady(int descriptor, short events, Clock::time_point deadline)
{
    for (;;) {
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now()).count();
        pollfd entry{descriptor, events, 0};
        const int ready = ::poll(&entry, 1, static_cast<int>(std::clamp<int64_t>(left, 0, 60000)));
        if (ready >= 0 || errno != EINTR)
            return ready > 0;
    }
}

struct Link
{
    int index = 0;
    uint8_t mac[ETH_ALEN] = {};
};

// Nothing of lines that are no Ethernet.
std::optional<Link> linkOf(int descriptor, const std::string& name)
{
    Link link;
    ifreq request{};
    std::snprintf(request.ifr_name, sizeof request.ifr_name, "%s", name.c_str());
    if (::ioctl(descriptor, SIOCGIFINDEX, &request) != 0)
        return std::nullopt;
    link.index = request.ifr_ifindex;
    if (::ioctl(descriptor, SIOCGIFHWADDR, &request) != 0 || request.ifr_hwaddr.sa_family != ARPHRD_ETHER)
        return std::nullopt;
    std::memcpy(link.mac, request.ifr_hwaddr.sa_data, ETH_ALEN);
    return link;
}

// From no address: nobody's table of neighbours changes by it.
bool sendProbe(int descriptor, const Link& link, uint32_t address)
{
    ether_arp probe{};
    probe.arp_hrd = htons(ARPHRD_ETHER);
    probe.arp_pro = htons(ETHERTYPE_IP);
    probe.arp_hln = ETH_ALEN;
    probe.arp_pln = sizeof probe.arp_tpa;
    probe.arp_op = htons(ARPOP_REQUEST);
    std::memcpy(probe.arp_sha, link.mac, ETH_ALEN);
    gvcp::put32(probe.arp_tpa, address);
    sockaddr_ll everybody{};
    everybody.sll_family = AF_PACKET;
    everybody.sll_protocol = htons(ETH_P_ARP);
    everybody.sll_ifindex = link.index;
    everybody.sll_halen = ETH_ALEN;
    std::memset(everybody.sll_addr, 0xFF, ETH_ALEN);
    return ::sendto(descriptor, &probe, sizeof probe, 0, reinterpret_cast<const sockaddr*>(&everybody),
                    sizeof everybody) == ssize_t(sizeof probe);
}

std::optional<ArpAnswer> answerFor(uint32_t address, const ether_arp& packet, ssize_t size)
{
    if (size < ssize_t(sizeof packet) || packet.arp_op != htons(ARPOP_REPLY) ||
        gvcp::get32(packet.arp_spa) != address)
        return std::nullopt;
    return ArpAnswer{true, gvcp::get16(packet.arp_sha), gvcp::get32(packet.arp_sha + 2)};
}

std::optional<ArpAnswer> awaitAnswer(int descriptor, const Link& link, uint32_t address)
{
    const auto deadline = Clock::now() + kPerProbe;
    while (isReady(descriptor, POLLIN, deadline)) {
        ether_arp packet{};
        sockaddr_ll from{};
        socklen_t fromSize = sizeof from;
        const ssize_t size = ::recvfrom(descriptor, &packet, sizeof packet, MSG_DONTWAIT,
                                        reinterpret_cast<sockaddr*>(&from), &fromSize);
        const auto answer = answerFor(address, packet, size);
        if (answer && from.sll_ifindex == link.index)
            return answer;
        if (Clock::now() >= deadline)
            break;
    }
    return std::nullopt;
}

} // namespace

std::optional<ArpAnswer> askByArp(const NetworkInterface& interface, uint32_t address)
{
    const Descriptor packets(::socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC, htons(ETH_P_ARP)));
    if (packets < 0)
        return std::nullopt;
    const auto link = linkOf(packets, interface.name);
    if (!link)
        return std::nullopt;
    for (int left = kProbes; left > 0; --left) {
        if (!sendProbe(packets, *link, address))
            return std::nullopt;
        if (const auto answer = awaitAnswer(packets, *link, address))
            return answer;
    }
    return ArpAnswer{};
}

bool answersConnections(uint32_t address, Clock::time_point deadline)
{
    const Descriptor attempt(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_addr.s_addr = htonl(address);
    name.sin_port = htons(kSomePort);
    if (::connect(attempt, reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0)
        return true;
    if (errno != EINPROGRESS)
        return errno == ECONNREFUSED;
    int error = 0;
    socklen_t size = sizeof error;
    if (!isReady(attempt, POLLOUT, deadline) ||
        ::getsockopt(attempt, SOL_SOCKET, SO_ERROR, &error, &size) != 0)
        return false;
    return error == 0 || error == ECONNREFUSED;
}

} // namespace kx
