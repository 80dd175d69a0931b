// A serial line that the operating system has under a name: /dev/ttyS0, /dev/ttyUSB1.
#pragma once

#include "KXCameraControl/ports/cameralink/SerialLine.h"

namespace kx
{

class Terminal final : public SerialLine
{
public:
    explicit Terminal(std::string path) : m_path(std::move(path)) {}
    ~Terminal() override { close(); }

    KX_Status open() override;
    void close() override;
    bool isOpen() const override { return m_descriptor >= 0; }
    bool setBaudRate(uint32_t baud) override;
    Outcome write(const uint8_t* data, size_t size, Clock::time_point deadline) override;
    Outcome read(uint8_t* data, size_t capacity, size_t& size, Clock::time_point deadline) override;
    std::string name() const override { return m_path; }
    std::string errorText() const override { return m_errorText; }

private:
    KX_Status fail(KX_Status status, const std::string& text);
    KX_Status take();
    Outcome wait(short events, Clock::time_point deadline);
    Outcome judgeErrno();

    const std::string m_path;
    int m_descriptor = -1;
    std::string m_errorText;
};

} // namespace kx
