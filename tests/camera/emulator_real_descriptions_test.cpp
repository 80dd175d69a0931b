// Descriptions of real cameras, from the folder that KX_DESCRIPTIONS names: they are served as they are and
// take the seeds that an export needs.
#include "camera/EmulatorFixture.h"
#include "camera_emulator/Bootstrap.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>

TEST(EmulatorRealDescriptions, areServedAndSeeded)
{
    const char* folder = std::getenv("KX_DESCRIPTIONS");
    if (!folder) {
        std::cout << "SKIPPED: KX_DESCRIPTIONS names no folder" << std::endl;
        GTEST_SKIP();
    }
    unsigned served = 0;
    unsigned withFirmware = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".xml")
            continue;
        SCOPED_TRACE(entry.path().filename().string());
        emu::CameraConfig config = freshConfig();
        config.descriptionFile = entry.path().string();
        config.seed = R"({"nodes": {"DeviceFirmwareVersion": "1.2.3"}})";
        emu::EmulatedCamera camera(config);
        const auto started = camera.start();
        ASSERT_TRUE(started) << started.message;
        GvcpClient host(config.address);
        const gvcp::Bytes text = host.fetch(emu::kDescriptionAddress, camera.description().size());
        EXPECT_TRUE(std::equal(text.begin(), text.end(), camera.description().begin(),
                               camera.description().end(),
                               [](uint8_t byte, char c) { return byte == static_cast<uint8_t>(c); }));
        ++served;

        const bool has = camera.description().find("Name=\"DeviceFirmwareVersion\"") != std::string::npos;
        withFirmware += has;
        if (has)
            EXPECT_EQ(camera.node("DeviceFirmwareVersion"), emu::NodeValue(std::string("1.2.3")));
        else
            EXPECT_EQ(camera.seedProblems(),
                      std::vector<std::string>{"Node DeviceFirmwareVersion is no node of the description."});
    }
    std::cout << served << " descriptions served, " << withFirmware << " with a firmware version"
              << std::endl;
    EXPECT_GT(served, 0u);
}
