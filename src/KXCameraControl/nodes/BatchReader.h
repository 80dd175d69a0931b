// Many registers in few requests.
#pragma once

#include "KXCameraControl/nodes/RegisterLine.h"

#include <functional>
#include <set>
#include <vector>

namespace kx
{

// Registers of up to four bytes go by batches where the line has them; others, and all where it has none, by
// blocks of memory that run over small gaps. What was learnt of the camera stays for as long as the line is
// open: which registers are read singly, and how many a batch may hold.
class BatchReader
{
public:
    // Of one block, in bytes. A line cuts what its requests cannot hold.
    static constexpr size_t longestBlock = 512;
    // Bytes between two registers that are read along: cheaper than a request, but nobody described them.
    static constexpr uint64_t widestGap = 16;

    explicit BatchReader(RegisterLine& line) : m_line(line) {}

    // Whether a register may stand in a batch or block.
    bool isBatchable(const RegisterPlace& place) const;
    // How many requests read() needs when nothing is refused.
    size_t requests(const std::set<RegisterPlace>& places) const;
    using Take = std::function<void(const RegisterPlace&, const uint8_t* bytes)>;
    // Gives what could be read; the rest is for its own reader to ask for. False: the line failed.
    bool read(const std::set<RegisterPlace>& places, const Take& take);
    // The register answered by itself: it was not the one that kept a batch from being answered.
    void answered(const RegisterPlace& place) { m_suspects.erase(place.address); }

private:
    using Places = std::vector<RegisterPlace>;
    using Place = Places::const_iterator;
    struct Plan
    {
        Places words;
        std::vector<Places> blocks;
    };
    enum class Result
    {
        Read,
        Refused,
        LineFailed
    };

    size_t wordsPerRequest() const;
    bool isWord(const RegisterPlace& place) const;
    Plan plan(const std::set<RegisterPlace>& places) const;
    Result readHalves(Place begin, Place end, const Take& take);
    Result readWords(Place begin, Place end, const Take& take);
    Result readBlock(const Places& block, const Take& take);
    Result failed(Place begin, Place end, KX_Status status);

    RegisterLine& m_line;
    // Refusals that one read() goes after; a camera that refuses everything is left to be asked singly.
    static constexpr unsigned patience = 32;

    size_t m_wordLimit = ~size_t{0};
    unsigned m_refusals = 0;       // in this read()
    std::set<uint64_t> m_single;   // refused or never answered, by address
    std::set<uint64_t> m_suspects; // stood in a batch that was not answered
};

} // namespace kx
