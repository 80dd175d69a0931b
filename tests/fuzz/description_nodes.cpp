// A description's text, to the table of its nodes, every question about every node, a write of each, and the
// feature bag of all of them. The line answers what its addresses say, and refuses some.
#include "KXCameraControl/bag/BagSaver.h"
#include "KXCameraControl/description/Check.h"
#include "KXCameraControl/nodes/NodeMap.h"
#include "KXCameraControl/nodes/NodeTable.h"
#include "fuzz/Fuzz.h"

namespace
{

constexpr size_t kMostNodes = 60; // that are asked

class Line : public kx::RegisterLine
{
public:
    KX_Status readBlock(uint64_t address, void* data, size_t size) override
    {
        for (size_t i = 0; i < size; ++i)
            static_cast<uint8_t*>(data)[i] = static_cast<uint8_t>((address + i) * 37 >> 4);
        return statusAt(address);
    }
    KX_Status writeBlock(uint64_t address, const void*, size_t) override { return statusAt(address); }
    KX_Status readRegister(uint64_t address, uint32_t& value) override
    {
        return readBlock(address, &value, sizeof value);
    }
    KX_Status writeRegister(uint64_t address, uint32_t) override { return statusAt(address); }
    std::string lineError() const override { return "refused"; }
    size_t registersPerRequest() const override { return 8; }
    KX_Status readRegisters(const std::vector<uint32_t>& addresses, std::vector<uint32_t>& values) override
    {
        values.resize(addresses.size());
        KX_Status status = KX_OK;
        for (size_t i = 0; i < addresses.size() && status == KX_OK; ++i)
            status = readRegister(addresses[i], values[i]);
        return status;
    }

private:
    static KX_Status statusAt(uint64_t address) { return address % 61 == 60 ? KX_E_GC_ACCESS : KX_OK; }
};

class Nodes : public kx::BagNodes
{
public:
    explicit Nodes(kx::NodeMap& map) : m_map(map) {}

    std::vector<std::string> streamableFeatures() override { return m_map.streamableFeatures(); }
    std::vector<std::string> selectors() override { return m_map.selectors(); }
    std::vector<std::string> selectedFeatures(const std::string& name) override
    {
        return m_map.selectedFeatures(name);
    }
    std::vector<std::string> selectorValues(const std::string& name, size_t limit, bool& isMore) override
    {
        std::vector<std::string> values;
        isMore = false;
        m_map.selectorValues(name.c_str(), limit < 4 ? limit : 4, values, isMore);
        return values;
    }
    bool exists(const std::string& name) override { return m_map.has(name); }
    KX_Status accessMode(const std::string& name, KX_XML_AccessMode& mode) override
    {
        return judged(m_map.accessMode(name.c_str(), mode));
    }
    KX_Status readText(const std::string& name, std::string& text) override
    {
        return judged(m_map.getText(name.c_str(), text));
    }
    KX_Status writeText(const std::string& name, const std::string& text) override
    {
        return judged(m_map.setText(name.c_str(), text));
    }
    KX_Status execute(const std::string& name) override { return judged(m_map.execute(name.c_str())); }

    // This line never fails as a whole. A bag of all combinations is not what is tried here.
    KX_Status judged(KX_Status status)
    {
        fuzz::promise(!KX_IS_LINE_FAILURE(status), "a node's failure is no failure of the line");
        return ++m_calls > 2000 ? KX_E_ABORTED : status;
    }

private:
    kx::NodeMap& m_map;
    unsigned m_calls = 0;
};

void readAll(kx::NodeMap& map, const char* name)
{
    bool flag = false;
    KX_EnumValue entry;
    KX_FloatValue real;
    KX_IntegerValue integer;
    KX_StringValue text;
    KX_XML_AccessMode mode;
    int64_t origin = 0;
    std::string words;
    const KX_Status statuses[] = {map.accessMode(name, mode),    map.getBool(name, flag),
                                  map.getEnum(name, entry),      map.getFloat(name, real),
                                  map.getInteger(name, integer), map.incrementOrigin(name, origin),
                                  map.getString(name, text),     map.getText(name, words),
                                  map.entryName(name, 1, words), map.isEverWritable(name, flag)};
    for (const KX_Status status : statuses)
        fuzz::promise(!KX_IS_LINE_FAILURE(status), "a node's failure is no failure of the line");
    std::vector<std::string> related;
    for (const uint32_t relation :
         {KX_RELATED_SELECTORS, KX_RELATED_INVALIDATORS, KX_RELATED_PLACE, KX_RELATED_LOCKS})
        map.relatedNames(name, relation, related);
}

void writeAll(kx::NodeMap& map, const char* name)
{
    map.setBool(name, true);
    map.setEnum(name, 10);
    map.setFloat(name, 0.2F);
    map.setInteger(name, 16);
    map.setString(name, "abc");
    map.setText(name, "0x20");
    map.execute(name);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string problem;
    const auto table = std::make_shared<kx::NodeTable>();
    if (!kx::isParsable(text, problem) || !table->load(text, problem)) {
        fuzz::promise(!problem.empty(), "who refuses a description says why");
        return 0;
    }
    Line line;
    kx::NodeMap map(table, line, false);
    size_t asked = 0;
    for (const kx::Node& node : table->nodes()) {
        if (node.name.empty() || ++asked > kMostNodes)
            continue;
        readAll(map, node.name.c_str());
        writeAll(map, node.name.c_str());
    }
    KX_RegisterCoverage coverage;
    std::vector<std::string> names;
    map.registerCoverage(0x100, 0x1000, coverage);
    map.registerNames(0, UINT64_MAX, names);
    Nodes nodes(map);
    kx::Bag bag;
    kx::collectBag(nodes, bag);
    return 0;
}
