// Features as texts, and what a feature file has to know of them.
#include "KXCameraControl/nodes/NodeMap_Guard.h"

#include <charconv>
#include <set>

namespace kx
{

namespace
{

constexpr size_t longestText = 65536; // of a string register

bool hasText(NodeKind kind)
{
    return isIntegerKind(kind) || isFloatKind(kind) || isTextKind(kind) || kind == NodeKind::Boolean ||
           kind == NodeKind::Enumeration;
}

std::string shortest(double value)
{
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return std::string(text, end);
}

[[noreturn]] void refuse(const Node& node, const std::string& text)
{
    throw NodeFailure{KX_E_GC_ARGUMENT, node.name + ": it cannot take \"" + text + "\"."};
}

// Entries stand in the table under their enumeration's name: the same entry name may occur in many.
std::string nameOfEntry(const Node& enumeration, const Node& entry)
{
    const std::string prefix = "EnumEntry_" + enumeration.name + "_";
    return entry.name.rfind(prefix, 0) == 0 ? entry.name.substr(prefix.size()) : entry.name;
}

// A camera that stands at an entry which is not available now stands there all the same. Of several entries
// of one number the first one that is available counts, else the first; null: there is none.
const Node* entryOf(NodeValues& values, const Node& enumeration, int64_t number)
{
    for (const Node* entry : values.usableEntries(enumeration)) {
        if (entry->find(Tag::Value) && values.entryValue(*entry) == number)
            return entry;
    }
    for (const Property& property : enumeration.properties) {
        const bool isEntry = property.tag == Tag::Entry && property.target->find(Tag::Value);
        if (isEntry && values.entryValue(*property.target) == number)
            return property.target;
    }
    return nullptr;
}

int64_t integerOf(const Node& node, const std::string& text)
{
    int64_t value = 0;
    if (!parseInteger(text, value))
        refuse(node, text);
    return value;
}

} // namespace

KX_Status NodeMap::getText(const char* name, std::string& text)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.findReadable(name, hasText);
        if (isTextKind(node.kind)) {
            text = nodes.values.text(node, longestText).c_str();
            return;
        }
        const Number value = nodes.values.value(node);
        if (isFloatKind(node.kind)) {
            text = shortest(value.asReal());
        } else if (node.kind == NodeKind::Boolean) {
            text = value.isTrue() ? "1" : "0";
        } else {
            const bool isEntry = node.kind == NodeKind::Enumeration;
            const Node* entry = isEntry ? entryOf(nodes.values, node, value.asInteger()) : nullptr;
            text = entry ? nameOfEntry(node, *entry) : std::to_string(value.asInteger());
        }
    });
}

KX_Status NodeMap::setText(const char* name, const std::string& text)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.findWritable(name, hasText);
        if (isTextKind(node.kind)) {
            nodes.values.writeText(node, text);
        } else if (isFloatKind(node.kind)) {
            double value = 0;
            if (!parseReal(text, value))
                refuse(node, text);
            nodes.values.write(node, Number::ofReal(value));
        } else if (node.kind == NodeKind::Boolean) {
            const bool isTrue = text == "1" || text == "true" || text == "True";
            if (!isTrue && text != "0" && text != "false" && text != "False")
                refuse(node, text);
            nodes.values.write(node, Number::ofInteger(isTrue ? 1 : 0));
        } else if (node.kind == NodeKind::Enumeration) {
            for (const Node* entry : nodes.values.usableEntries(node)) {
                const int64_t number = nodes.values.entryValue(*entry);
                if (nameOfEntry(node, *entry) == text || std::to_string(number) == text) {
                    nodes.values.write(node, Number::ofInteger(number));
                    return;
                }
            }
            refuse(node, text);
        } else {
            nodes.values.write(node, Number::ofInteger(integerOf(node, text)));
        }
    });
}

KX_Status NodeMap::entryName(const char* name, uint32_t value, std::string& text)
{
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.find(name, isKind<NodeKind::Enumeration>);
        for (const Property& property : node.properties) {
            if (property.tag != Tag::Entry || !property.target->find(Tag::Value))
                continue;
            const int64_t number = nodes.values.entryValue(*property.target);
            if (fitsEnumValue(number) && static_cast<uint32_t>(number) == value) {
                text = nameOfEntry(node, *property.target);
                return;
            }
        }
        throw NodeFailure{KX_E_GC_ARGUMENT, node.name + ": " + std::to_string(value) + " is no entry of it."};
    });
}

bool NodeMap::has(const std::string& name) const
{
    return m_nodes->table.find(name) != nullptr;
}

std::vector<std::string> NodeMap::streamableFeatures() const
{
    std::set<std::string> listed;
    for (const Node& node : m_nodes->table.nodes())
        for (const Property& property : node.properties)
            if (node.kind == NodeKind::Category && property.tag == Tag::pFeature)
                listed.insert(property.text);
    std::vector<std::string> features;
    for (const Node& node : m_nodes->table.nodes()) {
        const Property* streamable = node.find(Tag::Streamable);
        if (streamable && streamable->text == "Yes" && hasText(node.kind) && listed.count(node.name))
            features.push_back(node.name);
    }
    return features;
}

std::vector<std::string> NodeMap::selectors() const
{
    std::vector<std::string> names;
    for (const Node& node : m_nodes->table.nodes())
        if (node.find(Tag::pSelected))
            names.push_back(node.name);
    return names;
}

std::vector<std::string> NodeMap::selectedFeatures(const std::string& selector) const
{
    std::vector<std::string> names;
    if (const Node* node = m_nodes->table.find(selector))
        for (const Property& property : node->properties)
            if (property.tag == Tag::pSelected)
                names.push_back(property.text);
    return names;
}

KX_Status NodeMap::selectorValues(const char* selector, size_t limit, std::vector<std::string>& values,
                                  bool& isMore)
{
    values.clear();
    isMore = false;
    return guarded([&](Nodes& nodes) {
        const Node& node = nodes.findReadable(selector, hasText);
        if (node.kind == NodeKind::Enumeration) {
            for (const Node* entry : nodes.values.usableEntries(node))
                values.push_back(nameOfEntry(node, *entry));
        } else if (isIntegerKind(node.kind)) {
            const Range range = nodes.values.range(node);
            const bool isEmpty = range.maximum.asInteger() < range.minimum.asInteger();
            isMore = !isEmpty && range.steps() >= limit;
            for (uint64_t i = 0; !isMore && !isEmpty && i <= range.steps(); ++i)
                values.push_back(std::to_string(range.valueAt(i)));
        }
        isMore = isMore || values.size() > limit;
        if (isMore)
            values.clear();
    });
}

} // namespace kx
