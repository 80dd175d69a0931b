// Who is there: the cameras that KX_CAMERA_INTERFACES and KX_CAMERA_ADDRESSES lead to.
#include "KXCameraControl/ports/Discovery.h"
#include "KXCameraControl/ports/SearchPlaces.h"
#include "KXCameraControl/ports/gige/Inquiry.h"
#include "camera/GvcpClient.h"
#include "camera/ScriptedCamera.h"
#include "camera_emulator/EmulatedCamera.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace gvcp;

namespace
{

emu::CameraConfig configOf(const std::string& serial)
{
    emu::CameraConfig config;
    config.address = tests::freshLoopbackAddress();
    config.serial = serial;
    return config;
}

// One emulated camera, running.
struct Emulated : emu::EmulatedCamera
{
    explicit Emulated(const std::string& serial) : Emulated(configOf(serial)) {}
    explicit Emulated(const emu::CameraConfig& cameraConfig) : emu::EmulatedCamera(cameraConfig)
    {
        const auto started = start();
        EXPECT_TRUE(started) << started.message;
    }
    uint32_t address() const { return *parseAddress(config().address); }
};

std::vector<KX_DeviceEntry> enumerate(const std::string& addresses, const char* interfaces = "none",
                                      uint32_t mask = KX_TRANSPORT_ALL)
{
    setenv("KX_CAMERA_INTERFACES", interfaces, 1);
    setenv("KX_CAMERA_ADDRESSES", addresses.c_str(), 1);
    std::vector<KX_DeviceEntry> entries(3); // what was there before does not stay
    EXPECT_EQ(kx::enumerateDevices(mask, entries), KX_OK);
    return entries;
}

const KX_GigEDeviceInfo& gige(const KX_DeviceEntry& entry)
{
    return entry.info.special.gige;
}

std::string text(const uint8_t* field)
{
    return reinterpret_cast<const char*>(field);
}

std::vector<KX_DeviceEntry> entriesOf(const std::string& address, const std::vector<KX_DeviceEntry>& all)
{
    std::vector<KX_DeviceEntry> entries;
    for (const KX_DeviceEntry& entry : all)
        if (gige(entry).ipAddress == *parseAddress(address))
            entries.push_back(entry);
    return entries;
}

std::string serials(const std::vector<KX_DeviceEntry>& entries)
{
    std::string list;
    for (const KX_DeviceEntry& entry : entries)
        list += (list.empty() ? "" : " ") + text(gige(entry).serialNumber);
    return list;
}

} // namespace

TEST(Discovery, anEntryHoldsWhatTheCameraSaysOfItself)
{
    emu::CameraConfig config = configOf("SN-1");
    config.manufacturer = "Maker";
    config.model = "Model-7";
    config.firmware = "4.5.6";
    config.userName = "Left";
    Emulated camera(config);
    const auto entries = enumerate(config.address);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].info.transportType, uint32_t(KX_TRANSPORT_GIGE));
    EXPECT_EQ(text(gige(entries[0]).manufacturerName), "Maker");
    EXPECT_EQ(text(gige(entries[0]).modelName), "Model-7");
    EXPECT_EQ(text(gige(entries[0]).deviceVersion), "4.5.6");
    EXPECT_EQ(text(gige(entries[0]).serialNumber), "SN-1");
    EXPECT_EQ(text(gige(entries[0]).userDefinedName), "Left");
    EXPECT_EQ(gige(entries[0]).macHigh, 0x0200u);
    EXPECT_EQ(gige(entries[0]).macLow, camera.address());
    EXPECT_EQ(gige(entries[0]).ipAddress, camera.address());
    EXPECT_EQ(gige(entries[0]).interfaceAddress, 0u);
    EXPECT_STREQ(entries[0].interfaceName, "unicast");
    EXPECT_EQ(entries[0].availability, uint32_t(KX_AVAILABILITY_FREE));
}

TEST(Discovery, textsThatFillTheirRegisterAreCutForTheTerminatingZero)
{
    ScriptedCamera camera;
    camera.setText(RegManufacturer, std::string(32, 'a'));
    camera.setText(RegModel, std::string(32, 'b'));
    camera.setText(RegDeviceVersion, std::string(32, 'c'));
    camera.setText(RegSerialNumber, std::string(16, 'd'));
    camera.setText(RegUserName, std::string(16, 'e'));
    const auto entries = enumerate(camera.address());
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(text(gige(entries[0]).manufacturerName), std::string(31, 'a'));
    EXPECT_EQ(text(gige(entries[0]).modelName), std::string(31, 'b'));
    EXPECT_EQ(text(gige(entries[0]).deviceVersion), std::string(31, 'c'));
    EXPECT_EQ(text(gige(entries[0]).serialNumber), std::string(15, 'd'));
    EXPECT_EQ(text(gige(entries[0]).userDefinedName), std::string(15, 'e'));
}

TEST(Discovery, camerasComeBySerialNumberThenAddress)
{
    Emulated second("B");
    Emulated first("A");
    Emulated third("B");
    ASSERT_LT(second.address(), third.address());
    const auto entries =
        enumerate(third.config().address + "," + second.config().address + "," + first.config().address);
    EXPECT_EQ(serials(entries), "A B B");
    EXPECT_EQ(gige(entries[1]).ipAddress, second.address());
    EXPECT_EQ(gige(entries[2]).ipAddress, third.address());
}

TEST(Discovery, settingsMayHoldNonsense)
{
    Emulated camera("A");
    const std::string address = camera.config().address;
    const auto entries = enumerate("nonsense, ,127.0.0,0.0.0.0,999.1.1.1,255.255.255.255,\t" + address +
                                       " ," + address + ",127.0.0.1x,",
                                   "none, no such interface,");
    EXPECT_EQ(serials(entries), "A") << "asked twice, listed once";
    EXPECT_EQ(enumerate("").size(), 0u);
    unsetenv("KX_CAMERA_ADDRESSES");
    std::vector<KX_DeviceEntry> none;
    EXPECT_EQ(kx::enumerateDevices(KX_TRANSPORT_ALL, none), KX_OK);
    EXPECT_TRUE(none.empty());
}

TEST(Discovery, otherTransportsAskNoNetwork)
{
    Emulated camera("A");
    EXPECT_TRUE(
        enumerate(camera.config().address, "none", KX_TRANSPORT_USB3 | KX_TRANSPORT_CAMERA_LINK).empty());
    EXPECT_EQ(camera.counters().requests(), 0u);
}

TEST(Discovery, aCameraInUseIsToldByItsControlRegister)
{
    Emulated free("A");
    Emulated controlled("B");
    Emulated exclusive("C");
    Emulated deaf("D");
    controlled.stealControl();
    exclusive.stealControl(true);
    emu::Faults faults;
    faults.discoveryOnly = true;
    deaf.setFaults(faults);
    const auto entries = enumerate(free.config().address + "," + controlled.config().address + "," +
                                   exclusive.config().address + "," + deaf.config().address);
    ASSERT_EQ(serials(entries), "A B C D");
    const uint32_t expected[] = {KX_AVAILABILITY_FREE, KX_AVAILABILITY_IN_USE, KX_AVAILABILITY_IN_USE,
                                 KX_AVAILABILITY_UNREACHABLE};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(entries[i].availability, expected[i]) << i;
        uint32_t availability = 0;
        EXPECT_EQ(kx::deviceAvailability(entries[i].info, availability), KX_OK);
        EXPECT_EQ(availability, expected[i]) << i;
    }
    for (const Emulated* camera : {&free, &controlled, &exclusive, &deaf})
        EXPECT_EQ(camera->counters().writeReg, 0u) << "control is taken of nothing";
    EXPECT_FALSE(free.isControlled());
}

TEST(Discovery, availabilityOfACameraThatIsGone)
{
    KX_DeviceInfo device{};
    uint32_t availability = 0;
    device.transportType = KX_TRANSPORT_GIGE;
    device.layout = KX_DEVICE_INFO_LAYOUT;
    EXPECT_EQ(kx::deviceAvailability(device, availability), KX_OK) << "no address";
    EXPECT_EQ(availability, uint32_t(KX_AVAILABILITY_UNREACHABLE));
    device.special.gige.ipAddress = *parseAddress(tests::freshLoopbackAddress());
    availability = 0;
    EXPECT_EQ(kx::deviceAvailability(device, availability), KX_OK);
    EXPECT_EQ(availability, uint32_t(KX_AVAILABILITY_UNREACHABLE));
    device.transportType = 2;
    EXPECT_EQ(kx::deviceAvailability(device, availability), KX_E_NOT_SUPPORTED);
}

TEST(Discovery, theAddressThatReachedTheCameraCounts)
{
    Emulated camera("A");
    camera.pokeWord(RegCurrentAddress, 0xC0A80001);
    const auto entries = enumerate(camera.config().address);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(gige(entries[0]).ipAddress, camera.address());
}

// Tries are long here: a machine that is busy for a moment must not make for a second question.
TEST(Inquiry, asksAgainOnlyWhatIsNotAnswered)
{
    Emulated camera("A");
    ScriptedCamera silent;
    silent.setScript([](const CommandPacket&) { return ScriptedCamera::Replies{}; });
    std::vector<kx::UdpSocket> sockets(1);
    ASSERT_TRUE(sockets[0].open(0));
    std::vector<kx::Question> questions{{0, camera.address(), encodeDiscovery(5)},
                                        {0, *parseAddress(silent.address()), encodeDiscovery(5)}};
    std::vector<uint32_t> answers;
    kx::askAll(sockets, questions, {3, std::chrono::milliseconds(500)},
               [&](size_t socket, uint32_t address, const AckPacket& ack) {
                   EXPECT_EQ(socket, 0u);
                   EXPECT_EQ(ack.id, 5);
                   answers.push_back(address);
                   return true;
               });
    EXPECT_EQ(answers, std::vector<uint32_t>{camera.address()});
    EXPECT_EQ(camera.counters().discovery, 1u);
    EXPECT_EQ(silent.received().size(), 3u);
    EXPECT_TRUE(questions[0].isAnswered);
    EXPECT_FALSE(questions[1].isAnswered);
}

TEST(Inquiry, endsWithTheLastAnswer)
{
    Emulated camera("A");
    std::vector<kx::UdpSocket> sockets(1);
    ASSERT_TRUE(sockets[0].open(0));
    std::vector<kx::Question> questions{{0, camera.address(), encodeDiscovery(5)}};
    const auto start = std::chrono::steady_clock::now();
    kx::askAll(sockets, questions, {2, std::chrono::seconds(20)},
               [](size_t, uint32_t, const AckPacket&) { return true; });
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_TRUE(questions[0].isAnswered);
}

TEST(Discovery, lostAndBusyAnswersAreAskedForAgain)
{
    ScriptedCamera camera;
    camera.setText(RegSerialNumber, "S");
    camera.setScript([searches = 0, reads = 0](
                         const CommandPacket& command) mutable -> std::optional<ScriptedCamera::Replies> {
        if (command.command == DiscoveryCmd && ++searches == 1)
            return ScriptedCamera::Replies{};
        if (command.command == ReadRegCmd && ++reads == 1)
            return ScriptedCamera::Replies{{ScriptedCamera::answer(command, {}, Busy)}};
        return std::nullopt;
    });
    const auto entries = enumerate(camera.address());
    ASSERT_EQ(serials(entries), "S");
    EXPECT_EQ(entries[0].availability, uint32_t(KX_AVAILABILITY_FREE));
    EXPECT_GE(camera.receivedFor(RegControlPrivilege).size(), 2u);
}

TEST(Discovery, answersThatAreNoneAreNoCameras)
{
    ScriptedCamera camera;
    const std::function<Bytes(const CommandPacket&)> rows[] = {
        [](const CommandPacket&) { return Bytes{}; },
        [](const CommandPacket&) { return Bytes(7); },
        [](const CommandPacket& c) { return ScriptedCamera::answer(c, Bytes(kDiscoverySize - 1)); },
        [](const CommandPacket& c) {
            return ScriptedCamera::answer(c, Bytes(kDiscoverySize), InvalidHeader);
        },
        [](const CommandPacket& c) {
            return encodeAck({Success, DiscoveryAck, static_cast<uint16_t>(c.id + 1), Bytes(kDiscoverySize)});
        },
        [](const CommandPacket& c) {
            return encodeAck({Success, ReadMemAck, c.id, Bytes(kDiscoverySize)});
        }};
    for (size_t row = 0; row < std::size(rows); ++row) {
        camera.setScript([&, row](const CommandPacket& command) {
            return std::make_optional(ScriptedCamera::Replies{{rows[row](command)}});
        });
        EXPECT_TRUE(enumerate(camera.address()).empty()) << row;
    }
    camera.setScript([](const CommandPacket& command) {
        const Bytes good = ScriptedCamera::answer(command, Bytes(kDiscoverySize));
        return std::make_optional(ScriptedCamera::Replies{{good, std::chrono::milliseconds(0), true}});
    });
    EXPECT_TRUE(enumerate(camera.address()).empty()) << "from another port";
}

TEST(Discovery, oddAnswersToTheControlRegisterAreUnreachable)
{
    ScriptedCamera camera;
    const std::function<Bytes(const CommandPacket&)> rows[] = {
        [](const CommandPacket& c) { return ScriptedCamera::answer(c, {}, InvalidAddress); },
        [](const CommandPacket& c) { return ScriptedCamera::answer(c, Bytes(8)); },
        [](const CommandPacket& c) { return ScriptedCamera::answer(c, {}); },
        [](const CommandPacket& c) {
            return encodeAck({Success, WriteRegAck, c.id, Bytes(4)});
        }};
    for (size_t row = 0; row < std::size(rows); ++row) {
        camera.setScript([&, row](const CommandPacket& command) -> std::optional<ScriptedCamera::Replies> {
            if (command.command == DiscoveryCmd)
                return std::nullopt;
            return ScriptedCamera::Replies{{rows[row](command)}};
        });
        const auto entries = enumerate(camera.address());
        ASSERT_EQ(entries.size(), 1u) << row;
        EXPECT_EQ(entries[0].availability, uint32_t(KX_AVAILABILITY_UNREACHABLE)) << row;
    }
}

// The loopback's broadcast address, so that nothing leaves this host. Everything else on it that listens
// there answers as well, a second run of this test for one: only the test's own camera counts.
TEST(Discovery, broadcastFindsTheCamerasBehindAnInterface)
{
    ScriptedCamera camera(ScriptedCamera::Broadcast::Heard);
    for (const char* interfaces : {"lo", " 127.0.0.1 , eth99"}) {
        const auto entries = entriesOf(camera.address(), enumerate("", interfaces));
        ASSERT_EQ(entries.size(), 1u) << "asked twice, listed once";
        EXPECT_STREQ(entries[0].interfaceName, "lo");
        EXPECT_EQ(gige(entries[0]).interfaceAddress, 0x7F000001u);
        EXPECT_EQ(entries[0].availability, uint32_t(KX_AVAILABILITY_FREE));
    }
    EXPECT_TRUE(enumerate("", "none").empty());
}

TEST(Discovery, aCameraSeenInTwoWaysIsListedOnceWithItsInterface)
{
    for (const auto broadcast :
         {ScriptedCamera::Broadcast::Heard, ScriptedCamera::Broadcast::HeardFromTheSecondOn}) {
        ScriptedCamera camera(broadcast);
        const auto entries = entriesOf(camera.address(), enumerate(camera.address(), "lo"));
        ASSERT_EQ(entries.size(), 1u);
        EXPECT_STREQ(entries[0].interfaceName, "lo") << "the interface tells more than \"unicast\"";
        EXPECT_EQ(entries[0].availability, uint32_t(KX_AVAILABILITY_FREE));
    }
}

// What the environment names and nobody can follow is told, by name, and stops nothing.
TEST(Discovery, whatIsNoPlaceToSearchIsNamed)
{
    const auto problemsOf = [](const char* interfaces, const char* addresses) {
        setenv("KX_CAMERA_INTERFACES", interfaces, 1);
        setenv("KX_CAMERA_ADDRESSES", addresses, 1);
        std::string text;
        for (const std::string& problem : kx::searchPlaces().problems)
            text += problem + '\n';
        return text;
    };
    EXPECT_EQ(problemsOf("none", ""), "");
    EXPECT_EQ(problemsOf("lo", " 127.0.0.9 ,127.0.0.8,"), "");
    EXPECT_EQ(problemsOf("127.0.0.1", "10.0.0.1"), "");
    EXPECT_EQ(problemsOf("lo,eth99", ""),
              "KX_CAMERA_INTERFACES: \"eth99\" is no network interface that this machine has now.\n");
    EXPECT_EQ(problemsOf("127.255.0.1", ""),
              "KX_CAMERA_INTERFACES: \"127.255.0.1\" is no network interface that this machine has now.\n");
    for (const std::string word :
         {"127.0.0.1 127.0.0.2", "gate1", "127.0.0.256", "127.0.0.1:3956", "0.0.0.0"})
        EXPECT_EQ(problemsOf("none", ("127.0.0.3," + word).c_str()),
                  "KX_CAMERA_ADDRESSES: \"" + word + "\" is no address; several are separated by commas.\n");
}

TEST(Discovery, whatCanBeFollowedIsFollowedAllTheSame)
{
    const Emulated camera("SN-1");
    EXPECT_EQ(enumerate("gate1," + camera.config().address, "none,eth99").size(), 1u);
    EXPECT_EQ(kx::searchPlaces().addresses, std::vector<uint32_t>{camera.address()});
}

TEST(Discovery, theControllerIsWhoTheCameraNames)
{
    Emulated camera("SN-1");
    const auto entries = enumerate(camera.config().address);
    ASSERT_EQ(entries.size(), 1u);
    KX_Controller controller{1, 1, {}};
    ASSERT_EQ(kx::controllerOf(entries[0].info, controller), KX_OK);
    EXPECT_EQ(controller.ipAddress, 0u);
    EXPECT_EQ(controller.port, 0u);

    camera.stealControl();
    camera.pokeWord(RegPrimaryAddress, 0x0A010203);
    camera.pokeWord(RegPrimaryPort, 49152);
    ASSERT_EQ(kx::controllerOf(entries[0].info, controller), KX_OK);
    EXPECT_EQ(controller.ipAddress, 0x0A010203u);
    EXPECT_EQ(controller.port, 49152u);

    camera.stealControl(true); // nobody else may read
    ASSERT_EQ(kx::controllerOf(entries[0].info, controller), KX_OK);
    EXPECT_EQ(controller.ipAddress, 0u);

    camera.stop();
    ASSERT_EQ(kx::controllerOf(entries[0].info, controller), KX_OK);
    EXPECT_EQ(controller.ipAddress, 0u);
}

TEST(Discovery, aCameraThatIsBusyIsAskedAgainForItsController)
{
    Emulated camera("SN-1");
    const auto entries = enumerate(camera.config().address);
    ASSERT_EQ(entries.size(), 1u);
    camera.stealControl();
    camera.pokeWord(RegPrimaryAddress, 0x0A010203);
    emu::Faults faults;
    faults.busy = 2;
    camera.setFaults(faults);
    KX_Controller controller{};
    ASSERT_EQ(kx::controllerOf(entries[0].info, controller), KX_OK);
    EXPECT_EQ(controller.ipAddress, 0x0A010203u);
}
