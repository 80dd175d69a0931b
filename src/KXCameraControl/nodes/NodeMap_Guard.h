// What the parts of NodeMap share and nobody else sees: its nodes, finding one that may be read or written,
// and the guard that turns every failure inside into a status.
#pragma once

#include "KXCameraControl/nodes/DescribedFeatures.h"
#include "KXCameraControl/nodes/NodeMap.h"
#include "KXCameraControl/nodes/NodeValues.h"
#include "KXCameraControl/nodes/ReadAhead.h"

namespace kx
{

using KindTest = bool (*)(NodeKind);

template <NodeKind wanted>
bool isKind(NodeKind kind)
{
    return kind == wanted;
}

inline bool isTextKind(NodeKind kind)
{
    return kind == NodeKind::String || kind == NodeKind::StringReg;
}

// An enumeration's record keeps 32 bits: unsigned numbers, and negative ones as they look in as many.
inline bool fitsEnumValue(int64_t number)
{
    return number >= INT32_MIN && number <= UINT32_MAX;
}

class NodeMap::Nodes
{
public:
    Nodes(std::shared_ptr<const NodeTable> theTable, RegisterLine& line, bool readOnly)
        : m_shared(std::move(theTable)), table(*m_shared), ahead(table, line, ReadAhead::isWanted()),
          values(table, ahead), described(table), isReadOnly(readOnly)
    {}

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
        ahead.beginFeature(node);
        requireAccess(node, isReadable, "it cannot be read now");
        return node;
    }

    const Node& findWritable(const char* name, KindTest isWanted)
    {
        const Node& node = find(name, isWanted);
        ahead.beginFeature(node);
        requireAccess(node, isWritable, "it cannot be written now");
        if (isReadOnly)
            throw NodeFailure{KX_E_GC_ACCESS, node.name + ": the camera was opened for monitoring."};
        return node;
    }

    const std::shared_ptr<const NodeTable> m_shared;
    const NodeTable& table;
    ReadAhead ahead;
    NodeValues values;
    DescribedFeatures described;
    const bool isReadOnly;

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

template <class Body>
KX_Status NodeMap::guarded(Body body)
{
    m_lastError.clear();
    m_nodes->ahead.beginCall();
    m_nodes->values.beginCall();
    try {
        body(*m_nodes);
        return KX_OK;
    } catch (const NodeFailure& failure) {
        m_lastError = failure.text;
        return failure.status;
    } catch (const FormulaError& error) {
        m_lastError = error.text;
        return KX_E_GC_RUNTIME;
    }
}

} // namespace kx
