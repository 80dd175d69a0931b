#include "camera_emulator/Description.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <vector>

namespace emu
{
namespace
{

constexpr unsigned kMaxReferences = 64; // a longer chain of pValue is a circle
constexpr unsigned kMaxDepth = 256;     // of elements; no description comes near

std::string trimmed(const std::string& text)
{
    const size_t begin = text.find_first_not_of(" \t\r\n");
    return begin == std::string::npos ? std::string()
                                      : text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

std::string tagOf(xmlNode* node)
{
    return reinterpret_cast<const char*>(node->name);
}

std::string attribute(xmlNode* node, const char* name)
{
    xmlChar* value = xmlGetNoNsProp(node, reinterpret_cast<const xmlChar*>(name));
    const std::string text = value ? reinterpret_cast<const char*>(value) : "";
    xmlFree(value);
    return text;
}

std::string textOf(xmlNode* node)
{
    xmlChar* content = xmlNodeGetContent(node);
    const std::string text = content ? reinterpret_cast<const char*>(content) : "";
    xmlFree(content);
    return trimmed(text);
}

xmlNode* childOf(xmlNode* node, const char* tag)
{
    for (xmlNode* child = node->children; child; child = child->next) {
        if (child->type == XML_ELEMENT_NODE && tagOf(child) == tag)
            return child;
    }
    return nullptr;
}

std::string childText(xmlNode* node, const char* tag)
{
    xmlNode* child = childOf(node, tag);
    return child ? textOf(child) : std::string();
}

std::optional<int64_t> toNumber(const std::string& text)
{
    if (text.empty())
        return std::nullopt;
    const bool hexadecimal = text.find("0x") != std::string::npos || text.find("0X") != std::string::npos;
    char* end = nullptr;
    const auto value =
        static_cast<int64_t>(text[0] == '-' ? std::strtoll(text.c_str(), &end, hexadecimal ? 16 : 10)
                                            : std::strtoull(text.c_str(), &end, hexadecimal ? 16 : 10));
    if (*end != 0)
        return std::nullopt;
    return value;
}

std::optional<int64_t> childNumber(xmlNode* node, const char* tag)
{
    return toNumber(childText(node, tag));
}

bool isOneOf(const std::string& tag, std::initializer_list<const char*> tags)
{
    for (const char* candidate : tags) {
        if (tag == candidate)
            return true;
    }
    return false;
}

// A StructReg is as open as its most open entry.
bool isReadOnly(xmlNode* reg)
{
    for (xmlNode* child = reg->children; child; child = child->next) {
        if (child->type != XML_ELEMENT_NODE || tagOf(child) != "StructEntry")
            continue;
        const std::string mode = childText(child, "AccessMode");
        if (!mode.empty() && mode != "RO")
            return false;
    }
    return childText(reg, "AccessMode") == "RO";
}

// GenICam counts the bits of a big-endian register from the most significant one.
void setBits(RegisterField& field, xmlNode* node)
{
    const auto bit = childNumber(node, "Bit");
    const auto lsb = bit ? bit : childNumber(node, "LSB");
    const auto msb = bit ? bit : childNumber(node, "MSB");
    const auto last = static_cast<int64_t>(field.length) * 8 - 1;
    field.lowBit = 0;
    field.highBit = static_cast<unsigned>(last);
    if (!lsb || !msb || *lsb < 0 || *msb < 0 || *lsb > last || *msb > last)
        return;
    const int64_t first = field.bigEndian ? last - *lsb : *lsb;
    const int64_t second = field.bigEndian ? last - *msb : *msb;
    field.lowBit = static_cast<unsigned>(std::min(first, second));
    field.highBit = static_cast<unsigned>(std::max(first, second));
}

} // namespace

Description::Description(const std::string& text)
{
    // Entities stay unexpanded and nothing is fetched: a hostile description costs no more than its size.
    const int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_COMPACT;
    m_document.reset(xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, options),
                     xmlFreeDoc);
    if (m_document)
        index(xmlDocGetRootElement(m_document.get()), 0);
}

void Description::index(Node parent, unsigned depth)
{
    for (Node child = parent ? parent->children : nullptr; child; child = child->next) {
        if (child->type != XML_ELEMENT_NODE || tagOf(child) == "EnumEntry" || depth > kMaxDepth)
            continue;
        const std::string name = attribute(child, "Name");
        if (!name.empty() && tagOf(child) != "pVariable" && tagOf(child) != "Constant")
            m_nodes[name] = child;
        index(child, depth + 1);
    }
}

std::string Description::schemaVersion() const
{
    Node root = m_document ? xmlDocGetRootElement(m_document.get()) : nullptr;
    const auto part = [root](const char* name, const char* other) {
        const std::string text = root ? attribute(root, name) : std::string();
        return text.empty() ? std::string(other) : text;
    };
    return part("SchemaMajorVersion", "1") + "." + part("SchemaMinorVersion", "0") + "." +
           part("SchemaSubMinorVersion", "0");
}

Description::Node Description::find(const std::string& name) const
{
    const auto found = m_nodes.find(name);
    return found == m_nodes.end() ? nullptr : found->second;
}

std::variant<RegisterField, std::string> Description::field(const std::string& name) const
{
    Node node = find(name);
    if (!node)
        return "is no node of the description";
    for (unsigned i = 0; i < kMaxReferences; ++i) {
        const std::string tag = tagOf(node);
        if (isOneOf(tag, {"IntReg", "MaskedIntReg", "FloatReg", "StringReg", "StructEntry"}))
            return fieldOf(node);
        if (isOneOf(tag, {"SwissKnife", "IntSwissKnife", "Converter", "IntConverter"}))
            return "has no register of its own: " + attribute(node, "Name") + " is a formula";
        const std::string next = childText(node, "pValue");
        if (next.empty())
            return "has no register: " + tag + " " + attribute(node, "Name") + " refers to none";
        node = find(next);
        if (!node)
            return "has no register: " + next + " is no node of the description";
    }
    return "has no register: its references form a circle";
}

std::variant<RegisterField, std::string> Description::fieldOf(Node node) const
{
    const std::string tag = tagOf(node);
    Node reg = tag == "StructEntry" ? node->parent : node;
    const auto address = addressOf(reg);
    if (const auto* problem = std::get_if<std::string>(&address))
        return *problem;

    RegisterField field;
    field.address = std::get<uint32_t>(address);
    field.bigEndian = childText(reg, "Endianess") == "BigEndian";
    Node lengthNode = find(childText(reg, "pLength"));
    const auto length = lengthNode ? childNumber(lengthNode, "Value") : childNumber(reg, "Length");
    if (length && *length > 0 && *length <= 1 << 24)
        field.length = static_cast<uint32_t>(*length);
    if (tag == "StringReg") {
        field.kind = RegisterField::Kind::Text;
        if (field.length == 0)
            field.lengthNode = childText(reg, "pLength");
        return field;
    }
    if (tag == "FloatReg")
        field.kind = RegisterField::Kind::Float;
    const bool fits = field.kind == RegisterField::Kind::Float ? field.length == 4 || field.length == 8
                                                               : field.length >= 1 && field.length <= 8;
    if (!fits)
        return "has a register without a usable length: " + attribute(reg, "Name");
    field.isSigned = childText(node, "Sign") == "Signed";
    field.highBit = field.length * 8 - 1;
    if (tag != "IntReg")
        setBits(field, node);
    return field;
}

std::variant<uint32_t, std::string> Description::addressOf(Node reg) const
{
    const std::string name = attribute(reg, "Name");
    if (!isCameraMemory(reg))
        return "lies outside the camera's registers: " + name + " belongs to port " + childText(reg, "pPort");
    int64_t sum = 0;
    bool any = false;
    for (Node child = reg->children; child; child = child->next) {
        if (child->type != XML_ELEMENT_NODE)
            continue;
        const std::string tag = tagOf(child);
        if (isOneOf(tag, {"pIndex", "IntSwissKnife"}))
            return "has no constant address: " + name + " is indexed";
        if (!isOneOf(tag, {"Address", "pAddress"}))
            continue;
        Node other = tag == "pAddress" ? find(textOf(child)) : nullptr;
        const auto term =
            other && tagOf(other) == "Integer" ? childNumber(other, "Value") : toNumber(textOf(child));
        if (!term)
            return "has no constant address: " + name + " adds " + textOf(child);
        sum += *term;
        any = true;
    }
    if (!any || sum < 0 || sum > 0xFFFFFFFF)
        return "has no usable address: " + name;
    return static_cast<uint32_t>(sum);
}

// Chunk and event data have ports of their own, whose addresses mean nothing in the camera's register space.
bool Description::isCameraMemory(Node reg) const
{
    Node port = find(childText(reg, "pPort"));
    if (!port)
        return true;
    for (const char* tag : {"ChunkID", "pChunkID", "EventID", "pEventID"}) {
        if (childOf(port, tag))
            return false;
    }
    return true;
}

NodeValue Description::numberOf(const std::string& name, const NodeValue& value) const
{
    Node node = find(name);
    if (!node)
        return value;
    const auto* text = std::get_if<std::string>(&value);
    if (text && tagOf(node) == "Enumeration") {
        for (Node entry = node->children; entry; entry = entry->next) {
            if (entry->type != XML_ELEMENT_NODE || tagOf(entry) != "EnumEntry" ||
                attribute(entry, "Name") != *text)
                continue;
            if (const auto number = childNumber(entry, "Value"))
                return *number;
        }
    }
    const auto* number = std::get_if<int64_t>(&value);
    if (number && tagOf(node) == "Boolean")
        return childNumber(node, *number ? "OnValue" : "OffValue").value_or(*number);
    return value;
}

AddressRanges Description::selectorRegisters() const
{
    AddressRanges found;
    for (const auto& [name, node] : m_nodes) {
        if (!childOf(node, "pSelected"))
            continue;
        const auto selector = field(name);
        if (const auto* place = std::get_if<RegisterField>(&selector))
            found.add(place->address, place->length);
    }
    return found;
}

AddressRanges Description::readOnlyRegisters() const
{
    struct Register
    {
        uint32_t address;
        uint64_t length;
    };
    std::vector<Register> closed;
    AddressRanges open;
    for (const auto& [name, node] : m_nodes) {
        if (!isOneOf(tagOf(node),
                     {"IntReg", "MaskedIntReg", "FloatReg", "StringReg", "StructReg", "Register"}))
            continue;
        const auto address = addressOf(node);
        const auto length = childNumber(node, "Length");
        if (!std::holds_alternative<uint32_t>(address) || !length || *length <= 0)
            continue;
        const Register range{std::get<uint32_t>(address), static_cast<uint64_t>(*length)};
        if (isReadOnly(node))
            closed.push_back(range);
        else
            open.add(range.address, range.length);
    }
    AddressRanges result;
    for (const Register& range : closed) {
        // Two bit fields of one register may differ: then the register as a whole can be written.
        if (!open.overlaps(range.address, range.length))
            result.add(range.address, range.length);
    }
    return result;
}

} // namespace emu
