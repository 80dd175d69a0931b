// Writing the archive in memory by libzip.
#include "camera_emulator/Zip.h"

#include <memory>
#include <stdexcept>
#include <zip.h>

namespace emu
{
namespace
{

constexpr zip_uint16_t kTime = 0;
constexpr zip_uint16_t kDate = 1 << 5 | 1; // 1980-01-01
constexpr zip_uint32_t kBestCompression = 9;

struct Free
{
    void operator()(zip_source_t* source) const { zip_source_free(source); }
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
using Source = std::unique_ptr<zip_source_t, Free>;
using Archive = std::unique_ptr<zip_t, Free>;

void require(bool isGood)
{
    if (!isGood)
        throw std::runtime_error("the description could not be zipped");
}

void addFile(zip_t* archive, const std::string& fileName, const std::string& content)
{
    zip_source_t* text = zip_source_buffer(archive, content.data(), content.size(), 0);
    require(text);
    const zip_int64_t index = zip_file_add(archive, fileName.c_str(), text, 0);
    if (index < 0)
        zip_source_free(text);
    require(index == 0 && zip_set_file_compression(archive, 0, ZIP_CM_DEFLATE, kBestCompression) == 0 &&
            zip_file_set_dostime(archive, 0, kTime, kDate, 0) == 0);
}

std::vector<uint8_t> bytesOf(zip_source_t* memory)
{
    zip_stat_t about;
    require(zip_source_stat(memory, &about) == 0 && zip_source_open(memory) == 0);
    std::vector<uint8_t> bytes(about.size);
    const bool isWhole =
        zip_source_read(memory, bytes.data(), bytes.size()) == static_cast<zip_int64_t>(bytes.size());
    zip_source_close(memory);
    require(isWhole);
    return bytes;
}

} // namespace

std::vector<uint8_t> zipOneFile(const std::string& fileName, const std::string& content)
{
    const Source memory(zip_source_buffer_create(nullptr, 0, 0, nullptr));
    require(memory != nullptr);
    Archive archive(zip_open_from_source(memory.get(), ZIP_TRUNCATE, nullptr));
    require(archive != nullptr);
    zip_source_keep(memory.get()); // the archive took the first share
    addFile(archive.get(), fileName, content);
    require(zip_close(archive.get()) == 0);
    (void)archive.release(); // closed
    return bytesOf(memory.get());
}

} // namespace emu
