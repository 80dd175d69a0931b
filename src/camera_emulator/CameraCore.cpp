#include "camera_emulator/CameraCore.h"

#include "camera_emulator/Bootstrap.h"
#include "camera_emulator/BuiltIn.h"
#include "camera_emulator/Files.h"

namespace emu
{

CameraCore::CameraCore(const CameraConfig& wanted, const std::string& builtIn)
    : config(wanted), m_isBuiltIn(wanted.description.empty() && wanted.descriptionFile.empty())
{
    if (m_isBuiltIn) {
        description = builtIn;
    } else if (!config.description.empty()) {
        description = config.description;
    } else {
        description = readFile(config.descriptionFile).value_or("");
        if (description.empty())
            problem = "The description " + config.descriptionFile + " cannot be read or is empty.";
    }
    if (description.size() > kMaxDescriptionSize)
        problem = "The description is longer than " + std::to_string(kMaxDescriptionSize) + " bytes.";
    nodes.emplace(description);
}

void CameraCore::seed(Memory& memory)
{
    if (m_isBuiltIn)
        seeded = applySeed(builtInSeed(), *nodes, memory);
    if (config.seed.empty())
        return;
    const SeedResult own = applySeed(config.seed, *nodes, memory);
    seeded.problems.insert(seeded.problems.end(), own.problems.begin(), own.problems.end());
    seeded.remarks.insert(seeded.remarks.end(), own.remarks.begin(), own.remarks.end());
}

// What a change behind the hosts' backs came to, in sentences.
std::vector<std::string> CameraCore::change(const std::string& json, Memory& memory) const
{
    SeedResult result = applySeed(json, *nodes, memory);
    result.problems.insert(result.problems.end(), result.remarks.begin(), result.remarks.end());
    return result.problems;
}

} // namespace emu
