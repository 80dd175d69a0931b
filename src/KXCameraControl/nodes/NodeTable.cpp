// Asking the table, and numbers as descriptions write them.
#include "KXCameraControl/nodes/NodeTable.h"

#include <charconv>

namespace kx
{

const Property* Node::find(Tag tag) const
{
    for (const Property& property : properties) {
        if (property.tag == tag)
            return &property;
    }
    return nullptr;
}

const Node* Node::link(Tag tag) const
{
    const Property* property = find(tag);
    return property ? property->target : nullptr;
}

const Node* NodeTable::find(const std::string& name) const
{
    const auto it = m_byName.find(name);
    return it == m_byName.end() ? nullptr : it->second;
}

bool NodeTable::isOlderThan(unsigned major, unsigned minor) const
{
    return m_schemaMajor < major || (m_schemaMajor == major && m_schemaMinor < minor);
}

bool parseInteger(const std::string& text, int64_t& value)
{
    const char* first = text.data();
    const char* const last = first + text.size();
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        uint64_t bits = 0;
        const auto end = std::from_chars(first + 2, last, bits, 16);
        value = static_cast<int64_t>(bits);
        return end.ec == std::errc() && end.ptr == last;
    }
    if (first != last && *first == '+')
        ++first;
    const auto end = std::from_chars(first, last, value);
    if (end.ec == std::errc() && end.ptr == last)
        return true;
    uint64_t bits = 0;
    const auto wide = std::from_chars(first, last, bits);
    value = static_cast<int64_t>(bits);
    return wide.ec == std::errc() && wide.ptr == last;
}

bool parseReal(const std::string& text, double& value)
{
    const char* first = text.data();
    const char* const last = first + text.size();
    if (first != last && *first == '+')
        ++first;
    const auto end = std::from_chars(first, last, value);
    if (end.ec == std::errc() && end.ptr == last)
        return true;
    int64_t integer = 0;
    if (!parseInteger(text, integer))
        return false;
    value = static_cast<double>(integer);
    return true;
}

} // namespace kx
