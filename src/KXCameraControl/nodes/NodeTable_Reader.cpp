// Reading a description into the table.
#include "KXCameraControl/nodes/NodeTable.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <mutex>
#include <string_view>

namespace kx
{

namespace
{

const std::unordered_map<std::string_view, NodeKind> kindNames = {
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

const std::unordered_map<std::string_view, Tag> tagNames = {
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

constexpr char blanks[] = " \t\r\n";

std::string trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return std::string(text.substr(first, text.find_last_not_of(blanks) - first + 1));
}

std::string_view view(const xmlChar* text)
{
    return text ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

// Of one start tag, as the parser hands them out: name, prefix, namespace, begin and end of the value.
class Attributes
{
public:
    Attributes(int count, const xmlChar** fields) : m_count(count), m_fields(fields) {}

    // Empty: there is none. Those with a prefix are others.
    std::string_view get(std::string_view name) const
    {
        for (int i = 0; i < m_count; ++i) {
            const xmlChar* const* field = m_fields + 5 * i;
            if (!field[1] && view(field[0]) == name)
                return {reinterpret_cast<const char*>(field[3]), static_cast<size_t>(field[4] - field[3])};
        }
        return {};
    }

private:
    int m_count;
    const xmlChar** m_fields;
};

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
        const std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxtPtr)> parser(
            xmlCreateMemoryParserCtxt(xml.data(), static_cast<int>(xml.size())), release);
        if (!parser)
            throw std::bad_alloc();
        xmlCtxtUseOptions(parser.get(), XML_PARSE_NONET | XML_PARSE_NOENT);
        listen(*parser);
        xmlParseDocument(parser.get());
        if (m_isOutOfMemory || parser->errNo == XML_ERR_NO_MEMORY)
            throw std::bad_alloc();
        if (m_properties > NodeTable::maximumProperties)
            problem = "its StructRegs say too much, for too many entries";
        else if (!parser->wellFormed)
            problem = "it is no well-formed XML";
        else if (!m_rootSeen)
            problem = "its document element is no RegisterDescription";
        return m_properties <= NodeTable::maximumProperties && parser->wellFormed && m_rootSeen;
    }

private:
    // An element that is open and may hold nodes or properties.
    struct Frame
    {
        int depth;
        Node* node; // null: the document element or a group
        std::vector<Node*> structEntries;
    };

    static void release(xmlParserCtxtPtr parser)
    {
        xmlFreeDoc(parser->myDoc);
        xmlFreeParserCtxt(parser);
    }

    // What a document type declares stays the parser's own business: it keeps it and puts entities in.
    void listen(xmlParserCtxt& parser)
    {
        parser._private = this;
        parser.sax->startElementNs = [](void* context, const xmlChar* name, const xmlChar* prefix,
                                        const xmlChar* space, int, const xmlChar**, int count, int,
                                        const xmlChar** fields) {
            told(context, [&](DescriptionReader& reader) {
                // A prefix that nothing declares is part of the name, which is none of ours then.
                reader.startElement(prefix && !space ? std::string_view() : view(name), {count, fields});
            });
        };
        parser.sax->endElementNs = [](void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
            told(context, [](DescriptionReader& reader) { reader.endElement(); });
        };
        parser.sax->characters = [](void* context, const xmlChar* text, int length) {
            told(context, [&](DescriptionReader& reader) {
                reader.m_text.append(reinterpret_cast<const char*>(text), static_cast<size_t>(length));
            });
        };
        parser.sax->ignorableWhitespace = parser.sax->characters;
        parser.sax->cdataBlock = [](void* context, const xmlChar* text, int length) {
            told(context, [&](DescriptionReader& reader) {
                reader.endText();
                reader.takeText({reinterpret_cast<const char*>(text), static_cast<size_t>(length)});
            });
        };
        parser.sax->comment = [](void* context, const xmlChar*) {
            told(context, [](DescriptionReader& reader) { reader.endText(); });
        };
        parser.sax->processingInstruction = [](void* context, const xmlChar*, const xmlChar*) {
            told(context, [](DescriptionReader& reader) { reader.endText(); });
        };
        parser.sax->serror = ignoreParserMessage;
    }

    // The parser is C: nothing may be thrown through it.
    template <class Body>
    static void told(void* context, Body body) noexcept
    {
        const auto parser = static_cast<xmlParserCtxtPtr>(context);
        auto& reader = *static_cast<DescriptionReader*>(parser->_private);
        try {
            if (!reader.m_isOutOfMemory && reader.m_properties <= NodeTable::maximumProperties)
                body(reader);
        } catch (const std::bad_alloc&) {
            reader.m_isOutOfMemory = true;
            xmlStopParser(parser);
        }
    }

    // Of a text between tags that is blank nothing is taken, not even into a text that may hold blanks.
    void endText()
    {
        if (m_text.find_first_not_of(blanks) != std::string::npos)
            takeText(m_text);
        m_text.clear();
    }

    void takeText(std::string_view text)
    {
        if (m_propertyDepth >= 0 && m_depth == m_propertyDepth + 1)
            m_frames.back().node->properties.back().text += text;
    }

    void startElement(std::string_view element, const Attributes& attributes)
    {
        endText();
        const int depth = m_depth++;
        if (depth == 0) {
            m_rootSeen = element == "RegisterDescription";
            if (m_rootSeen)
                startRoot(attributes);
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
            startNode(kind->second, depth, attributes);
        else if (m_frames.back().node)
            startProperty(element, depth, attributes);
    }

    void startRoot(const Attributes& attributes)
    {
        const auto number = [&](const char* name) {
            int64_t value = 0;
            return parseInteger(std::string(attributes.get(name)), value) ? static_cast<unsigned>(value) : 1;
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

    void startNode(NodeKind kind, int depth, const Attributes& attributes)
    {
        m_table.m_nodes.push_back({});
        Node* const node = &m_table.m_nodes.back();
        Node* const outer = m_frames.back().node;
        node->kind = kind;
        node->name = attributes.get("Name");
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

    void startProperty(std::string_view element, int depth, const Attributes& attributes)
    {
        const auto tag = tagNames.find(element);
        if (tag == tagNames.end())
            return;
        Property property;
        property.tag = tag->second;
        for (const char* name : {"Name", "Index", "Offset"}) {
            if (property.attribute.empty())
                property.attribute = attributes.get(name);
        }
        if (property.tag == Tag::pIndex)
            property.offsetName = attributes.get("pOffset");
        m_frames.back().node->properties.push_back(std::move(property));
        ++m_properties;
        m_propertyDepth = depth;
    }

    void endElement()
    {
        endText();
        const int depth = --m_depth;
        if (m_propertyDepth == depth)
            endProperty();
        if (m_frames.empty() || m_frames.back().depth != depth)
            return;
        // What a StructReg says holds for its entries where they say nothing themselves; so it comes last.
        for (Node* entry : m_frames.back().structEntries) {
            const auto& shared = m_frames.back().node->properties;
            m_properties += shared.size();
            if (m_properties > NodeTable::maximumProperties)
                return;
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
    bool m_rootSeen = false;
    bool m_isOutOfMemory = false;
    int m_depth = 0;    // of elements that are open
    std::string m_text; // since the last markup
    std::vector<Frame> m_frames;
    int m_propertyDepth = -1;
    size_t m_properties = 0; // of all nodes
};

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

} // namespace kx
