// Remembering, and the window of features that are read ahead.
#include "KXCameraControl/nodes/ReadAhead.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace kx
{

bool ReadAhead::isWanted()
{
    const char* setting = std::getenv("KX_CAMERA_READ_AHEAD");
    return !setting || std::strcmp(setting, "0") != 0;
}

ReadAhead::ReadAhead(const NodeTable& table, RegisterLine& line, bool isOn)
    : m_table(table), m_line(line), m_isOn(isOn), m_keepTime(line.keepTime()), m_memo(m_keepTime),
      m_batches(line)
{}

// ---- what was read ----

void ReadAhead::beginCall()
{
    m_memo.beginCall();
    m_isFeature = false;
    m_readings = 0;
}

// Asks the memory, then reads ahead, then asks the camera by `ask`.
template <class Ask>
KX_Status ReadAhead::readRemembered(const RegisterPlace& place, uint8_t* data, Ask ask)
{
    if (m_freshness != Freshness::Wire) {
        const ReadMemo::Bytes* known = remembered(place);
        if (!known) {
            readAhead();
            known = remembered(place);
        }
        if (known) {
            std::memcpy(data, known->data(), place.size);
            return KX_OK;
        }
    }
    const auto start = Clock::now();
    ReadMemo::Bytes bytes(place.size);
    const KX_Status status = ask(bytes.data());
    if (status != KX_OK)
        return status;
    m_batches.answered(place);
    std::memcpy(data, bytes.data(), place.size);
    const bool isKept = m_freshness == Freshness::Keep;
    m_memo.store(place,
                 {std::move(bytes), start, isKept ? ReadMemo::Life::Keep : ReadMemo::Life::Call, false});
    return KX_OK;
}

KX_Status ReadAhead::readBlock(uint64_t address, void* data, size_t size)
{
    return readRemembered(normalized({address, size, false}), static_cast<uint8_t*>(data),
                          [&](uint8_t* bytes) { return m_line.readBlock(address, bytes, size); });
}

// Remembered highest byte first, as batches bring it.
KX_Status ReadAhead::readRegister(uint64_t address, uint32_t& value)
{
    uint8_t known[4] = {};
    const KX_Status status =
        readRemembered(normalized({address, sizeof known, true}), known, [&](uint8_t* bytes) {
            uint32_t answer = 0;
            const KX_Status asked = m_line.readRegister(address, answer);
            for (size_t i = 0; i < sizeof answer; ++i)
                bytes[i] = static_cast<uint8_t>(answer >> (24 - 8 * i));
            return asked;
        });
    if (status == KX_OK)
        value = uint32_t{known[0]} << 24 | uint32_t{known[1]} << 16 | uint32_t{known[2]} << 8 |
                uint32_t{known[3]};
    return status;
}

KX_Status ReadAhead::readMemory(uint64_t address, void* data, size_t size)
{
    const RegisterPlace place{address, size, false};
    const auto reader = readerOf(place);
    const auto known = [&] {
        return reader ? m_memo.findFor(ReadMemo::Reader::Address, *reader + 1, place, Clock::now()) : nullptr;
    };
    const ReadMemo::Bytes* bytes = known();
    if (reader && !bytes) {
        readAhead();
        bytes = known();
    }
    if (bytes) {
        std::memcpy(data, bytes->data(), size);
        return KX_OK;
    }
    ReadMemo::Bytes answer(size);
    const KX_Status status = m_line.readBlock(address, answer.data(), size);
    if (status == KX_OK)
        std::memcpy(data, answer.data(), size);
    return status;
}

const ReadMemo::Bytes* ReadAhead::remembered(const RegisterPlace& place)
{
    if (m_freshness == Freshness::Keep)
        return m_memo.find(place, Clock::now());
    const size_t number = m_isFeature ? m_calls[0].feature + 1 : 0;
    return m_memo.findFor(ReadMemo::Reader::Node, number, place, Clock::now());
}

// One register, one place, whatever it is asked for by.
RegisterPlace ReadAhead::normalized(RegisterPlace place) const
{
    place.isByRegister = place.isByRegister && !m_line.registersAreMemory();
    return place;
}

KX_Status ReadAhead::writeBlock(uint64_t address, const void* data, size_t size)
{
    wrote(address, size);
    return m_line.writeBlock(address, data, size);
}

KX_Status ReadAhead::writeRegister(uint64_t address, uint32_t value)
{
    wrote(address, sizeof value);
    return m_line.writeRegister(address, value);
}

// Who knows what a write changes in a camera, even one that fails: nothing that was read before it serves any
// more. What was written is forgotten outright, so that what hangs on it is looked for anew.
void ReadAhead::wrote(uint64_t address, size_t size)
{
    m_memo.outdate();
    m_memo.forget(address, size);
    m_window = firstWindow;
    m_windowEnd = 0;
}

// ---- what comes next ----

void ReadAhead::beginFeature(const Node& node)
{
    if (!m_isOn)
        return;
    if (!m_planner)
        m_planner = std::make_unique<ReadPlanner>(m_table, m_memo, m_line.registersAreMemory());
    if (const auto feature = m_planner->positionOf(node))
        follow(*feature);
}

// The running call is about that feature.
void ReadAhead::follow(size_t feature)
{
    const auto now = Clock::now();
    const Call call{feature, isNext(feature, now), now};
    m_isInCompany = m_calls[0].feature != feature ? now - m_calls[0].at < m_keepTime : m_isInCompany;
    if (m_calls[0].feature != feature)
        std::copy_backward(m_calls.begin(), m_calls.end() - 1, m_calls.end());
    m_calls[0] = call;
    m_isFeature = true;
    if (!call.isInRow && now - m_calls[1].at >= m_keepTime)
        m_readsRaw = m_readsMissing = m_readsUndecided = m_readsForeign = false;
}

bool ReadAhead::isNext(size_t feature, Clock::time_point now) const
{
    return std::any_of(m_calls.begin(), m_calls.end(), [&](const Call& call) {
        const bool isStep = feature > call.feature && feature - call.feature <= longestStep;
        return (isStep || (feature == call.feature && call.isInRow)) && now - call.at < m_keepTime;
    });
}

// Whose register a caller asks for by its address: of the features that he comes to next, or of the first
// ones.
std::optional<size_t> ReadAhead::readerOf(const RegisterPlace& place)
{
    const auto now = Clock::now();
    if (!m_isOn || !m_planner || now - m_calls[0].at >= m_keepTime)
        return std::nullopt;
    m_planner->beginRound(now);
    std::set<size_t> seen;
    const auto isOf = [&](size_t feature) {
        const auto& places = m_planner->rawPlacesOf(feature);
        const auto found = std::find_if(places.begin(), places.end(), [&](const auto& raw) {
            return raw.place.address == place.address && raw.place.size == place.size &&
                   !raw.place.isByRegister;
        });
        m_readsForeign = m_readsForeign || (found != places.end() && found->isForeign);
        return found != places.end();
    };
    std::vector<size_t> starts;
    for (const Call& call : m_calls)
        starts.push_back(call.feature);
    starts.push_back(0);
    for (const size_t start : starts) {
        const size_t end = std::min(start + longestStep, m_planner->featureCount());
        for (size_t feature = start; feature < end; ++feature) {
            if (!seen.insert(feature).second || !isOf(feature))
                continue;
            follow(feature);
            m_planner->placesOf(feature);
            m_readsRaw = true;
            m_readsMissing = m_readsMissing || m_planner->isMissing(feature);
            m_readsUndecided = m_readsUndecided || m_planner->isUndecided(feature);
            return feature;
        }
    }
    return std::nullopt;
}

void ReadAhead::readAhead()
{
    const bool isAlong = !m_calls[0].isInRow && m_isInCompany && m_readings == 0;
    if (!m_isOn || !m_isFeature || m_readings == maximumReadings || (!m_calls[0].isInRow && !isAlong))
        return;
    ++m_readings;
    m_planner->beginRound(Clock::now());
    // What is read anew in each call is no reason to read on.
    if (wanted(m_calls[0].feature).empty())
        return;
    if (!isAlong)
        adjustWindow();
    readWindow(isAlong);
}

// One round: what lies behind addresses that this one brings is for the next call that needs the line, which
// then has more of it in one request. Who jumps may walk next, from there or from the first feature on.
void ReadAhead::readWindow(bool isAlong)
{
    m_planner->beginRound(Clock::now());
    const size_t count = m_planner->featureCount();
    const size_t features = std::min(isAlong ? count : count - m_calls[0].feature, mostFeatures);
    std::set<RegisterPlace> places;
    const size_t end = m_calls[0].feature + planWindow(places, features, isAlong ? 0 : m_window);
    m_windowEnd = isAlong ? m_windowEnd : end;
    readRound(places);
}

// Once the features of a window lie behind: it grows when most of what was read was asked for, and shrinks
// when little was.
void ReadAhead::adjustWindow()
{
    if (m_calls[0].feature < m_windowEnd)
        return;
    const uint64_t stored = m_memo.aheadStored() - m_storedBefore;
    const uint64_t used = m_memo.aheadUsed() - m_usedBefore;
    if (stored > 0 && used * 2 >= stored)
        m_window = std::min(m_window * 4, widestWindow);
    else if (used * 4 < stored)
        m_window = std::max(m_window / 4, firstWindow);
    m_storedBefore = m_memo.aheadStored();
    m_usedBefore = m_memo.aheadUsed();
}

// Of registers that may be read ahead those that are not fresh.
std::vector<RegisterPlace> ReadAhead::wanted(size_t feature)
{
    std::vector<RegisterPlace> places = m_planner->placesOf(feature);
    const auto now = Clock::now();
    if (isWantedRaw(feature))
        for (const auto& raw : m_planner->rawPlacesOf(feature))
            if ((!raw.isForeign || m_readsForeign) && !m_memo.isFresh(raw.place, now))
                places.push_back(raw.place);
    const auto isLeft = [this](const RegisterPlace& place) { return !m_batches.isBatchable(place); };
    places.erase(std::remove_if(places.begin(), places.end(), isLeft), places.end());
    return places;
}

// A caller who reads by address what he cannot have as a feature is followed there; nobody else is.
bool ReadAhead::isWantedRaw(size_t feature) const
{
    return m_readsRaw &&
           (m_planner->isSelected(feature) || (m_readsMissing && m_planner->isMissing(feature)) ||
            (m_readsUndecided && m_planner->isUndecided(feature)));
}

// Of so many features from the running call's on, the first behind the last one: those whose registers fit
// the requests, or those that the call's own need when they are more. Gives how many were looked at.
size_t ReadAhead::planWindow(std::set<RegisterPlace>& places, size_t features, size_t requests)
{
    size_t leftOut = 0;
    size_t count = 0;
    for (; count < features && leftOut < mostLeftOut; ++count) {
        std::vector<std::set<RegisterPlace>::iterator> added;
        for (const RegisterPlace& place : wanted((m_calls[0].feature + count) % m_planner->featureCount())) {
            const auto [known, isNew] = places.insert(place);
            if (isNew)
                added.push_back(known);
        }
        if (added.empty())
            continue;
        const size_t needed = m_batches.requests(places);
        if (count == 0)
            requests = std::max(requests, needed);
        leftOut = needed > requests ? leftOut + 1 : 0;
        for (size_t i = 0; i < added.size() && leftOut > 0; ++i)
            places.erase(added[i]);
    }
    return count - leftOut;
}

void ReadAhead::readRound(const std::set<RegisterPlace>& places)
{
    std::set<RegisterPlace> batch;
    std::copy_if(places.begin(), places.end(), std::inserter(batch, batch.end()),
                 [this](const RegisterPlace& place) { return m_batches.isBatchable(place); });
    const auto start = Clock::now();
    m_batches.read(batch, [&](const RegisterPlace& place, const uint8_t* bytes) {
        m_memo.store(place, {ReadMemo::Bytes(bytes, bytes + place.size), start, ReadMemo::Life::Keep, true});
    });
}

} // namespace kx
