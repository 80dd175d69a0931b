// The emulated camera as a host on the network sees it.
#include "camera/GvcpClient.h"
#include "camera_emulator/Bootstrap.h"
#include "camera_emulator/Camera.h"
#include "support/LoopbackAddress.h"

#include <gtest/gtest.h>

using namespace gvcp;

namespace
{

emu::CameraConfig freshConfig()
{
    emu::CameraConfig config;
    config.address = tests::freshLoopbackAddress();
    config.manufacturer = "Maker";
    config.model = "Model-7";
    config.serial = "SN-1";
    config.userName = "Left";
    config.firmware = "4.5.6";
    return config;
}

class EmulatorProtocol : public testing::Test
{
protected:
    EmulatorProtocol() : camera(freshConfig()), host(camera.config().address)
    {
        const auto started = camera.start();
        EXPECT_TRUE(started) << started.message;
    }

    uint32_t readWord(uint32_t address)
    {
        const auto values = parseRegisterValues(host.read({address}).payload, 1);
        return values ? values->front() : 0xDEADBEEF;
    }

    emu::Camera camera;
    GvcpClient host;
};

} // namespace

TEST_F(EmulatorProtocol, discoveryNamesTheCamera)
{
    const auto ack = host.ask(encodeDiscovery(77));
    EXPECT_EQ(ack.status, Success);
    EXPECT_EQ(ack.command, DiscoveryAck);
    EXPECT_EQ(ack.id, 77);
    ASSERT_EQ(ack.payload.size(), kDiscoverySize);
    const auto found = parseDiscovery(ack.payload);
    EXPECT_EQ(found->manufacturer, "Maker");
    EXPECT_EQ(found->model, "Model-7");
    EXPECT_EQ(found->serialNumber, "SN-1");
    EXPECT_EQ(found->userName, "Left");
    EXPECT_EQ(found->deviceVersion, "4.5.6");
    EXPECT_EQ(formatAddress(found->address), camera.config().address);
    EXPECT_EQ(get32(&ack.payload[RegVersion]), 0x00010002u);
    EXPECT_EQ(get32(&ack.payload[RegDeviceMode]), 0x80000001u);
    EXPECT_EQ(get32(&ack.payload[RegIpOptions]), 7u);
    EXPECT_EQ(get32(&ack.payload[RegIpCurrent]), 5u);
}

TEST_F(EmulatorProtocol, bootstrapRegistersHoldWhatTheStandardAsks)
{
    EXPECT_EQ(readWord(RegInterfaceCount), 1u);
    EXPECT_EQ(readWord(RegMessageChannelCount), 0u);
    EXPECT_EQ(readWord(RegStreamChannelCount), 1u);
    EXPECT_EQ(readWord(RegHeartbeatTimeout), 3000u);
    EXPECT_EQ(readWord(RegCapabilities), 0xE0000023u);
    EXPECT_EQ(readWord(RegControlPrivilege), 0u);
    EXPECT_EQ(formatAddress(readWord(RegPersistentAddress)), camera.config().address);
    EXPECT_EQ(readWord(RegPersistentMask), 0xFF000000u);
}

TEST_F(EmulatorProtocol, oneReadRegTakesManyAddresses)
{
    camera.pokeWord(0x20000, 0x01020304);
    camera.pokeWord(0x20008, 0xFFFFFFFF);
    const auto ack = host.read({0x20008, 0x20000, 0x20004});
    EXPECT_EQ(ack.command, ReadRegAck);
    EXPECT_EQ(ack.payload, (Bytes{255, 255, 255, 255, 1, 2, 3, 4, 0, 0, 0, 0}));

    std::vector<uint32_t> most(kMaxReadRegisters, 0x20000);
    EXPECT_EQ(host.read(most).payload.size(), 4 * kMaxReadRegisters);
    most.push_back(0x20000);
    EXPECT_EQ(host.read(most).status, InvalidParameter);
}

TEST_F(EmulatorProtocol, oneWriteRegTakesManyPairs)
{
    ASSERT_TRUE(host.takeControl());
    const auto ack = host.write({{0x20000, 5}, {0x20004, 6}});
    EXPECT_EQ(ack.status, Success);
    EXPECT_EQ(ack.command, WriteRegAck);
    EXPECT_EQ(ack.payload, writeAckPayload(2));
    EXPECT_EQ(camera.peek(0x20000, 8), (Bytes{0, 0, 0, 5, 0, 0, 0, 6}));
}

TEST_F(EmulatorProtocol, memoryIsReadAndWrittenUpTo536Bytes)
{
    ASSERT_TRUE(host.takeControl());
    Bytes data(kMaxReadMemory);
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<uint8_t>(i * 7);
    const auto written = host.writeMemory(0x20000FF0, data);
    EXPECT_EQ(written.status, Success);
    EXPECT_EQ(written.command, WriteMemAck);
    EXPECT_EQ(written.payload, writeAckPayload(kMaxReadMemory));
    const auto ack = host.readMemory(0x20000FF0, kMaxReadMemory);
    EXPECT_EQ(ack.status, Success);
    EXPECT_EQ(ack.command, ReadMemAck);
    ASSERT_EQ(ack.payload.size(), 4 + kMaxReadMemory);
    EXPECT_EQ(get32(ack.payload.data()), 0x20000FF0u);
    EXPECT_EQ(Bytes(ack.payload.begin() + 4, ack.payload.end()), data);
}

TEST_F(EmulatorProtocol, descriptionIsServedWhereTheUrlSays)
{
    const Bytes text = host.fetch(RegFirstUrl, 512);
    const std::string url(reinterpret_cast<const char*>(text.data()));
    char expected[128];
    std::snprintf(expected, sizeof expected, "Local:camera_emulator.xml;C8000000;%zX?SchemaVersion=1.1.0",
                  camera.description().size());
    EXPECT_EQ(url, expected);
    const Bytes served = host.fetch(emu::kDescriptionAddress, camera.description().size());
    EXPECT_EQ(std::string(served.begin(), served.end()), camera.description());
}
