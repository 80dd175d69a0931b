// Getters, setters, commands and access modes.
#include "KXCameraControl/nodes/NodeMap_Guard.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <map>
#include <set>

namespace kx
{

namespace
{

// Beyond what 32 bits hold, the largest number that they do.
float narrowed(double value)
{
    return static_cast<float>(
        std::isinf(value) ? value : std::max<double>(-FLT_MAX, std::min<double>(FLT_MAX, value)));
}

std::vector<int64_t> usableNumbers(NodeValues& values, const Node& enumeration)
{
    std::vector<int64_t> numbers;
    for (const Node* entry : values.usableEntries(enumeration))
        numbers.push_back(values.entryValue(*entry));
    return numbers;
}

// By the number that stands in an enumeration's record: those that it cannot tell apart.
std::map<uint32_t, std::set<int64_t>> byRecord(const std::vector<int64_t>& numbers)
{
    std::map<uint32_t, std::set<int64_t>> alike;
    for (const int64_t number : numbers)
        alike[static_cast<uint32_t>(number)].insert(number);
    return alike;
}

} // namespace

NodeMap::NodeMap(std::shared_ptr<const NodeTable> table, RegisterLine& line, bool readOnly)
    : m_nodes(std::make_unique<Nodes>(std::move(table), line, readOnly))
{}

NodeMap::~NodeMap() = default;

bool NodeMap::isReadOnly() const
{
    return m_nodes->isReadOnly;
}

// ---- getters: a record is filled at the end, when nothing can fail any more ----

KX_Status NodeMap::getBool(const char* name, bool& value)
{
    return guarded([&](Nodes& nodes) {
        value = nodes.values.value(nodes.findReadable(name, isKind<NodeKind::Boolean>)).isTrue();
    });
}

KX_Status NodeMap::getEnum(const char* name, KX_EnumValue& value)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.findReadable(name, isKind<NodeKind::Enumeration>);
        KX_EnumValue result{};
        const int64_t current = nodes.values.value(node).asInteger();
        if (!fitsEnumValue(current))
            throw NodeFailure{KX_E_GC_RANGE, node.name + ": its value does not fit 32 bits."};
        result.current = static_cast<uint32_t>(current);
        const std::vector<int64_t> numbers = usableNumbers(nodes.values, node);
        const auto alike = byRecord(numbers);
        for (const int64_t number : numbers) {
            const auto record = static_cast<uint32_t>(number);
            const bool canBeSet = fitsEnumValue(number) && alike.at(record).size() == 1;
            if (!canBeSet)
                continue;
            if (result.supportedCount < KX_ENUM_CAPACITY)
                result.supported[result.supportedCount] = record;
            ++result.supportedCount;
        }
        value = result;
    });
}

KX_Status NodeMap::getFloat(const char* name, KX_FloatValue& value)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.findReadable(name, isFloatKind);
        KX_FloatValue result{};
        result.current = narrowed(nodes.values.value(node).asReal());
        const Range range = nodes.values.range(node);
        result.minimum = narrowed(range.minimum.asReal());
        result.maximum = narrowed(range.maximum.asReal());
        value = result;
    });
}

KX_Status NodeMap::getInteger(const char* name, KX_IntegerValue& value)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.findReadable(name, isIntegerKind);
        KX_IntegerValue result{};
        result.current = nodes.values.value(node).asInteger();
        const Range range = nodes.values.range(node);
        result.minimum = range.minimum.asInteger();
        result.maximum = range.maximum.asInteger();
        result.increment = range.increment;
        value = result;
    });
}

KX_Status NodeMap::incrementOrigin(const char* name, int64_t& origin)
{
    return guarded([&](Nodes& nodes) {
        origin = nodes.values.range(nodes.findReadable(name, isIntegerKind)).incrementOrigin();
    });
}

KX_Status NodeMap::getString(const char* name, KX_StringValue& value)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.findReadable(name, isTextKind);
        KX_StringValue result{};
        const std::string text = nodes.values.text(node, NodeValues::textLimit);
        std::memcpy(result.current, text.c_str(), std::strlen(text.c_str()));
        result.maximumLength = nodes.values.maximumTextLength(node);
        value = result;
    });
}

// ---- setters ----

KX_Status NodeMap::setBool(const char* name, bool value)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.findWritable(name, isKind<NodeKind::Boolean>);
        nodes.values.write(node, Number::ofInteger(value ? 1 : 0));
    });
}

// Of two entries that look alike in 32 bits neither is meant for sure, and one that does not fit never is.
KX_Status NodeMap::setEnum(const char* name, uint32_t value)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.findWritable(name, isKind<NodeKind::Enumeration>);
        const std::set<int64_t> meant = byRecord(usableNumbers(nodes.values, node))[value];
        const std::string text = node.name + ": " + std::to_string(value);
        if (meant.empty())
            throw NodeFailure{KX_E_GC_ARGUMENT, text + " is no entry of it."};
        if (meant.size() > 1 || !fitsEnumValue(*meant.begin()))
            throw NodeFailure{KX_E_GC_RANGE, text + " does not tell its entries apart: they need more bits."};
        nodes.values.write(node, Number::ofInteger(*meant.begin()));
    });
}

KX_Status NodeMap::setFloat(const char* name, float value)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.findWritable(name, isFloatKind);
        if (std::isnan(value))
            throw NodeFailure{KX_E_GC_ARGUMENT, node.name + ": the value is no number."};
        nodes.values.write(node, Number::ofReal(value));
    });
}

KX_Status NodeMap::setInteger(const char* name, int64_t value)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.findWritable(name, isIntegerKind);
        nodes.values.write(node, Number::ofInteger(value));
    });
}

KX_Status NodeMap::setString(const char* name, const char* value)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.findWritable(name, isTextKind);
        nodes.values.writeText(node, value);
    });
}

KX_Status NodeMap::readMemory(uint64_t address, void* data, size_t size)
{
    m_nodes->ahead.beginCall();
    return m_nodes->ahead.readMemory(address, data, size);
}

KX_Status NodeMap::writeMemory(uint64_t address, const void* data, size_t size)
{
    m_nodes->ahead.beginCall();
    return m_nodes->ahead.writeBlock(address, data, size);
}

KX_Status NodeMap::execute(const char* name)
{
    return guarded(
        [&](Nodes& nodes) { nodes.values.execute(nodes.findWritable(name, isKind<NodeKind::Command>)); });
}

// Whatever keeps a node from telling its mode, short of a failed line, is part of the answer.
KX_Status NodeMap::accessMode(const char* name, KX_XML_AccessMode& mode)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.find(name);
        nodes.ahead.beginFeature(node);
        try {
            mode = nodes.values.access(node);
        } catch (const NodeFailure& failure) {
            if (KX_IS_LINE_FAILURE(failure.status))
                throw;
            mode = failure.status == KX_E_GC_ACCESS ? KX_AM_NOT_AVAILABLE : KX_AM_UNDEFINED;
        }
    });
}

} // namespace kx
