// Which nodes cannot be used: they lead in circles or nowhere, or too deep.
#include "KXCameraControl/nodes/NodeTable.h"

#include <algorithm>

namespace kx
{

namespace
{

bool endsInBound(const std::string& variable)
{
    const auto dot = variable.rfind('.');
    const std::string suffix = dot == std::string::npos ? std::string() : variable.substr(dot + 1);
    return suffix == "Min" || suffix == "Max" || suffix == "Inc";
}

// Whether a question about the node asks along this reference, and what it asks there.
bool follows(Aspect aspect, const Property& property, Aspect& asked)
{
    asked = AspectValue;
    switch (property.tag) {
    case Tag::pValue:
    case Tag::pValueIndexed:
    case Tag::pValueDefault:
        asked = aspect;
        return true;
    case Tag::pIndex:
        return true;
    case Tag::pVariable:
        asked = endsInBound(property.attribute) ? AspectBounds : AspectValue;
        return aspect != AspectAccess;
    case Tag::pAddress:
    case Tag::pPort:
    case Tag::pCommandValue:
        return aspect == AspectValue;
    case Tag::pLength:
        return aspect != AspectAccess;
    case Tag::pMin:
    case Tag::pMax:
    case Tag::pInc:
        return aspect == AspectBounds;
    case Tag::pIsImplemented:
    case Tag::pIsAvailable:
    case Tag::pIsLocked:
        return aspect == AspectAccess;
    default:
        return false;
    }
}

// Depth-first without recursion: a description may chain as many nodes as it has.
class FaultSearch
{
public:
    void start(Node& node, Aspect aspect)
    {
        if (stateOf(node, aspect).visit == Visit::New)
            enter(node, aspect);
        while (!m_path.empty())
            advance();
    }

private:
    // Each node costs evaluation a share of the stack, whatever its formula; beyond this nothing that was
    // made to be used goes.
    static constexpr unsigned maximumLength = 400;

    enum class Visit
    {
        New,
        Open,
        Done
    };

    struct State
    {
        Visit visit = Visit::New;
        unsigned length = 0; // of the longest chain of nodes behind it
    };

    struct Step
    {
        Node* node;
        Aspect aspect;
        size_t next; // property
        bool offset; // the pIndex before `next` still has its offset node to follow
    };

    State& stateOf(Node& node, Aspect aspect) { return m_states[&node].aspects[aspect]; }

    void enter(Node& node, Aspect aspect)
    {
        stateOf(node, aspect).visit = Visit::Open;
        m_path.push_back({&node, aspect, 0, false});
    }

    void advance()
    {
        Step& step = m_path.back();
        if (step.offset) {
            step.offset = false;
            follow(step.node->properties[step.next - 1].offsetTarget, AspectValue);
            return;
        }
        if (step.next == step.node->properties.size()) {
            leave();
            return;
        }
        const Property& property = step.node->properties[step.next++];
        Aspect asked = AspectValue;
        if (!follows(step.aspect, property, asked))
            return;
        step.offset = !property.offsetName.empty();
        follow(property.target, asked);
    }

    void follow(Node* target, Aspect asked)
    {
        if (!target) {
            mark(m_path.size() - 1, FaultDangling);
            return;
        }
        const State& state = stateOf(*target, asked);
        if (state.visit == Visit::New)
            enter(*target, asked);
        else if (state.visit == Visit::Open)
            markCircle(*target, asked);
        else
            inherit(*target, asked);
    }

    void mark(size_t place, unsigned fault) { m_path[place].node->faults[m_path[place].aspect] |= fault; }

    void markCircle(const Node& start, Aspect aspect)
    {
        for (size_t place = m_path.size(); place-- > 0;) {
            mark(place, FaultCircle);
            if (m_path[place].node == &start && m_path[place].aspect == aspect)
                return;
        }
    }

    // The node on top of the path hangs on what `target` hangs on.
    void inherit(Node& target, Aspect asked)
    {
        const Step& top = m_path.back();
        State& state = stateOf(*top.node, top.aspect);
        state.length = std::max(state.length, stateOf(target, asked).length);
        mark(m_path.size() - 1, target.faults[asked]);
    }

    void leave()
    {
        const Step done = m_path.back();
        State& state = stateOf(*done.node, done.aspect);
        state.visit = Visit::Done;
        if (++state.length > maximumLength)
            mark(m_path.size() - 1, FaultTooDeep);
        m_path.pop_back();
        if (!m_path.empty())
            inherit(*done.node, done.aspect);
    }

    struct States
    {
        State aspects[aspectCount];
    };
    std::unordered_map<const Node*, States> m_states;
    std::vector<Step> m_path;
};

} // namespace

void NodeTable::findFaults()
{
    FaultSearch search;
    for (Node& node : m_nodes) {
        for (unsigned aspect = 0; aspect < aspectCount; ++aspect)
            search.start(node, static_cast<Aspect>(aspect));
    }
}

} // namespace kx
