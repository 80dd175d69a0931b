// What may be written.
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
    if (!isReal)
        narrowToCopies(node, range);
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

// What a copy cannot take the node cannot. Copies may lead in circles.
void NodeValues::narrowToCopies(const Node& node, Range& range)
{
    for (const Property& property : node.properties) {
        if (property.tag != Tag::pValueCopy || !property.target || m_openCopies.size() >= maximumWriteDepth ||
            !m_openCopies.insert(property.target).second)
            continue;
        const Range copy = this->range(*property.target);
        m_openCopies.erase(property.target);
        const auto higher = [](const Number& a, const Number& b) {
            return clampedInteger(a).asInteger() > clampedInteger(b).asInteger();
        };
        if (higher(copy.minimum, range.minimum))
            range.minimum = clampedInteger(copy.minimum);
        if (higher(range.maximum, copy.maximum))
            range.maximum = clampedInteger(copy.maximum);
    }
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

} // namespace kx
