// What the emulator itself has to know of a GenICam description: which registers stand behind which nodes. It
// follows references to registers at constant addresses and evaluates no formula.
#pragma once

#include "camera_emulator/Memory.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <variant>

struct _xmlDoc;
struct _xmlNode;

namespace emu
{

// Where a node's value lies.
struct RegisterField
{
    enum class Kind
    {
        Integer,
        Float,
        Text
    };
    Kind kind = Kind::Integer;
    uint32_t address = 0;
    uint32_t length = 0;    // bytes; 0: unknown here (text only)
    std::string lengthNode; // what gives the length then
    bool bigEndian = false;
    unsigned lowBit = 0; // counted from the value's least significant bit
    unsigned highBit = 0;
    bool isSigned = false;
};

using NodeValue = std::variant<int64_t, double, std::string>;

class Description
{
public:
    // Text that is no XML gives a description without nodes.
    explicit Description(const std::string& text);

    bool isXml() const { return m_document != nullptr; }
    // "1.1.0" as the root element says; "1.0.0" without.
    std::string schemaVersion() const;

    // The register behind a node, or what stands in the way, as a sentence's end ("has no register ...").
    std::variant<RegisterField, std::string> field(const std::string& name) const;
    // The number that a symbolic entry or a truth value of this node stands for; else the value itself.
    NodeValue numberOf(const std::string& name, const NodeValue& value) const;

    // The registers of nodes that select others.
    AddressRanges selectorRegisters() const;
    // Registers at constant addresses that no node may write.
    AddressRanges readOnlyRegisters() const;

private:
    using Node = _xmlNode*;
    Node find(const std::string& name) const;
    void index(Node parent, unsigned depth);
    std::variant<RegisterField, std::string> fieldOf(Node node) const;
    std::variant<uint32_t, std::string> addressOf(Node reg) const;
    bool isCameraMemory(Node reg) const;

    std::shared_ptr<_xmlDoc> m_document;
    std::map<std::string, Node> m_nodes;
};

// Writes `value` into the field; gives what stands in the way, or an empty text.
std::string encode(const RegisterField& field, const NodeValue& value, Memory& memory);
NodeValue decode(const RegisterField& field, const Memory& memory);

} // namespace emu
