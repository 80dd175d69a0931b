// One emulated GigE Vision camera on UDP port 3956 of its address. Several may live in one process.
// Everything may be called from any thread; nothing blocks for longer than the camera's own thread needs for
// one packet.
#pragma once

#include "camera_emulator/CameraConfig.h"
#include "camera_emulator/Counters.h"
#include "camera_emulator/Description.h"
#include "camera_emulator/Faults.h"
#include "camera_emulator/Memory.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace emu
{

enum class StartCode
{
    Started,
    BadConfiguration,
    CannotBind
};

struct StartResult
{
    StartCode code = StartCode::Started;
    std::string message; // for people; empty when started
    explicit operator bool() const { return code == StartCode::Started; }
};

class EmulatedCamera
{
public:
    // Builds the registers; what is wrong with the configuration is told by start().
    explicit EmulatedCamera(const CameraConfig& config);
    ~EmulatedCamera(); // stops
    EmulatedCamera(const EmulatedCamera&) = delete;
    EmulatedCamera& operator=(const EmulatedCamera&) = delete;

    // Takes the port and answers from a thread of its own. Registers keep their values over stop() and
    // start(); control does not.
    StartResult start();
    void stop();

    const CameraConfig& config() const;
    // Seeds that could not be applied, a sentence each.
    const std::vector<std::string>& seedProblems() const;
    // Of those that were applied, and may not be read so.
    const std::vector<std::string>& seedRemarks() const;
    // The description that the configuration named.
    const std::string& description() const;

    // The camera's registers from behind, without its rules. Addresses are in bytes, of any alignment.
    Bytes peek(uint32_t address, size_t size) const;
    void poke(uint32_t address, const Bytes& data);
    uint32_t peekWord(uint32_t address) const; // big-endian
    void pokeWord(uint32_t address, uint32_t value);

    // A node's value, where a register at a constant address stands behind it; nothing elsewhere.
    std::optional<NodeValue> node(const std::string& name) const;
    // Gives what stands in the way as a sentence, or an empty text.
    std::string setNode(const std::string& name, const NodeValue& value);

    // Settings that change behind the back of hosts: JSON as in Seed.h. Gives what could not be applied.
    std::vector<std::string> change(const std::string& json);

    Faults faults() const; // as they stand: counts that run down show what is left
    void setFaults(const Faults& faults);
    void stealControl(bool exclusive = false); // another host takes control and keeps it, until:
    void releaseControl();
    bool isControlled() const;

    Counters counters() const;
    void resetCounters();
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
