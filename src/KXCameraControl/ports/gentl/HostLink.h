// Requests to the helper of one library of a grabber's maker, mostly a GenTL producer: each call into it has
// its time, and a helper that uses it up is ended.
#pragma once

#include "KXCameraControl/ports/gentl/HostProcess.h"
#include "gentl/GenTl.h"
#include "gentl/HostProtocol.h"

#include <KXCameraControl/KXCameraControl.h>

#include <functional>
#include <memory>
#include <vector>

namespace kx
{

// What a library of a grabber's maker is loaded as.
enum class Hosted
{
    Producer,
    SerialLibrary // Camera Link's
};

struct HostReply
{
    // KX_OK. KX_E_DEVICE: the producer refused with `code`. KX_E_MALFORMED_ANSWER: it gave what the standard
    // does not allow. KX_E_FILE_FORMAT: it cannot be used at all. KX_E_NO_ANSWER: it hung and was ended.
    // KX_E_CONNECTION_LOST: it crashed, or was ended before. KX_E_FILE: the helper cannot be started.
    KX_Status status = KX_OK;
    gentl::Error code = gentl::Success;
    std::string text; // says which producer, and what; empty with KX_OK
    gentl::Bytes content;
    std::vector<gentl::Bytes> items;
};

// One caller at a time.
class HostLink
{
public:
    // The producer's helper is started if there is none, or none any more. `loss` (may be null) gets the
    // other end of the channel that tells of the loss of a device. Null with the failure in `reply`.
    static std::unique_ptr<HostLink> open(const std::string& producer, gentl::Channel* loss, HostReply& reply,
                                          Hosted kind = Hosted::Producer);

    HostReply request(const gentl::Writer& message);
    uint64_t requestCount() const { return m_count; }
    const std::string& producer() const { return m_producer; }
    // That the helper is over is known already.
    bool isOver() const { return m_process->isOver(); }
    // Once for each helper; other links of it wait until that is over.
    void configureOnce(const std::function<void()>& configure) { m_process->configureOnce(configure); }
    // What the helper had in memory when this link was opened, in KiB.
    uint32_t memory() const { return m_memory; }

private:
    HostLink(std::string producer, Hosted kind, std::shared_ptr<HostProcess> process, gentl::Channel channel)
        : m_producer(std::move(producer)), m_kind(kind), m_process(std::move(process)),
          m_channel(std::move(channel))
    {}
    HostReply load();
    HostReply await();
    HostReply judge(gentl::Reader& answer, const gentl::Bytes& message) const;
    HostReply failure(KX_Status status, const std::string& what) const;

    const std::string m_producer;
    const Hosted m_kind;
    const std::shared_ptr<HostProcess> m_process;
    gentl::Channel m_channel;
    std::string m_function = "loading"; // the last one that the helper told of
    uint64_t m_count = 0;
    uint32_t m_memory = 0;
};

// The helper of a producer that has grown goes as soon as nobody uses it: what leaks starts anew.
void retireHost(const std::string& producer);

// What people call such a file, and where it is: "The GenTL producer /...".
std::string calledBy(Hosted kind, const std::string& path);

// Of one call into a producer: KX_GENTL_TIMEOUT, in ms (100 to 600,000), else 10 s.
std::chrono::milliseconds gentlCallTime();

} // namespace kx
