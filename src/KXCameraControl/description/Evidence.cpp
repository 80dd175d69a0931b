// The parts of archives and texts that stand for the whole.
#include "KXCameraControl/description/Evidence.h"

#include "KXCameraControl/description/Unzip.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace kx
{

namespace
{

constexpr size_t mostBlocksOfAPart = 8;
constexpr size_t randomBlocks = 3;

using Part = std::optional<std::pair<size_t, size_t>>; // from, up to

// Behind byte order mark, blanks, comments and processing instructions; a document type is no usual thing.
size_t startOfContent(std::string_view text)
{
    size_t at = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    while (at < text.size()) {
        at = std::min(text.find_first_not_of(" \t\r\n", at), text.size());
        const bool isComment = text.compare(at, 4, "<!--") == 0;
        if (!isComment && text.compare(at, 2, "<?") != 0)
            return at;
        const std::string_view end = isComment ? "-->" : "?>";
        const size_t found = text.find(end, at + 2);
        at = found == std::string_view::npos ? text.size() : found + end.size();
    }
    return at;
}

// The document element's tag, where it has a GUID of its version.
Part versionTag(std::string_view text)
{
    constexpr std::string_view element = "<RegisterDescription";
    const size_t start = startOfContent(text);
    if (text.compare(start, element.size(), element) != 0)
        return std::nullopt;
    const size_t end = text.find('>', start);
    const size_t guid = text.find("VersionGuid", start);
    if (end == std::string_view::npos || guid > end)
        return std::nullopt;
    return std::pair(start, end + 1);
}

Part standingForAll(const std::string& memory)
{
    size_t begin = 0;
    size_t end = 0;
    if (archiveDirectory(memory, begin, end))
        return std::pair(begin, end);
    return versionTag(memory);
}

} // namespace

std::optional<std::vector<size_t>> evidenceOf(const std::string& memory, unsigned (*random)())
{
    const Part part = standingForAll(memory);
    if (!part)
        return std::nullopt;
    const size_t last = (memory.size() - 1) / evidenceBlock;
    const size_t from = part->first / evidenceBlock;
    const size_t to = (part->second - 1) / evidenceBlock;
    if (to - from >= mostBlocksOfAPart)
        return std::nullopt;
    std::set<size_t> blocks{0, last};
    for (size_t block = from; block <= to; ++block)
        blocks.insert(block);
    const size_t wanted = std::min(blocks.size() + randomBlocks, last + 1);
    while (blocks.size() < wanted)
        blocks.insert(random() % (last + 1));
    return std::vector<size_t>(blocks.begin(), blocks.end());
}

} // namespace kx
