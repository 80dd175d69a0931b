// What an emulated camera keeps without power, and how it comes by its address; the camera library's commands
// for that over it.
#include "camera/EmulatorFixture.h"

#include <KXCameraControl/KXCameraControl.h>

#include <cstdlib>
#include <cstring>
#include <thread>

using namespace gvcp;
using std::chrono::milliseconds;

namespace
{

// Addresses of the emulator's own description.
constexpr uint32_t kSelector = 0x16000;
constexpr uint32_t kLoad = 0x16004;
constexpr uint32_t kSave = 0x16008;
constexpr uint32_t kStartUp = 0x1600C;
constexpr uint32_t kReset = 0x10048;

emu::CameraConfig quickConfig()
{
    emu::CameraConfig config = freshConfig();
    config.restartTime = milliseconds(50);
    return config;
}

class EmulatorPower : public EmulatorFixture
{
protected:
    EmulatorPower() : EmulatorFixture(quickConfig()) {}

    void set(const std::string& name, int64_t value) { ASSERT_EQ(camera.setNode(name, value), ""); }
    int64_t number(const std::string& name) const { return std::get<int64_t>(*camera.node(name)); }

    void restart()
    {
        ASSERT_EQ(host.write({{kReset, 1}}).status, Success);
        ASSERT_TRUE(camera.waitFor([](const emu::Counters& counters) { return counters.restarts == 1; }));
        for (int left = 1000; left > 0 && camera.isControlled(); --left)
            std::this_thread::sleep_for(milliseconds(10));
    }

    // As a search by the camera's address gives it.
    KX_DeviceInfo record() const
    {
        setenv("KX_CAMERA_INTERFACES", "none", 1);
        setenv("KX_CAMERA_ADDRESSES", formatAddress(camera.peekWord(RegCurrentAddress)).c_str(), 1);
        KX_DeviceEntry entry{};
        uint32_t count = 0;
        EXPECT_EQ(KX_CC_EnumDevices(KX_TRANSPORT_GIGE, &entry, 1, &count), KX_OK);
        EXPECT_EQ(count, 1u);
        return entry.info;
    }
};

} // namespace

TEST_F(EmulatorPower, aSetIsLoadedAsItWasSaved)
{
    ASSERT_TRUE(host.takeControl());
    set("Height", 16);
    ASSERT_EQ(host.write({{kSelector, 1}, {kSave, 1}}).status, Success);
    set("Height", 32);
    ASSERT_EQ(host.write({{kLoad, 1}}).status, Success);
    EXPECT_EQ(number("Height"), 16);
    ASSERT_EQ(host.write({{kSelector, 0}, {kLoad, 1}}).status, Success);
    EXPECT_EQ(number("Height"), 480) << "as it was delivered";
    EXPECT_EQ(number("UserSetSelector"), 0) << "a set holds no selector";
}

TEST_F(EmulatorPower, aRestartLosesWhatNoSetKeeps)
{
    ASSERT_TRUE(host.takeControl());
    set("Height", 16);
    ASSERT_EQ(host.writeMemory(RegUserName, {'R', 'i', 'g', 'h', 't', 0, 0, 0}).status, Success);
    restart();
    EXPECT_EQ(number("Height"), 480);
    EXPECT_EQ(std::get<std::string>(*camera.node("DeviceUserID")), "Right");
    EXPECT_EQ(other.read({RegControlPrivilege}).payload, (Bytes{0, 0, 0, 0}));
}

TEST_F(EmulatorPower, aRestartLoadsTheStartUpSet)
{
    ASSERT_TRUE(host.takeControl());
    set("Height", 16);
    ASSERT_EQ(host.write({{kSelector, 1}, {kSave, 1}, {kStartUp, 1}}).status, Success);
    set("Height", 32);
    restart();
    EXPECT_EQ(number("Height"), 16);
    EXPECT_EQ(number("UserSetDefault"), 1);
}

TEST_F(EmulatorPower, aSetMayKeepLessThanItSays)
{
    ASSERT_TRUE(host.takeControl());
    set("Height", 16);
    set("Width", 32);
    emu::Faults faults;
    faults.unsaved = {0x11000};
    const auto before = camera.peekWord(0x11000);
    camera.pokeWord(0x11000, before + 1);
    camera.setFaults(faults);
    ASSERT_EQ(host.write({{kSelector, 1}, {kSave, 1}, {kLoad, 1}}).status, Success);
    EXPECT_EQ(camera.peekWord(0x11000), before);
    EXPECT_EQ(number("Height"), 16);
}

TEST_F(EmulatorPower, theKeptAddressComesBackAtPowerUp)
{
    const std::string kept = tests::freshLoopbackAddress();
    ASSERT_TRUE(host.takeControl());
    ASSERT_EQ(host.write({{RegPersistentAddress, *parseAddress(kept)}}).status, Success);
    restart();
    EXPECT_EQ(camera.peekWord(RegCurrentAddress), *parseAddress(kept));
    EXPECT_EQ(GvcpClient(kept).ask(encodeDiscovery(1)).status, Success);
}

TEST_F(EmulatorPower, withoutAKeptAddressAServersIsTaken)
{
    emu::CameraConfig config = freshConfig();
    config.isPersistent = false;
    config.dhcpAddress = tests::freshLoopbackAddress();
    emu::EmulatedCamera fresh(config);
    EXPECT_EQ(fresh.peekWord(RegIpCurrent), kIpLinkLocal | kIpDhcp);
    EXPECT_EQ(fresh.peekWord(RegPersistentAddress), 0u);
    fresh.switchOff();
    ASSERT_TRUE(fresh.start());
    EXPECT_EQ(GvcpClient(config.dhcpAddress).ask(encodeDiscovery(1)).status, Success);
    fresh.pokeWord(RegIpCurrent, kIpLinkLocal);
    fresh.switchOff();
    ASSERT_TRUE(fresh.start());
    EXPECT_EQ(GvcpClient(config.address).ask(encodeDiscovery(1)).status, Success);
}

TEST_F(EmulatorPower, aForcedAddressLastsUntilThePowerGoes)
{
    const std::string before = camera.config().address;
    const std::string forced = tests::freshLoopbackAddress();
    ASSERT_EQ(
        KX_CC_ForceIp(std::make_unique<KX_DeviceInfo>(record()).get(), *parseAddress(forced), 0xFF000000, 0),
        KX_OK);
    EXPECT_EQ(camera.peekWord(RegCurrentAddress), *parseAddress(forced));
    GvcpClient there(forced);
    ASSERT_TRUE(there.takeControl());
    ASSERT_EQ(there.write({{kReset, 1}}).status, Success);
    ASSERT_TRUE(camera.waitFor([](const emu::Counters& counters) { return counters.restarts == 1; }));
    for (int left = 1000; left > 0 && camera.peekWord(RegCurrentAddress) != *parseAddress(before); --left)
        std::this_thread::sleep_for(milliseconds(10));
    EXPECT_EQ(host.ask(encodeDiscovery(1)).status, Success);
}

TEST_F(EmulatorPower, aControlledCameraKeepsItsAddress)
{
    const KX_DeviceInfo device = record();
    ASSERT_TRUE(host.takeControl());
    EXPECT_EQ(KX_CC_ForceIp(&device, *parseAddress(tests::freshLoopbackAddress()), 0xFF000000, 0),
              KX_E_CONTROL_REFUSED);
    EXPECT_EQ(camera.counters().forceIp, 0u);
}

// Whoever else is at the address does not answer for the camera that should get it.
TEST_F(EmulatorPower, anotherCameraAtTheAddressIsNotTheOneThatWasMeant)
{
    KX_DeviceInfo stranger = record();
    stranger.special.gige.macLow ^= 0x100;
    EXPECT_EQ(KX_CC_ForceIp(&stranger, *parseAddress(camera.config().address), 0xFF000000, 0),
              KX_E_NO_ANSWER);
    EXPECT_EQ(camera.counters().forceIp, 0u);
}

TEST_F(EmulatorPower, addressesThatNoHostCanHaveAreRefused)
{
    const KX_DeviceInfo device = record();
    KX_AddressOwner owner;
    for (const char* wrong : {"0.0.0.0", "224.0.0.1", "255.255.255.255"}) {
        EXPECT_EQ(KX_CC_ForceIp(&device, *parseAddress(wrong), 0xFF000000, 0), KX_E_PARAMETER) << wrong;
        EXPECT_EQ(KX_CC_ProbeAddress(*parseAddress(wrong), 0, &owner), KX_E_PARAMETER) << wrong;
    }
    for (const uint32_t mask : {0u, 0xFF00FF00u})
        EXPECT_EQ(KX_CC_ForceIp(&device, *parseAddress("127.1.2.3"), mask, 0), KX_E_PARAMETER) << mask;
    EXPECT_EQ(KX_CC_ForceIp(nullptr, *parseAddress("127.1.2.3"), 0xFF000000, 0), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_ForceIp(&device, *parseAddress("127.1.2.3"), 0xFF000000, *parseAddress("224.0.0.1")),
              KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_ProbeAddress(*parseAddress("127.1.2.3"), 0, nullptr), KX_E_PARAMETER);
    KX_DeviceInfo usb = device;
    usb.transportType = KX_TRANSPORT_USB3;
    EXPECT_EQ(KX_CC_ForceIp(&usb, *parseAddress("127.1.2.3"), 0xFF000000, 0), KX_E_NOT_SUPPORTED);
}

TEST_F(EmulatorPower, aCameraIsFoundAtItsAddressAndNobodyElsewhere)
{
    const KX_DeviceInfo info = record();
    KX_AddressOwner owner;
    ASSERT_EQ(KX_CC_ProbeAddress(info.special.gige.ipAddress, 0, &owner), KX_OK);
    EXPECT_EQ(owner.isTaken, 1u);
    EXPECT_EQ(owner.means, uint32_t(KX_PROBE_REQUEST));
    EXPECT_EQ(owner.macHigh, info.special.gige.macHigh);
    EXPECT_EQ(owner.macLow, info.special.gige.macLow);
    ASSERT_EQ(KX_CC_ProbeAddress(*parseAddress(tests::freshLoopbackAddress()), 0, &owner), KX_OK);
    EXPECT_EQ(owner.isTaken, 0u);
}

TEST_F(EmulatorPower, streamsWhereAHostWantsIt)
{
    camera.streamTo(0x7F000001, 5000);
    EXPECT_EQ(camera.peekWord(RegStreamAddress0), 0x7F000001u);
    EXPECT_EQ(number("GevSCPHostPort"), 5000);
    EXPECT_NE(number("GevSCPSPacketSize"), 1400);
}
