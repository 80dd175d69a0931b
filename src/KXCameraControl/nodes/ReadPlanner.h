// Which registers a feature's getter will ask for, as far as the description and what was read so far tell.
#pragma once

#include "KXCameraControl/nodes/NodeValues.h"
#include "KXCameraControl/nodes/ReadMemo.h"

#include <map>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace kx
{

// A line that answers with what was last read of each register, however long ago, and refuses the rest: good
// enough to tell what to read, never to tell anybody a value. What is written to it stays in it.
class RememberedLine : public RegisterLine
{
public:
    RememberedLine(const ReadMemo& memo, bool registersAreMemory)
        : m_memo(memo), m_registersAreMemory(registersAreMemory)
    {}

    KX_Status readBlock(uint64_t address, void* data, size_t size) override;
    KX_Status writeBlock(uint64_t address, const void* data, size_t size) override;
    KX_Status readRegister(uint64_t address, uint32_t& value) override;
    KX_Status writeRegister(uint64_t address, uint32_t value) override;
    std::string lineError() const override { return "not read yet"; }
    bool registersAreMemory() const override { return m_registersAreMemory; }

    void forgetWritten() { m_written.clear(); }
    // What was asked for and is not known, since the last call.
    std::vector<RegisterPlace> takeMissed() { return std::exchange(m_missed, {}); }

private:
    KX_Status read(const RegisterPlace& place, uint8_t* data) const;

    const ReadMemo& m_memo;
    const bool m_registersAreMemory;
    std::map<RegisterPlace, ReadMemo::Bytes> m_written;
    mutable std::vector<RegisterPlace> m_missed;
};

// Plans what may be read though nobody has asked for it yet. Not planned is
// - what stands in a stream's chunks or in events (its port, EventID), or cannot be read (AccessMode);
// - what is not implemented or not available now, and what would only be asked over it;
// - what a description asks to look at time and again (PollingTime) and calls a count of something, unless
//   the availability or lock of others hangs on it: that is asked for with each of them anyway;
// - what may act when it is read: registers that a command stands behind, those of kind Register and those
//   that hand out a table, a file or a queue piece by piece, which only their names tell (isWindow()).
class ReadPlanner
{
public:
    ReadPlanner(const NodeTable& table, const ReadMemo& memo, bool registersAreMemory);

    // Features that have a value, in the order of their names.
    size_t featureCount() const { return m_features.size(); }
    // Of a feature, or of the first one whose value stands in the node.
    std::optional<size_t> positionOf(const Node& node) const;

    // What was read since the last round counts from here on.
    void beginRound(ReadMemo::Clock::time_point now);
    // What the feature's getter asks for and the memory does not hold fresh, but for what the round had
    // before.
    std::vector<RegisterPlace> placesOf(size_t position);
    // What a caller who reads a feature's value by its address asks for, fresh or not: the registers where it
    // stands, for each value of its selectors, and those that it is worked out from. He asks for no
    // conditions and does not mind ports.
    struct RawPlace
    {
        RegisterPlace place;
        bool isForeign; // stands on another port, which has other registers at that address
    };
    const std::vector<RawPlace>& rawPlacesOf(size_t position);
    bool isSelected(size_t position) const { return m_selectors.count(m_features[position]) > 0; }
    // Whether its getter would find that it is not implemented or not available, of what placesOf() saw.
    bool isMissing(size_t position) const { return isSeenAs(State::Missing, position); }
    // Whether that could not be told.
    bool isUndecided(size_t position) const { return isSeenAs(State::Undecided, position); }

private:
    // What a register is asked for.
    enum class Use
    {
        Aside, // whether others are there or locked, and how far they go: that is asked for all the time
        Value
    };
    bool mayBeReadAhead(const Node& node, Use use) const;
    void findActing(const NodeTable& table);
    static void markBehind(const Node& node, std::unordered_set<const Node*>& marked);

    // What is known of a node and all that it hangs on; of several the lowest holds.
    enum class State
    {
        Missing,   // something of it is not there, or cannot be used
        Undecided, // whether it is there has not been read, or long ago
        Unread,    // it is there, but has a register that was never read
        Known
    };
    bool isSeenAs(State state, size_t position) const;
    // Until when what was found holds if nothing changes but the time; the clock's first moment: not at all.
    using Until = ReadMemo::Clock::time_point;
    struct Seen
    {
        State state;
        Until until;
    };
    State expand(const Node& node, Use use, unsigned depth);
    State expandNew(const Node& node, Use use, unsigned depth);
    State expandConditions(const Node& node, unsigned depth);
    State ofEntries(const Node& enumeration);
    State expandAsked(const Node& node, Use use, unsigned depth);
    State expandSource(const Node& node, Use use, unsigned depth);
    bool isTrue(const Node& node, Tag condition);
    void expandBehindMissing(const Node& node, unsigned depth);
    State want(const Node& node, Use use);
    std::optional<RegisterPlace> readablePlace(const Node& node);
    std::optional<RegisterPlace> placeOf(const Node& node);
    void findSelectors(const NodeTable& table);
    void addRawPlaces(const Node& feature, std::vector<RawPlace>& places);
    std::vector<int64_t> valuesOf(const Node& selector);
    void addSelected(const Node& feature, std::vector<RawPlace>& places);

    // Ways that are longer than evaluation goes; only copies of values have them.
    static constexpr unsigned maximumDepth = 500;
    // Of one feature, for the values of its selectors.
    static constexpr size_t maximumSelected = 256;

    const ReadMemo& m_memo;
    RememberedLine m_line;
    NodeValues m_values;
    std::vector<const Node*> m_features;
    std::unordered_map<const Node*, size_t> m_positions;
    std::unordered_set<const Node*> m_acting;
    std::unordered_set<const Node*> m_counters;
    std::unordered_map<const Node*, std::vector<const Node*>> m_selectors; // of a feature
    // Serves until a register changes that it was worked out from, or one is known that was missed.
    struct RawPlaces
    {
        std::vector<RawPlace> places;
        std::vector<RegisterPlace> missed;
        uint64_t changes = 0; // the memory's
    };
    bool isCurrent(const RawPlaces& known) const;
    std::unordered_map<size_t, RawPlaces> m_rawPlaces;

    // A feature of which nothing more is to be read, as long as nothing changes.
    struct Settled
    {
        Seen seen;
        uint64_t changes; // the memory's
    };
    std::unordered_map<size_t, Settled> m_settled;

    // Of this round
    std::unordered_map<const Node*, Seen> m_states[2]; // by use
    Until m_until = Until::max();                      // of all that is being looked at
    std::unordered_set<const Node*> m_behindMissing;
    std::vector<RegisterPlace> m_places;
    ReadMemo::Clock::time_point m_now;
};

} // namespace kx
