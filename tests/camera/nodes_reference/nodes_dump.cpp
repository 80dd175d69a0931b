// Prints what the camera library makes of a description over seeded memories, one JSON object a line: each
// node's access mode, value, bounds, entries and place, then what each of a list of writes came to.
//   nodes_dump FILE     the description in that file
//   nodes_dump          prints the emulator's own description
#include "KXCameraControl/nodes/NodeMap.h"
#include "KXCameraControl/nodes/NodeValues.h"
#include "camera/nodes_reference/SeededMemory.h"
#include "camera_emulator/BuiltIn.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <memory>

namespace
{

using nlohmann::json;

constexpr unsigned seeds = 3;
constexpr size_t entriesWritten = 12; // of one enumeration, in one memory

bool isRegister(kx::NodeKind kind)
{
    switch (kind) {
    case kx::NodeKind::IntReg:
    case kx::NodeKind::MaskedIntReg:
    case kx::NodeKind::StructEntry:
    case kx::NodeKind::FloatReg:
    case kx::NodeKind::StringReg:
    case kx::NodeKind::Register:
        return true;
    default:
        return false;
    }
}

bool isText(kx::NodeKind kind)
{
    return kind == kx::NodeKind::String || kind == kx::NodeKind::StringReg;
}

json jsonOf(const kx::Number& number)
{
    return number.isInteger() ? json(number.asInteger()) : json(number.asReal());
}

// A failed question shows as an object with its status, so that it equals no answer.
template <class Question>
json answer(Question question)
{
    try {
        return question();
    } catch (const kx::NodeFailure& failure) {
        return {{"status", failure.status}};
    } catch (const kx::FormulaError&) {
        return {{"status", KX_E_GC_RUNTIME}};
    }
}

// One description over one memory.
class Dump
{
public:
    Dump(const std::string& xml, unsigned seed)
        : m_seed(seed), m_memory(seed), m_values(m_table, m_memory),
          m_registers(m_table, m_memory,
                      [this](const kx::Node& node) { return m_values.value(node).asInteger(); })
    {
        std::string problem;
        if (!m_table.load(xml, problem))
            throw std::runtime_error(problem);
        load();
    }

    void print()
    {
        for (const kx::Node& node : m_table.nodes())
            if (isAsked(node))
                std::cout << state(node) << "\n";
        for (const kx::Node& node : m_table.nodes())
            if (isAsked(node))
                printWrites(node);
    }

private:
    bool isAsked(const kx::Node& node) const { return m_table.find(node.name) == &node; }

    KX_XML_AccessMode mode(const kx::Node& node)
    {
        KX_XML_AccessMode mode = KX_AM_UNDEFINED;
        m_map->accessMode(node.name.c_str(), mode);
        return mode;
    }

    json text(const kx::Node& node)
    {
        std::string text;
        const KX_Status status = m_map->getText(node.name.c_str(), text);
        if (status != KX_OK)
            return {{"status", status}};
        return isText(node.kind) ? json(hexadecimal(text)) : json(text);
    }

    static std::string hexadecimal(const std::string& bytes)
    {
        std::string digits;
        for (const char byte : bytes) {
            char two[3];
            std::snprintf(two, sizeof two, "%02x", static_cast<unsigned>(static_cast<uint8_t>(byte)));
            digits += two;
        }
        return digits;
    }

    json state(const kx::Node& node)
    {
        m_values.beginCall();
        json line = {{"seed", m_seed}, {"name", node.name}, {"mode", mode(node)}, {"text", text(node)}};
        if (kx::isIntegerKind(node.kind) || kx::isFloatKind(node.kind)) {
            line["minimum"] = answer([&] { return jsonOf(m_values.range(node).minimum); });
            line["maximum"] = answer([&] { return jsonOf(m_values.range(node).maximum); });
        }
        if (kx::isIntegerKind(node.kind))
            line["increment"] = answer([&] { return json(m_values.range(node).increment); });
        if (node.kind == kx::NodeKind::Enumeration) {
            line["number"] = number(node);
            line["entries"] = answer([&] { return entries(node); });
        }
        if (isRegister(node.kind)) {
            line["address"] = answer([&] { return json(m_registers.address(node)); });
            line["length"] = answer([&] { return json(m_registers.length(node)); });
        }
        return line;
    }

    json number(const kx::Node& node)
    {
        KX_EnumValue value{};
        const KX_Status status = m_map->getEnum(node.name.c_str(), value);
        return status == KX_OK ? json(value.current) : json{{"status", status}};
    }

    json entries(const kx::Node& node)
    {
        json names = json::array();
        for (const kx::Node* entry : m_values.usableEntries(node))
            names.push_back(entry->name);
        return names;
    }

    // ---- writes ----

    void printWrites(const kx::Node& node)
    {
        if (!isWritable(mode(node)))
            return;
        const json before = text(node);
        m_values.beginCall();
        for (const json& value : kx::isIntegerKind(node.kind)             ? integers(node)
                                 : kx::isFloatKind(node.kind)             ? reals(node)
                                 : isText(node.kind)                      ? texts(node)
                                 : node.kind == kx::NodeKind::Boolean     ? json{false, true}
                                 : node.kind == kx::NodeKind::Enumeration ? entryValues(node)
                                 : node.kind == kx::NodeKind::Command     ? json{0}
                                                                          : json::array())
            printWrite(node, value, before);
    }

    void printWrite(const kx::Node& node, const json& value, const json& before)
    {
        json line = {{"seed", m_seed}, {"name", node.name}, {"write", value}};
        line["status"] = write(node, value);
        line["wire"] = json::array();
        for (const tests::SeededMemory::Write& write : m_memory.takeWrites())
            line["wire"].push_back({write.address, write.bytes});
        // What a node without a register has got, it keeps.
        line["after"] = text(node);
        if (line["after"] != before && !(before.is_string() && isRestored(node, before)))
            load();
        std::cout << line << "\n";
    }

    bool isRestored(const kx::Node& node, const json& before)
    {
        m_map->setText(node.name.c_str(), isText(node.kind) ? bytes(before) : before.get<std::string>());
        m_memory.takeWrites();
        return text(node) == before;
    }

    void load()
    {
        const std::shared_ptr<const kx::NodeTable> table(std::shared_ptr<void>(), &m_table); // owned here
        m_map = std::make_unique<kx::NodeMap>(table, m_memory, false);
    }

    static std::string bytes(const std::string& digits)
    {
        std::string text;
        for (size_t i = 0; i < digits.size(); i += 2)
            text += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
        return text;
    }

    KX_Status write(const kx::Node& node, const json& value)
    {
        const char* const name = node.name.c_str();
        if (kx::isIntegerKind(node.kind))
            return m_map->setInteger(name, value);
        if (kx::isFloatKind(node.kind)) // in all its 64 bits
            return m_map->setText(name, value.dump());
        if (isText(node.kind))
            return m_map->setString(name, value.get<std::string>().c_str());
        if (node.kind == kx::NodeKind::Boolean)
            return m_map->setBool(name, value);
        if (node.kind == kx::NodeKind::Enumeration)
            return writeEntry(name, value);
        return m_map->execute(name);
    }

    // What the record of 32 bits cannot say feature files can.
    KX_Status writeEntry(const char* name, int64_t number)
    {
        const bool fits = number >= INT32_MIN && number <= UINT32_MAX;
        return fits ? m_map->setEnum(name, static_cast<uint32_t>(number))
                    : m_map->setText(name, std::to_string(number));
    }

    json integers(const kx::Node& node)
    {
        std::vector<int64_t> values = {0, 1, 7};
        try {
            const kx::Range range = m_values.range(node);
            const int64_t low = range.minimum.asInteger(), high = range.maximum.asInteger();
            const auto span = static_cast<uint64_t>(high) - static_cast<uint64_t>(low);
            values = {low, high, static_cast<int64_t>(static_cast<uint64_t>(low) + span / 2)};
            if (low > std::numeric_limits<int64_t>::min())
                values.push_back(low - 1);
            if (high < std::numeric_limits<int64_t>::max())
                values.push_back(high + 1);
            if (low < high - range.increment && range.increment > 1)
                values.insert(values.end(), {low + range.increment, low + 1});
        } catch (const kx::NodeFailure&) {
        }
        return distinct(values);
    }

    json reals(const kx::Node& node)
    {
        std::vector<double> values = {0.0, 1.0, -2.5, 1234.5678, 65000.3};
        try {
            const kx::Range range = m_values.range(node);
            const double low = range.minimum.asReal(), high = range.maximum.asReal();
            if (std::fabs(low) < 1e15 && std::fabs(high) < 1e15) {
                const double span = high - low;
                // What a 32-bit caller could not tell from a bound is another matter.
                const double beyond = 1e-3 * std::max(1.0, std::max(std::fabs(low), std::fabs(high)));
                values = {low, high, low + span / 2, low + span * 0.123456789, low - beyond, high + beyond};
            }
        } catch (const kx::NodeFailure&) {
        }
        return distinct(values);
    }

    json texts(const kx::Node& node)
    {
        json values = {"", "Ab 1"};
        m_values.beginCall();
        const json longest = answer([&] { return json(m_values.maximumTextLength(node)); });
        if (longest.is_number() && longest > 0 && longest <= 4096) {
            values.push_back(std::string(longest, 'x'));
            values.push_back(std::string(longest.get<size_t>() + 1, 'x'));
        }
        return values;
    }

    json entryValues(const kx::Node& node)
    {
        std::vector<int64_t> values;
        for (const kx::Property& property : node.properties)
            if (property.tag == kx::Tag::Entry && values.size() < entriesWritten)
                values.push_back(m_values.entryValue(*property.target));
        values.push_back(9999);
        return distinct(values);
    }

    template <class Value>
    static json distinct(const std::vector<Value>& values)
    {
        json list = json::array();
        for (const Value& value : values)
            if (std::find(list.begin(), list.end(), json(value)) == list.end())
                list.push_back(value);
        return list;
    }

    static bool isWritable(KX_XML_AccessMode mode)
    {
        return mode == KX_AM_WRITE_ONLY || mode == KX_AM_READ_WRITE;
    }

    unsigned m_seed;
    tests::SeededMemory m_memory;
    kx::NodeTable m_table;
    std::unique_ptr<kx::NodeMap> m_map;
    kx::NodeValues m_values;
    kx::Registers m_registers;
};

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::cout << emu::builtInDescription();
        return 0;
    }
    std::ifstream file(argv[1], std::ios::binary);
    const std::string xml{std::istreambuf_iterator<char>(file), {}};
    try {
        for (unsigned seed = 0; seed < seeds; ++seed)
            Dump(xml, seed).print();
    } catch (const std::exception& failure) {
        std::cerr << argv[1] << ": " << failure.what() << "\n";
        return 1;
    }
    return 0;
}
