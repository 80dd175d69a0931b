#include "camera_emulator/Zip.h"

#include <zlib.h>

#include <stdexcept>

namespace emu
{
namespace
{

using Bytes = std::vector<uint8_t>;

constexpr uint16_t kVersion = 20; // 2.0: deflate
constexpr uint16_t kDeflate = 8;
constexpr uint16_t kTime = 0;
constexpr uint16_t kDate = 1 << 5 | 1; // 1980-01-01

void append(Bytes& out, uint32_t value, int size)
{
    for (int i = 0; i < size; ++i)
        out.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

void append(Bytes& out, const std::string& text)
{
    out.insert(out.end(), text.begin(), text.end());
}

Bytes deflateRaw(const std::string& content)
{
    z_stream stream{};
    // Negative window bits: deflate data without a zlib header, as ZIP has it.
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::runtime_error("zlib could not be started");
    Bytes out(deflateBound(&stream, content.size()));
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    const int result = deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    if (result != Z_STREAM_END)
        throw std::runtime_error("zlib could not compress the description");
    return out;
}

// The fields that the local header and the central directory share.
void appendEntryFields(Bytes& out, uint32_t crc, size_t packed, size_t plain, size_t nameLength)
{
    append(out, kVersion, 2);
    append(out, 0, 2); // flags
    append(out, kDeflate, 2);
    append(out, kTime, 2);
    append(out, kDate, 2);
    append(out, crc, 4);
    append(out, static_cast<uint32_t>(packed), 4);
    append(out, static_cast<uint32_t>(plain), 4);
    append(out, static_cast<uint32_t>(nameLength), 2);
    append(out, 0, 2); // extra field
}

} // namespace

std::vector<uint8_t> zipOneFile(const std::string& fileName, const std::string& content)
{
    const Bytes data = deflateRaw(content);
    const auto crc = static_cast<uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(content.data()), static_cast<uInt>(content.size())));

    Bytes out;
    append(out, 0x04034B50, 4);
    appendEntryFields(out, crc, data.size(), content.size(), fileName.size());
    append(out, fileName);
    out.insert(out.end(), data.begin(), data.end());

    const size_t directory = out.size();
    append(out, 0x02014B50, 4);
    append(out, kVersion, 2);
    appendEntryFields(out, crc, data.size(), content.size(), fileName.size());
    append(out, 0, 2); // comment
    append(out, 0, 2); // disk
    append(out, 0, 2); // internal attributes
    append(out, 0, 4); // external attributes
    append(out, 0, 4); // offset of the local header
    append(out, fileName);

    const size_t directorySize = out.size() - directory;
    append(out, 0x06054B50, 4);
    append(out, 0, 2);
    append(out, 0, 2);
    append(out, 1, 2);
    append(out, 1, 2);
    append(out, static_cast<uint32_t>(directorySize), 4);
    append(out, static_cast<uint32_t>(directory), 4);
    append(out, 0, 2);
    return out;
}

} // namespace emu
