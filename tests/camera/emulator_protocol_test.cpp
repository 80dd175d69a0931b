// The emulated camera as a host on the network sees it.
#include "camera/EmulatorFixture.h"
#include "camera_emulator/Bootstrap.h"

using namespace gvcp;

using EmulatorProtocol = EmulatorFixture;

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

TEST_F(EmulatorProtocol, writeRegStopsAtTheFirstFailureAndNamesIt)
{
    ASSERT_TRUE(host.takeControl());
    const auto ack = host.write({{0x20000, 5}, {RegVersion, 1}, {0x20004, 6}});
    EXPECT_EQ(ack.status, WriteProtect);
    EXPECT_EQ(ack.payload, writeAckPayload(1));
    EXPECT_EQ(camera.peek(0x20000, 8), (Bytes{0, 0, 0, 5, 0, 0, 0, 0}));
}

TEST_F(EmulatorProtocol, readRegHandsOutWhatStandsBeforeTheFailure)
{
    const auto ack = host.read({RegInterfaceCount, 0x20002, 0x20004});
    EXPECT_EQ(ack.status, BadAlignment);
    EXPECT_EQ(ack.payload, (Bytes{0, 0, 0, 1}));
}

TEST_F(EmulatorProtocol, addressesAndSizesAreChecked)
{
    ASSERT_TRUE(host.takeControl());
    EXPECT_EQ(host.readMemory(0x20002, 4).status, BadAlignment);
    EXPECT_EQ(host.readMemory(0x20000, 6).status, BadAlignment);
    EXPECT_EQ(host.readMemory(0x20000, 0).status, InvalidParameter);
    EXPECT_EQ(host.readMemory(0x20000, kMaxReadMemory + 4).status, InvalidParameter);
    EXPECT_EQ(host.readMemory(0xFFFFFFFC, 4).status, Success);
    EXPECT_EQ(host.readMemory(0xFFFFFFFC, 8).status, InvalidAddress);
    EXPECT_EQ(host.writeMemory(0x20001, {1, 2, 3, 4}).status, BadAlignment);
    EXPECT_EQ(host.writeMemory(0x20000, {1, 2, 3, 4, 5}).status, BadAlignment);
    EXPECT_EQ(host.writeMemory(0xFFFFFFFC, Bytes(8)).status, InvalidAddress);
    EXPECT_EQ(host.writeMemory(0x20000, Bytes(kMaxReadMemory + 4)).status, InvalidParameter);
    EXPECT_EQ(host.write({{0x20001, 1}}).status, BadAlignment);
    EXPECT_EQ(camera.peek(0x20000, 8), Bytes(8));
}

TEST_F(EmulatorProtocol, readOnlyRegistersRefuseWrites)
{
    ASSERT_TRUE(host.takeControl());
    for (uint32_t address : {RegVersion, RegCurrentAddress, RegModel, RegSerialNumber, RegFirstUrl,
                             RegSecondUrl, RegCapabilities, RegPrimaryPort})
        EXPECT_EQ(host.write({{address, 1}}).status, WriteProtect) << address;
    EXPECT_EQ(host.write({{emu::kDescriptionAddress, 1}}).status, WriteProtect);
    EXPECT_EQ(host.write({{0x10000, 1}}).status, WriteProtect) << "DeviceFirmwareVersion, AccessMode RO";
    EXPECT_EQ(host.writeMemory(RegModel, Bytes(32, 'x')).status, WriteProtect);
    EXPECT_EQ(host.writeMemory(RegUserName - 4, Bytes(20, 'x')).status, WriteProtect)
        << "begins one word too early";
    EXPECT_EQ(host.ask(encodeDiscovery(1)).payload, camera.peek(0, kDiscoverySize));
    EXPECT_EQ(parseDiscovery(camera.peek(0, kDiscoverySize))->model, "Model-7");
}

TEST_F(EmulatorProtocol, theUserNameIsWritableAndShowsInDiscovery)
{
    ASSERT_TRUE(host.takeControl());
    Bytes name(16);
    std::copy_n("Right", 5, name.begin());
    EXPECT_EQ(host.writeMemory(RegUserName, name).status, Success);
    EXPECT_EQ(parseDiscovery(host.ask(encodeDiscovery(1)).payload)->userName, "Right");
}

TEST_F(EmulatorProtocol, whatIsNotImplementedIsSaidSo)
{
    const Bytes resend{kKey, kFlagAckRequired, 0, PacketResendCmd, 0, 0, 0, 9};
    const auto ack = host.ask(resend);
    EXPECT_EQ(ack.status, NotImplemented);
    EXPECT_EQ(ack.command, PacketResendCmd + 1);
    EXPECT_EQ(ack.id, 9);
    EXPECT_EQ(host.ask({kKey, kFlagAckRequired, 0x77, 0x76, 0, 2, 0, 9, 1, 2}).status, NotImplemented);
    EXPECT_EQ(camera.counters().unknown, 2u);
}

TEST_F(EmulatorProtocol, withoutTheAcknowledgeFlagACommandIsDoneInSilence)
{
    ASSERT_TRUE(host.takeControl());
    Bytes packet = encodeWriteRegisters(host.nextId(), {{0x20000, 7}});
    packet[1] = 0;
    host.send(packet);
    EXPECT_TRUE(camera.waitFor([](const emu::Counters& counters) { return counters.settingWrites == 1; }));
    EXPECT_EQ(camera.peekWord(0x20000), 7u);
    // The next answer on the line is the next question's.
    EXPECT_EQ(host.ask(encodeDiscovery(0x4321)).id, 0x4321);
}

TEST_F(EmulatorProtocol, hostilePacketsAreDroppedOrRefused)
{
    const Bytes good = encodeReadMemory(5, 0, 4);
    std::vector<Bytes> malformed{{}, {kKey}, Bytes(7, kKey), Bytes(8), Bytes(65507, 0xFF)};
    for (size_t size = 0; size < good.size(); ++size)
        malformed.emplace_back(good.begin(), good.begin() + size);
    malformed.push_back(good);
    malformed.back()[0] = 0x43; // another key
    malformed.push_back(good);
    malformed.back()[5] = 0xFF; // a length beyond the packet
    malformed.push_back(good);
    malformed.back().push_back(0); // a byte behind the length
    malformed.push_back(good);
    malformed.back()[6] = malformed.back()[7] = 0; // id 0
    for (const Bytes& packet : malformed)
        host.send(packet);
    EXPECT_TRUE(camera.waitFor([&](const emu::Counters& counters) {
        return counters.malformed == malformed.size();
    })) << camera.counters().malformed
        << " of " << malformed.size();
    EXPECT_EQ(camera.counters().requests(), 0u);

    EXPECT_EQ(host.readMemory(0xFFFFFFFC, 0xFFFF).status, InvalidParameter);
    EXPECT_EQ(host.read(std::vector<uint32_t>(16000)).status, InvalidParameter);
    EXPECT_EQ(host.read({}).status, InvalidParameter);
    EXPECT_EQ(host.write({}).status, InvalidParameter);
    EXPECT_EQ(host.writeMemory(0, {}).status, InvalidParameter);
    EXPECT_EQ(host.ask(encodeDiscovery(3)).status, Success) << "still there";
}

TEST_F(EmulatorProtocol, requestsAreCountedByKind)
{
    ASSERT_TRUE(host.takeControl());
    host.ask(encodeDiscovery(1));
    host.read({0, 4, 8});
    host.read({RegControlPrivilege});
    host.write({{RegHeartbeatTimeout, 4000}, {RegControlPrivilege, kPrivilegeControl}});
    host.write({{0x20000, 1}, {0x20004, 2}});
    host.readMemory(0x200, 16);
    host.writeMemory(0x20010, Bytes(12));
    host.writeMemory(RegControlPrivilege, {0, 0, 0, 2});
    host.write({{RegVersion, 1}});
    const emu::Counters counters = camera.counters();
    EXPECT_EQ(counters.discovery, 1u);
    EXPECT_EQ(counters.readReg, 2u);
    EXPECT_EQ(counters.registersRead, 4u);
    EXPECT_EQ(counters.writeReg, 4u);
    EXPECT_EQ(counters.registersWritten, 5u);
    EXPECT_EQ(counters.readMem, 1u);
    EXPECT_EQ(counters.bytesRead, 16u);
    EXPECT_EQ(counters.writeMem, 2u);
    EXPECT_EQ(counters.bytesWritten, 16u);
    EXPECT_EQ(counters.controlRequests, 4u);
    EXPECT_EQ(counters.settingWrites, 3u) << "two registers and one stretch of memory";
    EXPECT_EQ(counters.refused, 1u);
    EXPECT_EQ(counters.requests(), 10u);
    camera.resetCounters();
    EXPECT_EQ(camera.counters().requests(), 0u);
}

TEST_F(EmulatorProtocol, camerasOfOneProcessKeepApart)
{
    emu::CameraConfig config = freshConfig();
    config.serial = "SN-2";
    emu::EmulatedCamera second(config);
    ASSERT_TRUE(second.start());
    GvcpClient secondHost(config.address);
    second.pokeWord(0x20000, 2);
    camera.pokeWord(0x20000, 1);
    EXPECT_EQ(parseDiscovery(secondHost.ask(encodeDiscovery(1)).payload)->serialNumber, "SN-2");
    EXPECT_EQ(secondHost.read({0x20000}).payload, (Bytes{0, 0, 0, 2}));
    EXPECT_EQ(readWord(0x20000), 1u);
}

TEST_F(EmulatorProtocol, anAddressIsTakenOnce)
{
    emu::EmulatedCamera twin(camera.config());
    const auto result = twin.start();
    EXPECT_EQ(result.code, emu::StartCode::CannotBind);
    EXPECT_NE(result.message.find(camera.config().address), std::string::npos) << result.message;
}

TEST_F(EmulatorProtocol, camerasShareTheBroadcastAddress)
{
    emu::CameraConfig config = freshConfig();
    config.broadcast = true;
    emu::EmulatedCamera first(config);
    config.address = tests::freshLoopbackAddress();
    emu::EmulatedCamera second(config);
    EXPECT_TRUE(first.start());
    const auto result = second.start();
    EXPECT_TRUE(result) << result.message;
    GvcpClient secondHost(config.address);
    EXPECT_EQ(secondHost.ask(encodeDiscovery(1)).status, Success) << "and still answers when asked directly";
}

TEST_F(EmulatorProtocol, stoppedCamerasAreSilentAndKeepTheirRegisters)
{
    ASSERT_TRUE(host.takeControl());
    camera.pokeWord(0x20000, 3);
    camera.stop();
    host.send(encodeDiscovery(1));
    EXPECT_FALSE(host.receive(std::chrono::milliseconds(50)));
    ASSERT_TRUE(camera.start());
    EXPECT_FALSE(camera.isControlled());
    GvcpClient again(camera.config().address);
    EXPECT_EQ(again.read({0x20000}).payload, (Bytes{0, 0, 0, 3}));
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
