// Reading a description into the table, and numbers as descriptions write them.
#include "KXCameraControl/nodes/NodeTable.h"

#include <charconv>
#include <libxml/xmlreader.h>
#include <mutex>

namespace kx
{

namespace
{

const std::unordered_map<std::string, NodeKind> kindNames = {
    {"Category", NodeKind::Category},         {"Port", NodeKind::Port},
    {"Integer", NodeKind::Integer},           {"IntReg", NodeKind::IntReg},
    {"MaskedIntReg", NodeKind::MaskedIntReg}, {"StructReg", NodeKind::StructReg},
    {"StructEntry", NodeKind::StructEntry},   {"IntSwissKnife", NodeKind::IntSwissKnife},
    {"IntConverter", NodeKind::IntConverter}, {"Float", NodeKind::Float},
    {"FloatReg", NodeKind::FloatReg},         {"SwissKnife", NodeKind::SwissKnife},
    {"Converter", NodeKind::Converter},       {"Boolean", NodeKind::Boolean},
    {"Enumeration", NodeKind::Enumeration},   {"EnumEntry", NodeKind::EnumEntry},
    {"Command", NodeKind::Command},           {"String", NodeKind::String},
    {"StringReg", NodeKind::StringReg},       {"Register", NodeKind::Register},
};

const std::unordered_map<std::string, Tag> tagNames = {
    {"Address", Tag::Address},
    {"pAddress", Tag::pAddress},
    {"pIndex", Tag::pIndex},
    {"Length", Tag::Length},
    {"pLength", Tag::pLength},
    {"pPort", Tag::pPort},
    {"AccessMode", Tag::AccessMode},
    {"ImposedAccessMode", Tag::ImposedAccessMode},
    {"Cachable", Tag::Cachable},
    {"PollingTime", Tag::PollingTime},
    {"Endianess", Tag::Endianess},
    {"Sign", Tag::Sign},
    {"LSB", Tag::LSB},
    {"MSB", Tag::MSB},
    {"Bit", Tag::Bit},
    {"Value", Tag::Value},
    {"pValue", Tag::pValue},
    {"pValueCopy", Tag::pValueCopy},
    {"ValueIndexed", Tag::ValueIndexed},
    {"pValueIndexed", Tag::pValueIndexed},
    {"ValueDefault", Tag::ValueDefault},
    {"pValueDefault", Tag::pValueDefault},
    {"Min", Tag::Min},
    {"pMin", Tag::pMin},
    {"Max", Tag::Max},
    {"pMax", Tag::pMax},
    {"Inc", Tag::Inc},
    {"pInc", Tag::pInc},
    {"OnValue", Tag::OnValue},
    {"OffValue", Tag::OffValue},
    {"CommandValue", Tag::CommandValue},
    {"pCommandValue", Tag::pCommandValue},
    {"pIsImplemented", Tag::pIsImplemented},
    {"pIsAvailable", Tag::pIsAvailable},
    {"pIsLocked", Tag::pIsLocked},
    {"pVariable", Tag::pVariable},
    {"Constant", Tag::Constant},
    {"Expression", Tag::Expression},
    {"Formula", Tag::Formula},
    {"FormulaTo", Tag::FormulaTo},
    {"FormulaFrom", Tag::FormulaFrom},
    {"Slope", Tag::Slope},
    {"ChunkID", Tag::ChunkID},
    {"pChunkID", Tag::pChunkID},
    {"EventID", Tag::EventID},
    {"Streamable", Tag::Streamable},
    {"pInvalidator", Tag::pInvalidator},
    {"pSelected", Tag::pSelected},
    {"pFeature", Tag::pFeature},
};

std::string trimmed(const std::string& text)
{
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

void ignoreParserMessage(void*, xmlErrorPtr) {}

} // namespace

// One pass over the text; its entities are put in, and isParsable() has measured them. Elements count only
// where the schema puts them, so a maker's own extensions may repeat the names inside.
class DescriptionReader
{
public:
    explicit DescriptionReader(NodeTable& table) : m_table(table) {}

    bool read(const std::string& xml, std::string& problem)
    {
        static std::once_flag once;
        std::call_once(once, xmlInitParser);
        const std::unique_ptr<xmlTextReader, void (*)(xmlTextReaderPtr)> reader(
            xmlReaderForMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                               XML_PARSE_NONET | XML_PARSE_NOENT),
            xmlFreeTextReader);
        if (!reader)
            throw std::bad_alloc();
        m_reader = reader.get();
        xmlTextReaderSetStructuredErrorHandler(m_reader, ignoreParserMessage, nullptr);
        int more = 0;
        while ((more = xmlTextReaderRead(m_reader)) == 1)
            visit();
        if (more != 0 || !m_rootSeen)
            problem =
                more != 0 ? "it is no well-formed XML" : "its document element is no RegisterDescription";
        return more == 0 && m_rootSeen;
    }

private:
    // An element that is open and may hold nodes or properties.
    struct Frame
    {
        int depth;
        Node* node; // null: the document element or a group
        std::vector<Node*> structEntries;
    };

    void visit()
    {
        const int depth = xmlTextReaderDepth(m_reader);
        switch (xmlTextReaderNodeType(m_reader)) {
        case XML_READER_TYPE_ELEMENT:
            startElement(depth);
            if (xmlTextReaderIsEmptyElement(m_reader))
                endElement(depth);
            break;
        case XML_READER_TYPE_TEXT:
        case XML_READER_TYPE_CDATA:
            if (m_propertyDepth >= 0 && depth == m_propertyDepth + 1)
                m_frames.back().node->properties.back().text += text(xmlTextReaderConstValue(m_reader));
            break;
        case XML_READER_TYPE_END_ELEMENT:
            endElement(depth);
            break;
        default:
            break;
        }
    }

    static std::string text(const xmlChar* bytes)
    {
        return bytes ? std::string(reinterpret_cast<const char*>(bytes)) : std::string();
    }

    std::string attribute(const char* name) const
    {
        xmlChar* value = xmlTextReaderGetAttribute(m_reader, reinterpret_cast<const xmlChar*>(name));
        const std::string copy = text(value);
        xmlFree(value);
        return copy;
    }

    void startElement(int depth)
    {
        const std::string element = text(xmlTextReaderConstLocalName(m_reader));
        if (depth == 0) {
            m_rootSeen = element == "RegisterDescription";
            if (m_rootSeen)
                startRoot();
            return;
        }
        if (m_frames.empty() || m_frames.back().depth != depth - 1)
            return;
        if (element == "Group" && !m_frames.back().node) {
            m_frames.push_back({depth, nullptr, {}});
            return;
        }
        const auto kind = kindNames.find(element);
        if (kind != kindNames.end() && mayHold(m_frames.back().node, kind->second))
            startNode(kind->second, depth);
        else if (m_frames.back().node)
            startProperty(element, depth);
    }

    void startRoot()
    {
        const auto number = [this](const char* name) {
            int64_t value = 0;
            return parseInteger(attribute(name), value) ? static_cast<unsigned>(value) : 1;
        };
        m_table.m_schemaMajor = number("SchemaMajorVersion");
        m_table.m_schemaMinor = number("SchemaMinorVersion");
        m_frames.push_back({0, nullptr, {}});
    }

    static bool mayHold(const Node* outer, NodeKind inner)
    {
        if (!outer)
            return inner != NodeKind::StructEntry && inner != NodeKind::EnumEntry;
        switch (inner) {
        case NodeKind::StructEntry:
            return outer->kind == NodeKind::StructReg;
        case NodeKind::EnumEntry:
            return outer->kind == NodeKind::Enumeration;
        default:
            return inner == NodeKind::IntSwissKnife && outer->kind != NodeKind::Category;
        }
    }

    void startNode(NodeKind kind, int depth)
    {
        m_table.m_nodes.push_back({});
        Node* const node = &m_table.m_nodes.back();
        Node* const outer = m_frames.back().node;
        node->kind = kind;
        node->name = attribute("Name");
        if (kind == NodeKind::EnumEntry)
            node->name = "EnumEntry_" + outer->name + "_" + node->name;
        // A formula that stands inside a register is an address of it.
        if (kind == NodeKind::IntSwissKnife && outer)
            outer->properties.push_back(link(Tag::pAddress, node));
        if (kind == NodeKind::EnumEntry)
            outer->properties.push_back(link(Tag::Entry, node));
        if (kind == NodeKind::StructEntry)
            m_frames.back().structEntries.push_back(node);
        if (!node->name.empty()) {
            // Of two nodes of one name the later one counts, but an entry never hides a feature.
            if (kind == NodeKind::EnumEntry)
                m_table.m_byName.emplace(node->name, node);
            else
                m_table.m_byName[node->name] = node;
        }
        m_frames.push_back({depth, node, {}});
    }

    static Property link(Tag tag, Node* target)
    {
        Property property;
        property.tag = tag;
        property.target = target;
        return property;
    }

    void startProperty(const std::string& element, int depth)
    {
        const auto tag = tagNames.find(element);
        if (tag == tagNames.end())
            return;
        Property property;
        property.tag = tag->second;
        for (const char* name : {"Name", "Index", "Offset"}) {
            if (property.attribute.empty())
                property.attribute = attribute(name);
        }
        if (property.tag == Tag::pIndex)
            property.offsetName = attribute("pOffset");
        m_frames.back().node->properties.push_back(std::move(property));
        m_propertyDepth = depth;
    }

    void endElement(int depth)
    {
        if (m_propertyDepth == depth)
            endProperty();
        if (m_frames.empty() || m_frames.back().depth != depth)
            return;
        // What a StructReg says holds for its entries where they say nothing themselves; so it comes last.
        for (Node* entry : m_frames.back().structEntries) {
            const auto& shared = m_frames.back().node->properties;
            entry->properties.insert(entry->properties.end(), shared.begin(), shared.end());
        }
        m_frames.pop_back();
    }

    void endProperty()
    {
        Property& property = m_frames.back().node->properties.back();
        const bool isText = property.tag == Tag::Value && m_frames.back().node->kind == NodeKind::String;
        if (!isText)
            property.text = trimmed(property.text);
        m_propertyDepth = -1;
    }

    NodeTable& m_table;
    xmlTextReaderPtr m_reader = nullptr;
    bool m_rootSeen = false;
    std::vector<Frame> m_frames;
    int m_propertyDepth = -1;
};

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

bool NodeTable::load(const std::string& xml, std::string& problem)
{
    if (!DescriptionReader(*this).read(xml, problem)) {
        m_nodes.clear();
        m_byName.clear();
        return false;
    }
    resolveLinks();
    compileFormulas();
    findFaults();
    return true;
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
