// Reading the one file that matters out of an archive.
#include "KXCameraControl/description/Unzip.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <strings.h>
#include <zip.h>

namespace kx
{

namespace
{

struct Close
{
    void operator()(zip_t* archive) const { zip_discard(archive); }
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using Archive = std::unique_ptr<zip_t, Close>;
using File = std::unique_ptr<zip_file_t, Close>;

// The archive's end is searched in its last 64 KiB, so blank memory of the camera behind it is cut off. The
// end record may close with 18 zeros of its own (APPNOTE 4.3.16).
size_t sizeWithoutPadding(const std::string& bytes)
{
    return std::min(bytes.find_last_not_of('\0') + 1 + 18, bytes.size());
}

// `bytes` must outlive what is returned; null when they are no archive.
Archive open(const std::string& bytes)
{
    zip_source_t* source = zip_source_buffer_create(bytes.data(), sizeWithoutPadding(bytes), 0, nullptr);
    Archive archive(source ? zip_open_from_source(source, ZIP_RDONLY, nullptr) : nullptr);
    if (!archive && source)
        zip_source_free(source);
    return archive;
}

bool isXml(const char* name)
{
    const std::string text = name ? name : "";
    return text.size() >= 4 && strcasecmp(text.c_str() + text.size() - 4, ".xml") == 0;
}

// The first .xml, or the first file.
zip_uint64_t chosenFile(zip_t* archive)
{
    const auto count = static_cast<zip_uint64_t>(zip_get_num_entries(archive, 0));
    for (zip_uint64_t i = 0; i < count; ++i)
        if (isXml(zip_get_name(archive, i, ZIP_FL_ENC_RAW)))
            return i;
    return 0;
}

// Exactly text.size() bytes; an archive that holds more than it claims is damaged. The read behind the last
// byte is where libzip compares the checksum.
bool fill(zip_file_t* file, std::string& text)
{
    char beyond = 0;
    return zip_fread(file, text.data(), text.size()) == static_cast<zip_int64_t>(text.size()) &&
           zip_fread(file, &beyond, 1) == 0;
}

} // namespace

// The end record (APPNOTE 4.3.16): signature, eight bytes, size of the directory, its offset, comment. What
// counts its records in 64 bits has offsets here that lead nowhere.
bool archiveDirectory(const std::string& archive, size_t& begin, size_t& end)
{
    constexpr size_t recordSize = 22;
    constexpr size_t longestComment = 0xFFFF;
    const size_t size = sizeWithoutPadding(archive);
    if (size < recordSize || archive.compare(0, 2, "PK") != 0)
        return false;
    const size_t last = size - recordSize;
    const size_t tail = last - std::min(last, longestComment);
    size_t record = std::string_view(archive).substr(tail).rfind("PK\x05\x06", last - tail);
    if (record == std::string::npos)
        return false;
    record += tail;
    const auto word = [&](size_t at) {
        uint32_t value = 0;
        for (size_t i = 4; i-- > 0;)
            value = value << 8 | static_cast<uint8_t>(archive[at + i]);
        return value;
    };
    const size_t length = word(record + 12);
    begin = word(record + 16);
    end = size;
    return begin < record && length == record - begin && archive.compare(begin, 4, "PK\x01\x02") == 0;
}

bool unzip(const std::string& archive, std::string& text, std::string& problem)
{
    const Archive opened = open(archive);
    if (!opened || zip_get_num_entries(opened.get(), 0) < 1) {
        problem = "the archive has no directory";
        return false;
    }
    const zip_uint64_t index = chosenFile(opened.get());
    zip_stat_t claim;
    if (zip_stat_index(opened.get(), index, 0, &claim) != 0 || !(claim.valid & ZIP_STAT_SIZE)) {
        problem = "the archive is damaged or of an unknown kind";
        return false;
    }
    if (claim.size > maximumFetchedBytes) {
        problem = "the archive claims " + std::to_string(claim.size) + " bytes";
        return false;
    }
    const File file(zip_fopen_index(opened.get(), index, 0));
    if (!file) {
        problem = "the archive is damaged or of an unknown kind";
        return false;
    }
    text.assign(claim.size, '\0');
    if (fill(file.get(), text))
        return true;
    problem = "the archive is damaged";
    text.clear();
    return false;
}

} // namespace kx
