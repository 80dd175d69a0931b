// What the description alone tells of features and addresses.
#include "KXCameraControl/nodes/NodeMap_Guard.h"

namespace kx
{

namespace
{

std::vector<std::string> namesOf(const std::vector<const Node*>& nodes)
{
    std::vector<std::string> names;
    for (const Node* node : nodes)
        names.push_back(node->name);
    return names;
}

} // namespace

KX_Status NodeMap::isEverWritable(const char* name, bool& writable)
{
    return guarded([&](Nodes& nodes) { writable = nodes.described.writability().isEver(nodes.find(name)); });
}

KX_Status NodeMap::relatedNames(const char* name, uint32_t relation, std::vector<std::string>& names)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.find(name);
        const FeatureLinks& links = nodes.described.links();
        switch (relation) {
        case KX_RELATED_SELECTORS:
            names = namesOf(links.selectors(node));
            break;
        case KX_RELATED_INVALIDATORS:
            names = namesOf(links.invalidators(node));
            break;
        case KX_RELATED_PLACE:
            names = namesOf(links.placedBy(node));
            break;
        default:
            names = namesOf(links.locks(node));
            break;
        }
    });
}

KX_Status NodeMap::registerCoverage(uint64_t address, uint64_t length, KX_RegisterCoverage& coverage)
{
    return guarded([&](Nodes& nodes) {
        KX_RegisterCoverage result{};
        const RegisterMap& registers = nodes.described.registers();
        const auto count = [&](const std::vector<const Node*>& found, uint32_t& all, uint32_t& writable) {
            for (const Node* node : found) {
                ++all;
                writable += nodes.described.writability().isEver(*node) ? 1 : 0;
            }
        };
        count(registers.lyingIn(address, length), result.registers, result.writable);
        count(registers.unplaced(), result.unplaced, result.unplacedWritable);
        result.registers += static_cast<uint32_t>(registers.countElsewhere(address, length));
        result.unplaced += static_cast<uint32_t>(registers.countUnplacedElsewhere());
        coverage = result;
    });
}

KX_Status NodeMap::registerNames(uint64_t address, uint64_t length, std::vector<std::string>& names)
{
    return guarded(
        [&](Nodes& nodes) { names = namesOf(nodes.described.registers().lyingIn(address, length)); });
}

} // namespace kx
