// What may be written, and writing it.
#include "KXCameraControl/nodes/NodeValues.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>

namespace kx
{

namespace
{

constexpr int64_t lowestInteger = std::numeric_limits<int64_t>::min();
constexpr int64_t highestInteger = std::numeric_limits<int64_t>::max();
// Copies of a value (pValueCopy) may lead in circles.
constexpr unsigned maximumWriteDepth = 100;

Range integers(int64_t minimum, int64_t maximum)
{
    return {Number::ofInteger(minimum), Number::ofInteger(maximum)};
}

Range reals(double minimum, double maximum)
{
    return {Number::ofReal(minimum), Number::ofReal(maximum)};
}

// The nearest integer, and the nearest that there is for what lies beyond.
Number clampedInteger(const Number& number)
{
    if (number.isInteger())
        return number;
    if (number.asReal() >= 9223372036854775807.0)
        return Number::ofInteger(highestInteger);
    if (number.asReal() <= -9223372036854775808.0)
        return Number::ofInteger(lowestInteger);
    return Number::ofInteger(number.asInteger());
}

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

Range NodeValues::range(const Node& node)
{
    const auto known = m_ranges.find(&node);
    if (known != m_ranges.end())
        return known->second;
    requireSound(node, AspectBounds);
    try {
        Range range = freshRange(node);
        range.increment = std::max<int64_t>(range.increment, 1);
        m_ranges[&node] = range;
        return range;
    } catch (const FormulaError& error) {
        throw NodeFailure{KX_E_GC_RUNTIME, node.name + ": " + error.text + "."};
    }
}

Range NodeValues::freshRange(const Node& node)
{
    switch (node.kind) {
    case NodeKind::IntReg:
    case NodeKind::MaskedIntReg:
    case NodeKind::StructEntry: {
        const IntegerLimits limits = m_registers.limits(node);
        return integers(limits.minimum, limits.maximum);
    }
    case NodeKind::FloatReg:
        return m_registers.length(node) == 4 ? reals(-FLT_MAX, FLT_MAX) : reals(-DBL_MAX, DBL_MAX);
    case NodeKind::SwissKnife:
        return reals(-DBL_MAX, DBL_MAX);
    case NodeKind::Boolean:
        return integers(0, 1);
    case NodeKind::Integer:
        return ownRange(node, false);
    case NodeKind::Float:
        return ownRange(node, true);
    case NodeKind::IntConverter:
    case NodeKind::Converter:
        return converterRange(node);
    default:
        return integers(lowestInteger, highestInteger);
    }
}

// What the node says itself; where it says nothing, what its value's node says; else what its type can hold.
Range NodeValues::ownRange(const Node& node, bool isReal)
{
    Range range = isReal ? reals(-DBL_MAX, DBL_MAX) : integers(lowestInteger, highestInteger);
    const auto says = [&](Tag link, Tag literal) { return node.find(link) || node.find(literal); };
    const bool saysAll = says(Tag::pMin, Tag::Min) && says(Tag::pMax, Tag::Max) && says(Tag::pInc, Tag::Inc);
    const Source from = saysAll ? Source{} : source(node);
    if (from.node)
        range = this->range(*from.node);
    const auto replace = [&](Tag link, Tag literal, Number& bound) {
        const Property* own = node.find(literal);
        if (const Node* target = node.link(link))
            bound = value(*target);
        else if (own)
            bound = isReal ? Number::ofReal(literalReal(node, *own))
                           : Number::ofInteger(literalInteger(node, *own));
        else
            return false;
        return true;
    };
    if (replace(Tag::pMin, Tag::Min, range.minimum))
        range.countsFromMinimum = true;
    replace(Tag::pMax, Tag::Max, range.maximum);
    if (isReal)
        return range;
    range.minimum = clampedInteger(range.minimum);
    range.maximum = clampedInteger(range.maximum);
    Number increment = Number::ofInteger(range.increment);
    replace(Tag::pInc, Tag::Inc, increment);
    range.increment = increment.asInteger();
    return range;
}

// The ends of what lies behind, converted; which one is the lower is the slope's to say (GenApi, Slope), and
// where it is Automatic, theirs. With a slope that varies the ends tell nothing. An end that the formula
// cannot convert (a reciprocal at zero, a product beyond all numbers) leaves the type's limit.
Range NodeValues::converterRange(const Node& node)
{
    const bool isInteger = node.kind == NodeKind::IntConverter;
    const Range limits = isInteger ? integers(lowestInteger, highestInteger) : reals(-DBL_MAX, DBL_MAX);
    const Property* slope = node.find(Tag::Slope);
    const std::string direction = slope ? slope->text : "Automatic";
    const Source from = source(node);
    if (!from.node || direction == "Varying")
        return limits;
    const Range behind = range(*from.node);
    try {
        Number first = formulaValue(node, node.from, behind.minimum);
        Number last = formulaValue(node, node.from, behind.maximum);
        if (isInteger) {
            first = Number::ofInteger(first.asInteger());
            last = Number::ofInteger(last.asInteger());
        }
        // A formula that reads the register by a variable of its own is worth the same at both ends: it tells
        // where the feature stands, not where it may go.
        if (first.asReal() == last.asReal())
            return limits;
        const bool isFalling = last.asReal() < first.asReal();
        if (direction == "Decreasing" || (direction != "Increasing" && isFalling))
            std::swap(first, last);
        return {first, last};
    } catch (const FormulaError&) {
        return limits;
    }
}

// ---- writing ----

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
    requireSound(node, AspectValue);
    if (++m_writeDepth > maximumWriteDepth)
        throw NodeFailure{KX_E_GC_RUNTIME, node.name + ": its copies lead in a circle."};
    Number checked = number;
    try {
        checkRange(node, checked);
        switch (node.kind) {
        case NodeKind::IntReg:
        case NodeKind::MaskedIntReg:
        case NodeKind::StructEntry:
            m_registers.writeInteger(node, checked.asInteger());
            break;
        case NodeKind::FloatReg:
            m_registers.writeFloat(node, checked.asReal());
            break;
        case NodeKind::IntConverter:
            writeSource(node, formulaValue(node, node.to, checked));
            break;
        case NodeKind::Converter:
            writeSource(node, Number::ofReal(formulaValue(node, node.to, checked).asReal()));
            break;
        case NodeKind::Boolean:
            writeSource(node, Number::ofInteger(checked.isTrue() ? booleanLiteral(node, Tag::OnValue, 1)
                                                                 : booleanLiteral(node, Tag::OffValue, 0)));
            break;
        case NodeKind::Integer:
        case NodeKind::Float:
        case NodeKind::Enumeration:
        case NodeKind::Command:
            writeSource(node, checked);
            break;
        default:
            throw NodeFailure{KX_E_GC_ACCESS, node.name + ": it cannot be written."};
        }
    } catch (const FormulaError& error) {
        throw NodeFailure{KX_E_GC_RUNTIME, node.name + ": " + error.text + "."};
    }
    --m_writeDepth;
    forgetAnswers();
}

void NodeValues::writeSource(const Node& node, const Number& number)
{
    const Source to = source(node);
    if (to.node)
        write(*to.node, number);
    else
        m_literals[to.literal] = number;
    for (const Property& property : node.properties) {
        if (property.tag == Tag::pValueCopy && property.target)
            write(*property.target, number);
    }
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
