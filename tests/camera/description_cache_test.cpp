// When a description that was fetched before serves again, and that it never serves a camera that has
// another.
#include "KXCameraControl/description/DescriptionCache.h"
#include "KXCameraControl/description/DescriptionFolder.h"
#include "KXCameraControl/description/Evidence.h"
#include "KXCameraControl/description/Fetch.h"
#include "camera/FakePort.h"
#include "camera/ZipFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;

constexpr size_t kBlocks = 40;

// A text of kBlocks blocks; the tag with the version stands in the third.
std::string text(char fill = 'x', const std::string& guid = "VersionGuid=\"1\"")
{
    std::string description = "<!--" + std::string(1100, 'c') + "--><RegisterDescription " + guid + "><!--";
    const std::string end = "--></RegisterDescription>";
    return description + std::string(kBlocks * kx::evidenceBlock - description.size() - end.size(), fill) +
           end;
}

std::string archive(const std::string& content)
{
    // A long name, so that the directory takes more than a block.
    return tests::zip({{std::string(600, 'n') + ".xml", content, 0, true}});
}

class DescriptionCache : public testing::Test
{
protected:
    DescriptionCache()
    {
        std::string name = fs::temp_directory_path() / "descriptions-XXXXXX";
        folder = ::mkdtemp(name.data());
        setenv("KX_DESCRIPTION_CACHE", (folder / "cache").c_str(), 1);
        forgetMemory();
        device.names = {"Maker", "Model", "1.0"};
        device.offer(text());
    }
    ~DescriptionCache() override
    {
        fs::remove_all(folder);
        setenv("KX_DESCRIPTION_CACHE", "off", 1);
    }

    static std::string fetch(tests::FakeDevice& from)
    {
        from.descriptionReads.clear();
        tests::FakePort port(from);
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
    tests::FakeDevice device;
};

// ---- what is compared ----

TEST_F(DescriptionCache, ofTheSecondOpeningAFewBlocksAreReadFromTheCamera)
{
    EXPECT_EQ(fetch(), text());
    EXPECT_TRUE(hasReadWhole());
    EXPECT_EQ(fetch(), text());
    const std::set<uint64_t> blocks = blocksCompared();
    EXPECT_EQ(blocks.size(), 6u); // first, last, the tag's, three more
    EXPECT_TRUE(blocks.count(0) && blocks.count(2) && blocks.count(kBlocks - 1));
}

TEST_F(DescriptionCache, servesAnotherProcessFromTheDisk)
{
    fetch();
    forgetMemory();
    EXPECT_EQ(fetch(), text());
    EXPECT_EQ(blocksCompared().size(), 6u);
}

TEST_F(DescriptionCache, switchedOffLeavesNothingOnTheDisk)
{
    setenv("KX_DESCRIPTION_CACHE", "off", 1);
    setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    fetch();
    forgetMemory();
    EXPECT_EQ(fetch(), text());
    EXPECT_TRUE(hasReadWhole());
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(DescriptionCache, liesInTheUsersDataFolderUnlessTold)
{
    unsetenv("KX_DESCRIPTION_CACHE");
    setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    fetch();
    EXPECT_FALSE(fs::is_empty(folder / "data/VELA/descriptions"));
    EXPECT_EQ(fs::status(folder / "data/VELA/descriptions").permissions(), fs::perms::owner_all);

    setenv("XDG_DATA_HOME", "not/absolute", 1);
    setenv("HOME", (folder / "home").c_str(), 1);
    device.names.model = "Another";
    fetch();
    EXPECT_FALSE(fs::is_empty(folder / "home/.local/share/VELA/descriptions"));
}

TEST_F(DescriptionCache, everyBlockInBetweenHasItsTurn)
{
    fetch();
    std::set<uint64_t> seen;
    for (int i = 0; i < 400; ++i) {
        fetch();
        const std::set<uint64_t> blocks = blocksCompared();
        seen.insert(blocks.begin(), blocks.end());
    }
    EXPECT_EQ(seen.size(), kBlocks);
}

TEST_F(DescriptionCache, ofAnArchiveTheDirectoryIsCompared)
{
    // Blank memory behind, so that the directory does not stand in the last block.
    const std::string packed = archive(text()) + std::string(5000, '\0');
    device.offer(packed, "camera.zip");
    EXPECT_EQ(fetch(), text());
    EXPECT_EQ(fetch(), text());
    const size_t begin = packed.find("PK\x01\x02");
    const size_t end = packed.find("PK\x05\x06") + 22;
    ASSERT_GT(end / kx::evidenceBlock, begin / kx::evidenceBlock);
    const std::set<uint64_t> blocks = blocksCompared();
    for (size_t at = begin; at < end; ++at)
        EXPECT_TRUE(blocks.count(at / kx::evidenceBlock)) << at;
}

TEST_F(DescriptionCache, anotherContentInAnArchiveOfTheSameSizeIsAlwaysSeen)
{
    for (int i = 0; i < 20; ++i) {
        const std::string content = text(static_cast<char>('a' + i));
        device.offer(archive(content), "camera.zip");
        EXPECT_EQ(fetch(), content);
        EXPECT_TRUE(hasReadWhole());
    }
}

TEST_F(DescriptionCache, aTextThatNamesNoVersionGuidIsNeverBelieved)
{
    device.offer(text('x', "ProductGuid=\"1\""));
    fetch();
    EXPECT_EQ(fetch(), text('x', "ProductGuid=\"1\""));
    EXPECT_TRUE(hasReadWhole());
    EXPECT_FALSE(fs::exists(folder / "cache"));
}

TEST_F(DescriptionCache, aCameraThatDoesNotSayWhatItIsIsAlwaysRead)
{
    device.names = {};
    fetch();
    EXPECT_EQ(fetch(), text());
    EXPECT_TRUE(hasReadWhole());
}

// ---- what is found to differ ----

TEST_F(DescriptionCache, aDifferenceInACertainBlockIsSeenAndReplacesWhatWasThere)
{
    const size_t lengthOfEnd = 30;
    for (const size_t at : {size_t(10), text().find("VersionGuid") + 13, text().size() - lengthOfEnd}) {
        device.offer(text());
        fetch();
        std::string changed = text();
        changed[at] = '2';
        device.description = changed;
        for (const bool fromDisk : {false, true}) {
            EXPECT_EQ(fetch(), changed) << at;
            EXPECT_EQ(hasReadWhole(), !fromDisk) << at;
            forgetMemory();
        }
    }
}

TEST_F(DescriptionCache, aRefusedBlockIsADifferenceAndAFailedLineIsOne)
{
    fetch();
    device.failures[tests::FakeDevice::descriptionAddress] = KX_E_NO_ANSWER;
    EXPECT_EQ(fetch(), "status " + std::to_string(KX_E_NO_ANSWER));
    EXPECT_EQ(device.descriptionReads.size(), 1u);
    device.failures[tests::FakeDevice::descriptionAddress] = KX_E_GC_ACCESS;
    EXPECT_EQ(fetch(), "status " + std::to_string(KX_E_DESCRIPTION));
    EXPECT_TRUE(hasReadWhole());
    device.failures.clear();
    EXPECT_EQ(fetch(), text());
    EXPECT_FALSE(hasReadWhole());
}

TEST_F(DescriptionCache, isAskedOnlyForTheSameMakerModelVersionAndUrl)
{
    fetch();
    const auto isKnown = [&](const kx::CameraNames& names, const std::string& name) {
        device.names = names;
        device.offer(text(), name);
        fetch();
        return !hasReadWhole();
    };
    EXPECT_TRUE(isKnown({"Maker", "Model", "1.0"}, "camera.xml"));
    EXPECT_FALSE(isKnown({"Other", "Model", "1.0"}, "camera.xml"));
    EXPECT_FALSE(isKnown({"Maker", "Other", "1.0"}, "camera.xml"));
    EXPECT_FALSE(isKnown({"Maker", "Model", "1.1"}, "camera.xml"));
    EXPECT_FALSE(isKnown({"Maker", "Model", "1.0"}, "other.xml"));
    EXPECT_FALSE(isKnown({"MakerM", "odel", "1.0"}, "camera.xml"));
}

TEST_F(DescriptionCache, equalDescriptionsAreKeptOnce)
{
    fetch();
    device.names.model = "Twin";
    fetch();
    EXPECT_EQ(files("").size(), 1u);
    EXPECT_EQ(files(".key").size(), 2u);
    const auto one = kx::rememberedDescription(kx::descriptionKey(device.names, device.urls[0]), false);
    device.names.model = "Model";
    ASSERT_TRUE(one);
    EXPECT_EQ(kx::rememberedDescription(kx::descriptionKey(device.names, device.urls[0]), false), one);
}

// ---- what may have become of the files ----

TEST_F(DescriptionCache, damagedFilesAreReadAnewAndReplaced)
{
    std::string oneByte = text();
    oneByte[20 * kx::evidenceBlock] = 'y'; // where a comparison with the camera hardly ever looks
    for (const std::string& damage :
         {oneByte, text('y'), text().substr(0, 100), std::string(), std::string(1, '\0')}) {
        fetch();
        forgetMemory();
        ASSERT_EQ(files("").size(), 1u);
        overwrite(files("")[0], damage);
        EXPECT_EQ(fetch(), text());
        EXPECT_TRUE(hasReadWhole());
        forgetMemory();
        EXPECT_EQ(fetch(), text());
        EXPECT_FALSE(hasReadWhole());
        forgetMemory();
    }
}

TEST_F(DescriptionCache, damagedKeysAreReadAnewAndReplaced)
{
    overwrite(folder / "secret", text('s'));
    const std::string out = "../secret";
    for (const std::string& damage : {std::string("x"), std::string(64, 'g'), std::string(64, 'a'),
                                      std::string(64 - out.size(), '/') + out, std::string(5000, '0')}) {
        fetch();
        ASSERT_EQ(files(".key").size(), 1u);
        overwrite(files(".key")[0], damage);
        forgetMemory();
        EXPECT_EQ(fetch(), text());
        EXPECT_TRUE(hasReadWhole());
        forgetMemory();
        EXPECT_EQ(fetch(), text());
        EXPECT_FALSE(hasReadWhole());
    }
}

TEST_F(DescriptionCache, aFolderThatCannotBeWrittenIsNoError)
{
    overwrite(folder / "file", "in the way");
    for (const fs::path& place : {folder / "file", folder / "file/below", fs::path("/proc/nowhere")}) {
        setenv("KX_DESCRIPTION_CACHE", place.c_str(), 1);
        EXPECT_EQ(fetch(), text());
        forgetMemory();
        EXPECT_EQ(fetch(), text());
        EXPECT_TRUE(hasReadWhole());
        forgetMemory();
    }
}

// Whoever may write there could say what a camera's description is.
TEST_F(DescriptionCache, aFolderThatOthersMayWriteToIsNotUsed)
{
    fetch();
    for (const auto open : {fs::perms::others_write, fs::perms::group_write}) {
        fs::permissions(folder / "cache", open, fs::perm_options::add);
        forgetMemory();
        EXPECT_EQ(fetch(), text());
        EXPECT_TRUE(hasReadWhole());
        device.offer(text('y'));
        forgetMemory();
        EXPECT_EQ(fetch(), text('y'));
        EXPECT_EQ(files("").size(), 1u) << "nothing is written there either";
        device.offer(text());
        fs::permissions(folder / "cache", open, fs::perm_options::remove);
    }
    forgetMemory();
    EXPECT_EQ(fetch(), text());
    EXPECT_FALSE(hasReadWhole());
}

TEST_F(DescriptionCache, directoriesWhereFilesShouldBeAreNoError)
{
    fetch();
    for (const char* extension : {"", ".key"}) {
        const fs::path path = files(extension)[0];
        fs::remove(path);
        fs::create_directories(path / "not empty");
        forgetMemory();
        EXPECT_EQ(fetch(), text());
        EXPECT_TRUE(hasReadWhole());
        for (const auto& file : fs::directory_iterator(folder / "cache"))
            EXPECT_EQ(file.path().filename().string().find(".new"), std::string::npos) << file.path();
        fs::remove_all(path);
    }
}

// Each process changes its mind all the time about what the camera has.
TEST_F(DescriptionCache, servesManyProcessesAtOnce)
{
    std::vector<pid_t> processes;
    for (int process = 0; process < 4; ++process) {
        processes.push_back(fork());
        if (processes.back() != 0)
            continue;
        bool isGood = true;
        for (int i = 0; i < 100; ++i) {
            const std::string mine = text('x', "VersionGuid=\"" + std::to_string((process + i) % 3) + "\"");
            device.offer(mine);
            isGood = isGood && fetch() == mine;
            forgetMemory();
        }
        _exit(isGood ? 0 : 1);
    }
    for (const pid_t process : processes) {
        int state = 0;
        waitpid(process, &state, 0);
        EXPECT_TRUE(WIFEXITED(state) && WEXITSTATUS(state) == 0);
    }
    EXPECT_EQ(files("").size(), 3u);
    EXPECT_EQ(files(".key").size(), 1u);
}

// ---- how much there may be ----

TEST_F(DescriptionCache, theOldestFilesGoFirstAndNoOthers)
{
    const kx::DescriptionFolder cache(folder / "cache");
    const auto key = [](int i) { return digest::sha256("key " + std::to_string(i)); };
    const auto content = [](int i) { return std::string((6u << 20) - 10000, static_cast<char>('a' + i)); };
    cache.store(key(0), content(0));
    overwrite(folder / "cache" / "somebody's own", std::string(1000, 'x'));
    const fs::path unfinished = folder / "cache" / (std::string(64, 'f') + ".new1234");
    overwrite(unfinished, std::string(1000, 'x'));
    overwrite(folder / "cache" / (std::string(64, 'f') + ".txt"), std::string(1000, 'x'));
    for (const auto& file : fs::directory_iterator(folder / "cache"))
        fs::last_write_time(file.path(), fs::last_write_time(file.path()) - std::chrono::hours(2));
    for (const fs::path& older : {unfinished, folder / "cache" / "somebody's own"})
        fs::last_write_time(older, fs::last_write_time(older) - std::chrono::hours(1));
    for (int i = 1; i < 11; ++i) {
        cache.store(key(i), content(i));
        for (const auto& file : fs::directory_iterator(folder / "cache"))
            fs::last_write_time(file.path(), fs::last_write_time(file.path()) - std::chrono::minutes(1));
    }
    EXPECT_FALSE(cache.find(key(0)));
    for (int i = 1; i < 11; ++i)
        EXPECT_EQ(cache.find(key(i)), content(i)) << i;
    uintmax_t total = 0;
    for (const auto& file : fs::directory_iterator(folder / "cache"))
        total += file.file_size();
    EXPECT_LE(total, kx::DescriptionFolder::maximumBytes);
    EXPECT_TRUE(fs::exists(folder / "cache" / "somebody's own"));
    EXPECT_FALSE(fs::exists(unfinished));
    EXPECT_TRUE(fs::exists(folder / "cache" / (std::string(64, 'f') + ".txt")));
}

TEST_F(DescriptionCache, inMemoryAreTheLastSixteenAlone)
{
    setenv("KX_DESCRIPTION_CACHE", "off", 1);
    for (int i = 0; i < 17; ++i) {
        device.names.model = "Model " + std::to_string(i);
        fetch();
    }
    fetch();
    EXPECT_FALSE(hasReadWhole());
    device.names.model = "Model 0";
    fetch();
    EXPECT_TRUE(hasReadWhole());
}

// ---- over the C functions ----

TEST_F(DescriptionCache, givesTheSameBytesAsTheCamera)
{
    device.offer(archive(text()) + std::string(100, '\0'), "camera.zip");
    const tests::FakePorts ports(device);
    for (int opening = 0; opening < 3; ++opening) {
        if (opening == 2)
            forgetMemory();
        KX_DeviceInfo info{};
        info.transportType = KX_TRANSPORT_GIGE;
        info.layout = KX_DEVICE_INFO_LAYOUT;
        KX_HANDLE handle = nullptr;
        KX_CC_CreateHandle(&handle, &info);
        device.descriptionReads.clear();
        EXPECT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
        EXPECT_EQ(hasReadWhole(), opening == 0);
        std::string buffer(100000, 'z');
        uint32_t length = 0;
        EXPECT_EQ(KX_XML_GetGenICamXML(handle, buffer.data(), 100000, &length), KX_OK);
        EXPECT_EQ(length, text().size() + 1);
        EXPECT_EQ(std::string(buffer.c_str()), text());
        EXPECT_EQ(buffer[length], 'z');
        KX_CC_DestroyHandle(handle);
    }
}

} // namespace
