#include "KXCameraControl/camera/ModuleFeatures.h"

#include "KXCameraControl/camera/ParsedDescriptions.h"
#include "KXCameraControl/description/Fetch.h"
#include "KXCameraControl/nodes/NodeMap.h"

namespace kx
{

namespace
{

class ModuleLine final : public RegisterLine
{
public:
    explicit ModuleLine(Port& port) : m_port(port) {}

    KX_Status readBlock(uint64_t address, void* data, size_t size) override
    {
        return m_port.readMemory(address, data, size);
    }
    KX_Status writeBlock(uint64_t address, const void* data, size_t size) override
    {
        return m_port.writeMemory(address, data, size);
    }
    KX_Status readRegister(uint64_t address, uint32_t& value) override
    {
        return m_port.readRegister(address, value);
    }
    KX_Status writeRegister(uint64_t address, uint32_t value) override
    {
        return m_port.writeRegister(address, value);
    }
    std::string lineError() const override { return m_port.lastError(); }

private:
    Port& m_port;
};

} // namespace

std::vector<std::string> setModuleFeatures(Port& module, const std::vector<ModuleFeature>& features)
{
    SharedDescription description;
    std::string problem;
    if (fetchDescription(module, description, problem) != KX_OK)
        return {problem};
    const auto parsed = parsedDescription(*description);
    if (!parsed->problem.empty())
        return {parsed->problem};
    ModuleLine line(module);
    NodeMap nodes({parsed, &parsed->nodes}, line, false);
    std::vector<std::string> problems;
    for (const ModuleFeature& feature : features) {
        const KX_Status status = feature.value ? nodes.setText(feature.name.c_str(), *feature.value)
                                               : nodes.execute(feature.name.c_str());
        if (status != KX_OK)
            problems.push_back("line " + std::to_string(feature.line) + ", " + feature.name + ": " +
                               (nodes.lastError().empty() ? "it cannot be set" : nodes.lastError()));
    }
    return problems;
}

} // namespace kx
