// A port of a frame grabber, reached by the serial library that its maker brings (Camera Link 1.1, "API
// Functions"). The library lives in a process of its own, as GenTL producers do: one that hangs or crashes is
// ended, and its lines are gone.
#pragma once

#include "KXCameraControl/ports/cameralink/SerialLine.h"
#include "KXCameraControl/ports/gentl/HostLink.h"

namespace kx
{

class LibraryLine final : public SerialLine
{
public:
    // `index`: of the port in the library, which is a path; `portName`: for messages.
    LibraryLine(std::string library, uint32_t index, std::string portName);
    ~LibraryLine() override { LibraryLine::close(); }

    // Also what HostLink::open() says of a library that cannot be used.
    KX_Status open() override;
    void close() override;
    bool isOpen() const override { return m_link != nullptr; }
    bool setBaudRate(uint32_t baud) override;
    Outcome write(const uint8_t* data, size_t size, Clock::time_point deadline) override;
    Outcome read(uint8_t* data, size_t capacity, size_t& size, Clock::time_point deadline) override;
    std::string name() const override { return m_portName; }
    std::string errorText() const override { return m_errorText; }
    std::string lossText() const override { return m_errorText; }

private:
    KX_Status take();
    HostReply ask(const gentl::Writer& message);
    static Outcome meaningOf(const HostReply& reply);

    const std::string m_library;
    const uint32_t m_index;
    const std::string m_portName;
    std::unique_ptr<HostLink> m_link;
    std::string m_errorText;
};

} // namespace kx
