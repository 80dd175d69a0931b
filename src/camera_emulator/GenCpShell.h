// What emulated GenCP cameras have in common, whatever carries their packets: memory, faults and counters.
#pragma once

#include "camera_emulator/CameraCore.h"
#include "camera_emulator/GenCpResponder.h"
#include "camera_emulator/KeptState.h"
#include "camera_emulator/Shell.h"

#include <mutex>
#include <optional>

namespace emu
{

class GenCpShell : public Shell
{
public:
    GenCpShell(const CameraConfig& config, gencp::ByteOrder order);

    const CameraConfig& config() const override { return m_core.config; }
    const std::string& description() const override { return m_core.description; }
    const std::vector<std::string>& seedProblems() const override { return m_core.seeded.problems; }
    const std::vector<std::string>& seedRemarks() const override { return m_core.seeded.remarks; }

    Bytes peek(uint64_t address, size_t size) const override;
    void poke(uint64_t address, const Bytes& data) override;
    std::optional<NodeValue> node(const std::string& name) const override;
    std::vector<std::string> change(const std::string& json) override;
    void setFaults(const Faults& faults) override;
    Counters counters() const override;
    void resetCounters() override;

protected:
    CameraCore m_core;
    // At the end of construction: what stands in the registers by then is the factory's.
    void deliver();
    // The registers as after power-up. Under the lock.
    void powerUp();

    mutable std::mutex m_mutex; // guards the responder, and the order to restart
    GenCpResponder m_responder;
    bool m_isToRestart = false;
    std::string m_name; // the one at power-up, as the line tells it

private:
    std::optional<KeptState> m_kept;
};

} // namespace emu
