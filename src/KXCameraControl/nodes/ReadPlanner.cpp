// From a feature down to the registers that its getter asks for.
#include "KXCameraControl/nodes/ReadPlanner.h"

#include <algorithm>
#include <cstring>

namespace kx
{

namespace
{

bool isCondition(Tag tag)
{
    return tag == Tag::pIsImplemented || tag == Tag::pIsAvailable || tag == Tag::pIsLocked;
}

// What is asked of a node that is there, but for its value's source.
bool isAsked(Tag tag)
{
    switch (tag) {
    case Tag::pAddress:
    case Tag::pIndex:
    case Tag::pLength:
    case Tag::pVariable:
    case Tag::pMin:
    case Tag::pMax:
    case Tag::pInc:
    case Tag::pValueCopy:
        return true;
    default:
        return false;
    }
}

bool says(const Node& node, Tag tag, const char* text)
{
    const Property* property = node.find(tag);
    return property && property->text == text;
}

bool hasGetter(const Node& node)
{
    return isIntegerKind(node.kind) || isFloatKind(node.kind) || node.kind == NodeKind::Boolean ||
           node.kind == NodeKind::Enumeration || node.kind == NodeKind::String ||
           node.kind == NodeKind::StringReg;
}

// Each reading of such registers may hand out the next piece: of the standard's features (SFNC) these, and
// what calls itself a queue.
bool isWindow(const std::string& name)
{
    static const std::unordered_set<std::string> names = {"FileAccessBuffer", "LUTValue", "LUTValueAll"};
    const auto isQueue = [](const std::string& text) {
        return text.find("Fifo") != std::string::npos || text.find("FIFO") != std::string::npos ||
               text.find("fifo") != std::string::npos;
    };
    return names.count(name) > 0 || isQueue(name);
}

// May begin anew when it is read. Other values that change by themselves are handed out to nobody twice, and
// not when they are old (ReadMemo), so that nothing is lost by having asked for them.
bool isCounter(const std::string& name)
{
    return name.find("Count") != std::string::npos || name.find("count") != std::string::npos;
}

} // namespace

KX_Status RememberedLine::read(const RegisterPlace& place, uint8_t* data) const
{
    const auto written = m_written.find(place);
    const auto* known = written != m_written.end() ? &written->second : m_memo.lastKnown(place);
    if (!known) {
        m_missed.push_back(place);
        return KX_E_GC_ACCESS;
    }
    std::memcpy(data, known->data(), place.size);
    return KX_OK;
}

KX_Status RememberedLine::readBlock(uint64_t address, void* data, size_t size)
{
    return read({address, size, false}, static_cast<uint8_t*>(data));
}

KX_Status RememberedLine::writeBlock(uint64_t address, const void* data, size_t size)
{
    const auto* bytes = static_cast<const uint8_t*>(data);
    m_written[{address, size, false}] = ReadMemo::Bytes(bytes, bytes + size);
    return KX_OK;
}

KX_Status RememberedLine::readRegister(uint64_t address, uint32_t& value)
{
    uint8_t bytes[4] = {};
    const KX_Status status = read({address, sizeof bytes, !m_registersAreMemory}, bytes);
    value = 0;
    for (const uint8_t byte : bytes)
        value = value << 8 | byte;
    return status;
}

KX_Status RememberedLine::writeRegister(uint64_t address, uint32_t value)
{
    ReadMemo::Bytes bytes;
    for (unsigned shift = 32; shift > 0; shift -= 8)
        bytes.push_back(static_cast<uint8_t>(value >> (shift - 8)));
    m_written[{address, bytes.size(), !m_registersAreMemory}] = bytes;
    return KX_OK;
}

ReadPlanner::ReadPlanner(const NodeTable& table, const ReadMemo& memo, bool registersAreMemory)
    : m_memo(memo), m_line(memo, registersAreMemory), m_values(table, m_line)
{
    std::unordered_set<std::string> listed;
    for (const Node& node : table.nodes())
        for (const Property& property : node.properties)
            if (property.tag == Tag::pFeature)
                listed.insert(property.text);
    for (const std::string& name : listed) {
        const Node* node = table.find(name);
        if (node && hasGetter(*node))
            m_features.push_back(node);
    }
    std::sort(m_features.begin(), m_features.end(),
              [](const Node* a, const Node* b) { return a->name < b->name; });
    for (size_t i = 0; i < m_features.size(); ++i)
        m_positions[m_features[i]] = i;
    for (size_t i = 0; i < m_features.size(); ++i)
        for (const Node* node = m_features[i]->link(Tag::pValue); node; node = node->link(Tag::pValue))
            if (!m_positions.emplace(node, i).second)
                break; // another feature's, or a circle
    findActing(table);
    findSelectors(table);
}

void ReadPlanner::findSelectors(const NodeTable& table)
{
    for (const Node& node : table.nodes())
        for (const Property& property : node.properties)
            if (const Node* selected = property.tag == Tag::pSelected ? table.find(property.text) : nullptr)
                m_selectors[selected].push_back(&node);
}

void ReadPlanner::findActing(const NodeTable& table)
{
    for (const Node& node : table.nodes())
        if (node.kind == NodeKind::Command || isWindow(node.name))
            markBehind(node, m_acting);
        else if (isCounter(node.name))
            markBehind(node, m_counters);
}

// The node and those that its value comes from.
void ReadPlanner::markBehind(const Node& node, std::unordered_set<const Node*>& marked)
{
    std::vector<const Node*> open = {&node};
    while (!open.empty()) {
        const Node& current = *open.back();
        open.pop_back();
        if (!marked.insert(&current).second)
            continue;
        for (const Property& property : current.properties)
            if (property.target && isValueReference(property.tag))
                open.push_back(property.target);
    }
}

bool ReadPlanner::mayBeReadAhead(const Node& node, Use use) const
{
    const bool isPolledCounter = node.find(Tag::PollingTime) && m_counters.count(&node) > 0;
    return m_acting.count(&node) == 0 && (use == Use::Aside || !isPolledCounter);
}

std::optional<size_t> ReadPlanner::positionOf(const Node& node) const
{
    const auto it = m_positions.find(&node);
    return it == m_positions.end() ? std::nullopt : std::optional<size_t>(it->second);
}

void ReadPlanner::beginRound(ReadMemo::Clock::time_point now)
{
    for (auto& states : m_states)
        states.clear();
    m_behindMissing.clear();
    m_values.beginCall();
    m_line.takeMissed();
    m_now = now;
}

std::vector<RegisterPlace> ReadPlanner::placesOf(size_t position)
{
    m_places.clear();
    const Node* const feature = m_features[position];
    const auto settled = m_settled.find(position);
    if (settled != m_settled.end() && settled->second.changes == m_memo.changes() &&
        m_now < settled->second.seen.until) {
        m_states[static_cast<size_t>(Use::Value)].emplace(feature, settled->second.seen);
        return {};
    }
    m_until = Until::max();
    const State state = expand(*feature, Use::Value, 0);
    if (m_places.empty())
        m_settled[position] = {{state, m_until}, m_memo.changes()};
    return std::move(m_places);
}

// Asks for what is not known yet.
ReadPlanner::State ReadPlanner::expand(const Node& node, Use use, unsigned depth)
{
    auto& states = m_states[static_cast<size_t>(use)];
    const auto [place, isNew] =
        states.try_emplace(&node, Seen{State::Known, Until::min()}); // for ways that lead in circles
    if (!isNew) {
        m_until = std::min(m_until, place->second.until);
        return place->second.state;
    }
    const bool canBeUsed = node.anyFault() == FaultNone && depth < maximumDepth;
    const Until others = std::exchange(m_until, Until::max());
    const State state = canBeUsed ? expandNew(node, use, depth + 1) : State::Missing;
    states[&node] = {state, m_until};
    m_until = std::min(m_until, others);
    return state;
}

// Conditions come first: nothing but further conditions is asked of a node that is not available, and nothing
// at all of one that is not implemented.
ReadPlanner::State ReadPlanner::expandNew(const Node& node, Use use, unsigned depth)
{
    const State conditions = expandConditions(node, depth);
    if (conditions != State::Known)
        return conditions;
    if (!isTrue(node, Tag::pIsImplemented))
        return State::Missing;
    if (!isTrue(node, Tag::pIsAvailable)) {
        expandBehindMissing(node, depth);
        return State::Missing;
    }
    const State entries = ofEntries(node);
    const State asked = std::min(entries, expandAsked(node, use, depth));
    if (asked <= State::Undecided)
        return asked;
    const State state = std::min(asked, expandSource(node, use, depth));
    return state == State::Known && isRegisterKind(node.kind) ? want(node, use) : state;
}

ReadPlanner::State ReadPlanner::expandConditions(const Node& node, unsigned depth)
{
    State state = State::Known;
    for (const Property& property : node.properties) {
        if (property.tag == Tag::Entry)
            expandConditions(*property.target, depth);
        if (!isCondition(property.tag))
            continue;
        const State found = property.target ? expand(*property.target, Use::Aside, depth) : State::Missing;
        state = std::min(state, found == State::Unread ? State::Undecided : found);
    }
    return state;
}

// An enumeration is there when one of its entries is; the others may be missing without harm.
ReadPlanner::State ReadPlanner::ofEntries(const Node& enumeration)
{
    State best = State::Missing;
    bool hasEntries = false;
    for (const Property& property : enumeration.properties) {
        if (property.tag != Tag::Entry)
            continue;
        hasEntries = true;
        const State conditions = expandConditions(*property.target, 0);
        const bool isThere = conditions == State::Known && isTrue(*property.target, Tag::pIsImplemented) &&
                             isTrue(*property.target, Tag::pIsAvailable);
        if (isThere || conditions == State::Undecided)
            best = std::max(best, isThere ? State::Known : State::Undecided);
    }
    return hasEntries ? best : State::Known;
}

ReadPlanner::State ReadPlanner::expandAsked(const Node& node, Use use, unsigned depth)
{
    State state = State::Known;
    for (const Property& property : node.properties) {
        if (!isAsked(property.tag))
            continue;
        const bool isBound = property.tag == Tag::pMin || property.tag == Tag::pMax ||
                             property.tag == Tag::pInc || property.tag == Tag::pValueCopy;
        const Use asked = isBound ? Use::Aside : use;
        state = std::min(state, property.target ? expand(*property.target, asked, depth) : State::Missing);
        if (property.offsetTarget)
            state = std::min(state, expand(*property.offsetTarget, asked, depth));
    }
    return state;
}

// Which of several places the value stands at is told by an index that has been expanded before.
ReadPlanner::State ReadPlanner::expandSource(const Node& node, Use use, unsigned depth)
{
    const bool hasSource =
        std::any_of(node.properties.begin(), node.properties.end(),
                    [](const Property& property) { return isValueReference(property.tag); });
    if (!hasSource)
        return State::Known;
    if (const Node* index = node.link(Tag::pIndex)) {
        const State state = expand(*index, use, depth);
        if (state != State::Known)
            return state;
    }
    try {
        const Node* source = m_values.sourceNode(node);
        return source ? expand(*source, use, depth) : State::Known;
    } catch (const NodeFailure&) {
    } catch (const FormulaError&) {
    }
    m_until = Until::min(); // for want of a register, maybe
    return State::Missing;
}

// Of a condition that is known; without one it holds.
bool ReadPlanner::isTrue(const Node& node, Tag condition)
{
    const Node* target = node.link(condition);
    if (!target)
        return true;
    try {
        return m_values.value(*target).isTrue();
    } catch (const NodeFailure&) {
    } catch (const FormulaError&) {
    }
    m_until = Until::min();
    return false;
}

// The access mode tells "not implemented" from "not available" by all that the node refers to.
void ReadPlanner::expandBehindMissing(const Node& node, unsigned depth)
{
    if (depth >= maximumDepth)
        return;
    for (const Property& property : node.properties) {
        const bool isWay = isAsked(property.tag) || property.tag == Tag::pValue || isCondition(property.tag);
        if (!isWay || !property.target || property.target->anyFault() != FaultNone ||
            !m_behindMissing.insert(property.target).second)
            continue;
        expandConditions(*property.target, depth + 1);
        expandBehindMissing(*property.target, depth + 1);
    }
}

bool ReadPlanner::isSeenAs(State state, size_t position) const
{
    const auto& states = m_states[static_cast<size_t>(Use::Value)];
    const auto seen = states.find(m_features[position]);
    return seen != states.end() && seen->second.state == state;
}

// What was read before a write, or long ago, is good enough to tell where registers lie, and not to tell
// whether they are there.
ReadPlanner::State ReadPlanner::want(const Node& node, Use use)
{
    const auto place = readablePlace(node);
    if (!place)
        return State::Missing;
    const bool isWanted = mayBeReadAhead(node, use);
    if (isWanted && !m_memo.isFresh(*place, m_now))
        m_places.push_back(*place);
    if (isWanted || use == Use::Aside || !m_memo.lastKnown(*place))
        m_until = std::min(m_until, m_memo.freshUntil(*place, m_now));
    const bool isKnown =
        use == Use::Aside ? m_memo.isRecent(*place, m_now) : m_memo.lastKnown(*place) != nullptr;
    return isKnown ? State::Known : State::Unread;
}

// Nothing where there is none, or where its address is not known yet.
std::optional<RegisterPlace> ReadPlanner::readablePlace(const Node& node)
{
    return Registers::isInMemory(node) ? placeOf(node) : std::nullopt;
}

std::optional<RegisterPlace> ReadPlanner::placeOf(const Node& node)
{
    const bool isReadable = !says(node, Tag::AccessMode, "WO") && !says(node, Tag::ImposedAccessMode, "WO");
    if (!isReadable || node.kind == NodeKind::Register || node.anyFault() != FaultNone)
        return std::nullopt;
    try {
        auto place = m_values.place(node);
        if (place && m_line.registersAreMemory())
            place->isByRegister = false;
        return place;
    } catch (const NodeFailure&) {
    } catch (const FormulaError&) {
    }
    m_until = Until::min();
    return std::nullopt;
}

// ---- by address ----

const std::vector<ReadPlanner::RawPlace>& ReadPlanner::rawPlacesOf(size_t position)
{
    RawPlaces& known = m_rawPlaces[position];
    if (isCurrent(known))
        return known.places;
    known.places.clear();
    m_line.takeMissed();
    m_values.beginCall();
    addRawPlaces(*m_features[position], known.places);
    if (isSelected(position))
        addSelected(*m_features[position], known.places);
    known.missed = m_line.takeMissed();
    known.changes = m_memo.changes();
    return known.places;
}

bool ReadPlanner::isCurrent(const RawPlaces& known) const
{
    return known.changes == m_memo.changes() &&
           std::none_of(known.missed.begin(), known.missed.end(),
                        [this](const RegisterPlace& place) { return m_memo.lastKnown(place); });
}

void ReadPlanner::addRawPlaces(const Node& feature, std::vector<RawPlace>& places)
{
    std::vector<const Node*> found = {&feature};
    for (size_t i = 0; i < found.size() && i < maximumDepth; ++i) {
        const Node* const node = found[i]; // the list grows below
        for (const Property& property : node->properties) {
            const bool isWay = isValueReference(property.tag) || property.tag == Tag::pAddress ||
                               property.tag == Tag::pVariable || property.tag == Tag::pLength;
            if (isWay && property.target &&
                std::find(found.begin(), found.end(), property.target) == found.end())
                found.push_back(property.target);
        }
        const bool isRegister = isRegisterKind(node->kind) && mayBeReadAhead(*node, Use::Value);
        auto place = isRegister ? placeOf(*node) : std::nullopt;
        if (!place)
            continue;
        place->address = static_cast<uint32_t>(place->address); // these callers ask with 32 bits
        const bool isForeign = !Registers::isInMemory(*node);
        places.push_back({*place, isForeign});
        // Lines name whole words: who gets nothing at the half of one asks for those around it.
        if (place->address % 4 == 2)
            for (const uint64_t address : {place->address - 2, place->address + 2})
                places.push_back({{address, 4, false}, isForeign});
    }
}

// As the registers lie while the selectors stand at each of their values.
void ReadPlanner::addSelected(const Node& feature, std::vector<RawPlace>& places)
{
    const std::vector<const Node*>& selectors = m_selectors.at(&feature);
    std::vector<std::vector<int64_t>> values;
    std::vector<int64_t> before;
    size_t combinations = 1;
    try {
        for (const Node* selector : selectors) {
            before.push_back(m_values.value(*selector).asInteger());
            values.push_back(valuesOf(*selector));
            combinations *= values.back().size();
            if (combinations > maximumSelected)
                return;
        }
        for (size_t i = 0; i < combinations; ++i) {
            for (size_t k = 0, rest = i; k < selectors.size(); rest /= values[k].size(), ++k)
                m_values.write(*selectors[k], Number::ofInteger(values[k][rest % values[k].size()]));
            addRawPlaces(feature, places);
        }
        for (size_t k = 0; k < selectors.size(); ++k)
            m_values.write(*selectors[k],
                           Number::ofInteger(before[k])); // numbers that stand in the description
    } catch (const NodeFailure&) {
    } catch (const FormulaError&) {
    }
    m_line.forgetWritten();
    m_values.beginCall();
}

std::vector<int64_t> ReadPlanner::valuesOf(const Node& selector)
{
    std::vector<int64_t> values;
    if (selector.kind == NodeKind::Enumeration) {
        for (const Node* entry : m_values.usableEntries(selector))
            values.push_back(m_values.entryValue(*entry));
    } else if (isIntegerKind(selector.kind)) {
        const Range range = m_values.range(selector);
        const bool isEmpty = range.maximum.asInteger() < range.minimum.asInteger();
        for (uint64_t i = 0; !isEmpty && i <= range.steps() && values.size() <= maximumSelected; ++i)
            values.push_back(range.valueAt(i));
    }
    return values;
}

} // namespace kx
