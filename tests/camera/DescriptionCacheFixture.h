// Descriptions that are fetched from a camera that is made up, with a folder of kept ones.
#pragma once

#include "KXCameraControl/description/DescriptionCache.h"
#include "KXCameraControl/description/DescriptionFolder.h"
#include "KXCameraControl/description/Evidence.h"
#include "KXCameraControl/description/Fetch.h"
#include "camera/FakePort.h"
#include "camera/ZipFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

namespace tests
{

namespace fs = std::filesystem;

constexpr size_t kBlocks = 40;

// A text of kBlocks blocks; the tag with the version stands in the third.
inline std::string text(char fill = 'x', const std::string& guid = "VersionGuid=\"1\"")
{
    std::string description = "<!--" + std::string(1100, 'c') + "--><RegisterDescription " + guid + "><!--";
    const std::string end = "--></RegisterDescription>";
    return description + std::string(kBlocks * kx::evidenceBlock - description.size() - end.size(), fill) +
           end;
}

inline std::string archive(const std::string& content)
{
    // A long name, so that the directory takes more than a block.
    return zip({{std::string(600, 'n') + ".xml", content, 0, true}});
}

class DescriptionCache : public testing::Test
{
protected:
    DescriptionCache()
    {
        std::string name = (fs::temp_directory_path() / "descriptions-XXXXXX").string();
        folder = ::mkdtemp(name.data());
        setPlace("KX_DESCRIPTION_CACHE", folder / "cache");
        forgetMemory();
        device.names = {"Maker", "Model", "1.0"};
        device.offer(text());
    }
    ~DescriptionCache() override
    {
        fs::remove_all(folder);
        setenv("KX_DESCRIPTION_CACHE", "off", 1);
    }

    static void setPlace(const char* variable, const fs::path& place)
    {
        setenv(variable, place.string().c_str(), 1);
    }
    static std::string fetch(FakeDevice& from)
    {
        from.descriptionReads.clear();
        FakePort port(from);
        kx::SharedDescription description;
        std::string problem;
        const KX_Status status = kx::fetchDescription(port, description, problem);
        EXPECT_EQ(status == KX_OK, description != nullptr);
        EXPECT_EQ(status == KX_OK, problem.empty()) << problem;
        return description ? description->text() : "status " + std::to_string(status);
    }
    std::string fetch() { return fetch(device); }
    // What is left is what another process would find.
    static void forgetMemory()
    {
        for (int i = 0; i < 16; ++i) {
            const std::string other = text('o') + std::to_string(i);
            kx::rememberDescription(digest::sha256(other), std::make_shared<kx::Description>(other, other),
                                    false);
        }
    }
    bool hasReadWhole() const
    {
        return !device.descriptionReads.empty() &&
               device.descriptionReads.back() == std::pair<uint64_t, size_t>(0, device.description.size());
    }
    std::set<uint64_t> blocksCompared() const
    {
        std::set<uint64_t> blocks;
        for (const auto& [offset, size] : device.descriptionReads) {
            EXPECT_EQ(offset % kx::evidenceBlock, 0u);
            EXPECT_LE(size, kx::evidenceBlock);
            EXPECT_TRUE(blocks.insert(offset / kx::evidenceBlock).second);
        }
        return blocks;
    }
    std::vector<fs::path> files(const std::string& extension) const
    {
        std::vector<fs::path> found;
        for (const auto& file : fs::directory_iterator(folder / "cache"))
            if (file.path().extension() == extension)
                found.push_back(file.path());
        return found;
    }
    static void overwrite(const fs::path& path, const std::string& content)
    {
        std::ofstream(path, std::ios::binary) << content;
    }

    fs::path folder;
    FakeDevice device;
};

} // namespace tests
