#include "gentl/Channel.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace gentl
{

namespace
{

constexpr size_t kMostEnds = 2; // with one message

// Room for what comes with a message, aligned as the system wants it.
union Attached
{
    cmsghdr head;
    char room[CMSG_SPACE(kMostEnds * sizeof(int))];
};

using Outcome = Channel::Outcome;

Outcome wait(int descriptor, std::optional<Channel::Clock::time_point> deadline)
{
    for (;;) {
        using std::chrono::milliseconds;
        int patience = -1;
        if (deadline)
            patience = static_cast<int>(std::clamp<int64_t>(
                std::chrono::ceil<milliseconds>(*deadline - Channel::Clock::now()).count(), 0, 3600000));
        pollfd entry{descriptor, POLLIN, 0};
        const int count = ::poll(&entry, 1, patience);
        if (count < 0 && errno == EINTR)
            continue;
        if (count == 0)
            return Outcome::TimedOut;
        return count > 0 && (entry.revents & (POLLIN | POLLHUP)) != 0 ? Outcome::Done : Outcome::Gone;
    }
}

Outcome take(int descriptor, Bytes& message, std::vector<Channel>& ends)
{
    message.resize(kMaxMessage);
    iovec part{message.data(), message.size()};
    msghdr packet{};
    Attached attached{};
    packet.msg_iov = &part;
    packet.msg_iovlen = 1;
    packet.msg_control = &attached;
    packet.msg_controllen = sizeof attached;
    ssize_t size = 0;
    do
        size = ::recvmsg(descriptor, &packet, MSG_CMSG_CLOEXEC);
    while (size < 0 && errno == EINTR);
    for (cmsghdr* head = size > 0 ? CMSG_FIRSTHDR(&packet) : nullptr; head;
         head = CMSG_NXTHDR(&packet, head)) {
        if (head->cmsg_level != SOL_SOCKET || head->cmsg_type != SCM_RIGHTS)
            continue;
        int descriptors[kMostEnds] = {};
        const size_t count = std::min((head->cmsg_len - CMSG_LEN(0)) / sizeof(int), kMostEnds);
        std::memcpy(descriptors, CMSG_DATA(head), count * sizeof(int));
        for (size_t i = 0; i < count; ++i)
            ends.emplace_back(descriptors[i]);
    }
    message.resize(static_cast<size_t>(std::max<ssize_t>(size, 0)));
    return size > 0 && (packet.msg_flags & MSG_TRUNC) == 0 ? Outcome::Done : Outcome::Gone;
}

} // namespace

Channel& Channel::operator=(Channel&& other) noexcept
{
    if (this != &other) {
        close();
        m_descriptor = std::exchange(other.m_descriptor, kNone);
    }
    return *this;
}

std::pair<Channel, Channel> Channel::pair()
{
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return {};
    return {Channel(ends[0]), Channel(ends[1])};
}

void Channel::close()
{
    if (isOpen())
        ::close(static_cast<int>(m_descriptor));
    m_descriptor = kNone;
}

void Channel::shutDown()
{
    if (isOpen())
        ::shutdown(static_cast<int>(m_descriptor), SHUT_RDWR);
}

bool Channel::send(const Bytes& message, const std::vector<Descriptor>& handedOver, intptr_t)
{
    iovec part{const_cast<uint8_t*>(message.data()), message.size()};
    msghdr packet{};
    packet.msg_iov = &part;
    packet.msg_iovlen = 1;
    Attached attached{};
    if (!handedOver.empty() && handedOver.size() <= kMostEnds) {
        const std::vector<int> descriptors(handedOver.begin(), handedOver.end());
        const size_t size = descriptors.size() * sizeof(int);
        packet.msg_control = &attached;
        packet.msg_controllen = CMSG_SPACE(size);
        attached.head.cmsg_level = SOL_SOCKET;
        attached.head.cmsg_type = SCM_RIGHTS;
        attached.head.cmsg_len = CMSG_LEN(size);
        std::memcpy(CMSG_DATA(&attached.head), descriptors.data(), size);
    }
    ssize_t sent = 0;
    do
        sent = ::sendmsg(static_cast<int>(m_descriptor), &packet, MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(message.size());
}

Channel::Outcome Channel::receive(Bytes& message, std::optional<Clock::time_point> deadline,
                                  std::vector<Channel>* taken)
{
    const Outcome waited = wait(static_cast<int>(m_descriptor), deadline);
    if (waited != Outcome::Done)
        return waited;
    std::vector<Channel> ends; // closed again unless somebody takes them
    const Outcome outcome = take(static_cast<int>(m_descriptor), message, ends);
    if (taken)
        *taken = std::move(ends);
    return outcome;
}

} // namespace gentl
