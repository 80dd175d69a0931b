// One emulated USB3 Vision camera: its control interface over two bulk endpoints, and interfaces for events
// and streaming that never say anything. Everything may be called from any thread.
#pragma once

#include "camera_emulator/CameraConfig.h"
#include "camera_emulator/Description.h"
#include "camera_emulator/Shell.h"
#include "camera_emulator/Usb3Config.h"
#include "camera_emulator/UsbBus.h"

#include <memory>

namespace emu
{

class Usb3Camera final : public Shell, private UsbFunction
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

    const CameraConfig& config() const;
    std::string guid() const;
    const std::vector<std::string>& seedProblems() const override;
    const std::vector<std::string>& seedRemarks() const override;

    Bytes peek(uint64_t address, size_t size) const;
    void poke(uint64_t address, const Bytes& data);
    std::optional<NodeValue> node(const std::string& name) const;
    std::vector<std::string> change(const std::string& json) override;
    void setFaults(const Faults& faults) override;
    Counters counters() const override;
    void resetCounters();
    // Of a packet that came, and of one that went, prefix included.
    size_t longestCommand() const;
    size_t longestAnswer() const;

private:
    Bytes descriptors() const override;
    std::optional<Bytes> control(const std::array<uint8_t, 8>& setup) override;
    bool bulkOut(uint8_t endpoint, const Bytes& data) override;
    std::optional<Bytes> bulkIn(uint8_t endpoint) override;

    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace emu
