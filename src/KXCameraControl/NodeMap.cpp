#include "NodeMap.h"

#include "NodeValues.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>

namespace kx
{

namespace
{

using KindTest = bool (*)(NodeKind);

template <NodeKind wanted>
bool isKind(NodeKind kind)
{
    return kind == wanted;
}

bool isTextKind(NodeKind kind)
{
    return kind == NodeKind::String || kind == NodeKind::StringReg;
}

// Beyond what 32 bits hold, the largest number that they do.
float narrowed(double value)
{
    return static_cast<float>(
        std::isinf(value) ? value : std::max<double>(-FLT_MAX, std::min<double>(FLT_MAX, value)));
}

} // namespace

class NodeMap::Engine
{
public:
    Engine(RegisterLine& line, bool readOnly) : values(table, line, readOnly) {}

    const Node& find(const char* name) const
    {
        const Node* node = table.find(name);
        if (!node)
            throw NodeFailure{KX_E_GC_PROPERTY, std::string("There is no feature \"") + name + "\"."};
        return *node;
    }

    const Node& find(const char* name, KindTest isWanted) const
    {
        const Node& node = find(name);
        if (!isWanted(node.kind))
            throw NodeFailure{KX_E_GC_LOGICAL, node.name + ": it has another type."};
        return node;
    }

    const Node& findReadable(const char* name, KindTest isWanted)
    {
        const Node& node = find(name, isWanted);
        requireAccess(node, isReadable, "it cannot be read now");
        return node;
    }

    const Node& findWritable(const char* name, KindTest isWanted)
    {
        const Node& node = find(name, isWanted);
        requireAccess(node, isWritable, "it cannot be written now");
        return node;
    }

    NodeTable table;
    NodeValues values;

private:
    void requireAccess(const Node& node, bool (*isGood)(KX_XML_AccessMode), const char* otherwise)
    {
        const KX_XML_AccessMode mode = values.access(node);
        if (mode == KX_AM_CYCLE_DETECTED)
            throw NodeFailure{KX_E_GC_RUNTIME, node.name + ": it depends on itself."};
        if (mode == KX_AM_UNDEFINED)
            throw NodeFailure{KX_E_GC_RUNTIME, node.name + ": its description is broken."};
        if (!isGood(mode))
            throw NodeFailure{KX_E_GC_ACCESS, node.name + ": " + otherwise + "."};
    }
};

NodeMap::NodeMap(RegisterLine& line, bool readOnly) : m_engine(std::make_unique<Engine>(line, readOnly)) {}

NodeMap::~NodeMap() = default;

bool NodeMap::load(const std::string& xml, std::string& problem)
{
    std::string reason;
    if (m_engine->table.load(xml, reason))
        return true;
    problem = "The description cannot be used: " + reason + ".";
    return false;
}

template <class Body>
KX_Status NodeMap::guarded(Body body)
{
    m_lastError.clear();
    m_engine->values.beginCall();
    try {
        body(*m_engine);
        return KX_OK;
    } catch (const NodeFailure& failure) {
        m_lastError = failure.text;
        return failure.status;
    } catch (const FormulaError& error) {
        m_lastError = error.text;
        return KX_E_GC_RUNTIME;
    }
}

// ---- getters: a record is filled at the end, when nothing can fail any more ----

KX_Status NodeMap::getBool(const char* name, bool& value)
{
    return guarded([&](Engine& engine) {
        value = engine.values.value(engine.findReadable(name, isKind<NodeKind::Boolean>)).isTrue();
    });
}

KX_Status NodeMap::getEnum(const char* name, KX_EnumValue& value)
{
    return guarded([&](Engine& engine) {
        const Node& node = engine.findReadable(name, isKind<NodeKind::Enumeration>);
        KX_EnumValue result{};
        result.current = static_cast<uint32_t>(engine.values.value(node).asInteger());
        for (const Node* entry : engine.values.usableEntries(node)) {
            if (result.supportedCount < KX_ENUM_CAPACITY)
                result.supported[result.supportedCount++] =
                    static_cast<uint32_t>(engine.values.entryValue(*entry));
        }
        value = result;
    });
}

KX_Status NodeMap::getFloat(const char* name, KX_FloatValue& value)
{
    return guarded([&](Engine& engine) {
        const Node& node = engine.findReadable(name, isFloatKind);
        KX_FloatValue result{};
        result.current = narrowed(engine.values.value(node).asReal());
        const Range range = engine.values.range(node);
        result.minimum = narrowed(range.minimum.asReal());
        result.maximum = narrowed(range.maximum.asReal());
        value = result;
    });
}

KX_Status NodeMap::getInteger(const char* name, KX_IntegerValue& value)
{
    return guarded([&](Engine& engine) {
        const Node& node = engine.findReadable(name, isIntegerKind);
        KX_IntegerValue result{};
        result.current = engine.values.value(node).asInteger();
        const Range range = engine.values.range(node);
        result.minimum = range.minimum.asInteger();
        result.maximum = range.maximum.asInteger();
        result.increment = range.increment;
        value = result;
    });
}

KX_Status NodeMap::getString(const char* name, KX_StringValue& value)
{
    return guarded([&](Engine& engine) {
        const Node& node = engine.findReadable(name, isTextKind);
        KX_StringValue result{};
        const std::string text = engine.values.text(node, sizeof result.current - 1);
        std::memcpy(result.current, text.c_str(), std::strlen(text.c_str()));
        result.maximumLength = engine.values.maximumTextLength(node);
        value = result;
    });
}

// ---- setters ----

KX_Status NodeMap::setBool(const char* name, bool value)
{
    return guarded([&](Engine& engine) {
        const Node& node = engine.findWritable(name, isKind<NodeKind::Boolean>);
        engine.values.write(node, Number::ofInteger(value ? 1 : 0));
    });
}

KX_Status NodeMap::setEnum(const char* name, uint32_t value)
{
    return guarded([&](Engine& engine) {
        const Node& node = engine.findWritable(name, isKind<NodeKind::Enumeration>);
        for (const Node* entry : engine.values.usableEntries(node)) {
            const int64_t number = engine.values.entryValue(*entry);
            if (static_cast<uint32_t>(number) == value) {
                engine.values.write(node, Number::ofInteger(number));
                return;
            }
        }
        throw NodeFailure{KX_E_GC_ARGUMENT, node.name + ": " + std::to_string(value) + " is no entry of it."};
    });
}

KX_Status NodeMap::setFloat(const char* name, float value)
{
    return guarded([&](Engine& engine) {
        const Node& node = engine.findWritable(name, isFloatKind);
        if (std::isnan(value))
            throw NodeFailure{KX_E_GC_ARGUMENT, node.name + ": the value is no number."};
        engine.values.write(node, Number::ofReal(value));
    });
}

KX_Status NodeMap::setInteger(const char* name, int64_t value)
{
    return guarded([&](Engine& engine) {
        const Node& node = engine.findWritable(name, isIntegerKind);
        engine.values.write(node, Number::ofInteger(value));
    });
}

KX_Status NodeMap::setString(const char* name, const char* value)
{
    return guarded([&](Engine& engine) {
        const Node& node = engine.findWritable(name, isTextKind);
        engine.values.writeText(node, value);
    });
}

KX_Status NodeMap::execute(const char* name)
{
    return guarded(
        [&](Engine& engine) { engine.values.execute(engine.findWritable(name, isKind<NodeKind::Command>)); });
}

// Whatever keeps a node from telling its mode, short of a failed line, is part of the answer.
KX_Status NodeMap::accessMode(const char* name, KX_XML_AccessMode& mode)
{
    return guarded([&](Engine& engine) {
        const Node& node = engine.find(name);
        try {
            mode = engine.values.access(node);
        } catch (const NodeFailure& failure) {
            if (isLineFailure(failure.status))
                throw;
            mode = failure.status == KX_E_GC_ACCESS ? KX_AM_NOT_AVAILABLE : KX_AM_UNDEFINED;
        }
    });
}

} // namespace kx
