// One end of a pair of local sockets, on Windows of a named pipe, that keep messages apart and hand over
// further ends.
#pragma once

#include "gentl/Message.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace gentl
{

class Channel
{
public:
    using Clock = std::chrono::steady_clock;
    enum class Outcome
    {
        Done,
        TimedOut,
        Gone // the other end is closed, or what came is no message
    };

    // A file descriptor; on Windows a handle.
    using Descriptor = intptr_t;
    static constexpr Descriptor kNone = -1;

    Channel() = default;
    explicit Channel(Descriptor descriptor) : m_descriptor(descriptor) {} // takes it over
    Channel(Channel&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, kNone)) {}
    Channel& operator=(Channel&& other) noexcept;
    ~Channel() { close(); }

    // Both closed where the operating system refuses. Programs that are started do not inherit them.
    static std::pair<Channel, Channel> pair();

    bool isOpen() const { return m_descriptor != kNone; }
    Descriptor descriptor() const { return m_descriptor; }
    void close();
    // Of the first end of a pair: ends a receive() that waits in another thread; the channel stays open for
    // that one.
    void shutDown();

    // False: the other end is gone, or does not take any more messages. `handedOver` are duplicated for it;
    // on Windows for `process`, a handle of the process that it is in (0: this one).
    bool send(const Bytes& message, const std::vector<Descriptor>& handedOver = {}, intptr_t process = 0);
    // Without a deadline waits for ever. `taken` gets the ends that came with the message; where it is null,
    // they are closed. Whoever receives them owns them.
    Outcome receive(Bytes& message, std::optional<Clock::time_point> deadline,
                    std::vector<Channel>* taken = nullptr);

private:
    Descriptor m_descriptor = kNone;
};

} // namespace gentl
