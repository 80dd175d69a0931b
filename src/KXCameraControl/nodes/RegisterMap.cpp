// Working out addresses over a line that has no camera.
#include "KXCameraControl/nodes/RegisterMap.h"

#include <algorithm>

namespace kx
{

RegisterMap::RegisterMap(const NodeTable& table, const FeatureLinks& links)
    : m_links(links), m_values(table, m_line),
      m_registers(table, m_line, [this](const Node& node) { return m_values.value(node).asInteger(); })
{
    for (const Node& node : table.nodes()) {
        if (!isRegisterKind(node.kind))
            continue;
        Placed placed{&node, {}};
        const bool isPlaced = place(node, placed);
        const bool isInMemory = Registers::isInMemory(node);
        if (isPlaced)
            (isInMemory ? m_placed : m_elsewhere).push_back(std::move(placed));
        else if (isInMemory)
            m_unplaced.push_back(&node);
        else
            ++m_unplacedElsewhere;
    }
}

bool RegisterMap::liesIn(const Placed& placed, uint64_t address, uint64_t length)
{
    if (length == 0)
        return false;
    const uint64_t last = length - 1 > ~address ? ~uint64_t{0} : address + (length - 1);
    return std::any_of(placed.spans.begin(), placed.spans.end(),
                       [&](const Span& span) { return span.first <= last && span.last >= address; });
}

size_t RegisterMap::countElsewhere(uint64_t address, uint64_t length) const
{
    return static_cast<size_t>(
        std::count_if(m_elsewhere.begin(), m_elsewhere.end(),
                      [&](const Placed& placed) { return liesIn(placed, address, length); }));
}

std::vector<const Node*> RegisterMap::lyingIn(uint64_t address, uint64_t length) const
{
    std::vector<const Node*> found;
    for (const Placed& placed : m_placed)
        if (liesIn(placed, address, length))
            found.push_back(placed.node);
    return found;
}

// False: only the camera can tell.
bool RegisterMap::place(const Node& node, Placed& placed)
{
    std::vector<Choice> choices;
    bool isKnown = false;
    try {
        size_t combinations = 1;
        isKnown = node.faults[AspectValue] == FaultNone && choicesOf(node, choices);
        for (const Choice& choice : choices)
            combinations *= std::min(choice.values.size(), maximumPlaces / combinations + 1);
        isKnown = isKnown && combinations <= maximumPlaces;
        for (size_t i = 0; isKnown && i < combinations; ++i) {
            choose(choices, i);
            isKnown = addSpan(node, placed);
        }
    } catch (const NodeFailure&) {
        isKnown = false;
    } catch (const FormulaError&) {
        isKnown = false;
    }
    return isKnown;
}

// What moves the register, with all that they can be set to. False when one can be anything.
bool RegisterMap::choicesOf(const Node& node, std::vector<Choice>& choices)
{
    for (const Node* mover : m_links.placedBy(node)) {
        Choice choice{mover, valuesOf(*mover)};
        if (choice.values.empty())
            return false;
        choices.push_back(std::move(choice));
    }
    return true;
}

// Empty when the description does not tell, or too many.
std::vector<int64_t> RegisterMap::valuesOf(const Node& feature)
{
    std::vector<int64_t> values;
    m_values.beginCall();
    if (feature.kind == NodeKind::Enumeration) {
        for (const Property& property : feature.properties)
            if (property.tag == Tag::Entry)
                values.push_back(m_values.entryValue(*property.target));
    } else if (feature.kind == NodeKind::Boolean) {
        values = {0, 1};
    } else if (isIntegerKind(feature.kind) && m_links.boundedBy(feature).empty()) {
        const Range range = m_values.range(feature);
        const bool isEmpty = range.maximum.asInteger() < range.minimum.asInteger();
        const uint64_t steps = isEmpty ? maximumPlaces : range.steps();
        for (uint64_t i = 0; steps < maximumPlaces && i <= steps; ++i)
            values.push_back(range.valueAt(i));
    }
    return values;
}

void RegisterMap::choose(const std::vector<Choice>& choices, size_t combination)
{
    m_line.forget(); // also what other registers were placed with
    m_values.beginCall();
    for (const Choice& choice : choices) {
        m_values.write(*choice.node, Number::ofInteger(choice.values[combination % choice.values.size()]));
        combination /= choice.values.size();
    }
}

bool RegisterMap::addSpan(const Node& node, Placed& placed)
{
    const uint64_t first = m_registers.address(node);
    const int64_t length = m_registers.length(node);
    if (length < 0)
        return false;
    if (length == 0)
        return true;
    const auto size = static_cast<uint64_t>(length);
    const Span span{first, size - 1 > ~first ? ~uint64_t{0} : first + (size - 1)};
    // Places of neighbouring indices become one.
    if (!placed.spans.empty() && span.first >= placed.spans.back().first &&
        span.first - 1 <= placed.spans.back().last && span.first > 0)
        placed.spans.back().last = std::max(placed.spans.back().last, span.last);
    else
        placed.spans.push_back(span);
    return true;
}

} // namespace kx
