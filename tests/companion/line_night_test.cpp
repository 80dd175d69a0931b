// What happens to a line in a night: twenty emulated cameras on two networks of the test's own. One dies, and
// somebody plugs in a new one, which has a factory address of no network of this host.
#include "companion/LineCompanion.h"
#include "support/OwnNetwork.h"

#include "gvcp/Gvcp.h"

#include <nlohmann/json.hpp>

#include <QFile>

#include <optional>

using ::testing::Contains;
using ::testing::Each;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using tests::Arguments;
using tests::CameraSide;
using tests::Result;
using tests::runInNetwork;
using tests::runInProcess;

namespace
{

constexpr int kPerNetwork = 10;
constexpr char kFactoryAddress[] = "10.99.0.7";

std::string twoDigits(int number)
{
    return (number < 10 ? "0" : "") + std::to_string(number);
}

class NightOfALine : public tests::LineOfCameras
{
protected:
    // Before there is any other thread.
    static void SetUpTestSuite()
    {
        isAlone = tests::enterOwnNetwork() && runInNetwork("ip link set lo up") &&
                  bridge("br0", "192.168.77.1") && bridge("br1", "192.168.78.1");
    }
    static bool bridge(const std::string& name, const std::string& address)
    {
        return runInNetwork("ip link add " + name + " type bridge && ip address add " + address + "/24 dev " +
                            name + " && ip link set " + name +
                            " up && echo 0 > /proc/sys/net/ipv4/conf/all/rp_filter" +
                            " && echo 0 > /proc/sys/net/ipv4/conf/" + name + "/rp_filter");
    }
    static bool plugIn(const std::string& wire, const std::string& bridge)
    {
        return runInNetwork("ip link set " + wire + " master " + bridge + " && ip link set " + wire + " up");
    }

    void SetUp() override
    {
        if (!isAlone)
            GTEST_SKIP() << "SKIPPED: no network namespace of one's own, or no ip (Debian package iproute2)";
        qputenv("KX_CAMERA_INTERFACES", "br0,br1");
        qunsetenv("KX_CAMERA_ADDRESSES");
        first.emplace("host0", configsOf(1, "192.168.77."), "true");
        second.emplace("host1", configsOf(1 + kPerNetwork, "192.168.78."), "true");
        ASSERT_TRUE(first->isGood() && second->isGood());
        ASSERT_TRUE(plugIn("host0", "br0") && plugIn("host1", "br1"));
        awaitCameras(2 * kPerNetwork);
    }

    static std::vector<emu::CameraConfig> configsOf(int begin, const std::string& network)
    {
        std::vector<emu::CameraConfig> configs;
        for (int number = begin; number < begin + kPerNetwork; ++number) {
            emu::CameraConfig config;
            config.serial = "S" + twoDigits(number);
            config.userName = "Gate " + twoDigits(number);
            config.address = network + std::to_string(100 + number);
            config.mask = "255.255.255.0";
            config.broadcast = true;
            configs.push_back(config);
        }
        return configs;
    }

    // Wires need a moment.
    void awaitCameras(int count)
    {
        int found = 0;
        for (int left = 60; left > 0 && found != count; --left) {
            found = 0;
            for (const tests::Json& object : tests::objects(runInProcess({"list", "--json"})))
                found += object["kind"] == "camera";
        }
        ASSERT_EQ(found, count);
    }

    // As delivered: no name, and an address of nobody's network. On a wire whose end has its MAC address.
    void plugInNewCamera()
    {
        emu::CameraConfig config;
        config.serial = "N1";
        config.mac = "02:00:00:00:0A:0B";
        config.address = kFactoryAddress;
        config.mask = "255.255.255.0";
        config.isPersistent = false;
        config.broadcast = true;
        config.restartTime = std::chrono::milliseconds(4000);
        config.plumb = [](uint32_t address, uint32_t, bool isTaken) {
            runInNetwork(std::string("ip address ") + (isTaken ? "add " : "del ") +
                         gvcp::formatAddress(address) + "/24 dev cam");
        };
        fresh.emplace("host2", std::vector{config}, "ip link set cam address " + config.mac);
        ASSERT_TRUE(fresh->isGood() && plugIn("host2", "br0"));
    }

    // The power supply of one of the first network.
    void die(size_t index)
    {
        emu::EmulatedCamera& camera = first->camera(index);
        first->there([&] {
            camera.stop();
            runInNetwork("ip address del " + camera.config().address + "/24 dev cam");
        });
    }

    static inline bool isAlone = false;
    std::optional<CameraSide> first;
    std::optional<CameraSide> second;
    std::optional<CameraSide> fresh;
};

} // namespace

TEST_F(NightOfALine, EndsAsItBegan)
{
    for (int i = 0; i < kPerNetwork; ++i)
        for (CameraSide* side : {&*first, &*second})
            ASSERT_EQ(side->camera(size_t(i)).setNode("Height", int64_t(16 + 16 * i)), "");
    const Result begun = init();
    ASSERT_EQ(begun.code, 0) << begun.err;
    EXPECT_THAT(states(), testing::AllOf(SizeIs(2 * kPerNetwork), Each(EndsWith(": in order"))));

    // The line runs: a program streams from all of them.
    for (int i = 0; i < kPerNetwork; ++i)
        for (CameraSide* side : {&*first, &*second})
            side->camera(size_t(i)).streamTo(*gvcp::parseAddress("192.168.77.1"), uint16_t(5000 + i));
    EXPECT_EQ(check().code, 0);

    // Somebody has been at two of them.
    ASSERT_EQ(first->camera(3).setNode("Height", int64_t(480)), "");
    ASSERT_EQ(second->camera(4).setNode("DeviceUserID", std::string("Mine")), "");
    const std::vector<std::string> touched = states();
    EXPECT_THAT(touched, Contains("Gate 04: differs"));
    EXPECT_THAT(touched, Contains("Gate 15: elsewhere"));
    EXPECT_THAT(touched, Contains(EndsWith(": in order")).Times(2 * kPerNetwork - 2));
    const Result applied = line({"apply"}, {"--yes"});
    EXPECT_EQ(applied.code, 0) << applied.err;
    EXPECT_EQ(check().code, 0);

    // Three in the morning.
    die(6);
    plugInNewCamera();
    awaitCameras(2 * kPerNetwork);
    EXPECT_EQ(check().code, 3);
    EXPECT_THAT(states(), testing::AllOf(Contains("Gate 07: missing"), Contains("-: not in the inventory")));
    const Result replaced = line({"replace"}, {"--camera", "Gate 07", "--yes"});
    ASSERT_EQ(replaced.code, 0) << replaced.err << replaced.out;
    EXPECT_THAT(replaced.err,
                HasSubstr("EMU-1 N1 (02:00:00:00:0A:0B) at 10.99.0.7 takes the place of \"Gate 07\""));
    EXPECT_THAT(replaced.err, HasSubstr("now, proven over a restart.\n"));
    EXPECT_THAT(states(), testing::AllOf(SizeIs(2 * kPerNetwork), Each(EndsWith(": in order"))));
    emu::EmulatedCamera& camera = fresh->camera(0);
    EXPECT_EQ(std::get<int64_t>(*camera.node("Height")), 16 + 16 * 6);

    // Somebody takes it for his own, in a network that this host is not in.
    ASSERT_EQ(runInProcess({"ip", "--serial", "N1", "--force", "10.99.0.8/24", "--yes"}).code, 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(480)), "");
    EXPECT_THAT(states(), Contains("Gate 07: unreachable"));
    const Result reached = line({"apply"}, {"--yes"});
    EXPECT_EQ(reached.code, 4) << reached.err;
    EXPECT_THAT(reached.err,
                HasSubstr("Gate 07: unreachable now; its features are what the next apply looks at.\n"));
    EXPECT_THAT(states(), Contains("Gate 07: differs"));
    EXPECT_EQ(line({"apply"}, {"--yes"}).code, 0);
    EXPECT_EQ(check().code, 0);
}

// An address of the line, behind a host that is no camera and answers nothing but ARP.
TEST_F(NightOfALine, LeavesAnAddressToAHostThatIsNoCamera)
{
    ASSERT_EQ(init({"--name", "Gate 07"}).code, 0);
    die(6);
    plugInNewCamera();
    awaitCameras(2 * kPerNetwork);
    second->there([] { runInNetwork("ip address add 192.168.77.107/32 dev cam"); });
    ASSERT_TRUE(plugIn("host1", "br0"));
    const Result run = line({"replace"}, {"--camera", "Gate 07", "--with", "serial:N1", "--yes"});
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("the address 192.168.77.107 is somebody else's ("));
    EXPECT_EQ(fresh->camera(0).counters().forceIp, 0u);
    const Result forced = runInProcess({"ip", "--serial", "N1", "--force", "192.168.77.107/24", "--yes"});
    EXPECT_EQ(forced.code, 1);
    EXPECT_EQ(fresh->camera(0).counters().forceIp, 0u);
    EXPECT_EQ(runInProcess({"ip", "--serial", "N1", "--force", "192.168.77.200/24", "--yes"}).code, 0);
    EXPECT_EQ(fresh->camera(0).counters().forceIp, 1u);
}

// The line's own network is one that this host is not in.
TEST_F(NightOfALine, IsSetByAnAddressForTheTimeBeing)
{
    ASSERT_EQ(init({"--name", "Gate 07"}).code, 0);
    write("hall.toml",
          fileText("hall.toml").replace("address = \"192.168.77.107\"", "address = \"192.168.99.7\""));
    die(6);
    plugInNewCamera();
    awaitCameras(2 * kPerNetwork);
    const Result run = line({"replace"}, {"--camera", "Gate 07", "--with", "serial:N1", "--yes"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.err, HasSubstr("  a free address of its interface's network for the time being\n"));
    EXPECT_THAT(run.err, HasSubstr("Gate 07: reached at 192.168.77.254/24, for the time being\n"));
    EXPECT_THAT(run.err, HasSubstr("it is back, in a network that this host is not in"));
    EXPECT_THAT(run.err, HasSubstr("now; not proven over a restart.\n"));
    EXPECT_EQ(fresh->camera(0).peekWord(gvcp::RegCurrentAddress), *gvcp::parseAddress("192.168.99.7"));
    EXPECT_THAT(states(), Contains("Gate 07: unreachable"));
}

// Answers from another network do not come through.
TEST_F(NightOfALine, TellsWhatOfThisHostMayHideTheNewCamera)
{
    ASSERT_EQ(init({"--name", "Gate 07"}).code, 0);
    die(6);
    plugInNewCamera();
    awaitCameras(2 * kPerNetwork);
    ASSERT_TRUE(runInNetwork("echo 1 > /proc/sys/net/ipv4/conf/br0/rp_filter"));
    const Result run = line({"replace"}, {"--camera", "Gate 07", "--with", "serial:N1", "--yes"});
    EXPECT_TRUE(runInNetwork("echo 0 > /proc/sys/net/ipv4/conf/br0/rp_filter"));
    EXPECT_EQ(run.code, 3) << run.err;
    EXPECT_THAT(run.err,
                HasSubstr("What may hide cameras: br0 filters reverse paths strictly (rp_filter), "));
}
