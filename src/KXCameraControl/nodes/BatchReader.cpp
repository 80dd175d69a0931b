// Batches and blocks, and finding who spoils one.
#include "KXCameraControl/nodes/BatchReader.h"

#include <algorithm>
#include <cstring>

namespace kx
{

namespace
{

constexpr size_t wordSize = 4;

uint64_t endOf(const RegisterPlace& place)
{
    return place.address + place.size;
}

// What one block has to hold. Places come in the order of their addresses.
struct Span
{
    uint64_t first = 0;
    uint64_t end = 0;

    Span() = default;
    explicit Span(const RegisterPlace& place) : first(place.address), end(endOf(place)) {}

    bool take(const RegisterPlace& place)
    {
        const uint64_t wider = std::max(end, endOf(place));
        const bool fits =
            place.address <= end + BatchReader::widestGap && wider - first <= BatchReader::longestBlock;
        end = fits ? wider : end;
        return fits;
    }
};

} // namespace

// Lines name whole words, in 32 bits where they have batches.
bool BatchReader::isBatchable(const RegisterPlace& place) const
{
    const bool isAddressable =
        place.address % wordSize == 0 && place.address <= UINT32_MAX - (std::max(place.size, wordSize) - 1);
    const bool isReadable = !place.isByRegister || wordsPerRequest() > 1 || m_line.registersAreMemory();
    return isAddressable && isReadable && place.size <= longestBlock && m_single.count(place.address) == 0 &&
           m_suspects.count(place.address) == 0;
}

size_t BatchReader::wordsPerRequest() const
{
    return std::min(m_wordLimit, m_line.registersPerRequest());
}

bool BatchReader::isWord(const RegisterPlace& place) const
{
    return wordsPerRequest() > 1 && place.size <= wordSize &&
           (place.isByRegister || m_line.registersAreMemory());
}

BatchReader::Plan BatchReader::plan(const std::set<RegisterPlace>& places) const
{
    Plan plan;
    Span block;
    for (const RegisterPlace& place : places) {
        if (isWord(place)) {
            plan.words.push_back(place);
            continue;
        }
        if (plan.blocks.empty() || !block.take(place)) {
            plan.blocks.emplace_back();
            block = Span(place);
        }
        plan.blocks.back().push_back(place);
    }
    return plan;
}

size_t BatchReader::requests(const std::set<RegisterPlace>& places) const
{
    size_t words = 0, blocks = 0;
    Span block;
    for (const RegisterPlace& place : places) {
        if (isWord(place))
            ++words;
        else if (blocks == 0 || !block.take(place)) {
            block = Span(place);
            ++blocks;
        }
    }
    const size_t limit = wordsPerRequest();
    return (words + limit - 1) / limit + blocks;
}

bool BatchReader::read(const std::set<RegisterPlace>& places, const Take& take)
{
    m_refusals = 0;
    const Plan parts = plan(places);
    for (auto begin = parts.words.begin(); begin != parts.words.end() && wordsPerRequest() > 1;) {
        const auto count = std::min<size_t>(wordsPerRequest(), size_t(parts.words.end() - begin));
        const auto end = begin + static_cast<ptrdiff_t>(count);
        if (readWords(begin, end, take) == Result::LineFailed)
            return false;
        begin = end;
    }
    return std::all_of(parts.blocks.begin(), parts.blocks.end(),
                       [&](const Places& block) { return readBlock(block, take) != Result::LineFailed; });
}

// ---- batches ----

BatchReader::Result BatchReader::readWords(Place begin, Place end, const Take& take)
{
    const auto count = static_cast<size_t>(end - begin);
    if (wordsPerRequest() <= 1) // learnt on the way: no more batches
        return Result::Refused;
    if (count > wordsPerRequest()) // a limit that was learnt on the way
        return readHalves(begin, end, take);
    std::vector<uint32_t> addresses;
    for (Place place = begin; place != end; ++place)
        addresses.push_back(static_cast<uint32_t>(place->address));
    std::vector<uint32_t> values;
    const KX_Status status = m_line.readRegisters(addresses, values);
    if (status == KX_OK && values.size() == count) {
        for (size_t i = 0; i < count; ++i) {
            const uint8_t bytes[wordSize] = {
                static_cast<uint8_t>(values[i] >> 24), static_cast<uint8_t>(values[i] >> 16),
                static_cast<uint8_t>(values[i] >> 8), static_cast<uint8_t>(values[i])};
            take(begin[static_cast<ptrdiff_t>(i)], bytes);
        }
        return Result::Read;
    }
    const Result result = failed(begin, end, status == KX_OK ? KX_E_MALFORMED_ANSWER : status);
    return result == Result::Refused && count > 1 ? readHalves(begin, end, take) : result;
}

// A batch that is refused though all its parts are good tells how many registers the camera takes.
BatchReader::Result BatchReader::readHalves(Place begin, Place end, const Take& take)
{
    const auto half = (end - begin) / 2;
    const size_t limit = wordsPerRequest();
    const Result left = readWords(begin, begin + half, take);
    if (left == Result::LineFailed)
        return left;
    const Result right = readWords(begin + half, end, take);
    if (right == Result::LineFailed)
        return right;
    const bool isAllRead = left == Result::Read && right == Result::Read;
    if (isAllRead && static_cast<size_t>(end - begin) <= limit)
        m_wordLimit = std::min(m_wordLimit, static_cast<size_t>(end - begin - half));
    return isAllRead ? Result::Read : Result::Refused;
}

// A camera that answers batches with something else is not asked for any; one that does not answer at all may
// have choked on any of the registers, and finding out which would cost a time-out each.
BatchReader::Result BatchReader::failed(Place begin, Place end, KX_Status status)
{
    if (status == KX_E_GC_ACCESS || status == KX_E_DEVICE) {
        const bool isOver = ++m_refusals > patience;
        for (Place place = begin; place != end && (isOver || end - begin == 1); ++place)
            m_single.insert(place->address);
        return isOver ? Result::LineFailed : Result::Refused;
    }
    if (status == KX_E_MALFORMED_ANSWER)
        m_wordLimit = 1;
    for (Place place = begin; place != end; ++place)
        m_suspects.insert(place->address);
    return Result::LineFailed;
}

// ---- blocks ----

BatchReader::Result BatchReader::readBlock(const Places& block, const Take& take)
{
    Span span(block.front());
    for (const RegisterPlace& place : block)
        span.take(place);
    const uint64_t start = span.first;
    std::vector<uint8_t> bytes(static_cast<size_t>(span.end - start));
    const KX_Status status = m_line.readBlock(start, bytes.data(), bytes.size());
    if (status == KX_OK) {
        for (const RegisterPlace& place : block)
            take(place, &bytes[static_cast<size_t>(place.address - start)]);
        return Result::Read;
    }
    const Result result = failed(block.begin(), block.end(), status);
    if (result == Result::LineFailed || block.size() == 1)
        return result;
    const auto middle = block.begin() + static_cast<ptrdiff_t>(block.size() / 2);
    const Result left = readBlock(Places(block.begin(), middle), take);
    return left == Result::LineFailed ? left : readBlock(Places(middle, block.end()), take);
}

} // namespace kx
