// One end of a pair of local sockets that keep messages apart, and hand over further ends.
#pragma once

#include "gentl/Message.h"

#include <chrono>
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

    Channel() = default;
    explicit Channel(int descriptor) : m_descriptor(descriptor) {} // takes it over
    Channel(Channel&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    Channel& operator=(Channel&& other) noexcept;
    ~Channel() { close(); }

    // Both closed where the operating system refuses. Programs that are started do not inherit them.
    static std::pair<Channel, Channel> pair();

    bool isOpen() const { return m_descriptor >= 0; }
    int descriptor() const { return m_descriptor; }
    void close();
    // Ends a receive() that waits in another thread; the channel stays open for that one.
    void shutDown();

    // False: the other end is gone, or does not take any more messages. `handedOver` are duplicated for it.
    bool send(const Bytes& message, const std::vector<int>& handedOver = {});
    // Without a deadline waits for ever. `taken` gets the ends that came with the message; where it is null,
    // they are closed. Whoever receives them owns them.
    Outcome receive(Bytes& message, std::optional<Clock::time_point> deadline,
                    std::vector<Channel>* taken = nullptr);

private:
    Outcome wait(std::optional<Clock::time_point> deadline);
    Outcome take(Bytes& message, std::vector<Channel>& ends);

    int m_descriptor = -1;
};

} // namespace gentl
