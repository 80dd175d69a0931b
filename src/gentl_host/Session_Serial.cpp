// Requests of a session with a grabber's serial library.
#include "gentl_host/ResidentMemory.h"
#include "gentl_host/Session.h"

namespace gentl_host
{

Writer Session::answerAsSerial(Request what, Reader& request)
{
    switch (what) {
    case Request::LoadSerial:
        m_library.load(m_call);
        return Writer().u32(kProtocolVersion).u32(residentMemory());
    case Request::ListSerialPorts:
        for (const std::string& name : m_library.ports(m_call))
            sendItem(Writer().text(name));
        return {};
    case Request::OpenSerialPort: {
        const uint32_t index = request.u32();
        check(request);
        m_serialPort.open(m_call, index);
        return {};
    }
    case Request::SetSerialRate: {
        const uint32_t bit = request.u32();
        check(request);
        m_serialPort.setRate(m_call, bit);
        return {};
    }
    case Request::WriteSerial: {
        const uint32_t time = request.u32();
        Bytes data = request.block();
        check(request);
        return Writer().u32(m_serialPort.write(m_call, std::move(data), time));
    }
    case Request::ReadSerial:
        return readSerial(request);
    default:
        throw misunderstanding();
    }
}

Writer Session::readSerial(Reader& request)
{
    const uint32_t time = request.u32();
    const uint32_t most = request.u32();
    check(request);
    if (most == 0 || most > kMaxBlock)
        throw misunderstanding();
    const Bytes data = m_serialPort.read(m_call, most, time);
    return Writer().block(data.data(), data.size());
}

} // namespace gentl_host
