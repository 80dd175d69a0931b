// What people give an emulated camera: a description and a seed, the one behind the other with a line "===="
// between.
#include "camera_emulator/CameraCore.h"
#include "camera_emulator/KeptState.h"
#include "fuzz/Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::Input input(data, size);
    const std::string text = input.textUpTo("\n====\n");
    const std::string seed = input.rest();
    const emu::Description description(text);
    emu::Memory memory;
    const emu::SeedResult result = emu::applySeed(seed, description, memory);
    for (const std::string& problem : result.problems)
        fuzz::promise(!problem.empty(), "a problem is a sentence");
    description.schemaVersion();
    description.selectorRegisters();
    description.readOnlyRegisters();
    for (const char* name : {"Width", "Gain", "DeviceUserID", "UserSetSelector", "UserSetSave"}) {
        const auto field = description.field(name);
        if (const auto* reg = std::get_if<emu::RegisterField>(&field))
            emu::decode(*reg, memory);
    }
    return 0;
}
