// One emulated camera behind a serial line: GenCP over a pseudo terminal, at one baud rate at a time. What
// the host sends while its end has another rate is rubbish to it. Everything may be called from any thread.
#pragma once

#include "camera_emulator/GenCpShell.h"
#include "camera_emulator/SerialConfig.h"
#include "gencp/SerialFrame.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <thread>

namespace emu
{

class SerialCamera final : public GenCpShell
{
public:
    SerialCamera(const CameraConfig& config, const SerialConfig& serial);
    ~SerialCamera() override; // stops
    SerialCamera(const SerialCamera&) = delete;
    SerialCamera& operator=(const SerialCamera&) = delete;

    StartResult start() override;
    void stop() override;
    std::string place() const override;

    // The terminal's own name; empty until started.
    const std::string& path() const { return m_path; }
    uint32_t baudRate() const { return m_baud; }

private:
    std::string openTerminal();
    void closeTerminal();
    void run();
    void takeBytes();
    void takePacket(const Bytes& packet);
    std::optional<const gencp::BaudRate*> rateAskedFor(const Bytes& packet) const;
    void adoptRate(const gencp::BaudRate* rate);
    void dropUnconfirmedRate();
    void setRate(const gencp::BaudRate* rate);
    void sendDue();
    void restartAsOrdered();
    void send(Bytes frame);
    bool isHeard() const;

    const SerialConfig m_serial;
    std::string m_path;
    std::atomic<uint32_t> m_baud{9600};

    // The camera's thread alone, while it runs.
    gencp::SerialFrames m_frames;
    std::deque<Reply> m_outgoing;
    const gencp::BaudRate* m_confirmed;
    const gencp::BaudRate* m_current;
    const gencp::BaudRate* m_next = nullptr; // once all answers are out
    Clock::time_point m_confirmBy;
    std::optional<Clock::time_point> m_downUntil; // restarting
    unsigned m_answers = 0;
    unsigned m_frameCount = 0;

    int m_host = -1;   // the camera's end of the terminal
    int m_keeper = -1; // the other end, open so that a host that leaves does not hang the line up
    int m_wake[2] = {-1, -1};
    std::thread m_thread;
};

} // namespace emu
