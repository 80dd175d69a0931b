// GigE Vision cameras whose address is of another network than the interface that they are wired to, in a
// network of the test's own: two namespaces and a wire between them.
#include "KXCameraControl/ports/Discovery.h"
#include "KXCameraControl/ports/gige/AddressProbe.h"
#include "camera_emulator/EmulatedCamera.h"
#include "gvcp/Gvcp.h"
#include "support/OwnNetwork.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace
{

using tests::CameraSide;
constexpr auto run = tests::runInNetwork;

constexpr char kNear[] = "192.168.77.20";
constexpr char kFar[] = "10.77.5.9";
constexpr char kWayBack[] =
    "ip address add 192.168.77.99/24 dev cam"; // by which cameras can answer this host

emu::CameraConfig configOf(const char* serial, const char* address, bool hearsEverybody)
{
    emu::CameraConfig config;
    config.serial = serial;
    config.address = address;
    config.mask = "255.255.255.0";
    config.broadcast = hearsEverybody;
    return config;
}

class OtherNetwork : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        isAlone = tests::enterOwnNetwork();
        if (!isAlone)
            return;
        setenv("KX_CAMERA_INTERFACES", "host0", 1);
        unsetenv("KX_CAMERA_ADDRESSES");
    }

    void SetUp() override
    {
        if (!isAlone)
            GTEST_SKIP() << "SKIPPED: no network namespace of one's own, or no ip (Debian package iproute2)";
    }

    static bool setUp(const std::string& wire, const std::string& address)
    {
        return run("ip link set lo up") && run("ip address add " + address + "/24 dev " + wire) &&
               run("ip link set " + wire + " up") && run("echo 0 > /proc/sys/net/ipv4/conf/all/rp_filter") &&
               run("echo 0 > /proc/sys/net/ipv4/conf/" + wire + "/rp_filter");
    }

    void wire(const emu::CameraConfig& config, const std::string& more = "true")
    {
        side.emplace("host0", std::vector{config}, more);
        ASSERT_TRUE(side->isGood());
        ASSERT_TRUE(setUp("host0", "192.168.77.1"));
    }

    // Wires need a moment: what is looked for is looked for again.
    using Wanted = std::function<bool(const KX_DeviceEntry& entry)>;
    static std::vector<KX_DeviceEntry> found(const Wanted& isWanted = [](const KX_DeviceEntry&) {
        return true;
    })
    {
        std::vector<KX_DeviceEntry> entries;
        for (int tries = 20; tries > 0; --tries) {
            EXPECT_EQ(kx::enumerateDevices(KX_TRANSPORT_GIGE, entries), KX_OK);
            if (entries.size() == 1 && isWanted(entries[0]))
                break;
        }
        return entries;
    }
    static bool isFree(const KX_DeviceEntry& entry) { return entry.availability == KX_AVAILABILITY_FREE; }

    static inline bool isAlone = false;
    std::optional<CameraSide> side;
};

TEST_F(OtherNetwork, aCameraOfTheInterfacesNetworkIsFree)
{
    wire(configOf("NEAR", kNear, true));
    const auto entries = found(isFree);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].info.special.gige.ipAddress, *gvcp::parseAddress(kNear));
    EXPECT_EQ(entries[0].availability, uint32_t(KX_AVAILABILITY_FREE));
}

TEST_F(OtherNetwork, aCameraOfAnotherNetworkIsHeardAndUnreachable)
{
    wire(configOf("FAR", kFar, true));
    const auto entries = found();
    ASSERT_EQ(entries.size(), 1u);
    const KX_GigEDeviceInfo& gige = entries[0].info.special.gige;
    EXPECT_STREQ(reinterpret_cast<const char*>(gige.serialNumber), "FAR");
    EXPECT_EQ(gige.ipAddress, *gvcp::parseAddress(kFar));
    EXPECT_EQ(gige.interfaceAddress, *gvcp::parseAddress("192.168.77.1"));
    EXPECT_EQ(entries[0].interfaceMask, 0xFFFFFF00u);
    EXPECT_STREQ(entries[0].interfaceName, "host0");
    EXPECT_EQ(entries[0].availability, uint32_t(KX_AVAILABILITY_UNREACHABLE));
    uint32_t availability = 0;
    EXPECT_EQ(kx::deviceAvailability(entries[0].info, availability), KX_OK);
    EXPECT_EQ(availability, uint32_t(KX_AVAILABILITY_UNREACHABLE));
}

// A search that comes from an address of the camera's network is one that every camera can answer.
TEST_F(OtherNetwork, anInterfaceOfTwoNetworksFindsTheCamerasOfBoth)
{
    for (const bool answersEverybody : {true, false}) {
        emu::CameraConfig config = configOf("FAR", kFar, true);
        config.answersEverybody = answersEverybody;
        wire(config);
        ASSERT_TRUE(run("ip address add 10.77.5.1/24 dev host0"));
        const auto entries = found(isFree);
        ASSERT_EQ(entries.size(), 1u) << answersEverybody;
        EXPECT_EQ(entries[0].info.special.gige.interfaceAddress, *gvcp::parseAddress("10.77.5.1"));
        EXPECT_EQ(entries[0].availability, uint32_t(KX_AVAILABILITY_FREE));
        side.reset();
    }
}

TEST_F(OtherNetwork, aRouteMakesItReachable)
{
    wire(configOf("FAR", kFar, true), kWayBack);
    ASSERT_TRUE(run("ip route add 10.77.5.0/24 dev host0"));
    const auto entries = found(isFree);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].availability, uint32_t(KX_AVAILABILITY_FREE));
}

TEST_F(OtherNetwork, somebodyElseWithItsAddressIsNotTakenForIt)
{
    wire(configOf("FAR", kFar, true));
    CameraSide elsewhere("host1", {configOf("OTHER", kFar, false)}, kWayBack);
    ASSERT_TRUE(elsewhere.isGood());
    ASSERT_TRUE(setUp("host1", "10.77.5.1"));
    const auto entries = found();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_STREQ(reinterpret_cast<const char*>(entries[0].info.special.gige.serialNumber), "FAR");
    EXPECT_EQ(entries[0].availability, uint32_t(KX_AVAILABILITY_UNREACHABLE));
    EXPECT_EQ(elsewhere.camera(0).counters().requests(), 0u);
}

// The emulated cameras' own network follows them.
emu::CameraConfig withPlumbing(emu::CameraConfig config)
{
    config.plumb = [](uint32_t address, uint32_t, bool isTaken) {
        run(std::string("ip address ") + (isTaken ? "add " : "del ") + gvcp::formatAddress(address) +
            "/24 dev cam");
    };
    return config;
}

TEST_F(OtherNetwork, aCameraOfAnotherNetworkTakesAnAddressOfThisOne)
{
    wire(withPlumbing(configOf("FAR", kFar, true)));
    const auto entries = found();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(kx::forceIp(entries[0].info, {*gvcp::parseAddress(kNear), 0xFFFFFF00, 0}), KX_OK);
    const auto now = found(isFree);
    ASSERT_EQ(now.size(), 1u);
    EXPECT_EQ(now[0].info.special.gige.ipAddress, *gvcp::parseAddress(kNear));
    EXPECT_EQ(now[0].availability, uint32_t(KX_AVAILABILITY_FREE));
    EXPECT_EQ(side->camera(0).counters().forceIp, 1u);
}

TEST_F(OtherNetwork, onlyTheCameraOfThatMacAddressObeys)
{
    wire(withPlumbing(configOf("FAR", kFar, true)));
    auto entries = found();
    ASSERT_EQ(entries.size(), 1u);
    entries[0].info.special.gige.macLow ^= 1;
    // Another camera that answers there is not taken for it either.
    EXPECT_EQ(kx::forceIp(entries[0].info, {*gvcp::parseAddress(kFar), 0xFFFFFF00, 0}), KX_E_NO_ANSWER);
    EXPECT_EQ(side->camera(0).counters().forceIp, 0u);
    EXPECT_EQ(found()[0].info.special.gige.ipAddress, *gvcp::parseAddress(kFar));
}

// Also of somebody who is no camera, and whose network this host is not in.
TEST_F(OtherNetwork, whoHasAnAddressAnswersByArp)
{
    wire(configOf("NEAR", kNear, true), std::string(kWayBack) + " && ip address add 10.9.9.9/24 dev cam");
    ASSERT_EQ(found(isFree).size(), 1u);
    const uint32_t here = *gvcp::parseAddress("192.168.77.1");
    for (const char* taken : {kNear, "192.168.77.99", "10.9.9.9"}) {
        const KX_AddressOwner owner = kx::probeAddress(*gvcp::parseAddress(taken), here);
        EXPECT_EQ(owner.isTaken, 1u) << taken;
        EXPECT_EQ(owner.means, uint32_t(KX_PROBE_ARP)) << taken;
        EXPECT_NE(owner.macLow, 0u) << taken;
    }
    const KX_AddressOwner nobody = kx::probeAddress(*gvcp::parseAddress("192.168.77.100"), 0);
    EXPECT_EQ(nobody.isTaken, 0u);
    EXPECT_EQ(nobody.means, uint32_t(KX_PROBE_ARP));
    const KX_AddressOwner own = kx::probeAddress(here, 0);
    EXPECT_EQ(own.isTaken, 1u);
    EXPECT_EQ(own.means, uint32_t(KX_PROBE_OWN));
}

} // namespace
