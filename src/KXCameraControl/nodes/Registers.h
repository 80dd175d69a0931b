// From a register node to bytes on the line and back: address, length, byte order, bits.
#pragma once

#include "KXCameraControl/nodes/NodeFailure.h"
#include "KXCameraControl/nodes/NodeTable.h"
#include "KXCameraControl/nodes/RegisterLine.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kx
{

// An inclusive range of integers.
struct IntegerLimits
{
    int64_t minimum;
    int64_t maximum;
};

class Registers
{
public:
    // Gives the integer value of a node that an address or a length depends on.
    using IntegerReader = std::function<int64_t(const Node&)>;

    Registers(const NodeTable& table, RegisterLine& line, IntegerReader integerOf);

    // All throw NodeFailure.
    uint64_t address(const Node& node) const;
    int64_t length(const Node& node) const;
    // What a reader of the number or the text (at most `limit` bytes of it, at least 1) asks the line for.
    // Nothing for a register that holds neither.
    std::optional<RegisterPlace> place(const Node& node, size_t limit) const;
    // Of IntReg, MaskedIntReg and StructEntry.
    IntegerLimits limits(const Node& node) const;
    int64_t readInteger(const Node& node) const;
    void writeInteger(const Node& node, int64_t value) const;
    double readFloat(const Node& node) const;
    void writeFloat(const Node& node, double value) const;
    // The text up to its first zero byte, at most `limit` bytes of it.
    std::string readText(const Node& node, size_t limit) const;
    // Fills the rest of the register with zeros.
    void writeText(const Node& node, const std::string& text) const;

    // Chunk data and events stand in a stream's buffers, which this library does not receive.
    static bool isInMemory(const Node& node);
    static bool isEvent(const Node& node);
    RegisterLine::Freshness freshness(const Node& node) const;

private:
    struct Bits
    {
        unsigned lowest;
        unsigned count;
    };

    size_t numberLength(const Node& node) const;
    Bits bits(const Node& node, size_t size) const;
    static bool isSigned(const Node& node);
    uint64_t readWord(const Node& node, size_t size) const;
    void writeWord(const Node& node, size_t size, uint64_t word) const;
    void read(const Node& node, uint8_t* data, size_t size, RegisterLine::Freshness freshness) const;
    void write(const Node& node, const uint8_t* data, size_t size) const;
    bool usesRegisterCommands(size_t size) const;
    [[noreturn]] void lineFailed(const Node& node, KX_Status status) const;

    const NodeTable& m_table;
    RegisterLine& m_line;
    IntegerReader m_integerOf;
};

// Nodes that stand for device memory themselves.
bool isRegisterKind(NodeKind kind);

// Literals of a node; throw NodeFailure (KX_E_GC_RUNTIME) when they are no numbers.
int64_t literalInteger(const Node& node, const Property& property);
double literalReal(const Node& node, const Property& property);

} // namespace kx
