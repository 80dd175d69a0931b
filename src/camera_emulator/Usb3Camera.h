// One emulated USB3 Vision camera: its control interface over two bulk endpoints, and interfaces for events
// and streaming that never say anything. Everything may be called from any thread.
#pragma once

#include "camera_emulator/GenCpShell.h"
#include "camera_emulator/Usb3Config.h"
#include "camera_emulator/UsbBus.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace emu
{

class Usb3Camera final : public GenCpShell, private UsbFunction
{
public:
    // `bus` must outlive the camera.
    Usb3Camera(const CameraConfig& config, const Usb3Config& usb, UsbBus& bus);
    ~Usb3Camera() override; // stops
    Usb3Camera(const Usb3Camera&) = delete;
    Usb3Camera& operator=(const Usb3Camera&) = delete;

    StartResult start() override; // plugs it in
    void stop() override;         // pulls the cable
    std::string place() const override;

    std::string guid() const;
    // Of a packet that came, and of one that went, prefix included.
    size_t longestCommand() const;
    size_t longestAnswer() const;

private:
    Bytes descriptors() const override;
    size_t packetSize() const override { return m_usb.packetSize; }
    std::optional<Bytes> control(const std::array<uint8_t, 8>& setup) override;
    bool bulkOut(uint8_t endpoint, const Bytes& data) override;
    std::optional<Bytes> bulkIn(uint8_t endpoint) override;

    std::string text(uint8_t number) const;
    void awaitOrders();
    bool leave(std::unique_lock<std::mutex>& lock);
    void comeBack(std::unique_lock<std::mutex>& lock);

    const Usb3Config m_usb;
    UsbBus& m_bus; // never called while the lock is held
    // Guarded as the responder is.
    std::deque<Reply> m_outgoing;
    std::string m_location; // empty: not plugged in
    bool m_isEnding = false;
    size_t m_longestCommand = 0;
    size_t m_longestAnswer = 0;

    std::condition_variable m_changed; // of orders, and of what is on its way out
    std::thread m_thread;              // restarts the camera: the bus waits for answers meanwhile
};

} // namespace emu
