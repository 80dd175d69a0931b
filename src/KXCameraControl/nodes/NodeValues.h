// What nodes are worth, may be worth and may be asked: values, ranges and access modes, and writing along the
// ways that lead from a feature to its register.
#pragma once

#include "KXCameraControl/nodes/Registers.h"

#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace kx
{

// What an integer or a float may take. Inclusive.
struct Range
{
    Number minimum;
    Number maximum;
    int64_t increment = 1;          // at least 1
    bool countsFromMinimum = false; // multiples of the increment start at the minimum, not at 0

    int64_t incrementOrigin() const { return countsFromMinimum ? minimum.asInteger() : 0; }
    // Of integers whose maximum is not below the minimum: how many increments fit in between, and the value
    // that is so many above the minimum. Differences may take all 64 bits.
    uint64_t steps() const
    {
        return (static_cast<uint64_t>(maximum.asInteger()) - static_cast<uint64_t>(minimum.asInteger())) /
               static_cast<uint64_t>(increment);
    }
    int64_t valueAt(uint64_t step) const
    {
        return static_cast<int64_t>(static_cast<uint64_t>(minimum.asInteger()) +
                                    step * static_cast<uint64_t>(increment));
    }
};

// All questions throw NodeFailure. Answers are remembered within one call, so that a register or a formula
// that several parts of a feature share is asked once.
class NodeValues
{
public:
    // Bytes of a text that its getter reads.
    static constexpr size_t textLimit = sizeof KX_StringValue::current - 1;

    NodeValues(const NodeTable& table, RegisterLine& line);

    void beginCall();

    // Of integers, floats, booleans (1 and 0), enumerations and entries.
    Number value(const Node& node);
    Range range(const Node& node);
    KX_XML_AccessMode access(const Node& node);
    // Entries that are implemented and available now, in the description's order.
    std::vector<const Node*> usableEntries(const Node& node);
    int64_t entryValue(const Node& entry) const;
    std::string text(const Node& node, size_t limit);
    int64_t maximumTextLength(const Node& node);
    // Where the value stands now; null: in the node itself.
    const Node* sourceNode(const Node& node) { return source(node).node; }
    // What the getter of a register asks the line for; nothing where there is no such thing.
    std::optional<RegisterPlace> place(const Node& node) const { return m_registers.place(node, textLimit); }

    // Each checks the ranges on its way; access is the caller's to check.
    void write(const Node& node, const Number& number);
    void writeText(const Node& node, const std::string& text);
    void execute(const Node& node);

private:
    // Where a node's value stands: another node, or a literal of its own.
    struct Source
    {
        const Node* node = nullptr;
        const Property* literal = nullptr;
    };

    Source source(const Node& node);
    Number freshValue(const Node& node);
    Number sourceValue(const Node& node);
    Number formulaValue(const Node& node, const CompiledFormula& compiled,
                        const std::optional<Number>& input);
    Number variable(const Node& node, const Property& property);
    bool isOn(const Node& node);
    int64_t booleanLiteral(const Node& node, Tag tag, int64_t otherwise) const;

    Range freshRange(const Node& node);
    Range ownRange(const Node& node, bool isReal);
    void narrowToCopies(const Node& node, Range& range);
    Range converterRange(const Node& node);

    KX_XML_AccessMode freshAccess(const Node& node);
    KX_XML_AccessMode kindAccess(const Node& node);
    KX_XML_AccessMode missing(const Node& node);
    std::vector<const Node*> hangsOn(const Node& node);
    KX_XML_AccessMode condition(const Node& node);
    KX_XML_AccessMode ofEntries(const Node& enumeration);
    KX_XML_AccessMode entryAccess(const Node& entry);
    bool flag(const Node& node, Tag tag, bool otherwise);

    enum class Intent
    {
        Check,
        Write
    };
    void follow(const Node& node, const Number& number, Intent intent);
    void followSources(const Node& node, const Number& number, Intent intent);
    void followAll(const std::vector<Source>& targets, const Number& number, Intent intent);
    std::vector<Source> sourcesInOrder(const Node& node);
    int64_t onOrOff(const Node& node, bool isOn) const;
    void checkRange(const Node& node, Number& number);
    void requireSound(const Node& node, Aspect aspect) const;
    void forgetAnswers();

    // Copies of a value (pValueCopy) may lead in circles.
    static constexpr unsigned maximumWriteDepth = 100;
    // Nodes that one write comes to, each time that it does: copies of copies multiply.
    static constexpr unsigned maximumWriteSteps = 10000;

    const NodeTable& m_table;
    Registers m_registers;
    unsigned m_writeDepth = 0;
    unsigned m_writeSteps = 0;
    // Of this call.
    std::unordered_map<const Node*, Number> m_values;
    std::unordered_map<const Node*, Range> m_ranges;
    std::unordered_map<const Node*, KX_XML_AccessMode> m_access;
    std::unordered_set<const Node*> m_openCopies;       // whose ranges are being asked
    std::unordered_set<const Node*> m_openEnumerations; // whose entries are being asked
    // Written literals: they live in the host, as long as the camera is open.
    std::unordered_map<const Property*, Number> m_literals;
    std::unordered_map<const Property*, std::string> m_literalTexts;
};

bool isIntegerKind(NodeKind kind);
bool isFloatKind(NodeKind kind);
bool isReadable(KX_XML_AccessMode mode);
bool isWritable(KX_XML_AccessMode mode);

} // namespace kx
