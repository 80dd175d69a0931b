// What an emulated camera keeps without power, and what it comes up with then: its name, what else its
// transport keeps, and user sets (SFNC, "User Set Control"). Sets hold neither of these nor selectors.
#pragma once

#include "camera_emulator/Description.h"
#include "camera_emulator/Memory.h"

#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace emu
{

// What a transport has beside the settings.
struct OwnRegisters
{
    uint64_t settingsBegin = 0; // multiples of 4096; sets hold nothing else
    uint64_t settingsEnd = 0;
    std::vector<std::pair<uint64_t, size_t>> kept; // outlives a power cut: addresses and sizes
};

class KeptState
{
public:
    // `factory`: the registers as they were delivered. Commands that the description does not have, or whose
    // registers it does not tell, do nothing.
    KeptState(const Description& nodes, const Memory& factory, const OwnRegisters& own);

    // A host has written this word: sets are saved and loaded. True: the camera is to restart. Words of
    // `unsaved` are not saved.
    bool written(uint64_t word, const std::vector<uint32_t>& unsaved, Memory& memory);
    // The registers as after power-up.
    void powerUp(Memory& memory) const;

private:
    int64_t numberIn(const std::optional<RegisterField>& field, const Memory& memory) const;
    void load(int64_t set, Memory& memory) const;

    const OwnRegisters m_own;
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
