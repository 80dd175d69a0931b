#include "camera_emulator/KeptState.h"

#include "gvcp/Gvcp.h"

namespace emu
{

using namespace gvcp;

namespace
{

constexpr int64_t kFactorySet = 0; // of the emulator's own description: "Default"
constexpr size_t kNameSize = 16;

std::optional<RegisterField> fieldOf(const Description& nodes, const char* name)
{
    const auto field = nodes.field(name);
    const auto* found = std::get_if<RegisterField>(&field);
    return found ? std::make_optional(*found) : std::nullopt;
}

bool isAt(uint32_t word, const std::optional<RegisterField>& field)
{
    return field && field->address == word;
}

IpPlace placeOf(const std::string& address, const CameraConfig& config)
{
    return {parseAddress(address).value_or(0), parseAddress(config.mask).value_or(0), 0};
}

} // namespace

IpPlace currentPlace(const Memory& memory)
{
    return {memory.readWord(RegCurrentAddress), memory.readWord(RegCurrentMask),
            memory.readWord(RegCurrentGateway)};
}

void setCurrentPlace(const IpPlace& place, Memory& memory)
{
    memory.writeWord(RegCurrentAddress, place.address);
    memory.writeWord(RegCurrentMask, place.mask);
    memory.writeWord(RegCurrentGateway, place.gateway);
}

KeptState::KeptState(const CameraConfig& config, const Description& nodes, const Memory& factory)
    : m_linkLocal(
          placeOf(config.linkLocalAddress.empty() ? config.address : config.linkLocalAddress, config)),
      m_fromServer(placeOf(config.dhcpAddress, config)), m_factory(factory),
      m_control(nodes.selectorRegisters()), m_selector(fieldOf(nodes, "UserSetSelector")),
      m_startUp(fieldOf(nodes, "UserSetDefault")), m_save(fieldOf(nodes, "UserSetSave")),
      m_load(fieldOf(nodes, "UserSetLoad")), m_reset(fieldOf(nodes, "DeviceReset"))
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

bool KeptState::written(uint32_t word, const std::vector<uint32_t>& unsaved, Memory& memory)
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
    memory.takeFrom(saved == m_sets.end() ? m_factory : saved->second, BootstrapSize);
    for (const auto& [begin, end] : m_control.endByBegin())
        if (begin >= BootstrapSize)
            memory.write(begin, before.read(begin, end - begin));
}

void KeptState::powerUp(Memory& memory) const
{
    const Memory before = memory;
    memory = m_factory;
    memory.write(RegUserName, before.read(RegUserName, kNameSize));
    for (const uint32_t word : {RegIpCurrent, RegPersistentAddress, RegPersistentMask, RegPersistentGateway})
        memory.writeWord(word, before.readWord(word));
    if (m_startUp)
        memory.write(m_startUp->address, before.read(m_startUp->address, m_startUp->length));
    load(numberIn(m_startUp, memory), memory);
    setCurrentPlace(placeAtPowerUp(memory), memory);
}

// GigE Vision, "IP Configuration": what is kept, then DHCP, then a link-local address.
IpPlace KeptState::placeAtPowerUp(const Memory& memory) const
{
    const uint32_t ways = memory.readWord(RegIpCurrent);
    const IpPlace persistent{memory.readWord(RegPersistentAddress), memory.readWord(RegPersistentMask),
                             memory.readWord(RegPersistentGateway)};
    if ((ways & kIpPersistent) != 0 && persistent.address != 0)
        return persistent;
    return (ways & kIpDhcp) != 0 && m_fromServer.address != 0 ? m_fromServer : m_linkLocal;
}

} // namespace emu
