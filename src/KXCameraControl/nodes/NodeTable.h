// What a GenICam description says, as a table of nodes: who they are and what they refer to.
#pragma once

#include "formula/NumberMachine.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace kx
{

using formula::FormulaError;
using formula::Number;

enum class NodeKind
{
    Category,
    Port,
    Integer,
    IntReg,
    MaskedIntReg,
    StructReg, // carries what its entries share; has no name of its own
    StructEntry,
    IntSwissKnife,
    IntConverter,
    Float,
    FloatReg,
    SwissKnife,
    Converter,
    Boolean,
    Enumeration,
    EnumEntry,
    Command,
    String,
    StringReg,
    Register
};

// The elements that the node map works with; others are skipped.
enum class Tag
{
    Address,
    pAddress,
    pIndex,
    Length,
    pLength,
    pPort,
    AccessMode,
    ImposedAccessMode,
    Cachable,
    PollingTime,
    Endianess,
    Sign,
    LSB,
    MSB,
    Bit,
    Value,
    pValue,
    pValueCopy,
    ValueIndexed,
    pValueIndexed,
    ValueDefault,
    pValueDefault,
    Min,
    pMin,
    Max,
    pMax,
    Inc,
    pInc,
    OnValue,
    OffValue,
    CommandValue,
    pCommandValue,
    pIsImplemented,
    pIsAvailable,
    pIsLocked,
    pVariable,
    Constant,
    Expression,
    Formula,
    FormulaTo,
    FormulaFrom,
    Slope,
    ChunkID,
    pChunkID,
    EventID,
    Streamable,
    pInvalidator, // what changes it without writing it; asks nothing of the other node
    pSelected,    // by name: it asks nothing of the other node
    pFeature,     // likewise
    Entry         // an EnumEntry of an Enumeration
};

struct Node;

struct Property
{
    Tag tag;
    std::string text;       // of a p... element: the name of the other node
    std::string attribute;  // Name, Index or Offset, whichever the element has
    Node* target = nullptr; // of a p... element; null: there is no such node
    std::string offsetName; // of pIndex: the node that gives the offset
    Node* offsetTarget = nullptr;
};

// Why a node cannot be used; bits.
enum Fault : unsigned
{
    FaultNone = 0,
    FaultCircle = 1,
    FaultDangling = 2,
    FaultTooDeep = 4
};

// What may be asked of a node. Each question leads to other ones, and only these ways matter for circles:
// Width's maximum may well depend on OffsetX while OffsetX's maximum depends on Width.
enum Aspect : unsigned
{
    AspectValue,
    AspectBounds,
    AspectAccess,
    aspectCount
};

struct CompiledFormula
{
    std::unique_ptr<formula::NumberMachine> formula; // null: see `problem`
    std::string problem;
};

struct Node
{
    NodeKind kind;
    std::string name;
    std::vector<Property> properties;
    unsigned faults[aspectCount] = {};
    CompiledFormula from; // Formula or FormulaFrom
    CompiledFormula to;   // FormulaTo

    // The first one, or null.
    const Property* find(Tag tag) const;
    const Node* link(Tag tag) const;
    unsigned anyFault() const { return faults[AspectValue] | faults[AspectBounds] | faults[AspectAccess]; }
};

// Changes while it is loaded and never after: many maps on many threads may share one.
class NodeTable
{
public:
    // False, with a reason, when the text is no GenICam description. Formulas are compiled and circles and
    // dangling references found here; they fail no load, but their nodes.
    bool load(const std::string& xml, std::string& problem);

    // Of all nodes together, what the entries of a StructReg take over counted for each of them: some 150 MB.
    static constexpr size_t maximumProperties = 1'000'000;
    // Characters of all formulas, a named part's each time that it is met. Later formulas fail their nodes.
    static constexpr size_t maximumFormulas = 16u << 20;

    const Node* find(const std::string& name) const;
    const std::deque<Node>& nodes() const { return m_nodes; }
    // Of the description's schema.
    bool isOlderThan(unsigned major, unsigned minor) const;

private:
    friend class DescriptionReader;

    void resolveLinks();
    void compileFormulas();
    void findFaults();

    std::deque<Node> m_nodes;
    std::unordered_map<std::string, Node*> m_byName;
    unsigned m_schemaMajor = 1;
    unsigned m_schemaMinor = 1;
};

// References to where a value may stand: pValue and its indexed forms.
bool isValueReference(Tag tag);

// Numbers as descriptions write them: decimal, or hexadecimal with 0x.
bool parseInteger(const std::string& text, int64_t& value);
bool parseReal(const std::string& text, double& value);

} // namespace kx
