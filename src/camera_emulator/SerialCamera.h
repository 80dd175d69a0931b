// One emulated camera behind a serial line: GenCP over a pseudo terminal, at one baud rate at a time. What
// the host sends while its end has another rate is rubbish to it. Everything may be called from any thread.
#pragma once

#include "camera_emulator/CameraConfig.h"
#include "camera_emulator/Description.h"
#include "camera_emulator/Memory.h"
#include "camera_emulator/SerialConfig.h"
#include "camera_emulator/Shell.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace emu
{

class SerialCamera final : public Shell
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
    const std::string& path() const;
    const CameraConfig& config() const;
    const std::vector<std::string>& seedProblems() const override;
    const std::vector<std::string>& seedRemarks() const override;
    uint32_t baudRate() const;

    Bytes peek(uint64_t address, size_t size) const;
    void poke(uint64_t address, const Bytes& data);
    std::optional<NodeValue> node(const std::string& name) const;
    std::vector<std::string> change(const std::string& json) override;
    void setFaults(const Faults& faults) override;
    Counters counters() const override;
    void resetCounters();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace emu
