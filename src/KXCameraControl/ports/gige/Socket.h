// What the network ports need of the operating system, and nothing more. Everything that names a system call
// is in Socket_posix.cpp or Socket_windows.cpp. Addresses and port numbers are in host byte order.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kx
{

using Clock = std::chrono::steady_clock;

struct Endpoint
{
    uint32_t address = 0;
    uint16_t port = 0;
};

struct NetworkInterface
{
    std::string name;
    uint32_t address = 0;
    uint32_t mask = 0;
    uint32_t broadcast = 0; // where a datagram for everybody behind this interface goes
    bool isLoopback = false;

    bool hasInItsNetwork(uint32_t other) const { return ((address ^ other) & mask) == 0; }
};
// The IPv4 addresses of the interfaces that are up and can broadcast, and the loopback's.
std::vector<NetworkInterface> networkInterfaces();

// Ends the waiting of another thread. Stays raised until it is cleared.
class WakeSignal
{
public:
    WakeSignal();
    ~WakeSignal();
    WakeSignal(const WakeSignal&) = delete;
    WakeSignal& operator=(const WakeSignal&) = delete;

    void raise();
    void clear();
    // True when raised before `deadline`.
    bool waitUntil(Clock::time_point deadline) const;

private:
    friend class UdpSocket;
    int m_readEnd = -1;
    int m_writeEnd = -1;
};

enum class Outcome
{
    Done,
    TimedOut,
    Refused, // the network says that nobody listens there
    Woken,
    Failed // the operating system refused; errorText() says why
};

// One datagram socket. Not thread-safe.
class UdpSocket
{
public:
    UdpSocket() = default;
    ~UdpSocket();
    UdpSocket(UdpSocket&& other) noexcept;
    UdpSocket& operator=(UdpSocket&& other) noexcept;

    // `localAddress` 0: any. False: see errorText().
    bool open(uint32_t localAddress, bool mayBroadcast = false);
    // Sends by this interface alone, to everybody as well, and hears what arrives there, also of other
    // networks and for everybody. Where the system gives no such thing as open() with its address.
    bool openAt(const NetworkInterface& interface);
    // From now on only `peer` is heard, and its host's refusals are told.
    bool connect(Endpoint peer);
    void close();
    bool isOpen() const { return m_descriptor >= 0; }
    uint32_t localAddress() const; // 0: any, or not open

    Outcome send(const std::vector<uint8_t>& datagram); // to the connected peer
    Outcome sendTo(Endpoint peer, const std::vector<uint8_t>& datagram);
    // The next datagram; one that has arrived is taken even after the deadline. `from` and `wake` may be
    // null.
    Outcome receive(std::vector<uint8_t>& datagram, Clock::time_point deadline, Endpoint* from,
                    const WakeSignal* wake);
    // The index of a socket that has a datagram, or nothing when none has one before the deadline.
    static std::optional<size_t> waitForAny(const std::vector<UdpSocket>& sockets,
                                            Clock::time_point deadline);

    const std::string& errorText() const { return m_errorText; }

private:
    bool keep(bool good);
    Outcome waitReadable(Clock::time_point deadline, const WakeSignal* wake);

    int m_descriptor = -1;
    uint32_t m_source = 0; // what is sent says this; 0: as the system chooses
    std::string m_errorText;
};

} // namespace kx
