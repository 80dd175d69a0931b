// One emulated GigE Vision camera on UDP port 3956 of its address. Several may live in one process.
// Everything may be called from any thread; nothing blocks for longer than the camera's own thread needs for
// one packet.
#pragma once

#include "camera_emulator/CameraConfig.h"
#include "camera_emulator/Description.h"
#include "camera_emulator/Memory.h"
#include "camera_emulator/Shell.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace emu
{

class EmulatedCamera : public Shell
{
public:
    // Builds the registers; what is wrong with the configuration is told by start().
    explicit EmulatedCamera(const CameraConfig& config);
    ~EmulatedCamera() override; // stops
    EmulatedCamera(const EmulatedCamera&) = delete;
    EmulatedCamera& operator=(const EmulatedCamera&) = delete;

    StartResult start() override;
    void stop() override;
    // Stops, and what it does not keep is gone: start() switches it on again.
    void switchOff();
    std::string place() const override { return config().address; }

    const CameraConfig& config() const override;
    const std::vector<std::string>& seedProblems() const override;
    const std::vector<std::string>& seedRemarks() const override;
    const std::string& description() const override;

    Bytes peek(uint64_t address, size_t size) const override;
    void poke(uint64_t address, const Bytes& data) override;
    Bytes peekAtPowerUp(uint64_t address, size_t size) const; // what a power cut would leave there
    uint32_t peekWord(uint32_t address) const;                // big-endian
    void pokeWord(uint32_t address, uint32_t value);

    std::optional<NodeValue> node(const std::string& name) const override;
    // Gives what stands in the way as a sentence, or an empty text.
    std::string setNode(const std::string& name, const NodeValue& value);

    std::vector<std::string> change(const std::string& json) override;

    Faults faults() const; // as they stand: counts that run down show what is left
    void setFaults(const Faults& faults) override;
    // What a program sets that streams from the camera to itself.
    void streamTo(uint32_t host, uint16_t port);
    void stealControl(bool exclusive = false); // another host takes control and keeps it, until:
    void releaseControl();
    bool isControlled() const;

    Counters counters() const override;
    void resetCounters() override;
    // True as soon as `condition(counters())` holds; false when it does not within `limit`.
    template <typename Condition>
    bool waitFor(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(5)) const
    {
        const auto end = std::chrono::steady_clock::now() + limit;
        while (!condition(counters())) {
            if (std::chrono::steady_clock::now() >= end)
                return false;
            pause();
        }
        return true;
    }

private:
    static void pause();

    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace emu
