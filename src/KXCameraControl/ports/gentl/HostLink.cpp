#include "KXCameraControl/ports/gentl/HostLink.h"

#include "KXCameraControl/ports/gentl/MakersLibraries.h"

#include <algorithm>
#include <cstdlib>
#include <map>

namespace kx
{

using namespace gentl;

namespace
{

// The helpers of this process. Never destroyed: threads may outlive main, and the helpers notice by
// themselves.
struct Hosts
{
    std::mutex mutex;
    std::map<std::string, std::shared_ptr<HostProcess>> byProducer;
};

Hosts& hosts()
{
    static auto* const instance = new Hosts;
    return *instance;
}

std::shared_ptr<HostProcess> hostOf(const std::string& producer, std::string& problem)
{
    Hosts& all = hosts();
    const std::lock_guard lock(all.mutex);
    std::shared_ptr<HostProcess>& host = all.byProducer[producer];
    if (!host || host->isOver())
        host = HostProcess::start(producer, problem);
    return host;
}

HostReply failed(KX_Status status, Hosted kind, const std::string& producer, const std::string& what)
{
    HostReply reply;
    reply.status = status;
    reply.text = calledBy(kind, producer) + " " + what + ".";
    return reply;
}

} // namespace

std::string calledBy(Hosted kind, const std::string& path)
{
    return (kind == Hosted::Producer ? "The GenTL producer " : "The serial library ") + path;
}

std::chrono::milliseconds gentlCallTime()
{
    const char* setting = std::getenv("KX_GENTL_TIMEOUT");
    const long given = setting ? std::strtol(setting, nullptr, 10) : 0;
    return std::chrono::milliseconds(given > 0 ? std::clamp(given, 100L, 600000L) : 10000L);
}

void retireHost(const std::string& producer)
{
    std::shared_ptr<HostProcess> retired; // ends outside the lock
    Hosts& all = hosts();
    const std::lock_guard lock(all.mutex);
    const auto host = all.byProducer.find(producer);
    if (host != all.byProducer.end() && host->second.use_count() == 1)
        retired = std::move(host->second);
}

std::unique_ptr<HostLink> HostLink::open(const std::string& producer, Channel* loss, HostReply& reply,
                                         Hosted kind)
{
    reply = {};
    const std::string unfit = libraryFileProblem(producer);
    if (!unfit.empty()) {
        reply = failed(KX_E_FILE_FORMAT, kind, producer, unfit);
        return nullptr;
    }
    std::string problem;
    const auto process = hostOf(producer, problem);
    auto [ours, theirs] = Channel::pair();
    auto losses = loss ? Channel::pair() : std::pair<Channel, Channel>();
    if (!process) {
        reply.status = KX_E_FILE;
        reply.text = problem;
        return nullptr;
    }
    if (!theirs.isOpen() || (loss && !losses.second.isOpen())) { // the helper is there, for others too
        reply = failed(KX_E_FILE, kind, producer,
                       "cannot be connected: the system gives this program no more channels");
        return nullptr;
    }
    if (!process->connect(theirs, losses.second)) {
        reply = failed(KX_E_CONNECTION_LOST, kind, producer, process->endGone("loading"));
        return nullptr;
    }
    theirs.close(); // so that the helper's end is the only one
    losses.second.close();
    std::unique_ptr<HostLink> link(new HostLink(producer, kind, process, std::move(ours)));
    reply = link->load();
    if (reply.status != KX_OK)
        return nullptr;
    if (loss)
        *loss = std::move(losses.first);
    return link;
}

HostReply HostLink::load()
{
    HostReply reply = request(Writer().u32(
        static_cast<uint32_t>(m_kind == Hosted::Producer ? Request::Load : Request::LoadSerial)));
    Reader answer(reply.content);
    const uint32_t version = answer.u32();
    m_memory = answer.u32();
    if (reply.status == KX_OK && version != kProtocolVersion)
        return failure(KX_E_INTERNAL, "has a helper of another version");
    return reply;
}

HostReply HostLink::request(const Writer& message)
{
    ++m_count;
    if (!m_channel.send(message.bytes()))
        return failure(KX_E_CONNECTION_LOST, m_process->endGone(m_function));
    return await();
}

HostReply HostLink::await()
{
    const auto patience = gentlCallTime();
    std::vector<Bytes> items;
    Bytes message;
    for (;;) {
        const auto outcome = m_channel.receive(message, Channel::Clock::now() + patience);
        if (outcome == Channel::Outcome::TimedOut)
            return failure(KX_E_NO_ANSWER, m_process->endHung(m_function, patience.count()));
        if (outcome == Channel::Outcome::Gone)
            return failure(KX_E_CONNECTION_LOST, m_process->endGone(m_function));
        Reader reader(message);
        const auto kind = static_cast<Reply>(reader.u32());
        if (kind == Reply::Note) {
            m_function = reader.text();
        } else if (kind == Reply::Item && items.size() < kMostInterfaces * kMostDevices) {
            items.emplace_back(message.begin() + 4, message.end());
        } else {
            HostReply reply = judge(reader, message);
            reply.items = std::move(items);
            return reply;
        }
    }
}

// A helper whose memory a producer has written over may say anything.
HostReply HostLink::judge(Reader& answer, const Bytes& message) const
{
    const auto outcome = static_cast<Outcome>(answer.u32());
    HostReply reply;
    switch (outcome) {
    case Outcome::Done:
        reply.content.assign(message.begin() + std::min<ptrdiff_t>(8, ptrdiff_t(message.size())),
                             message.end());
        break;
    case Outcome::Refused: {
        const Error code = answer.i32();
        reply = failure(KX_E_DEVICE, "refuses: " + answer.text());
        reply.code = code;
        break;
    }
    case Outcome::Unusable:
        reply = failure(KX_E_FILE_FORMAT, "cannot be used: " + answer.text());
        break;
    default:
        reply = failure(KX_E_MALFORMED_ANSWER, "breaks the standard: " + answer.text());
    }
    return answer.isGood() ? reply : failure(KX_E_MALFORMED_ANSWER, "has a helper that talks nonsense");
}

HostReply HostLink::failure(KX_Status status, const std::string& what) const
{
    return failed(status, m_kind, m_producer, what);
}

} // namespace kx
