// Reading the one file that matters out of an archive.
#include "KXCameraControl/description/Unzip.h"

#include <algorithm>
#include <cstring>
#include <zlib.h>

namespace kx
{

namespace
{

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string toLower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), lower);
    return text;
}

bool endsWith(const std::string& text, const std::string& ending)
{
    return text.size() >= ending.size() &&
           text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

uint32_t little(const unsigned char* bytes, int count)
{
    uint32_t value = 0;
    for (int i = count - 1; i >= 0; --i)
        value = value << 8 | bytes[i];
    return value;
}

// One file of an archive, as the central directory tells it.
struct ZipEntry
{
    std::string name;
    uint32_t flags = 0;
    uint32_t method = 0;
    uint32_t crc = 0;
    uint32_t packed = 0;
    uint32_t unpacked = 0;
    uint32_t headerOffset = 0;
};

class ZipReader
{
public:
    explicit ZipReader(const std::string& archive)
        : m_data(reinterpret_cast<const unsigned char*>(archive.data())), m_size(archive.size())
    {}

    bool findXml(ZipEntry& chosen) const
    {
        size_t offset = 0;
        uint32_t count = 0;
        if (!findDirectory(offset, count))
            return false;
        bool found = false;
        for (uint32_t i = 0; i < count; ++i) {
            ZipEntry entry;
            if (!readDirectoryEntry(offset, entry))
                break;
            const bool isXml = endsWith(toLower(entry.name), ".xml");
            if (!found || isXml)
                chosen = entry;
            found = true;
            if (isXml)
                break;
        }
        return found;
    }

    bool unpack(const ZipEntry& entry, std::string& text, std::string& problem) const
    {
        if (entry.unpacked > maximumFetchedBytes) {
            problem = "the archive claims " + std::to_string(entry.unpacked) + " bytes";
            return false;
        }
        const unsigned char* packed = packedBytes(entry);
        if (!packed || (entry.flags & 1) != 0 || (entry.method != 0 && entry.method != 8)) {
            problem = "the archive is damaged or of an unknown kind";
            return false;
        }
        text.assign(entry.unpacked, '\0');
        const bool complete =
            entry.method == 0 ? copyStored(packed, entry, text) : inflateRaw(packed, entry, text);
        const auto crc =
            crc32(0, reinterpret_cast<const Bytef*>(text.data()), static_cast<uInt>(text.size()));
        if (!complete || crc != entry.crc) {
            problem = "the archive is damaged";
            text.clear();
            return false;
        }
        return true;
    }

private:
    static constexpr size_t directoryEndSize = 22;
    static constexpr size_t directoryEntrySize = 46;
    static constexpr size_t localHeaderSize = 30;

    bool isSignature(size_t offset, const char* kind) const
    {
        return offset + 4 <= m_size && m_data[offset] == 'P' && m_data[offset + 1] == 'K' &&
               std::memcmp(m_data + offset + 2, kind, 2) == 0;
    }

    // The end record may be followed by a comment of up to 65,535 bytes, and by padding of the camera's
    // memory.
    bool findDirectory(size_t& offset, uint32_t& count) const
    {
        if (m_size < directoryEndSize)
            return false;
        const size_t last = m_size - directoryEndSize;
        const size_t first = last > 0x20000 ? last - 0x20000 : 0;
        for (size_t at = last + 1; at-- > first;) {
            if (!isSignature(at, "\x05\x06"))
                continue;
            count = little(m_data + at + 10, 2);
            offset = little(m_data + at + 16, 4);
            return count > 0 && offset < m_size;
        }
        return false;
    }

    bool readDirectoryEntry(size_t& offset, ZipEntry& entry) const
    {
        if (offset > m_size || m_size - offset < directoryEntrySize || !isSignature(offset, "\x01\x02"))
            return false;
        const unsigned char* record = m_data + offset;
        const size_t nameSize = little(record + 28, 2);
        const size_t whole = directoryEntrySize + nameSize + little(record + 30, 2) + little(record + 32, 2);
        if (m_size - offset < whole)
            return false;
        entry.flags = little(record + 8, 2);
        entry.method = little(record + 10, 2);
        entry.crc = little(record + 16, 4);
        entry.packed = little(record + 20, 4);
        entry.unpacked = little(record + 24, 4);
        entry.headerOffset = little(record + 42, 4);
        entry.name.assign(reinterpret_cast<const char*>(record + directoryEntrySize), nameSize);
        offset += whole;
        return true;
    }

    const unsigned char* packedBytes(const ZipEntry& entry) const
    {
        const size_t header = entry.headerOffset;
        if (header > m_size || m_size - header < localHeaderSize || !isSignature(header, "\x03\x04"))
            return nullptr;
        const size_t start =
            header + localHeaderSize + little(m_data + header + 26, 2) + little(m_data + header + 28, 2);
        if (start > m_size || m_size - start < entry.packed)
            return nullptr;
        return m_data + start;
    }

    static bool copyStored(const unsigned char* packed, const ZipEntry& entry, std::string& text)
    {
        if (entry.packed != entry.unpacked)
            return false;
        text.assign(reinterpret_cast<const char*>(packed), entry.packed);
        return true;
    }

    // Fills exactly text.size() bytes; an archive that holds more than it claims is damaged.
    static bool inflateRaw(const unsigned char* packed, const ZipEntry& entry, std::string& text)
    {
        z_stream stream{};
        if (inflateInit2(&stream, -MAX_WBITS) != Z_OK)
            return false;
        stream.next_in = const_cast<Bytef*>(packed);
        stream.avail_in = entry.packed;
        stream.next_out = reinterpret_cast<Bytef*>(text.data());
        stream.avail_out = static_cast<uInt>(text.size());
        const int result = inflate(&stream, Z_FINISH);
        inflateEnd(&stream);
        return result == Z_STREAM_END && stream.total_out == text.size();
    }

    const unsigned char* m_data;
    size_t m_size;
};

} // namespace

bool unzip(const std::string& archive, std::string& text, std::string& problem)
{
    const ZipReader reader(archive);
    ZipEntry entry;
    if (!reader.findXml(entry)) {
        problem = "the archive has no directory";
        return false;
    }
    return reader.unpack(entry, text, problem);
}

} // namespace kx
