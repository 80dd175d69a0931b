// Values: from literals, other nodes, formulas and registers.
#include "KXCameraControl/nodes/NodeValues.h"

#include <cmath>
#include <limits>

namespace kx
{

namespace
{

[[noreturn]] void fail(KX_Status status, const Node& node, const std::string& why)
{
    throw NodeFailure{status, node.name + ": " + why + "."};
}

} // namespace

bool isIntegerKind(NodeKind kind)
{
    switch (kind) {
    case NodeKind::Integer:
    case NodeKind::IntReg:
    case NodeKind::MaskedIntReg:
    case NodeKind::StructEntry:
    case NodeKind::IntSwissKnife:
    case NodeKind::IntConverter:
        return true;
    default:
        return false;
    }
}

bool isFloatKind(NodeKind kind)
{
    switch (kind) {
    case NodeKind::Float:
    case NodeKind::FloatReg:
    case NodeKind::SwissKnife:
    case NodeKind::Converter:
        return true;
    default:
        return false;
    }
}

NodeValues::NodeValues(const NodeTable& table, RegisterLine& line)
    : m_table(table), m_registers(table, line, [this](const Node& node) {
          try {
              return value(node).asInteger();
          } catch (const FormulaError& error) {
              fail(KX_E_GC_RUNTIME, node, error.text);
          }
      })
{}

void NodeValues::beginCall()
{
    forgetAnswers();
    m_writeDepth = 0;
    m_openCopies.clear();
    m_openEnumerations.clear(); // a failure may have left some
}

void NodeValues::forgetAnswers()
{
    m_values.clear();
    m_ranges.clear();
    m_access.clear();
}

void NodeValues::requireSound(const Node& node, Aspect aspect) const
{
    const unsigned faults = node.faults[aspect];
    if ((faults & FaultCircle) != 0)
        fail(KX_E_GC_RUNTIME, node, "it depends on itself");
    if ((faults & FaultDangling) != 0)
        fail(KX_E_GC_RUNTIME, node, "it refers to a node that the description does not have");
    if (faults != FaultNone)
        fail(KX_E_GC_RUNTIME, node, "it depends on too long a chain of nodes");
}

// ---- values ----

Number NodeValues::value(const Node& node)
{
    const auto known = m_values.find(&node);
    if (known != m_values.end())
        return known->second;
    requireSound(node, AspectValue);
    try {
        const Number number = freshValue(node);
        m_values[&node] = number;
        return number;
    } catch (const FormulaError& error) {
        fail(KX_E_GC_RUNTIME, node, error.text);
    }
}

Number NodeValues::freshValue(const Node& node)
{
    switch (node.kind) {
    case NodeKind::Integer:
    case NodeKind::Enumeration:
        return Number::ofInteger(sourceValue(node).asInteger());
    case NodeKind::Float:
        return Number::ofReal(sourceValue(node).asReal());
    case NodeKind::Boolean:
        return Number::ofInteger(isOn(node) ? 1 : 0);
    case NodeKind::EnumEntry:
        return Number::ofInteger(entryValue(node));
    case NodeKind::IntReg:
    case NodeKind::MaskedIntReg:
    case NodeKind::StructEntry:
        return Number::ofInteger(m_registers.readInteger(node));
    case NodeKind::FloatReg:
        return Number::ofReal(m_registers.readFloat(node));
    case NodeKind::IntSwissKnife:
        return Number::ofInteger(formulaValue(node, node.from, std::nullopt).asInteger());
    case NodeKind::SwissKnife:
        return Number::ofReal(formulaValue(node, node.from, std::nullopt).asReal());
    case NodeKind::IntConverter:
        return Number::ofInteger(formulaValue(node, node.from, sourceValue(node)).asInteger());
    case NodeKind::Converter:
        return Number::ofReal(formulaValue(node, node.from, sourceValue(node)).asReal());
    case NodeKind::Command:
        return sourceValue(node);
    default:
        fail(KX_E_GC_RUNTIME, node, "it has no number");
    }
}

NodeValues::Source NodeValues::source(const Node& node)
{
    const Property* found = nullptr;
    if (const Node* index = node.link(Tag::pIndex)) {
        const int64_t wanted = value(*index).asInteger();
        for (const Property& property : node.properties) {
            int64_t place = 0;
            const bool isIndexed = property.tag == Tag::ValueIndexed || property.tag == Tag::pValueIndexed;
            if (!found && isIndexed && parseInteger(property.attribute, place) && place == wanted)
                found = &property;
        }
    }
    for (const Tag tag : {Tag::pValueDefault, Tag::ValueDefault, Tag::pValue, Tag::Value}) {
        if (!found)
            found = node.find(tag);
    }
    if (!found)
        fail(KX_E_GC_RUNTIME, node, "it has no value");
    return found->target ? Source{found->target, nullptr} : Source{nullptr, found};
}

Number NodeValues::sourceValue(const Node& node)
{
    const Source from = source(node);
    if (from.node)
        return value(*from.node);
    const auto written = m_literals.find(from.literal);
    if (written != m_literals.end())
        return written->second;
    if (node.kind == NodeKind::Boolean && from.literal->text == "true")
        return Number::ofInteger(booleanLiteral(node, Tag::OnValue, 1));
    if (node.kind == NodeKind::Boolean && from.literal->text == "false")
        return Number::ofInteger(booleanLiteral(node, Tag::OffValue, 0));
    return node.kind == NodeKind::Float ? Number::ofReal(literalReal(node, *from.literal))
                                        : Number::ofInteger(literalInteger(node, *from.literal));
}

int64_t NodeValues::booleanLiteral(const Node& node, Tag tag, int64_t otherwise) const
{
    const Property* property = node.find(tag);
    return property ? literalInteger(node, *property) : otherwise;
}

bool NodeValues::isOn(const Node& node)
{
    return sourceValue(node).asInteger() == booleanLiteral(node, Tag::OnValue, 1);
}

int64_t NodeValues::entryValue(const Node& entry) const
{
    const Property* property = entry.find(Tag::Value);
    if (!property)
        fail(KX_E_GC_RUNTIME, entry, "it has no value");
    return literalInteger(entry, *property);
}

// `input` is what a converter's formula calls TO or FROM; it stands behind the variables.
Number NodeValues::formulaValue(const Node& node, const CompiledFormula& compiled,
                                const std::optional<Number>& input)
{
    if (!compiled.formula)
        fail(KX_E_GC_RUNTIME, node, "its formula cannot be used: " + compiled.problem);
    const bool isInteger = node.kind == NodeKind::IntSwissKnife || node.kind == NodeKind::IntConverter;
    const auto asked = [&](size_t index) {
        for (const Property& property : node.properties) {
            if (property.tag != Tag::pVariable || index-- > 0)
                continue;
            const Number number = variable(node, property);
            return isInteger ? Number::ofInteger(number.asInteger()) : number;
        }
        return isInteger ? Number::ofInteger(input->asInteger()) : *input;
    };
    return compiled.formula->evaluate(asked);
}

// A variable's name may ask for more than the node's value: Gain.Max, TriggerMode.Entry.On.
Number NodeValues::variable(const Node& node, const Property& property)
{
    const Node& target = *property.target;
    const auto dot = property.attribute.find('.');
    const std::string part = dot == std::string::npos ? "Value" : property.attribute.substr(dot + 1);
    if (part == "Value")
        return value(target);
    if (part == "Min")
        return range(target).minimum;
    if (part == "Max")
        return range(target).maximum;
    if (part == "Inc")
        return Number::ofInteger(range(target).increment);
    for (const std::string prefix : {"Entry.", "Enum."}) {
        if (part.compare(0, prefix.size(), prefix) != 0)
            continue;
        const std::string wanted = "EnumEntry_" + target.name + "_" + part.substr(prefix.size());
        for (const Property& entry : target.properties) {
            if (entry.tag == Tag::Entry && entry.target->name == wanted)
                return Number::ofInteger(entryValue(*entry.target));
        }
    }
    fail(KX_E_GC_RUNTIME, node, "\"" + property.attribute + "\" is unknown");
}

std::vector<const Node*> NodeValues::usableEntries(const Node& node)
{
    std::vector<const Node*> entries;
    for (const Property& property : node.properties) {
        if (property.tag == Tag::Entry && isReadable(entryAccess(*property.target)))
            entries.push_back(property.target);
    }
    return entries;
}

// ---- texts ----

std::string NodeValues::text(const Node& node, size_t limit)
{
    requireSound(node, AspectValue);
    if (node.kind == NodeKind::StringReg)
        return m_registers.readText(node, limit);
    if (node.kind != NodeKind::String)
        fail(KX_E_GC_RUNTIME, node, "it has no text");
    const Source from = source(node);
    if (from.node)
        return text(*from.node, limit);
    const auto written = m_literalTexts.find(from.literal);
    return (written != m_literalTexts.end() ? written->second : from.literal->text).substr(0, limit);
}

int64_t NodeValues::maximumTextLength(const Node& node)
{
    requireSound(node, AspectValue);
    if (node.kind == NodeKind::StringReg)
        return m_registers.length(node);
    const Node* target = node.kind == NodeKind::String ? source(node).node : nullptr;
    return target ? maximumTextLength(*target) : std::numeric_limits<int64_t>::max();
}

} // namespace kx
