// Who may be read and written now.
#include "KXCameraControl/nodes/NodeValues.h"

#include <algorithm>
#include <unordered_set>

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

// Ways on which a missing node takes along what refers to it; values are followed where they stand now.
bool passesOn(Tag tag)
{
    switch (tag) {
    case Tag::pValueCopy:
    case Tag::pMin:
    case Tag::pMax:
    case Tag::pInc:
    case Tag::pVariable:
    case Tag::pAddress:
    case Tag::pIndex:
    case Tag::pLength:
    case Tag::pCommandValue:
    case Tag::pIsImplemented:
    case Tag::pIsAvailable:
    case Tag::pIsLocked:
        return true;
    default:
        return false;
    }
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

bool isRegister(NodeKind kind)
{
    switch (kind) {
    case NodeKind::IntReg:
    case NodeKind::MaskedIntReg:
    case NodeKind::StructEntry:
    case NodeKind::FloatReg:
    case NodeKind::StringReg:
    case NodeKind::Register:
        return true;
    default:
        return false;
    }
}

bool says(const Node& node, Tag tag, const char* mode)
{
    const Property* property = node.find(tag);
    return property && property->text == mode;
}

// Of a node without faults: its values do not lead in circles.
bool isWriteOnly(const Node& node)
{
    for (const Node* behind = &node; behind; behind = behind->link(Tag::pValue)) {
        if (says(*behind, Tag::ImposedAccessMode, "WO") || says(*behind, Tag::AccessMode, "WO"))
            return true;
    }
    return false;
}

// Likewise; what can be read only cannot be written along.
bool isReadOnly(const Node& node)
{
    for (const Node* behind = &node; behind; behind = behind->link(Tag::pValue)) {
        const bool isKnife = behind->kind == NodeKind::IntSwissKnife || behind->kind == NodeKind::SwissKnife;
        const bool isReadRegister = isRegister(behind->kind) && !says(*behind, Tag::AccessMode, "RW") &&
                                    !says(*behind, Tag::AccessMode, "WO");
        if (isKnife || isReadRegister || says(*behind, Tag::ImposedAccessMode, "RO"))
            return true;
    }
    return false;
}

bool hasReadOnlyCopy(const Node& node)
{
    return std::any_of(node.properties.begin(), node.properties.end(), [](const Property& property) {
        const Node* copy = property.tag == Tag::pValueCopy ? property.target : nullptr;
        return copy && copy->anyFault() == FaultNone && isReadOnly(*copy);
    });
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
    KX_XML_AccessMode mode = missing(node);
    if (mode != KX_AM_READ_WRITE)
        return mode;
    mode = combined(kindAccess(node), namedMode(node.find(Tag::ImposedAccessMode), KX_AM_READ_WRITE));
    if (isWritable(mode) && flag(node, Tag::pIsLocked, false))
        mode = modeOf(isReadable(mode), false);
    return mode;
}

// What is not implemented or not available is so for everything that refers to it; read-only and write-only
// pass along values alone. Read/write: nothing is missing.
KX_XML_AccessMode NodeValues::missing(const Node& node)
{
    const std::vector<const Node*> all = hangsOn(node);
    KX_XML_AccessMode mode = KX_AM_READ_WRITE;
    std::optional<NodeFailure> failure;
    // What was found last is referred to by the others: a condition that is missing itself need not be asked.
    for (auto it = all.rbegin(); it != all.rend() && mode != KX_AM_NOT_IMPLEMENTED; ++it) {
        try {
            mode = combined(mode, condition(**it));
        } catch (const NodeFailure& problem) {
            if (KX_IS_LINE_FAILURE(problem.status))
                throw;
            failure = problem;
        }
    }
    if (failure && mode == KX_AM_READ_WRITE)
        throw *failure;
    return mode;
}

// The node and all that it refers to, directly or not, by whatever way but what cannot be followed. Without
// recursion: such ways may be long and lead in circles, which do no harm here (Width's maximum hangs on
// OffsetX and OffsetX's on Width).
std::vector<const Node*> NodeValues::hangsOn(const Node& node)
{
    std::vector<const Node*> found = {&node};
    std::unordered_set<const Node*> seen = {&node};
    const auto add = [&](const Node* target) {
        if (target && target->anyFault() == FaultNone && seen.insert(target).second)
            found.push_back(target);
    };
    for (size_t i = 0; i < found.size(); ++i) {
        const Node& current = *found[i];
        bool hasValue = false;
        for (const Property& property : current.properties) {
            hasValue = hasValue || isValueReference(property.tag);
            if (!passesOn(property.tag))
                continue;
            add(property.target);
            add(property.offsetTarget);
        }
        if (hasValue)
            add(source(current).node);
    }
    return found;
}

// What a node says of itself.
KX_XML_AccessMode NodeValues::condition(const Node& node)
{
    for (const Tag tag : {Tag::pIsImplemented, Tag::pIsAvailable, Tag::pIsLocked, Tag::pCommandValue}) {
        if (node.link(tag) && isWriteOnly(*node.link(tag)))
            return KX_AM_NOT_AVAILABLE;
    }
    if (!flag(node, Tag::pIsImplemented, true))
        return KX_AM_NOT_IMPLEMENTED;
    if (isRegister(node.kind) && !Registers::isInMemory(node))
        return Registers::isEvent(node) ? KX_AM_NOT_IMPLEMENTED : KX_AM_NOT_AVAILABLE;
    const KX_XML_AccessMode own =
        flag(node, Tag::pIsAvailable, true) ? KX_AM_READ_WRITE : KX_AM_NOT_AVAILABLE;
    return node.kind == NodeKind::Enumeration ? combined(own, ofEntries(node)) : own;
}

// An enumeration is there when one of its entries is. Whether an entry is there may hang on its enumeration,
// which then counts as there.
KX_XML_AccessMode NodeValues::ofEntries(const Node& enumeration)
{
    KX_XML_AccessMode best = KX_AM_READ_WRITE;
    if (!m_openEnumerations.insert(&enumeration).second)
        return best;
    bool isFirst = true;
    for (const Property& property : enumeration.properties) {
        if (property.tag != Tag::Entry)
            continue;
        const KX_XML_AccessMode mode = entryAccess(*property.target);
        best = isFirst ? mode : std::max(best, mode);
        isFirst = false;
        if (isReadable(best))
            break;
    }
    m_openEnumerations.erase(&enumeration);
    return isReadable(best) ? KX_AM_READ_WRITE : best;
}

// An entry that cannot tell whether it is there is not available; the others are not its fault.
KX_XML_AccessMode NodeValues::entryAccess(const Node& entry)
{
    KX_XML_AccessMode mode = KX_AM_UNDEFINED;
    try {
        mode = access(entry);
    } catch (const NodeFailure& failure) {
        if (KX_IS_LINE_FAILURE(failure.status))
            throw;
    }
    return mode == KX_AM_UNDEFINED || mode == KX_AM_CYCLE_DETECTED ? KX_AM_NOT_AVAILABLE : mode;
}

bool NodeValues::flag(const Node& node, Tag tag, bool otherwise)
{
    const Node* target = node.link(tag);
    return target ? value(*target).isTrue() : otherwise;
}

KX_XML_AccessMode NodeValues::kindAccess(const Node& node)
{
    if (isRegister(node.kind))
        return namedMode(node.find(Tag::AccessMode), KX_AM_READ_ONLY);
    switch (node.kind) {
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
        const KX_XML_AccessMode mode = from.node ? access(*from.node) : KX_AM_READ_WRITE;
        return hasReadOnlyCopy(node) ? modeOf(isReadable(mode), false) : mode;
    }
    }
}

} // namespace kx
