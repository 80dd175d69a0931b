#include "gentl_host/Session.h"

#include "gentl_host/ResidentMemory.h"

namespace gentl_host
{

// What is asked for has no answer: this helper and the library do not belong together.
Failure Session::misunderstanding()
{
    return {Outcome::Bad, Success, "the helper does not understand a request"};
}

void Session::check(const Reader& request)
{
    if (!request.isGood() || !request.isAtEnd())
        throw misunderstanding();
}

Session::Session(Loaded& loaded, Channel requests, Channel loss)
    : m_modules(loaded.modules), m_library(loaded.serialLibrary), m_requests(std::move(requests)),
      m_call(m_modules.producer, m_requests), m_module(m_modules, std::move(loss)), m_serialPort(m_library)
{}

void Session::run()
{
    Bytes message;
    while (m_requests.receive(message, std::nullopt) == Channel::Outcome::Done)
        handle(message);
    try {
        m_serialPort.close(m_call);
        m_module.close(m_call);
    } catch (const Failure&) {
        return; // nobody is there to be told
    }
}

void Session::handle(const Bytes& message)
{
    Reader request(message);
    try {
        finish(Outcome::Done, answerTo(request).bytes());
    } catch (const Failure& failure) {
        Writer content;
        if (failure.outcome == Outcome::Refused)
            content.i32(failure.code);
        finish(failure.outcome, content.text(failure.text).bytes());
    }
}

void Session::finish(Outcome outcome, const Bytes& content)
{
    Bytes message =
        Writer().u32(static_cast<uint32_t>(Reply::Answer)).u32(static_cast<uint32_t>(outcome)).bytes();
    message.insert(message.end(), content.begin(), content.end());
    m_requests.send(message);
}

void Session::sendItem(const Writer& content)
{
    Bytes message = Writer().u32(static_cast<uint32_t>(Reply::Item)).bytes();
    message.insert(message.end(), content.bytes().begin(), content.bytes().end());
    m_requests.send(message);
}

Writer Session::answerTo(Reader& request)
{
    const auto what = static_cast<Request>(request.u32());
    switch (what) {
    case Request::Load:
        return load();
    case Request::Look:
        return look();
    case Request::Interfaces:
        for (const std::string& id : m_modules.interfaces(m_call))
            sendItem(Writer().text(id));
        return {};
    case Request::Open:
        return open(request);
    case Request::Urls:
        for (const std::string& url : m_module.urls(m_call))
            sendItem(Writer().text(url));
        return {};
    case Request::Read: {
        const uint64_t address = request.u64();
        const uint32_t size = request.u32();
        check(request);
        if (size > kMaxBlock)
            throw misunderstanding();
        const Bytes data = m_module.read(m_call, address, size);
        return Writer().block(data.data(), data.size());
    }
    case Request::Write: {
        const uint64_t address = request.u64();
        const Bytes data = request.block();
        check(request);
        m_module.write(m_call, address, data);
        return {};
    }
    case Request::ReadRegisters:
        return readRegisters(request);
    case Request::IsThere:
        return Writer().u32(m_module.isThere(m_call) ? 1 : 0);
    case Request::Close:
        m_serialPort.close(m_call);
        m_module.close(m_call);
        return {};
    default:
        return answerAsSerial(what, request);
    }
}

Writer Session::load()
{
    m_modules.load(m_call);
    return Writer().u32(kProtocolVersion).u32(residentMemory());
}

Writer Session::look()
{
    std::string problems;
    for (const FoundDevice& found : m_modules.devices(m_call, problems))
        sendItem(Writer()
                     .text(found.interface)
                     .text(found.interfaceName)
                     .text(found.device)
                     .text(found.vendor)
                     .text(found.model)
                     .text(found.serialNumber)
                     .text(found.version)
                     .text(found.layer)
                     .i32(found.status));
    return Writer().text(problems);
}

Writer Session::open(Reader& request)
{
    const std::string interface = request.text();
    const std::string device = request.text();
    const int32_t access = request.i32();
    check(request);
    m_module.open(m_call, interface, device, access);
    return {};
}

Writer Session::readRegisters(Reader& request)
{
    std::vector<uint32_t> addresses(std::min(request.u32(), kMostRegisters));
    for (uint32_t& address : addresses)
        address = request.u32();
    check(request);
    const Bytes all = m_module.readRegisters(m_call, addresses);
    return Writer().block(all.data(), all.size());
}

} // namespace gentl_host
