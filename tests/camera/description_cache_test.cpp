// When a description that was fetched before serves again, and that it never serves a camera that has
// another.
#include "camera/DescriptionCacheFixture.h"

#include <QCoreApplication>
#include <QProcess>

#include <list>

namespace
{

namespace fs = std::filesystem;
using tests::archive;
using tests::DescriptionCache;
using tests::kBlocks;
using tests::text;

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
    for (const fs::path& place : {folder / "file", folder / "file/below"}) {
        setPlace("KX_DESCRIPTION_CACHE", place);
        EXPECT_EQ(fetch(), text());
        forgetMemory();
        EXPECT_EQ(fetch(), text());
        EXPECT_TRUE(hasReadWhole());
        forgetMemory();
    }
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
TEST_F(DescriptionCache, DISABLED_oneOfManyProcesses)
{
    setPlace("KX_DESCRIPTION_CACHE", qEnvironmentVariable("SHARED_CACHE").toStdString());
    const int process = qEnvironmentVariableIntValue("PROCESS");
    for (int i = 0; i < 100; ++i) {
        const std::string mine = text('x', "VersionGuid=\"" + std::to_string((process + i) % 3) + "\"");
        device.offer(mine);
        EXPECT_EQ(fetch(), mine);
        forgetMemory();
    }
}

TEST_F(DescriptionCache, servesManyProcessesAtOnce)
{
    std::list<QProcess> processes;
    for (int process = 0; process < 4; ++process) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("SHARED_CACHE", QString::fromStdString((folder / "cache").string()));
        environment.insert("PROCESS", QString::number(process));
        QProcess& one = processes.emplace_back();
        one.setProcessEnvironment(environment);
        one.setProcessChannelMode(QProcess::ForwardedChannels);
        one.start(QCoreApplication::applicationFilePath(),
                  {"--gtest_also_run_disabled_tests", "--gtest_filter=*oneOfManyProcesses"});
    }
    for (QProcess& process : processes) {
        EXPECT_TRUE(process.waitForFinished(120000));
        EXPECT_TRUE(process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0);
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
