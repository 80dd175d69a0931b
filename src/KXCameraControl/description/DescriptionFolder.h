// Descriptions of cameras on disk, kept over the end of the process.
#pragma once

#include "digest/Digest.h"

#include <filesystem>
#include <optional>
#include <string>

namespace kx
{

// Two kinds of files, each written whole beside its place and then renamed, so that several processes may
// share a folder:
//   <digest of the content>      a description as it lies in the camera's memory
//   <digest of the key>.key      the name of the file that was stored last for the key
// What cannot be read or written, or is damaged, counts as not there: no call fails for it. Nor is anything
// read from or written to a folder that is another user's or that others may write to.
class DescriptionFolder
{
public:
    explicit DescriptionFolder(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    // As KX_DESCRIPTION_CACHE says: "off" or a folder; unset or empty: VELA/descriptions in the user's data
    // folder (XDG_DATA_HOME, else .local/share in HOME).
    static std::optional<DescriptionFolder> ofEnvironment();

    // Only bytes that have the digest they were stored under.
    std::optional<std::string> find(const digest::Sha256& key) const;
    // Replaces what was stored for the key. Removes the oldest files while the folder's are too many; files
    // of other names are left alone.
    void store(const digest::Sha256& key, const std::string& bytes) const;

    // Of all files together, each counted in whole blocks of a disk.
    static constexpr uintmax_t maximumBytes = 64u << 20;

private:
    bool write(const std::string& name, const std::string& bytes) const;
    void removeOldest() const;

    std::filesystem::path m_folder;
};

} // namespace kx
