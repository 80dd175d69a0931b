// What an emulated camera keeps without power, and what it comes up with then: its name, how it comes by its
// address, and user sets (SFNC, "User Set Control"). Sets hold neither name nor address nor selectors.
#pragma once

#include "camera_emulator/CameraConfig.h"
#include "camera_emulator/Description.h"
#include "camera_emulator/Memory.h"

#include <map>
#include <optional>
#include <vector>

namespace emu
{

struct IpPlace
{
    uint32_t address = 0;
    uint32_t mask = 0;
    uint32_t gateway = 0;
};
IpPlace currentPlace(const Memory& memory);
void setCurrentPlace(const IpPlace& place, Memory& memory);

class KeptState
{
public:
    // `factory`: the registers as they were delivered. Commands that the description does not have, or whose
    // registers it does not tell, do nothing.
    KeptState(const CameraConfig& config, const Description& nodes, const Memory& factory);

    // A host has written this word: sets are saved and loaded. True: the camera is to restart. Words of
    // `unsaved` are not saved.
    bool written(uint32_t word, const std::vector<uint32_t>& unsaved, Memory& memory);
    // The registers as after power-up.
    void powerUp(Memory& memory) const;
    IpPlace placeAtPowerUp(const Memory& memory) const;

private:
    int64_t numberIn(const std::optional<RegisterField>& field, const Memory& memory) const;
    void load(int64_t set, Memory& memory) const;

    const IpPlace m_linkLocal;
    const IpPlace m_fromServer; // address 0: there is none
    const Memory m_factory;
    AddressRanges m_control; // of sets themselves, and selectors
    std::optional<RegisterField> m_selector;
    std::optional<RegisterField> m_startUp;
    std::optional<RegisterField> m_save;
    std::optional<RegisterField> m_load;
    std::optional<RegisterField> m_reset;
    std::map<int64_t, Memory> m_sets; // that hosts have saved, by their numbers
};

} // namespace emu
