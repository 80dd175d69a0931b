#include "camera_emulator/Seed.h"

#include <nlohmann/json.hpp>

#include <optional>

namespace emu
{
namespace
{

using nlohmann::json;

std::optional<NodeValue> nodeValue(const json& value)
{
    if (value.is_boolean())
        return NodeValue(int64_t(value.get<bool>()));
    if (value.is_number_integer())
        return NodeValue(value.get<int64_t>());
    if (value.is_number())
        return NodeValue(value.get<double>());
    if (value.is_string())
        return NodeValue(value.get<std::string>());
    return std::nullopt;
}

std::optional<uint32_t> address(const std::string& text)
{
    try {
        size_t end = 0;
        const unsigned long long value = std::stoull(text, &end, 0);
        if (end == text.size() && value <= 0xFFFFFFFF)
            return static_cast<uint32_t>(value);
    } catch (const std::exception&) {
    }
    return std::nullopt;
}

std::optional<Bytes> hexBytes(const json& value)
{
    if (!value.is_string())
        return std::nullopt;
    std::string digits;
    for (char c : value.get<std::string>()) {
        if (c != ' ')
            digits += c;
    }
    if (digits.size() % 2 != 0 || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        return std::nullopt;
    Bytes bytes(digits.size() / 2);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(std::stoul(digits.substr(2 * i, 2), nullptr, 16));
    return bytes;
}

void applyNodes(const json& entries, const Description& description, Memory& memory, SeedResult& result)
{
    for (const auto& [name, value] : entries.items()) {
        const auto given = nodeValue(value);
        const std::string problem = given ? writeNode(description, name, *given, memory)
                                          : "Node " + name + " cannot hold a list, an object or nothing.";
        const auto field = description.field(name);
        const auto* target = std::get_if<RegisterField>(&field);
        if (!problem.empty())
            result.problems.push_back(problem);
        else if (target && !target->lengthNode.empty())
            result.remarks.push_back("Node " + name + " is written, but is as long as " + target->lengthNode +
                                     " says: seed that as well.");
    }
}

void applyMemory(const json& entries, Memory& memory, std::vector<std::string>& problems)
{
    for (const auto& [key, value] : entries.items()) {
        const auto begin = address(key);
        const auto bytes = hexBytes(value);
        if (begin && bytes)
            memory.write(*begin, *bytes);
        else
            problems.push_back("The seed for address " + key + " is not an address with hexadecimal bytes.");
    }
}

} // namespace

std::string writeNode(const Description& description, const std::string& name, const NodeValue& value,
                      Memory& memory)
{
    const auto field = description.field(name);
    if (const auto* problem = std::get_if<std::string>(&field))
        return "Node " + name + " " + *problem + ".";
    const std::string problem =
        encode(std::get<RegisterField>(field), description.numberOf(name, value), memory);
    return problem.empty() ? problem : "Node " + name + " " + problem + ".";
}

SeedResult applySeed(const std::string& text, const Description& description, Memory& memory)
{
    SeedResult result;
    const json seed = json::parse(text, nullptr, false);
    if (!seed.is_object())
        return {{"The seed is no JSON object."}, {}};
    for (const auto& [key, value] : seed.items()) {
        if ((key != "nodes" && key != "memory") || !value.is_object())
            result.problems.push_back("The seed's \"" + key +
                                      "\" is neither an object \"nodes\" nor an object \"memory\".");
    }
    if (seed.contains("nodes") && seed["nodes"].is_object())
        applyNodes(seed["nodes"], description, memory, result);
    if (seed.contains("memory") && seed["memory"].is_object())
        applyMemory(seed["memory"], memory, result.problems);
    return result;
}

} // namespace emu
