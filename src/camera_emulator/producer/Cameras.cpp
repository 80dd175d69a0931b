#include "camera_emulator/producer/Cameras.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace producer
{

using namespace gencp;
using std::chrono::milliseconds;

namespace
{

constexpr milliseconds kPatience{300}; // for one try
constexpr unsigned kTries = 3;
constexpr size_t kPiece = 0x4000;

gentl::Error errorOf(uint16_t status)
{
    switch (status) {
    case Success:
        return gentl::Success;
    case NotImplemented:
        return gentl::ErrNotImplemented;
    case InvalidAddress:
        return gentl::ErrInvalidAddress;
    case WriteProtect:
    case AccessDenied:
        return gentl::ErrAccessDenied;
    case InvalidParameter:
    case BadAlignment:
        return gentl::ErrInvalidParameter;
    case Busy:
        return gentl::ErrBusy;
    default:
        return gentl::ErrIo;
    }
}

} // namespace

bool CameraLine::send(char letter, const Bytes& rest)
{
    Bytes message{static_cast<uint8_t>(letter)};
    message.insert(message.end(), rest.begin(), rest.end());
    return m_socket.send(message);
}

std::optional<Bytes> CameraLine::receive(char letter, milliseconds patience)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    for (;;) {
        const auto left = std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now()).count();
        Bytes message;
        if (left <= 0 || !m_socket.receive(message, milliseconds(left)))
            return std::nullopt;
        if (static_cast<char>(message[0]) == letter)
            return Bytes(message.begin() + 1, message.end());
    }
}

std::vector<std::string> CameraLine::who()
{
    if (!send(emu::GrabberWho, {}))
        return {};
    const auto answer = receive(emu::GrabberWho, kPatience);
    std::istringstream lines(answer ? std::string(answer->begin(), answer->end()) : std::string());
    std::vector<std::string> fields;
    for (std::string line; std::getline(lines, line);)
        fields.push_back(line);
    return fields.size() == emu::GrabberFieldCount ? fields : std::vector<std::string>();
}

gentl::Error CameraLine::open(bool control)
{
    if (!send(emu::GrabberOpen, {static_cast<uint8_t>(control ? '1' : '0')}))
        return gentl::ErrIo;
    const auto answer = receive(emu::GrabberOpen, kPatience);
    if (!answer || answer->empty())
        return gentl::ErrIo;
    return (*answer)[0] == '1' ? gentl::Success : gentl::ErrAccessDenied;
}

void CameraLine::close()
{
    if (send(emu::GrabberClose, {}))
        receive(emu::GrabberClose, kPatience);
    disconnect();
}

gentl::Error CameraLine::request(uint16_t command, const Bytes& scd, Bytes& answer)
{
    for (unsigned i = 0; i < kTries; ++i) {
        const CommandPacket packet{AckRequired, command, ++m_lastId, scd};
        if (!send(emu::GrabberPacket, encodeCommand(packet, ByteOrder::Big)))
            return gentl::ErrIo;
        milliseconds patience = kPatience;
        while (const auto bytes = receive(emu::GrabberPacket, patience)) {
            auto ack = decodeAck(bytes->data(), bytes->size(), ByteOrder::Big);
            if (!ack || ack->id != packet.id)
                continue;
            const auto pending =
                ack->command == PendingAck ? parsePendingAck(ack->scd, ByteOrder::Big) : std::nullopt;
            if (pending) {
                patience = kPatience + milliseconds(*pending);
                continue;
            }
            answer = std::move(ack->scd);
            return errorOf(ack->status);
        }
        if (isGone())
            return gentl::ErrIo;
    }
    return gentl::ErrTimeout;
}

gentl::Error CameraLine::read(uint64_t address, void* data, size_t size)
{
    for (size_t done = 0; done < size; done += kPiece) {
        const auto piece = static_cast<uint16_t>(std::min(size - done, kPiece));
        Bytes answer;
        if (const gentl::Error error =
                request(ReadMemCmd, readMemoryScd(address + done, piece, ByteOrder::Big), answer))
            return error;
        if (answer.size() != piece)
            return gentl::ErrIo;
        std::memcpy(static_cast<uint8_t*>(data) + done, answer.data(), piece);
    }
    return gentl::Success;
}

gentl::Error CameraLine::write(uint64_t address, const void* data, size_t size)
{
    for (size_t done = 0; done < size; done += kPiece) {
        const auto* bytes = static_cast<const uint8_t*>(data) + done;
        Bytes answer;
        const Bytes scd =
            writeMemoryScd(address + done, bytes, std::min(size - done, kPiece), ByteOrder::Big);
        if (const gentl::Error error = request(WriteMemCmd, scd, answer))
            return error;
    }
    return gentl::Success;
}

} // namespace producer
