#include "camera_emulator/KeptState.h"

namespace emu
{

namespace
{

constexpr int64_t kFactorySet = 0; // of the emulator's own description: "Default"

std::optional<RegisterField> fieldOf(const Description& nodes, const char* name)
{
    const auto field = nodes.field(name);
    const auto* found = std::get_if<RegisterField>(&field);
    return found ? std::make_optional(*found) : std::nullopt;
}

bool isAt(uint64_t word, const std::optional<RegisterField>& field)
{
    return field && field->address == word;
}

} // namespace

KeptState::KeptState(const Description& nodes, const Memory& factory, const OwnRegisters& own)
    : m_own(own), m_factory(factory), m_control(nodes.selectorRegisters()),
      m_selector(fieldOf(nodes, "UserSetSelector")), m_startUp(fieldOf(nodes, "UserSetDefault")),
      m_save(fieldOf(nodes, "UserSetSave")), m_load(fieldOf(nodes, "UserSetLoad")),
      m_reset(fieldOf(nodes, "DeviceReset"))
{
    for (const auto& field : {m_selector, m_startUp, m_save, m_load, m_reset})
        if (field)
            m_control.add(field->address, field->length);
}

int64_t KeptState::numberIn(const std::optional<RegisterField>& field, const Memory& memory) const
{
    const NodeValue value = field ? decode(*field, memory) : NodeValue(kFactorySet);
    const auto* number = std::get_if<int64_t>(&value);
    return number ? *number : kFactorySet;
}

bool KeptState::written(uint64_t word, const std::vector<uint32_t>& unsaved, Memory& memory)
{
    const int64_t set = numberIn(m_selector, memory);
    if (isAt(word, m_save) && set != kFactorySet) {
        Memory& saved = m_sets[set] = memory;
        for (const uint32_t forgotten : unsaved)
            saved.writeWord(forgotten, m_factory.readWord(forgotten));
    } else if (isAt(word, m_load)) {
        load(set, memory);
    }
    return isAt(word, m_reset);
}

// A set that was never saved is as delivered.
void KeptState::load(int64_t set, Memory& memory) const
{
    const auto saved = m_sets.find(set);
    const Memory before = memory;
    memory.takeFrom(saved == m_sets.end() ? m_factory : saved->second, m_own.settingsBegin,
                    m_own.settingsEnd);
    for (const auto& [begin, end] : m_control.endByBegin())
        if (begin >= m_own.settingsBegin)
            memory.write(begin, before.read(begin, end - begin));
}

void KeptState::powerUp(Memory& memory) const
{
    const Memory before = memory;
    memory = m_factory;
    for (const auto& [address, size] : m_own.kept)
        memory.write(address, before.read(address, size));
    if (m_startUp)
        memory.write(m_startUp->address, before.read(m_startUp->address, m_startUp->length));
    load(numberIn(m_startUp, memory), memory);
}

} // namespace emu
