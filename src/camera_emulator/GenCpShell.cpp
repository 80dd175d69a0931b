#include "camera_emulator/GenCpShell.h"

#include "camera_emulator/BuiltIn.h"

#include <algorithm>

namespace emu
{

namespace
{

constexpr uint64_t kSettings = 0x10000; // behind the bootstrap registers

} // namespace

GenCpShell::GenCpShell(const CameraConfig& config, gencp::ByteOrder order)
    : m_core(config, builtInDescriptionOverGenCp()), m_responder(order)
{
    m_responder.latency = config.latency;
    m_responder.readOnly = m_core.nodes->readOnlyRegisters();
    writeGenCpBootstrap(config, m_core.description, m_responder);
    m_core.seed(m_responder.memory);
}

void GenCpShell::deliver()
{
    m_name = m_core.config.userName;
    m_kept.emplace(*m_core.nodes, m_responder.memory,
                   OwnRegisters{kSettings, kTechnologyRegisters, {{gencp::RegUserName, gencp::kTextSize}}});
    m_responder.written = [this](uint64_t word) {
        m_isToRestart =
            m_kept->written(word, m_responder.gate.faults.unsaved, m_responder.memory) || m_isToRestart;
    };
}

void GenCpShell::powerUp()
{
    m_isToRestart = false;
    m_kept->powerUp(m_responder.memory);
    const Bytes name = m_responder.memory.read(gencp::RegUserName, gencp::kTextSize);
    m_name = std::string(name.begin(), std::find(name.begin(), name.end(), 0));
}

Bytes GenCpShell::peek(uint64_t address, size_t size) const
{
    const std::lock_guard lock(m_mutex);
    return m_responder.memory.read(address, size);
}

void GenCpShell::poke(uint64_t address, const Bytes& data)
{
    const std::lock_guard lock(m_mutex);
    m_responder.memory.write(address, data);
}

std::optional<NodeValue> GenCpShell::node(const std::string& name) const
{
    const auto field = m_core.nodes->field(name);
    if (!std::holds_alternative<RegisterField>(field))
        return std::nullopt;
    const std::lock_guard lock(m_mutex);
    return decode(std::get<RegisterField>(field), m_responder.memory);
}

std::vector<std::string> GenCpShell::change(const std::string& json)
{
    const std::lock_guard lock(m_mutex);
    return m_core.change(json, m_responder.memory);
}

void GenCpShell::setFaults(const Faults& faults)
{
    const std::lock_guard lock(m_mutex);
    m_responder.gate.set(faults);
}

Counters GenCpShell::counters() const
{
    const std::lock_guard lock(m_mutex);
    return m_responder.counters;
}

void GenCpShell::resetCounters()
{
    const std::lock_guard lock(m_mutex);
    m_responder.counters = {};
}

} // namespace emu
