// Getters, setters, commands and access modes.
#include "KXCameraControl/nodes/NodeMap_Guard.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>

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

} // namespace

NodeMap::NodeMap(RegisterLine& line, bool readOnly) : m_nodes(std::make_unique<Nodes>(line, readOnly)) {}

NodeMap::~NodeMap() = default;

bool NodeMap::isReadOnly() const
{
    return m_nodes->isReadOnly;
}

bool NodeMap::load(const std::string& xml, std::string& problem)
{
    std::string reason;
    if (m_nodes->table.load(xml, reason))
        return true;
    problem = "The description cannot be used: " + reason + ".";
    return false;
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
        result.current = static_cast<uint32_t>(nodes.values.value(node).asInteger());
        for (const Node* entry : nodes.values.usableEntries(node)) {
            const auto number = static_cast<uint32_t>(nodes.values.entryValue(*entry));
            if (result.supportedCount < KX_ENUM_CAPACITY)
                result.supported[result.supportedCount] = number;
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
        const std::string text = nodes.values.text(node, sizeof result.current - 1);
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

KX_Status NodeMap::setEnum(const char* name, uint32_t value)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.findWritable(name, isKind<NodeKind::Enumeration>);
        for (const Node* entry : nodes.values.usableEntries(node)) {
            const int64_t number = nodes.values.entryValue(*entry);
            if (static_cast<uint32_t>(number) == value) {
                nodes.values.write(node, Number::ofInteger(number));
                return;
            }
        }
        throw NodeFailure{KX_E_GC_ARGUMENT, node.name + ": " + std::to_string(value) + " is no entry of it."};
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
