// Descriptions whose parts were exchanged, renamed and torn out at random: whatever they say, every call on
// every node ends, with a status that speaks of the node.
#include "KXCameraControl/nodes/NodeTable.h"
#include "camera/EveryNodeKind.h"

#include <random>

namespace
{

class Noise
{
public:
    explicit Noise(unsigned seed) : m_random(seed), m_xml(tests::testData("every_node_kind.xml")) {}

    std::string description(unsigned edits)
    {
        std::string text = m_xml;
        for (unsigned i = 0; i < edits; ++i) {
            switch (pick(4)) {
            case 0:
            case 1:
                exchange(text, '>', '<'); // a value or a reference
                break;
            case 2:
                exchange(text, '<', '>'); // a tag, mostly to no good
                break;
            default:
                renameKind(text);
            }
        }
        return text;
    }

private:
    size_t pick(size_t count) { return m_random() % count; }

    // The part between two delimiters, somewhere; its length may be 0.
    std::pair<size_t, size_t> part(const std::string& text, char from, char to)
    {
        const size_t start = text.find(from, pick(text.size() - 100));
        if (start == std::string::npos)
            return {0, 0};
        const size_t end = text.find(to, start);
        return {start + 1, end == std::string::npos ? 0 : end - start - 1};
    }

    // Something takes the place of something else; the tags stay paired more often than not.
    void exchange(std::string& text, char from, char to)
    {
        const auto [source, length] = part(text, from, to);
        const std::string taken = text.substr(source, length);
        const auto [target, replaced] = part(text, from, to);
        if (from == '>' || pick(10) == 0)
            text.replace(target, replaced, taken);
    }

    // All elements of one kind become another kind.
    void renameKind(std::string& text)
    {
        static const char* const names[] = {
            "pValue",    "pMin",    "pMax",         "pAddress",      "Address",
            "Length",    "pLength", "Value",        "pIsAvailable",  "pIndex",
            "pVariable", "Bit",     "FormulaTo",    "Converter",     "IntConverter",
            "Integer",   "Float",   "Boolean",      "Enumeration",   "Command",
            "StringReg", "IntReg",  "MaskedIntReg", "IntSwissKnife", "String"};
        const std::string from = names[pick(std::size(names))];
        const std::string to = names[pick(std::size(names))];
        for (const std::string& opening : {"<" + from + ">", "<" + from + " ", "</" + from + ">"}) {
            for (size_t at = text.find(opening); at != std::string::npos; at = text.find(opening, at + 1))
                text.replace(at + opening.find(from), from.size(), to);
        }
    }

    std::mt19937 m_random;
    const std::string m_xml;
};

void callEverything(KX_HANDLE handle, const char* name, std::map<KX_Status, unsigned>& statuses)
{
    bool flag = false;
    KX_EnumValue entry;
    KX_FloatValue real;
    KX_IntegerValue integer;
    KX_StringValue text;
    KX_XML_AccessMode mode;
    for (const KX_Status status :
         {KX_XML_GetNodeAccessMode(handle, name, &mode), KX_CC_GetBoolValue(handle, name, &flag),
          KX_CC_GetEnumValue(handle, name, &entry), KX_CC_GetFloatValue(handle, name, &real),
          KX_CC_GetIntValueEx(handle, name, &integer), KX_CC_GetStringValue(handle, name, &text),
          KX_CC_SetBoolValue(handle, name, true), KX_CC_SetEnumValue(handle, name, 10),
          KX_CC_SetFloatValue(handle, name, 0.2F), KX_CC_SetIntValueEx(handle, name, 16),
          KX_CC_SetStringValue(handle, name, "abc"), KX_CC_ExecuteCommand(handle, name)})
        ++statuses[status];
}

TEST(NodeNoise, everyCallEndsWithAStatusOfTheNode)
{
    Noise noise(7);
    std::map<KX_Status, unsigned> statuses;
    unsigned loaded = 0;
    for (unsigned round = 0; round < 300; ++round) {
        const std::string xml = noise.description(1 + round % 10);
        tests::FakeCamera camera(xml);
        ASSERT_EQ(camera.openStatus, KX_OK);
        kx::NodeTable table;
        std::string problem;
        if (!table.load(xml, problem))
            continue;
        ++loaded;
        for (const kx::Node& node : table.nodes()) {
            if (!node.name.empty())
                callEverything(camera.handle, node.name.c_str(), statuses);
        }
    }
    EXPECT_GT(loaded, 100u);
    for (const auto& [status, count] : statuses)
        EXPECT_TRUE(status == KX_OK || (status >= KX_E_GC_GENERIC && status <= KX_E_GC_ACCESS))
            << std::hex << status << ": " << count;
}

} // namespace
