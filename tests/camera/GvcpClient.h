// A bare host: sends packets to one camera from a socket of its own and takes the answers as they are.
#pragma once

#include "gvcp/Gvcp.h"
#include "support/Datagrams.h"

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>

class GvcpClient
{
public:
    explicit GvcpClient(const std::string& camera)
    {
        m_socket = tests::datagramSocket();
        sockaddr_in name{};
        name.sin_family = AF_INET;
        name.sin_port = htons(gvcp::kPort);
        name.sin_addr.s_addr = htonl(gvcp::parseAddress(camera).value());
        if (::connect(m_socket, reinterpret_cast<sockaddr*>(&name), sizeof name) != 0)
            throw std::runtime_error("no socket to " + camera);
    }
    ~GvcpClient() { tests::closeSocket(m_socket); }
    GvcpClient(const GvcpClient&) = delete;
    GvcpClient& operator=(const GvcpClient&) = delete;

    uint16_t nextId() { return ++m_id; }
    uint16_t port() const
    {
        sockaddr_in name{};
        socklen_t size = sizeof name;
        ::getsockname(m_socket, reinterpret_cast<sockaddr*>(&name), &size);
        return ntohs(name.sin_port);
    }

    void send(const gvcp::Bytes& packet) { tests::sendTo(m_socket, packet.data(), packet.size()); }

    std::optional<gvcp::AckPacket> receive(std::chrono::milliseconds limit = std::chrono::seconds(3))
    {
        pollfd entry{m_socket, POLLIN, 0};
        if (tests::await(&entry, 1, static_cast<int>(limit.count())) != 1)
            return std::nullopt;
        gvcp::Bytes packet(65536);
        const long size = tests::receiveFrom(m_socket, packet.data(), packet.size());
        return size < 0 ? std::nullopt : gvcp::decodeAck(packet.data(), static_cast<size_t>(size));
    }

    // The answer to one packet; an empty acknowledge with status 0xFFFF when none comes.
    gvcp::AckPacket ask(const gvcp::Bytes& packet)
    {
        send(packet);
        const auto ack = receive();
        return ack ? *ack : gvcp::AckPacket{0xFFFF, 0, 0, {}};
    }

    gvcp::AckPacket read(const std::vector<uint32_t>& addresses)
    {
        return ask(gvcp::encodeReadRegisters(nextId(), addresses));
    }
    gvcp::AckPacket write(const std::vector<gvcp::RegisterWrite>& writes)
    {
        return ask(gvcp::encodeWriteRegisters(nextId(), writes));
    }
    gvcp::AckPacket readMemory(uint32_t address, uint16_t size)
    {
        return ask(gvcp::encodeReadMemory(nextId(), address, size));
    }
    gvcp::AckPacket writeMemory(uint32_t address, const gvcp::Bytes& data)
    {
        return ask(gvcp::encodeWriteMemory(nextId(), address, data.data(), data.size()));
    }
    bool takeControl(uint32_t privilege = gvcp::kPrivilegeControl)
    {
        return write({{gvcp::RegControlPrivilege, privilege}}).status == gvcp::Success;
    }

    // Any amount of memory, in packets as large as the protocol allows; what is read up to the first refusal.
    gvcp::Bytes fetch(uint32_t address, size_t size)
    {
        gvcp::Bytes data;
        while (data.size() < size) {
            const size_t part = std::min(gvcp::kMaxReadMemory, (size - data.size() + 3) / 4 * 4);
            const auto ack =
                readMemory(address + static_cast<uint32_t>(data.size()), static_cast<uint16_t>(part));
            if (ack.status != gvcp::Success || ack.payload.size() != 4 + part)
                break;
            data.insert(data.end(), ack.payload.begin() + 4, ack.payload.end());
        }
        data.resize(std::min(data.size(), size));
        return data;
    }

private:
    tests::Descriptor m_socket;
    uint16_t m_id = 0;
};
