// Feature files through the C functions, over each transport to an emulated camera.
#include "support/AllTransports.h"

#include <KXCameraControl/KXCameraControl.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace
{

class FeatureBagOnEmulator : public testing::TestWithParam<tests::Transport>
{
protected:
    FeatureBagOnEmulator() : camera(transports.add(GetParam()))
    {
        const KX_DeviceInfo info = tests::AllTransports::record(camera.config().serial);
        EXPECT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
        EXPECT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
        char name[] = "/tmp/bag_on_emulator_XXXXXX";
        folder = mkdtemp(name);
        file = folder + "/camera.fpk";
    }
    ~FeatureBagOnEmulator() override
    {
        KX_CC_DestroyHandle(handle);
        std::filesystem::remove_all(folder);
    }

    std::string lastError() const
    {
        char text[4096];
        uint32_t length = 0;
        return KX_CC_GetLastErrorText(handle, text, sizeof text, &length) == KX_OK ? text : "?";
    }

    std::vector<std::string> lines(const std::string& path) const
    {
        std::ifstream in(path);
        std::vector<std::string> all;
        for (std::string line; std::getline(in, line);)
            all.push_back(line);
        return all;
    }

    bool holds(const std::string& path, const std::string& line) const
    {
        const auto all = lines(path);
        return std::count(all.begin(), all.end(), line) > 0;
    }

    uint32_t peekWord(uint64_t address) const
    {
        const emu::Bytes bytes = camera.peek(address, 4);
        return uint32_t(bytes[0]) << 24 | uint32_t(bytes[1]) << 16 | uint32_t(bytes[2]) << 8 | bytes[3];
    }

    tests::AllTransports transports;
    emu::Shell& camera;
    KX_HANDLE handle = nullptr;
    std::string folder, file;
};

} // namespace

TEST_P(FeatureBagOnEmulator, theFileHoldsTheStreamableFeaturesAsOtherToolsReadThem)
{
    ASSERT_EQ(KX_CC_FeatureSave(handle, file.c_str()), KX_OK) << lastError();
    const auto all = lines(file);
    ASSERT_GE(all.size(), 3u);
    EXPECT_EQ(all[0], "# {05D8C294-F295-4dfb-9D01-096BD04049F4}");
    EXPECT_EQ(all[1].rfind("# GenApi persistence file (version ", 0), 0u);
    EXPECT_EQ(all[2], "# Device = Emulated cameras::EMU-1 -- Device version = 1.0.0");
    EXPECT_TRUE(holds(file, "Width\t640"));
    EXPECT_TRUE(holds(file, "PixelFormat\tMono8")) << "an entry's name, never its number";
    EXPECT_TRUE(holds(file, "ReverseX\t1"));
    EXPECT_TRUE(holds(file, "ExposureTime\t5000"));
    EXPECT_TRUE(holds(file, "DeviceLocation\tLine 4"));
    EXPECT_TRUE(holds(file, "OffsetCorrection\t-3"));
    EXPECT_FALSE(holds(file, "SensorWidth\t1280")) << "not streamable";
    for (const std::string& line : all)
        EXPECT_NE(line.rfind("DeviceFirmwareVersion", 0), 0u) << "read-only";
}

TEST_P(FeatureBagOnEmulator, everyChannelStandsBehindItsSelector)
{
    ASSERT_EQ(KX_CC_FeatureSave(handle, file.c_str()), KX_OK) << lastError();
    const auto all = lines(file);
    const auto at = [&](const char* line) { return std::find(all.begin(), all.end(), line) - all.begin(); };
    const auto size = static_cast<std::ptrdiff_t>(all.size());
    ASSERT_LT(at("GainSelector\tAll"), size);
    EXPECT_EQ(all[static_cast<size_t>(at("GainSelector\tAll") + 1)], "Gain\t10");
    EXPECT_EQ(all[static_cast<size_t>(at("GainSelector\tRed") + 1)], "Gain\t15");
    EXPECT_LT(at("GainSelector\tRed"), at("GainSelector\tBlue"));
    EXPECT_EQ(at("GainSelector\tInfrared"), size) << "not implemented";
}

TEST_P(FeatureBagOnEmulator, savingWritesNothingButSelectorsAndPutsThemBack)
{
    const auto selector = peekWord(0x15000);
    ASSERT_EQ(KX_CC_FeatureSave(handle, file.c_str()), KX_OK) << lastError();
    EXPECT_EQ(peekWord(0x15000), selector);
    const auto before = camera.peek(0x10000, 0x8000);
    ASSERT_EQ(KX_CC_FeatureSave(handle, file.c_str()), KX_OK);
    EXPECT_EQ(camera.peek(0x10000, 0x8000), before);
}

TEST_P(FeatureBagOnEmulator, loadingBringsBackWhatWasChanged)
{
    ASSERT_EQ(KX_CC_FeatureSave(handle, file.c_str()), KX_OK) << lastError();
    const auto saved = camera.peek(0x11000, 0x5000);
    // With the saved offset this width fits only after it went down.
    EXPECT_EQ(
        camera.change(R"({"nodes": {"OffsetX": 0, "Width": 960, "ExposureTime": 77.0, "ReverseX": false}})"),
        std::vector<std::string>());
    camera.poke(0x13004, {0, 0, 0, 33}); // another channel's gain
    ASSERT_NE(camera.peek(0x11000, 0x5000), saved);
    EXPECT_EQ(KX_CC_FeatureLoad(handle, file.c_str()), KX_OK) << lastError();
    EXPECT_EQ(camera.peek(0x11000, 0x5000), saved);
}

TEST_P(FeatureBagOnEmulator, entriesThatDoNotTakeAreListed)
{
    std::ofstream(file) << "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\nWidth\t320\nHeight\t99999\nNobody\t1\n";
    EXPECT_EQ(KX_CC_FeatureLoad(handle, file.c_str()), KX_E_INCOMPLETE);
    const std::string text = lastError();
    EXPECT_EQ(text.rfind("1 of 3 entries took their value", 0), 0u) << text;
    EXPECT_NE(text.find("\nHeight = 99999: "), std::string::npos) << text;
    EXPECT_NE(text.find("\nNobody = 1: "), std::string::npos) << text;
    EXPECT_EQ(peekWord(0x11010), 320u);
}

TEST_P(FeatureBagOnEmulator, aCameraThatVanishesEndsBothWithAStatusOfTheLine)
{
    ASSERT_EQ(KX_CC_FeatureSave(handle, file.c_str()), KX_OK) << lastError();
    ASSERT_EQ(KX_CC_SetTimeout(handle, 20, 2), KX_OK);
    const std::string content = (std::ostringstream() << std::ifstream(file).rdbuf()).str();
    camera.stop();
    const KX_Status saved = KX_CC_FeatureSave(handle, file.c_str());
    EXPECT_TRUE(KX_IS_LINE_FAILURE(saved)) << std::hex << saved;
    EXPECT_EQ((std::ostringstream() << std::ifstream(file).rdbuf()).str(), content) << "the old file stays";
    const KX_Status loaded = KX_CC_FeatureLoad(handle, file.c_str());
    EXPECT_TRUE(KX_IS_LINE_FAILURE(loaded)) << std::hex << loaded;
}

TEST_P(FeatureBagOnEmulator, theObserverSeesEachFeatureAndMayEndTheSave)
{
    struct Watch
    {
        std::vector<std::string> seen;
        static int look(void* user, const KX_CallEvent* event)
        {
            auto& watch = *static_cast<Watch*>(user);
            if (event->operation == KX_OP_FEATURE_SAVE && !event->finished)
                watch.seen.push_back(event->nodeName);
            return watch.seen.size() > 5;
        }
    } watch;
    const auto before = camera.peek(0x10000, 0x8000);
    ASSERT_EQ(KX_CC_SetCallObserver(handle, Watch::look, &watch), KX_OK);
    EXPECT_EQ(KX_CC_FeatureSave(handle, file.c_str()), KX_E_ABORTED);
    KX_CC_SetCallObserver(handle, nullptr, nullptr);
    EXPECT_EQ(watch.seen.front(), file);
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_EQ(camera.peek(0x10000, 0x8000), before);
}

TEST_P(FeatureBagOnEmulator, pathsComeAsLatin1)
{
    ASSERT_EQ(KX_CC_FeatureSave(handle, (folder + "/caf\xE9.fpk").c_str()), KX_OK) << lastError();
    EXPECT_TRUE(std::filesystem::exists(folder + "/caf\xC3\xA9.fpk"));
    EXPECT_EQ(KX_CC_FeatureLoad(handle, (folder + "/caf\xE9.fpk").c_str()), KX_OK) << lastError();
}

INSTANTIATE_TEST_SUITE_P(Over, FeatureBagOnEmulator, tests::everyTransport(), tests::transportName);
