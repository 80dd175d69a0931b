// Who may be read and written now.
#include "KXCameraControl/nodes/NodeValues.h"

#include <algorithm>

namespace kx
{

namespace
{

KX_XML_AccessMode modeOf(bool readable, bool writable)
{
    if (readable)
        return writable ? KX_AM_READ_WRITE : KX_AM_READ_ONLY;
    return writable ? KX_AM_WRITE_ONLY : KX_AM_NOT_AVAILABLE;
}

// What holds for a node that reaches its value through another one: the stricter of the two.
KX_XML_AccessMode combined(KX_XML_AccessMode first, KX_XML_AccessMode second)
{
    for (const KX_XML_AccessMode worst :
         {KX_AM_CYCLE_DETECTED, KX_AM_UNDEFINED, KX_AM_NOT_IMPLEMENTED, KX_AM_NOT_AVAILABLE}) {
        if (first == worst || second == worst)
            return worst;
    }
    return modeOf(isReadable(first) && isReadable(second), isWritable(first) && isWritable(second));
}

KX_XML_AccessMode namedMode(const Property* property, KX_XML_AccessMode otherwise)
{
    if (!property)
        return otherwise;
    if (property->text == "RW")
        return KX_AM_READ_WRITE;
    if (property->text == "WO")
        return KX_AM_WRITE_ONLY;
    return property->text == "RO" ? KX_AM_READ_ONLY : otherwise;
}

} // namespace

bool isReadable(KX_XML_AccessMode mode)
{
    return mode == KX_AM_READ_ONLY || mode == KX_AM_READ_WRITE;
}

bool isWritable(KX_XML_AccessMode mode)
{
    return mode == KX_AM_WRITE_ONLY || mode == KX_AM_READ_WRITE;
}

KX_XML_AccessMode NodeValues::access(const Node& node)
{
    const auto known = m_access.find(&node);
    if (known != m_access.end())
        return known->second;
    const KX_XML_AccessMode mode = freshAccess(node);
    m_access[&node] = mode;
    return mode;
}

KX_XML_AccessMode NodeValues::freshAccess(const Node& node)
{
    // A node that cannot be evaluated has no mode that would help anyone.
    if ((node.anyFault() & FaultCircle) != 0)
        return KX_AM_CYCLE_DETECTED;
    if (node.anyFault() != FaultNone)
        return KX_AM_UNDEFINED;
    if (!flag(node, Tag::pIsImplemented, true))
        return KX_AM_NOT_IMPLEMENTED;
    if (!flag(node, Tag::pIsAvailable, true))
        return KX_AM_NOT_AVAILABLE;
    KX_XML_AccessMode mode = kindAccess(node);
    mode = combined(mode, namedMode(node.find(Tag::ImposedAccessMode), KX_AM_READ_WRITE));
    if (isWritable(mode) && flag(node, Tag::pIsLocked, false))
        mode = modeOf(isReadable(mode), false);
    return mode;
}

bool NodeValues::flag(const Node& node, Tag tag, bool otherwise)
{
    const Node* target = node.link(tag);
    return target ? value(*target).isTrue() : otherwise;
}

KX_XML_AccessMode NodeValues::kindAccess(const Node& node)
{
    switch (node.kind) {
    case NodeKind::IntReg:
    case NodeKind::MaskedIntReg:
    case NodeKind::StructEntry:
    case NodeKind::FloatReg:
    case NodeKind::StringReg:
    case NodeKind::Register:
        return Registers::isInMemory(node) ? namedMode(node.find(Tag::AccessMode), KX_AM_READ_ONLY)
                                           : KX_AM_NOT_AVAILABLE;
    case NodeKind::Category:
    case NodeKind::EnumEntry:
    case NodeKind::IntSwissKnife:
    case NodeKind::SwissKnife:
        return KX_AM_READ_ONLY;
    case NodeKind::IntConverter:
    case NodeKind::Converter: {
        const Node* behind = source(node).node;
        const KX_XML_AccessMode own = node.find(Tag::FormulaTo) ? KX_AM_READ_WRITE : KX_AM_READ_ONLY;
        return behind ? combined(own, access(*behind)) : own;
    }
    case NodeKind::Port:
        return KX_AM_READ_WRITE;
    default: {
        const Source from = source(node);
        return from.node ? access(*from.node) : KX_AM_READ_WRITE;
    }
    }
}

} // namespace kx
