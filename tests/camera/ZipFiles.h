// Archives as a test wants them, damaged ones too (PKWARE APPNOTE 6.3.x).
#pragma once

#include <cstdint>
#include <string>
#include <vector>
#include <zlib.h>

namespace tests
{

inline void append(std::string& bytes, uint32_t value, int count)
{
    for (int i = 0; i < count; ++i, value >>= 8)
        bytes += static_cast<char>(value);
}

struct ZipFile
{
    std::string name;
    std::string content;
    uint32_t claimed = 0; // instead of the content's size
    bool stored = false;
    uint32_t crcError = 0;
};

inline std::string deflated(const std::string& content)
{
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, content.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

inline std::string zip(const std::vector<ZipFile>& files)
{
    std::string archive;
    std::string directory;
    for (const ZipFile& file : files) {
        const std::string packed = file.stored ? file.content : deflated(file.content);
        const auto crc = static_cast<uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(file.content.data()),
                                                     static_cast<uInt>(file.content.size())));
        std::string common;
        append(common, 20, 2);
        append(common, 0, 2);
        append(common, file.stored ? 0 : 8, 2);
        append(common, 0, 4);
        append(common, crc + file.crcError, 4);
        append(common, static_cast<uint32_t>(packed.size()), 4);
        append(common, file.claimed ? file.claimed : static_cast<uint32_t>(file.content.size()), 4);
        append(common, static_cast<uint32_t>(file.name.size()), 2);
        append(common, 0, 2);
        directory += std::string("PK\x01\x02\x14\x00", 6) + common;
        append(directory, 0, 10); // comment, disk, attributes
        append(directory, static_cast<uint32_t>(archive.size()), 4);
        directory += file.name;
        archive += "PK\x03\x04" + common + file.name + packed;
    }
    const auto offset = static_cast<uint32_t>(archive.size());
    archive += directory + std::string("PK\x05\x06\0\0\0\0", 8);
    append(archive, static_cast<uint32_t>(files.size()), 2);
    append(archive, static_cast<uint32_t>(files.size()), 2);
    append(archive, static_cast<uint32_t>(directory.size()), 4);
    append(archive, offset, 4);
    append(archive, 0, 2);
    return archive;
}

} // namespace tests
