#include "camera_emulator/GrabberCamera.h"

#include "camera_emulator/GrabberLine.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace emu
{

using namespace gencp;
using std::chrono::milliseconds;

namespace
{

void send(int client, char letter, const uint8_t* data, size_t size)
{
    Bytes message{static_cast<uint8_t>(letter)};
    message.insert(message.end(), data, data + size);
    (void)::send(client, message.data(), message.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

void sendText(int client, char letter, const std::string& text)
{
    send(client, letter, reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

} // namespace

GrabberCamera::GrabberCamera(const CameraConfig& config, const GrabberConfig& grabber)
    : GenCpShell(config, ByteOrder::Big), m_grabber(grabber)
{
    m_responder.mostBytes = 0x8000;
    deliver();
}

GrabberCamera::~GrabberCamera()
{
    GrabberCamera::stop();
}

std::string GrabberCamera::listen()
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (m_grabber.socket.empty() || m_grabber.socket.size() >= sizeof address.sun_path)
        return "A socket's path has 1 to " + std::to_string(sizeof address.sun_path - 1) + " bytes.";
    std::memcpy(address.sun_path, m_grabber.socket.c_str(), m_grabber.socket.size());
    m_listener = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    ::unlink(m_grabber.socket.c_str());
    if (m_listener < 0 || ::bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(m_listener, 16) != 0)
        return m_grabber.socket + ": " + std::strerror(errno) + ".";
    return {};
}

void GrabberCamera::unlisten()
{
    ::unlink(m_grabber.socket.c_str());
    for (const int client : std::vector<int>(m_clients))
        forget(client);
    ::close(std::exchange(m_listener, -1));
}

StartResult GrabberCamera::start()
{
    if (m_thread.joinable())
        return {};
    if (!m_core.problem.empty())
        return {StartCode::BadConfiguration, m_core.problem};
    std::string problem = listen();
    if (problem.empty() && ::pipe2(m_wake, O_CLOEXEC | O_NONBLOCK) != 0)
        problem = std::strerror(errno);
    if (!problem.empty()) {
        ::close(std::exchange(m_listener, -1));
        return {StartCode::CannotBind, problem};
    }
    m_thread = std::thread(&GrabberCamera::run, this);
    return {};
}

void GrabberCamera::stop()
{
    if (!m_thread.joinable())
        return;
    ::close(std::exchange(m_wake[1], -1));
    m_thread.join();
    if (m_listener >= 0)
        unlisten();
    m_downUntil.reset();
    ::close(std::exchange(m_wake[0], -1));
}

bool GrabberCamera::isControlled() const
{
    const std::lock_guard lock(m_mutex);
    return m_controller >= 0;
}

void GrabberCamera::run()
{
    for (;;) {
        std::vector<pollfd> entries{{m_wake[0], POLLIN, 0}, {m_listener, POLLIN, 0}};
        for (const int client : m_clients)
            entries.push_back({client, POLLIN, 0});
        int timeout = m_downUntil ? 20 : -1;
        for (const Outgoing& one : m_outgoing) {
            const auto left = std::chrono::ceil<milliseconds>(one.reply.due - Clock::now()).count();
            const int wait = static_cast<int>(std::clamp<int64_t>(left, 0, 60000));
            timeout = timeout < 0 ? wait : std::min(timeout, wait);
        }
        (void)::poll(entries.data(), entries.size(), timeout);
        if (entries[0].revents != 0)
            return;
        for (size_t i = 2; i < entries.size(); ++i)
            if (entries[i].revents != 0)
                take(entries[i].fd);
        if (entries[1].revents != 0)
            accept();
        sendDue();
        restartAsOrdered();
    }
}

// Behind the last answer; not to be found by its grabber meanwhile.
void GrabberCamera::restartAsOrdered()
{
    const auto isOrdered = [this] {
        const std::lock_guard lock(m_mutex);
        return m_isToRestart;
    };
    if (!m_downUntil && m_outgoing.empty() && isOrdered()) {
        unlisten();
        m_downUntil = Clock::now() + m_core.config.restartTime;
        const std::lock_guard lock(m_mutex);
        ++m_responder.counters.restarts;
    } else if (m_downUntil && Clock::now() >= *m_downUntil) {
        m_downUntil.reset();
        (void)listen(); // a place that cannot be had is one without answers
        const std::lock_guard lock(m_mutex);
        powerUp();
    }
}

void GrabberCamera::accept()
{
    const int client = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (client >= 0)
        m_clients.push_back(client);
}

void GrabberCamera::forget(int client)
{
    ::close(client);
    m_clients.erase(std::remove(m_clients.begin(), m_clients.end(), client), m_clients.end());
    m_outgoing.erase(std::remove_if(m_outgoing.begin(), m_outgoing.end(),
                                    [&](const Outgoing& one) { return one.client == client; }),
                     m_outgoing.end());
    const std::lock_guard lock(m_mutex);
    if (m_controller == client)
        m_controller = -1;
}

void GrabberCamera::take(int client)
{
    Bytes message(kGrabberMessage);
    const ssize_t size = ::recv(client, message.data(), message.size(), MSG_DONTWAIT);
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (size <= 0)
        return forget(client);
    message.resize(static_cast<size_t>(size));
    answer(client, message);
}

void GrabberCamera::answer(int client, const Bytes& message)
{
    const char letter = static_cast<char>(message[0]);
    const Bytes rest(message.begin() + 1, message.end());
    if (letter == GrabberWho)
        return sendText(client, letter, who());
    if (letter == GrabberPacket)
        return takePacket(client, rest);
    const std::lock_guard lock(m_mutex);
    if (letter == GrabberOpen) {
        const bool isFree = m_controller < 0 || m_controller == client;
        const bool wantsControl = !rest.empty() && rest[0] == '1';
        if (isFree && wantsControl)
            m_controller = client;
        sendText(client, letter, isFree || !wantsControl ? "1" : "0");
    } else if (letter == GrabberClose) {
        if (m_controller == client)
            m_controller = -1;
        sendText(client, letter, "1");
    }
}

void GrabberCamera::takePacket(int client, const Bytes& packet)
{
    const std::lock_guard lock(m_mutex);
    for (Reply& reply : m_responder.handle(packet, Clock::now()))
        m_outgoing.push_back({client, std::move(reply)});
}

void GrabberCamera::sendDue()
{
    const auto now = Clock::now();
    for (auto one = m_outgoing.begin(); one != m_outgoing.end();) {
        if (one->reply.due > now) {
            ++one;
            continue;
        }
        send(one->client, GrabberPacket, one->reply.bytes.data(), one->reply.bytes.size());
        one = m_outgoing.erase(one);
    }
}

// As the manifest says; with the lock.
std::string GrabberCamera::url(unsigned index) const
{
    uint8_t bytes[kManifestEntrySize];
    const Bytes entryBytes =
        m_responder.memory.read(kManifestTable + 8 + index * kManifestEntrySize, sizeof bytes);
    std::copy(entryBytes.begin(), entryBytes.end(), bytes);
    const ManifestEntry entry = parseManifestEntry(bytes, m_responder.byteOrder);
    char text[96];
    std::snprintf(text, sizeof text, "local:camera.%s;%llX;%llX?SchemaVersion=%s",
                  entry.format == static_cast<uint8_t>(FileFormat::Zip) ? "zip" : "xml",
                  static_cast<unsigned long long>(entry.address), static_cast<unsigned long long>(entry.size),
                  m_core.nodes->schemaVersion().c_str());
    return text;
}

std::string GrabberCamera::who() const
{
    const std::lock_guard lock(m_mutex);
    const CameraConfig& config = m_core.config;
    std::string fields[GrabberFieldCount];
    fields[FieldInterface] = m_grabber.interface;
    fields[FieldLayer] = m_grabber.layer;
    fields[FieldVendor] = config.manufacturer;
    fields[FieldModel] = config.model;
    fields[FieldSerial] = config.serial;
    fields[FieldVersion] = config.firmware;
    fields[FieldUserName] = m_name;
    fields[FieldControl] = m_controller >= 0 ? "1" : "0";
    fields[FieldFirstUrl] = config.firstUrl.empty() ? url(0) : config.firstUrl;
    fields[FieldSecondUrl] = config.secondUrl.empty() ? url(1) : config.secondUrl;
    std::string all;
    for (const std::string& field : fields)
        all += field + "\n";
    return all;
}

} // namespace emu
