// What a feature hangs on besides its own registers, as features that people know.
#pragma once

#include "KXCameraControl/nodes/NodeTable.h"

#include <functional>
#include <unordered_map>
#include <unordered_set>

namespace kx
{

class FeatureLinks
{
public:
    explicit FeatureLinks(const NodeTable& table);

    // Listed in a category, or a selector.
    bool isFeature(const Node& node) const { return m_features.count(&node) > 0; }
    // Features other than the node itself whose value comes from it.
    std::vector<const Node*> featuresOver(const Node& node) const;

    // Each answer in the order in which it is found, each node once, never the node itself.
    std::vector<const Node*> selectors(const Node& node) const;
    std::vector<const Node*> invalidators(const Node& node) const;
    // Behind pIsLocked of the node and of those that its value comes from.
    std::vector<const Node*> locks(const Node& node) const;
    // Behind the address, the length or the index of the place where its value stands.
    std::vector<const Node*> placedBy(const Node& node) const;
    // Behind its bounds and its increment.
    std::vector<const Node*> boundedBy(const Node& node) const;

private:
    using TagTest = bool (*)(Tag);

    std::vector<const Node*> behind(const Node& node, TagTest begins) const;
    void tellEnd(const Node& node, const Node& asked, std::vector<const Node*>& found) const;

    std::unordered_set<const Node*> m_features;
    std::unordered_map<const Node*, std::vector<const Node*>> m_over;
    std::unordered_map<std::string, std::vector<const Node*>> m_selectorsOf;
};

} // namespace kx
