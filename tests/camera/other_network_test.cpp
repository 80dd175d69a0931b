// GigE Vision cameras whose address is of another network than the interface that they are wired to, in a
// network of the test's own: two namespaces and a wire between them.
#include "KXCameraControl/ports/Discovery.h"
#include "camera_emulator/EmulatedCamera.h"
#include "gvcp/Gvcp.h"

#include <gtest/gtest.h>

#include <sched.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace
{

constexpr char kNear[] = "192.168.77.20";
constexpr char kFar[] = "10.77.5.9";
constexpr char kWayBack[] =
    "ip address add 192.168.77.99/24 dev cam"; // by which cameras can answer this host

bool run(const std::string& command)
{
    return std::system(("exec 2>/dev/null; " + command).c_str()) == 0; // NOLINT(cert-env33-c): of this file
}

// The cameras' end of a wire. Namespaces belong to threads, and so do the sockets that they open.
class CameraSide
{
public:
    // `wire`: its end at this host. `more`: what else is to be set up there.
    CameraSide(const std::string& wire, const std::vector<emu::CameraConfig>& configs,
               const std::string& more)
    {
        for (const emu::CameraConfig& config : configs)
            m_cameras.push_back(std::make_unique<emu::EmulatedCamera>(config));
        m_thread = std::thread([this, wire, more] { live(wire, more); });
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_isReady; });
    }
    ~CameraSide()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isOver = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }
    bool isGood() const { return m_isGood; }
    const emu::EmulatedCamera& camera(size_t index) const { return *m_cameras[index]; }

private:
    void live(const std::string& wire, const std::string& more)
    {
        const std::string host = std::to_string(getpid()); // the main thread's network
        m_isGood = unshare(CLONE_NEWNET) == 0 && run("ip link set lo up") &&
                   run("ip link add cam type veth peer name " + wire + " netns " + host) &&
                   run("ip link set cam up") && run("echo 0 > /proc/sys/net/ipv4/conf/all/rp_filter") &&
                   run("echo 0 > /proc/sys/net/ipv4/conf/cam/rp_filter") && run(more);
        for (const auto& camera : m_cameras)
            m_isGood = m_isGood && run("ip address add " + camera->config().address + "/24 dev cam") &&
                       camera->start();
        std::unique_lock lock(m_mutex);
        m_isReady = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_isOver; });
        for (const auto& camera : m_cameras)
            camera->stop();
        run("ip link delete cam"); // a namespace that nobody is in goes some time later, with its wires
    }

    std::vector<std::unique_ptr<emu::EmulatedCamera>> m_cameras;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isReady = false;
    bool m_isOver = false;
    bool m_isGood = false;
    std::thread m_thread;
};

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
    // Before there is any other thread: an ordinary user gets a network of his own by being root in it.
    static void SetUpTestSuite()
    {
        isAlone = unshare(geteuid() == 0 ? CLONE_NEWNET : CLONE_NEWUSER | CLONE_NEWNET) == 0 &&
                  run("ip link >/dev/null");
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
    const CameraSide elsewhere("host1", {configOf("OTHER", kFar, false)}, kWayBack);
    ASSERT_TRUE(elsewhere.isGood());
    ASSERT_TRUE(setUp("host1", "10.77.5.1"));
    const auto entries = found();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_STREQ(reinterpret_cast<const char*>(entries[0].info.special.gige.serialNumber), "FAR");
    EXPECT_EQ(entries[0].availability, uint32_t(KX_AVAILABILITY_UNREACHABLE));
    EXPECT_EQ(elsewhere.camera(0).counters().requests(), 0u);
}

} // namespace
