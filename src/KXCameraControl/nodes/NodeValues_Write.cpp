// Writing: along the ways that lead from a feature to its registers, in the ranges of all that lies there.
#include "KXCameraControl/nodes/NodeValues.h"

#include <algorithm>

namespace kx
{

namespace
{

// The nearest value that the increment allows, the lower one of two; a value outside the range stays, to be
// refused.
int64_t nearestStep(int64_t value, const Range& range)
{
    const int64_t minimum = range.minimum.asInteger(), maximum = range.maximum.asInteger();
    const int64_t origin = range.incrementOrigin();
    const auto step = static_cast<uint64_t>(range.increment);
    if (step == 1 || value < minimum || value > maximum)
        return value;
    const bool isAbove = value >= origin;
    const uint64_t distance = isAbove ? static_cast<uint64_t>(value) - static_cast<uint64_t>(origin)
                                      : static_cast<uint64_t>(origin) - static_cast<uint64_t>(value);
    const uint64_t rest = distance % step;
    if (rest == 0)
        return value;
    const uint64_t down = isAbove ? rest : step - rest;
    const uint64_t up = step - down;
    const bool isDownThere = down <= static_cast<uint64_t>(value) - static_cast<uint64_t>(minimum);
    const bool isUpThere = up <= static_cast<uint64_t>(maximum) - static_cast<uint64_t>(value);
    if (isUpThere && (up < down || !isDownThere))
        return value + static_cast<int64_t>(up);
    return isDownThere ? value - static_cast<int64_t>(down) : value;
}

[[noreturn]] void outOfRange(const Node& node)
{
    throw NodeFailure{KX_E_GC_RANGE, node.name + ": the value is out of range."};
}

} // namespace

// Integers meet their bounds exactly. Reals come from 32-bit callers: a bound that only 64 bits can tell from
// the value is met, and the bound is what goes on.
void NodeValues::checkRange(const Node& node, Number& number)
{
    if (!isIntegerKind(node.kind) && !isFloatKind(node.kind))
        return;
    const Range allowed = range(node);
    if (isFloatKind(node.kind)) {
        const double real = number.asReal();
        if (!(static_cast<float>(real) >= static_cast<float>(allowed.minimum.asReal()) &&
              static_cast<float>(real) <= static_cast<float>(allowed.maximum.asReal())))
            outOfRange(node);
        number = Number::ofReal(std::max(allowed.minimum.asReal(), std::min(allowed.maximum.asReal(), real)));
        return;
    }
    // Who writes an integer means it; a real number comes from a float or a converter, which know no steps.
    number =
        Number::ofInteger(number.isInteger() ? number.asInteger() : nearestStep(number.asInteger(), allowed));
    const int64_t integer = number.asInteger();
    const int64_t minimum = allowed.minimum.asInteger();
    if (integer < minimum || integer > allowed.maximum.asInteger())
        outOfRange(node);
    const int64_t origin = allowed.incrementOrigin();
    const auto distance = origin <= integer ? static_cast<uint64_t>(integer) - static_cast<uint64_t>(origin)
                                            : static_cast<uint64_t>(origin) - static_cast<uint64_t>(integer);
    if (distance % static_cast<uint64_t>(allowed.increment) != 0)
        throw NodeFailure{KX_E_GC_ARGUMENT, node.name + ": the value is no multiple of the increment."};
}

void NodeValues::write(const Node& node, const Number& number)
{
    follow(node, number, Intent::Write);
}

// The way of a value to the registers; to check it is to go it without writing.
void NodeValues::follow(const Node& node, const Number& number, Intent intent)
{
    requireSound(node, AspectValue);
    if (++m_writeDepth > maximumWriteDepth)
        throw NodeFailure{KX_E_GC_RUNTIME, node.name + ": its copies lead in a circle."};
    m_writeSteps = m_writeDepth == 1 ? 0 : m_writeSteps + 1;
    if (m_writeSteps > maximumWriteSteps)
        throw NodeFailure{KX_E_GC_RUNTIME, node.name + ": it has too many copies."};
    Number checked = number;
    try {
        checkRange(node, checked);
        switch (node.kind) {
        case NodeKind::IntReg:
        case NodeKind::MaskedIntReg:
        case NodeKind::StructEntry:
            if (intent == Intent::Write)
                m_registers.writeInteger(node, checked.asInteger());
            break;
        case NodeKind::FloatReg:
            if (intent == Intent::Write)
                m_registers.writeFloat(node, checked.asReal());
            break;
        case NodeKind::IntConverter:
            followSources(node, formulaValue(node, node.to, checked), intent);
            break;
        case NodeKind::Converter:
            followSources(node, Number::ofReal(formulaValue(node, node.to, checked).asReal()), intent);
            break;
        case NodeKind::Boolean:
            followSources(node, Number::ofInteger(onOrOff(node, checked.isTrue())), intent);
            break;
        case NodeKind::Integer:
        case NodeKind::Float:
        case NodeKind::Enumeration:
        case NodeKind::Command:
            followSources(node, checked, intent);
            break;
        default:
            throw NodeFailure{KX_E_GC_ACCESS, node.name + ": it cannot be written."};
        }
    } catch (const FormulaError& error) {
        throw NodeFailure{KX_E_GC_RUNTIME, node.name + ": " + error.text + "."};
    }
    --m_writeDepth;
    if (intent == Intent::Write)
        forgetAnswers();
}

int64_t NodeValues::onOrOff(const Node& node, bool isOn) const
{
    return isOn ? booleanLiteral(node, Tag::OnValue, 1) : booleanLiteral(node, Tag::OffValue, 0);
}

// The value and its copies, in the description's order. Where there are copies, none is written before all of
// them take the value.
void NodeValues::followSources(const Node& node, const Number& number, Intent intent)
{
    const std::vector<Source> targets = sourcesInOrder(node);
    if (intent == Intent::Write && targets.size() > 1)
        followAll(targets, number, Intent::Check);
    followAll(targets, number, intent);
}

void NodeValues::followAll(const std::vector<Source>& targets, const Number& number, Intent intent)
{
    for (const Source& target : targets) {
        if (target.node)
            follow(*target.node, number, intent);
        else if (intent == Intent::Write)
            m_literals[target.literal] = number;
    }
}

std::vector<NodeValues::Source> NodeValues::sourcesInOrder(const Node& node)
{
    const Source own = source(node);
    std::vector<Source> targets;
    bool isOwnListed = false;
    for (const Property& property : node.properties) {
        const bool isOwn = own.node ? property.target == own.node && property.tag != Tag::pValueCopy
                                    : &property == own.literal;
        if (isOwn && !isOwnListed)
            targets.push_back(own);
        isOwnListed = isOwnListed || isOwn;
        if (property.tag == Tag::pValueCopy && property.target)
            targets.push_back({property.target, nullptr});
    }
    return targets;
}

void NodeValues::writeText(const Node& node, const std::string& text)
{
    requireSound(node, AspectValue);
    if (node.kind == NodeKind::StringReg) {
        m_registers.writeText(node, text);
    } else {
        const Source to = source(node);
        if (to.node)
            writeText(*to.node, text);
        else
            m_literalTexts[to.literal] = text;
    }
    forgetAnswers();
}

void NodeValues::execute(const Node& node)
{
    requireSound(node, AspectValue);
    const Node* source = node.link(Tag::pCommandValue);
    const Property* literal = node.find(Tag::CommandValue);
    if (!source && !literal)
        throw NodeFailure{KX_E_GC_RUNTIME, node.name + ": it has no command value."};
    write(node, source ? value(*source) : Number::ofInteger(literalInteger(node, *literal)));
}

} // namespace kx
