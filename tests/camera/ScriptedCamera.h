// A host on UDP port 3956 that answers what a test tells it to, byte by byte; for what an emulated camera
// never does. Without a script it is a camera of the plainest kind: registers that keep what is written, no
// control, no rules.
#pragma once

#include "gvcp/Gvcp.h"
#include "support/Datagrams.h"
#include "support/LoopbackAddress.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

struct ScriptedReply
{
    gvcp::Bytes bytes;
    std::chrono::milliseconds after{0}; // since the reply before, or the command
    bool fromStranger = false;          // sent from another port than the camera's
};

class ScriptedCamera
{
public:
    using Replies = std::vector<ScriptedReply>;
    // Nothing: the plain answer.
    using Script = std::function<std::optional<Replies>(const gvcp::CommandPacket&)>;

    enum class Broadcast
    {
        Deaf,
        Heard,
        HeardFromTheSecondOn
    };

    explicit ScriptedCamera(Broadcast broadcast = Broadcast::Deaf)
        : m_broadcastsToMiss(broadcast == Broadcast::HeardFromTheSecondOn ? 1 : 0),
          m_address(tests::freshLoopbackAddress())
    {
        m_sockets.push_back(listenTo(m_address, false));
        // The loopback network's broadcast address; whoever shares it hears everything.
        if (broadcast != Broadcast::Deaf)
            m_sockets.push_back(listenTo("127.255.255.255", true));
        m_stranger = listenTo(m_address, false, 0);
        m_thread = std::thread([this] { run(); });
    }
    ~ScriptedCamera() { stop(); }
    ScriptedCamera(const ScriptedCamera&) = delete;
    ScriptedCamera& operator=(const ScriptedCamera&) = delete;

    // Nobody listens at the address any more: the system refuses what arrives.
    void stop()
    {
        if (!m_thread.joinable())
            return;
        m_isOver = true;
        m_thread.join();
        for (tests::Descriptor descriptor : m_sockets)
            tests::closeSocket(descriptor);
        tests::closeSocket(m_stranger);
    }

    const std::string& address() const { return m_address; }

    void setScript(Script script)
    {
        const std::lock_guard lock(m_mutex);
        m_script = std::move(script);
    }
    void setRegister(uint32_t address, uint32_t value)
    {
        const std::lock_guard lock(m_mutex);
        m_registers[address] = value;
    }
    void setText(uint32_t address, const std::string& text)
    {
        const std::lock_guard lock(m_mutex);
        m_texts[address] = text;
    }
    void forget()
    {
        const std::lock_guard lock(m_mutex);
        m_received.clear();
    }
    std::vector<gvcp::CommandPacket> received() const
    {
        const std::lock_guard lock(m_mutex);
        return m_received;
    }
    // Those whose payload begins with this address.
    std::vector<gvcp::CommandPacket> receivedFor(uint32_t address) const
    {
        std::vector<gvcp::CommandPacket> found;
        for (const gvcp::CommandPacket& command : received())
            if (isFor(command, address))
                found.push_back(command);
        return found;
    }
    // False when `count` commands for the address have not come within five seconds.
    bool waitFor(size_t count, uint32_t address) const
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (receivedFor(address).size() < count) {
            if (std::chrono::steady_clock::now() >= end)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }

    static bool isFor(const gvcp::CommandPacket& command, uint32_t address)
    {
        return command.payload.size() >= 4 && gvcp::get32(command.payload.data()) == address;
    }
    static gvcp::Bytes answer(const gvcp::CommandPacket& command, gvcp::Bytes payload,
                              uint16_t status = gvcp::Success)
    {
        return gvcp::encodeAck(
            {status, static_cast<uint16_t>(command.command + 1), command.id, std::move(payload)});
    }
    static gvcp::Bytes pending(const gvcp::CommandPacket& command, uint16_t milliseconds)
    {
        return gvcp::encodeAck(
            {gvcp::Success, gvcp::PendingAck, command.id, gvcp::pendingAckPayload(milliseconds)});
    }

private:
    static constexpr int kLookMilliseconds = 20; // for the end

    static tests::Descriptor listenTo(const std::string& address, bool shared, uint16_t port = gvcp::kPort)
    {
        const tests::Descriptor descriptor = tests::datagramSocket();
        sockaddr_in name{};
        name.sin_family = AF_INET;
        name.sin_port = htons(port);
        name.sin_addr.s_addr = htonl(gvcp::parseAddress(address).value());
        const int on = shared;
        ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&on), sizeof on);
        if (::bind(descriptor, reinterpret_cast<sockaddr*>(&name), sizeof name) != 0)
            throw std::runtime_error("cannot listen to " + address);
        return descriptor;
    }

    void run()
    {
        while (!m_isOver) {
            std::vector<pollfd> entries;
            for (tests::Descriptor descriptor : m_sockets)
                entries.push_back({descriptor, POLLIN, 0});
            tests::await(entries.data(), entries.size(), kLookMilliseconds);
            const auto ready = std::find_if(entries.begin(), entries.end(),
                                            [](const pollfd& entry) { return entry.revents != 0; });
            if (ready != entries.end())
                serve(ready->fd, ready != entries.begin());
        }
    }

    void serve(tests::Descriptor descriptor, bool isBroadcast)
    {
        uint8_t data[2048];
        sockaddr_in from{};
        socklen_t fromSize = sizeof from;
        const auto size = ::recvfrom(descriptor, reinterpret_cast<char*>(data), sizeof data, 0,
                                     reinterpret_cast<sockaddr*>(&from), &fromSize);
        const auto command = size < 0 ? std::nullopt : gvcp::decodeCommand(data, static_cast<size_t>(size));
        if (!command || (isBroadcast && m_broadcastsToMiss-- > 0))
            return;
        for (const ScriptedReply& reply : repliesTo(*command)) {
            std::this_thread::sleep_for(reply.after);
            ::sendto(reply.fromStranger ? m_stranger : m_sockets[0],
                     reinterpret_cast<const char*>(reply.bytes.data()), reply.bytes.size(), 0,
                     reinterpret_cast<sockaddr*>(&from), fromSize);
        }
    }

    Replies repliesTo(const gvcp::CommandPacket& command)
    {
        const std::lock_guard lock(m_mutex);
        m_received.push_back(command);
        if (m_script)
            if (auto replies = m_script(command))
                return *replies;
        return {{answer(command, plainPayload(command))}};
    }

    gvcp::Bytes plainPayload(const gvcp::CommandPacket& command)
    {
        gvcp::Bytes payload;
        if (command.command == gvcp::DiscoveryCmd) {
            payload.resize(gvcp::kDiscoverySize);
            for (const auto& [address, text] : m_texts)
                std::copy(text.begin(), text.end(), payload.begin() + address);
            gvcp::put32(&payload[gvcp::RegMacHigh], m_registers[gvcp::RegMacHigh]);
            gvcp::put32(&payload[gvcp::RegMacLow], m_registers[gvcp::RegMacLow]);
        } else if (const auto range = gvcp::parseReadMemory(command.payload);
                   range && command.command == gvcp::ReadMemCmd) {
            payload.resize(4 + range->count);
            gvcp::put32(payload.data(), range->address);
        } else if (command.command == gvcp::ReadRegCmd) {
            for (size_t i = 0; i + 4 <= command.payload.size(); i += 4) {
                payload.resize(i + 4);
                gvcp::put32(&payload[i], m_registers[gvcp::get32(&command.payload[i])]);
            }
        } else {
            if (command.command == gvcp::WriteRegCmd)
                m_registers[gvcp::get32(&command.payload[0])] = gvcp::get32(&command.payload[4]);
            payload = gvcp::writeAckPayload(1);
        }
        return payload;
    }

    int m_broadcastsToMiss; // the thread's alone
    const std::string m_address;
    std::vector<tests::Descriptor> m_sockets; // its own, and that of broadcasts
    tests::Descriptor m_stranger{};
    std::atomic<bool> m_isOver{false};
    mutable std::mutex m_mutex;
    Script m_script;
    std::map<uint32_t, uint32_t> m_registers;
    std::map<uint32_t, std::string> m_texts; // of the discovery answer
    std::vector<gvcp::CommandPacket> m_received;
    std::thread m_thread;
};
