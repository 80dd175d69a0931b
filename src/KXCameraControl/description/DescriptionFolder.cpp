// Files of descriptions: where they lie, reading and writing them, and which have to go.
#include "KXCameraControl/description/DescriptionFolder.h"

#include "KXCameraControl/description/DataFolder.h"
#include "KXCameraControl/description/Unzip.h"
#include "KXCameraControl/ports/EnvironmentPath.h"

#include <algorithm>
#include <fstream>
#include <random>
#include <vector>

namespace kx
{

namespace
{

namespace fs = std::filesystem;

constexpr char keyEnding[] = ".key";
constexpr char unfinishedEnding[] = ".new";
constexpr size_t digestLength = 64;

// The folder may be somebody's own: only names of ours are counted and removed.
bool isOurs(const std::string& name)
{
    if (name.size() < digestLength || name.find_first_not_of("0123456789abcdef") < digestLength)
        return false;
    const std::string ending = name.substr(digestLength);
    return ending.empty() || ending == keyEnding || ending.rfind(unfinishedEnding, 0) == 0;
}

std::optional<std::string> readWhole(const fs::path& path)
{
    std::error_code error;
    const uintmax_t size = fs::is_regular_file(path, error) ? fs::file_size(path, error) : 0;
    if (error || size == 0 || size > maximumFetchedBytes)
        return std::nullopt;
    std::string bytes(static_cast<size_t>(size), '\0');
    std::ifstream file(path, std::ios::binary);
    if (!file.read(bytes.data(), static_cast<std::streamsize>(size)))
        return std::nullopt;
    return bytes;
}

// Whole blocks, as a disk has them: many small files take their place too.
uintmax_t sizeOnDisk(const fs::directory_entry& file)
{
    constexpr uintmax_t block = 4096;
    std::error_code error;
    const uintmax_t size = file.file_size(error);
    return error ? 0 : (size / block + 1) * block;
}

} // namespace

std::optional<DescriptionFolder> DescriptionFolder::ofEnvironment()
{
    const fs::path chosen = environmentPath("KX_DESCRIPTION_CACHE");
    if (!chosen.empty())
        return chosen == "off" ? std::nullopt : std::optional(DescriptionFolder(chosen));
    const fs::path data = userDataFolder();
    if (data.empty())
        return std::nullopt;
    return DescriptionFolder(data / "VELA" / "descriptions");
}

std::optional<std::string> DescriptionFolder::find(const digest::Sha256& key) const
{
    if (!isOwnFolder(m_folder))
        return std::nullopt;
    const auto name = readWhole(m_folder / (digest::hexText(key) + keyEnding));
    auto bytes = name ? readWhole(m_folder / *name) : std::nullopt;
    return bytes && digest::hexText(digest::sha256(*bytes)) == *name ? bytes : std::nullopt;
}

void DescriptionFolder::store(const digest::Sha256& key, const std::string& bytes) const
{
    std::error_code error;
    if (fs::create_directories(m_folder, error))
        fs::permissions(m_folder, fs::perms::owner_all, error);
    if (!isOwnFolder(m_folder))
        return;
    const std::string name = digest::hexText(digest::sha256(bytes));
    if (write(name, bytes) && write(digest::hexText(key) + keyEnding, name))
        removeOldest();
}

bool DescriptionFolder::write(const std::string& name, const std::string& bytes) const
{
    std::random_device random;
    const fs::path unfinished = m_folder / (name.substr(0, digestLength) + unfinishedEnding +
                                            std::to_string(random()) + std::to_string(random()));
    std::ofstream file(unfinished, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    std::error_code error;
    if (!file.fail())
        fs::rename(unfinished, m_folder / name, error);
    if (!file.fail() && !error)
        return true;
    fs::remove(unfinished, error);
    return false;
}

void DescriptionFolder::removeOldest() const
{
    struct File
    {
        fs::file_time_type written;
        uintmax_t size;
        fs::path path;
    };
    std::vector<File> files;
    uintmax_t total = 0;
    std::error_code error;
    for (fs::directory_iterator it(m_folder, error), end; !error && it != end; it.increment(error)) {
        std::error_code gone;
        if (!isOurs(it->path().filename().string()) || !it->is_regular_file(gone))
            continue;
        files.push_back({it->last_write_time(gone), sizeOnDisk(*it), it->path()});
        total += files.back().size;
    }
    std::sort(files.begin(), files.end(), [](const File& a, const File& b) { return a.written < b.written; });
    for (const File& file : files) {
        if (total <= maximumBytes)
            return;
        fs::remove(file.path, error);
        total -= file.size;
    }
}

} // namespace kx
