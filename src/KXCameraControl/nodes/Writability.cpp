// Along the values, from a node to the registers that hold them.
#include "KXCameraControl/nodes/Writability.h"

#include "KXCameraControl/nodes/Registers.h"

namespace kx
{

namespace
{

bool says(const Node& node, Tag tag, const char* mode)
{
    const Property* property = node.find(tag);
    return property && property->text == mode;
}

bool isLiteral(Tag tag)
{
    return tag == Tag::Value || tag == Tag::ValueIndexed || tag == Tag::ValueDefault;
}

// Nothing is written to or through such a node.
bool isRuledOut(const Node& node)
{
    return node.anyFault() != FaultNone || says(node, Tag::ImposedAccessMode, "RO");
}

// GenApi: a register that names no access mode is read-only.
bool isWritableRegister(const Node& node)
{
    return Registers::isInMemory(node) &&
           (says(node, Tag::AccessMode, "RW") || says(node, Tag::AccessMode, "WO"));
}

} // namespace

// Without recursion: copies of a value (pValueCopy) are not among the ways whose length is bounded.
bool Writability::isEver(const Node& start)
{
    std::vector<const Node*> path = {&start};
    while (!path.empty()) {
        const Node& node = *path.back();
        const auto [place, isNew] = m_verdicts.try_emplace(&node, Verdict::Open);
        if (isNew && !isRuledOut(node)) {
            for (const Property& property : node.properties) {
                const bool isWay = isValueReference(property.tag) || property.tag == Tag::pValueCopy;
                if (isWay && property.target && m_verdicts.count(property.target) == 0)
                    path.push_back(property.target);
            }
            continue;
        }
        if (place->second == Verdict::Open)
            place->second = decide(node) ? Verdict::Sometimes : Verdict::Never;
        path.pop_back();
    }
    return isSometimes(&start);
}

bool Writability::isSometimes(const Node* target) const
{
    const auto known = target ? m_verdicts.find(target) : m_verdicts.end();
    return known != m_verdicts.end() && known->second == Verdict::Sometimes;
}

// Of a node whose ways onward are decided.
bool Writability::decide(const Node& node) const
{
    if (isRuledOut(node))
        return false;
    if (isRegisterKind(node.kind))
        return isWritableRegister(node);
    switch (node.kind) {
    case NodeKind::IntConverter:
    case NodeKind::Converter:
        if (!node.to.formula)
            return false;
        break;
    case NodeKind::Category:
    case NodeKind::Port:
    case NodeKind::StructReg:
    case NodeKind::EnumEntry:
    case NodeKind::IntSwissKnife:
    case NodeKind::SwissKnife:
        return false;
    default:
        break;
    }
    bool hasOwnValue = false;
    bool hasCopy = false;
    for (const Property& property : node.properties) {
        if (isValueReference(property.tag) && isSometimes(property.target))
            return true;
        hasOwnValue = hasOwnValue || isLiteral(property.tag);
        hasCopy = hasCopy || (property.tag == Tag::pValueCopy && isSometimes(property.target));
    }
    // A value that stays in the host, but whose copies do not.
    return hasOwnValue && hasCopy;
}

} // namespace kx
