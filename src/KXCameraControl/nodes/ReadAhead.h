// Between the nodes and the line: what was read a moment ago, and what will be asked for next.
#pragma once

#include "KXCameraControl/nodes/BatchReader.h"
#include "KXCameraControl/nodes/ReadMemo.h"
#include "KXCameraControl/nodes/ReadPlanner.h"

#include <array>
#include <memory>

namespace kx
{

// Callers ask feature by feature, in the order of names. When a call asks for the feature behind the last
// call's and needs the line, the features that follow are read along in batches: at first as many as fit the
// requests that the call needs anyway, then, as long as they are asked for, four times as many at a time. A
// call that follows others in no order takes along what fits its own requests. A call by itself asks for its
// own registers alone.
//
// Nothing that is read ahead is older than the line's keepTime() when it is used, and no write lies in
// between. An answer is never invented: what could not be read is left for its own reader, who meets what the
// camera has to say.
class ReadAhead : public RegisterLine
{
public:
    // `table` and `line` must outlive it. Off: it remembers what was asked for and reads nothing else.
    ReadAhead(const NodeTable& table, RegisterLine& line, bool isOn);

    // What the environment says (KX_CAMERA_READ_AHEAD=0: off).
    static bool isWanted();

    void beginCall();
    // The running call is about to ask for the node's value or for what may be done with it.
    void beginFeature(const Node& node);

    // As a caller asks for it by its address: what is there now, or what was read ahead of him in a row of
    // calls.
    KX_Status readMemory(uint64_t address, void* data, size_t size);
    KX_Status readBlock(uint64_t address, void* data, size_t size) override;
    KX_Status writeBlock(uint64_t address, const void* data, size_t size) override;
    KX_Status readRegister(uint64_t address, uint32_t& value) override;
    KX_Status writeRegister(uint64_t address, uint32_t value) override;
    void setFreshness(Freshness freshness) override { m_freshness = freshness; }
    std::string lineError() const override { return m_line.lineError(); }
    std::chrono::milliseconds keepTime() const override { return m_keepTime; }

private:
    using Clock = ReadMemo::Clock;

    template <class Ask>
    KX_Status readRemembered(const RegisterPlace& place, uint8_t* data, Ask ask);
    void wrote(uint64_t address, size_t size);

    RegisterPlace normalized(RegisterPlace place) const;
    void follow(size_t feature);
    bool isNext(size_t feature, Clock::time_point now) const;
    std::optional<size_t> readerOf(const RegisterPlace& place);
    const ReadMemo::Bytes* remembered(const RegisterPlace& place);
    void readAhead();
    void adjustWindow();
    void readWindow(bool isAlong);
    std::vector<RegisterPlace> wanted(size_t feature);
    bool isWantedRaw(size_t feature) const;
    size_t planWindow(std::set<RegisterPlace>& places, size_t features, size_t requests);
    void readRound(const std::set<RegisterPlace>& places);

    // Requests of one reading.
    static constexpr size_t firstWindow = 1;
    static constexpr size_t widestWindow = 16;
    static constexpr size_t mostFeatures = 1024; // of a window, however few registers they have
    static constexpr size_t mostLeftOut = 64;    // features in a row that would take a request more
    // Of one call: what it reads singly may lead to other registers.
    static constexpr unsigned maximumReadings = 4;
    // Features that a caller may pass over, for being of other kinds or left out, and still be in a row.
    static constexpr size_t longestStep = 32;

    const NodeTable& m_table;
    RegisterLine& m_line;
    const bool m_isOn;
    const std::chrono::milliseconds m_keepTime;
    ReadMemo m_memo;
    BatchReader m_batches;
    std::unique_ptr<ReadPlanner> m_planner; // made when the first feature is asked for
    Freshness m_freshness = Freshness::Keep;

    // The run of calls
    struct Call
    {
        size_t feature = 0;
        bool isInRow = false; // it follows one of the calls before it
        Clock::time_point at;
    };
    std::array<Call, 4> m_calls; // the latest first
    bool m_isFeature = false;    // the running call is m_calls[0]
    bool m_isInCompany = false;  // it follows a call for another feature, in whatever order
    unsigned m_readings = 0;     // ahead, in this call
    // This run asks by address: for what is selected, for what it cannot have as a feature, and for what has
    // its place on another port.
    bool m_readsRaw = false;
    bool m_readsMissing = false;
    bool m_readsUndecided = false; // for the getter could not find out
    bool m_readsForeign = false;
    size_t m_window = firstWindow; // requests of a round
    size_t m_windowEnd = 0;        // the first feature behind the window
    uint64_t m_storedBefore = 0;
    uint64_t m_usedBefore = 0;
};

} // namespace kx
