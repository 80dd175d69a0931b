// Following references from node to node until features are met.
#include "KXCameraControl/nodes/FeatureLinks.h"

#include <algorithm>

namespace kx
{

namespace
{

// Nodes of one search; as many as the longest chain of references that is evaluated.
constexpr size_t maximumReach = 400;

bool isAsked(Tag tag)
{
    return isValueReference(tag) || tag == Tag::pVariable || tag == Tag::pIndex;
}

bool isPlace(Tag tag)
{
    return tag == Tag::pAddress || tag == Tag::pIndex || tag == Tag::pLength;
}

bool isBound(Tag tag)
{
    return tag == Tag::pMin || tag == Tag::pMax || tag == Tag::pInc;
}

bool isLock(Tag tag)
{
    return tag == Tag::pIsLocked;
}

bool isInvalidator(Tag tag)
{
    return tag == Tag::pInvalidator;
}

bool isComputed(const Node& node)
{
    return node.kind == NodeKind::IntSwissKnife || node.kind == NodeKind::SwissKnife;
}

// Nodes in the order in which they are met, each once.
class Reached
{
public:
    void add(const Node* node)
    {
        if (node && m_nodes.size() < maximumReach && m_seen.insert(node).second)
            m_nodes.push_back(node);
    }
    // What the node refers to by properties that the test lets pass. Whether there was any.
    bool addTargets(const Node& node, bool (*isWay)(Tag))
    {
        bool any = false;
        for (const Property& property : node.properties) {
            if (!isWay(property.tag))
                continue;
            add(property.target);
            add(property.offsetTarget);
            any = any || property.target;
        }
        return any;
    }
    size_t size() const { return m_nodes.size(); }
    const Node& operator[](size_t place) const { return *m_nodes[place]; }

private:
    std::vector<const Node*> m_nodes;
    std::unordered_set<const Node*> m_seen;
};

// The node and those that its value may come from.
Reached valueChain(const Node& node)
{
    Reached chain;
    chain.add(&node);
    for (size_t i = 0; i < chain.size(); ++i)
        chain.addTargets(chain[i], isValueReference);
    return chain;
}

void tell(const Node* node, const Node& asked, std::vector<const Node*>& found)
{
    if (node != &asked && std::find(found.begin(), found.end(), node) == found.end())
        found.push_back(node);
}

} // namespace

FeatureLinks::FeatureLinks(const NodeTable& table)
{
    for (const Node& node : table.nodes()) {
        for (const Property& property : node.properties) {
            if (property.tag == Tag::pSelected) {
                m_selectorsOf[property.text].push_back(&node);
                m_features.insert(&node);
            }
            if (property.tag == Tag::pFeature && node.kind == NodeKind::Category)
                m_features.insert(table.find(property.text));
        }
    }
    m_features.erase(nullptr); // listed, but not there
    for (const Node& node : table.nodes()) {
        if (!isFeature(node))
            continue;
        const Reached chain = valueChain(node);
        for (size_t i = 1; i < chain.size(); ++i)
            m_over[&chain[i]].push_back(&node);
    }
}

std::vector<const Node*> FeatureLinks::featuresOver(const Node& node) const
{
    const auto known = m_over.find(&node);
    return known == m_over.end() ? std::vector<const Node*>() : known->second;
}

std::vector<const Node*> FeatureLinks::selectors(const Node& node) const
{
    const auto known = m_selectorsOf.find(node.name);
    std::vector<const Node*> found;
    if (known != m_selectorsOf.end())
        for (const Node* selector : known->second)
            tell(selector, node, found);
    return found;
}

std::vector<const Node*> FeatureLinks::invalidators(const Node& node) const
{
    return behind(node, isInvalidator);
}

std::vector<const Node*> FeatureLinks::locks(const Node& node) const
{
    return behind(node, isLock);
}

std::vector<const Node*> FeatureLinks::placedBy(const Node& node) const
{
    return behind(node, isPlace);
}

std::vector<const Node*> FeatureLinks::boundedBy(const Node& node) const
{
    return behind(node, isBound);
}

// From where `begins` leads away from the node's values, down to features; of what is computed, to those that
// it is computed from.
std::vector<const Node*> FeatureLinks::behind(const Node& node, TagTest begins) const
{
    const Reached chain = valueChain(node);
    Reached reached;
    for (size_t i = 0; i < chain.size(); ++i)
        reached.addTargets(chain[i], begins);
    std::vector<const Node*> found;
    for (size_t i = 0; i < reached.size(); ++i) {
        const Node& current = reached[i];
        const bool isEnd = isFeature(current) && !isComputed(current);
        if (isEnd || !reached.addTargets(current, isAsked))
            tellEnd(current, node, found);
    }
    return found;
}

// A feature; else those whose value stands there; else, for a register that no feature shows, the register. A
// number that stands in the description says nothing.
void FeatureLinks::tellEnd(const Node& node, const Node& asked, std::vector<const Node*>& found) const
{
    if (isFeature(node)) {
        tell(&node, asked, found);
        return;
    }
    const std::vector<const Node*> over = featuresOver(node);
    for (const Node* feature : over)
        tell(feature, asked, found);
    if (over.empty() && node.find(Tag::pPort))
        tell(&node, asked, found);
}

} // namespace kx
