// Where the registers of a description lie, as far as the description alone tells.
#pragma once

#include "KXCameraControl/nodes/DescribedLine.h"
#include "KXCameraControl/nodes/FeatureLinks.h"
#include "KXCameraControl/nodes/NodeValues.h"

namespace kx
{

// A register whose address hangs on features (selectors, indices) lies wherever their values may put it, as
// long as the description tells these values (bounds that hang on other features are told by the camera only)
// and there are at most maximumPlaces of them. Chunk and event data lie nowhere.
class RegisterMap
{
public:
    static constexpr size_t maximumPlaces = 4096; // of one register

    RegisterMap(const NodeTable& table, const FeatureLinks& links);

    // Registers that share a byte with the range, in the description's order. A range that would wrap ends at
    // the last address.
    std::vector<const Node*> lyingIn(uint64_t address, uint64_t length) const;
    // Registers whose place only the camera can tell.
    const std::vector<const Node*>& unplaced() const { return m_unplaced; }
    // Registers of chunk and event data: their addresses count within the data, and exports name them all the
    // same. How many have an address in the range, and of how many it cannot be told.
    size_t countElsewhere(uint64_t address, uint64_t length) const;
    size_t countUnplacedElsewhere() const { return m_unplacedElsewhere; }

private:
    // Both inclusive.
    struct Span
    {
        uint64_t first;
        uint64_t last;
    };
    struct Placed
    {
        const Node* node;
        std::vector<Span> spans;
    };
    struct Choice
    {
        const Node* node;
        std::vector<int64_t> values;
    };

    static bool liesIn(const Placed& placed, uint64_t address, uint64_t length);
    bool place(const Node& node, Placed& placed);
    bool choicesOf(const Node& node, std::vector<Choice>& choices);
    std::vector<int64_t> valuesOf(const Node& feature);
    void choose(const std::vector<Choice>& choices, size_t combination);
    bool addSpan(const Node& node, Placed& placed);

    const FeatureLinks& m_links;
    DescribedLine m_line;
    NodeValues m_values;
    Registers m_registers;
    std::vector<Placed> m_placed;
    std::vector<const Node*> m_unplaced;
    std::vector<Placed> m_elsewhere;
    size_t m_unplacedElsewhere = 0;
};

} // namespace kx
