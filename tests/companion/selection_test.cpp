#include "iefeatures/cameras/CameraSelection.h"

#include "companion/CompanionFixture.h"

#include <CLI/CLI.hpp>

#include <cstring>

using namespace companion;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tests::gigeEntry;

namespace
{

std::vector<ListedCamera> fourCameras()
{
    return camerasFrom(
        {gigeEntry("A1", "100", "Gate 1", 0x7F000001), gigeEntry("A1", "200", "Gate 2", 0x7F000002),
         gigeEntry("B2", "300", "Gate 1", 0x7F000003), gigeEntry("B2", "100", "", 0x7F0000FE)});
}

std::vector<int> ids(const CameraSelection::Choice& choice)
{
    std::vector<int> result;
    for (const ListedCamera& camera : choice.cameras)
        result.push_back(camera.device.nDeviceID);
    return result;
}

CameraSelection::Choice choose(const tests::Arguments& arguments,
                               const std::vector<ListedCamera>& cameras = fourCameras())
{
    CLI::App app;
    CameraSelection selection;
    selection.addOptions(app);
    app.parse(tests::Arguments(arguments.rbegin(), arguments.rend()));
    return selection.choose(cameras);
}

} // namespace

TEST(Cameras, AreNumberedInTheOrderOfTheLibrary)
{
    const auto cameras = fourCameras();
    ASSERT_EQ(cameras.size(), 4u);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(cameras[size_t(i)].device.nDeviceID, i + 1);
    EXPECT_EQ(cameras[3].address, "127.0.0.254");
}

TEST(Cameras, CarryTheLibrarysRecordForTheWorker)
{
    const KX_DeviceEntry entry = gigeEntry("A1", "100", "", 0x0A000001, KX_AVAILABILITY_IN_USE);
    const ListedCamera camera = camerasFrom({entry}).front();
    EXPECT_EQ(std::memcmp(&camera.device.stDeviceInfo, &entry.info, sizeof entry.info), 0);
    EXPECT_EQ(camera.device.nStatus, 2);
}

TEST(Cameras, AreDescribedByTheirTransport)
{
    KX_DeviceEntry usb{};
    usb.info.transportType = KX_TRANSPORT_USB3;
    std::memcpy(usb.info.special.usb3.modelName, "U", 1);
    std::memcpy(usb.info.special.usb3.serialNumber, "77", 2);
    std::memcpy(usb.info.special.usb3.userDefinedName, "Lid", 3);
    usb.availability = KX_AVAILABILITY_UNREACHABLE;
    KX_DeviceEntry link{};
    link.info.transportType = KX_TRANSPORT_CAMERA_LINK;
    std::memcpy(link.info.special.cameraLink.portId, "COM3", 4);
    std::memcpy(link.info.special.cameraLink.serialNumber, "88", 2);
    link.availability = KX_AVAILABILITY_FREE;

    const auto cameras = camerasFrom({usb, link});
    EXPECT_EQ(cameras[0].transport, "U3V");
    EXPECT_EQ(cameras[0].userName, "Lid");
    EXPECT_EQ(cameras[0].address, "");
    EXPECT_EQ(cameras[0].status, "unreachable");
    EXPECT_EQ(cameras[1].transport, "CL");
    EXPECT_EQ(cameras[1].userName, "");
    EXPECT_EQ(cameras[1].address, "COM3");
    EXPECT_EQ(cameras[1].status, "free");
}

TEST(Cameras, TakeTextsThatFillTheirFieldWithoutAZero)
{
    const ListedCamera camera = camerasFrom({gigeEntry(std::string(32, 'm'), std::string(16, 's'))}).front();
    EXPECT_EQ(camera.model, QString(32, 'm'));
    EXPECT_EQ(camera.serial, QString(16, 's'));
}

TEST(Selection, TakesAll)
{
    EXPECT_THAT(ids(choose({"--all"})), ElementsAre(1, 2, 3, 4));
}

TEST(Selection, SaysThatThereIsNoneToTake)
{
    const auto choice = choose({"--all"}, {});
    EXPECT_EQ(choice.misses, QStringList{"No camera was found."});
}

TEST(Selection, TakesEveryCameraThatFits)
{
    EXPECT_THAT(ids(choose({"--serial", "100"})), ElementsAre(1, 4));
    EXPECT_THAT(ids(choose({"--name", "Gate 1"})), ElementsAre(1, 3));
    EXPECT_THAT(ids(choose({"--model", "B2"})), ElementsAre(3, 4));
    EXPECT_THAT(ids(choose({"--address", "127.0.0.2"})), ElementsAre(2));
}

TEST(Selection, AddsUpSelectorsAndTakesEachCameraOnceInListOrder)
{
    EXPECT_THAT(ids(choose({"--model", "B2", "--serial", "200", "100"})), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(ids(choose({"--serial", "300", "--serial", "200"})), ElementsAre(2, 3));
}

TEST(Selection, ComparesExactly)
{
    const auto choice = choose({"--serial", "10", "--name", "gate 1", "--model", "a1"});
    EXPECT_THAT(choice.cameras, IsEmpty());
    EXPECT_EQ(choice.misses, (QStringList{"No camera has the serial number \"10\".",
                                          "No camera has the user name \"gate 1\".",
                                          "No camera has the model name \"a1\"."}));
}

TEST(Selection, NamesEachSelectorThatFitsNobody)
{
    const auto choice = choose({"--serial", "100", "999", "--address", "1.2.3.4"});
    EXPECT_EQ(choice.misses, (QStringList{"No camera has the serial number \"999\".",
                                          "No camera has the address \"1.2.3.4\"."}));
}

TEST(Selection, TellsTwinsApartByAddressOrMac)
{
    KX_DeviceEntry first = gigeEntry("A1", "100", "", 0x7F000001);
    KX_DeviceEntry second = gigeEntry("A1", "100", "", 0x7F000002);
    first.info.special.gige.macHigh = second.info.special.gige.macHigh = 0x0200;
    first.info.special.gige.macLow = 0x0000000A;
    second.info.special.gige.macLow = 0xABCDEF0B;
    const auto cameras = camerasFrom({first, second, gigeEntry("A1", "200", "", 0x7F000003)});
    EXPECT_EQ(cameras[0].title(), "A1 100 at 127.0.0.1");
    EXPECT_EQ(cameras[1].title(), "A1 100 at 127.0.0.2");
    EXPECT_EQ(cameras[2].title(), "A1 200");
    EXPECT_EQ(cameras[1].mac, "02:00:AB:CD:EF:0B");
    EXPECT_THAT(ids(choose({"--address", "127.0.0.2"}, cameras)), ElementsAre(2));
    EXPECT_THAT(ids(choose({"--mac", "02:00:AB:CD:EF:0B"}, cameras)), ElementsAre(2));
    EXPECT_THAT(ids(choose({"--mac", "02-00-00-00-00-0a"}, cameras)), ElementsAre(1));
    EXPECT_EQ(choose({"--mac", "02:00:00:00:00:0B"}, cameras).misses,
              QStringList{"No camera has the MAC address \"02:00:00:00:00:0B\"."});
}

TEST(Selection, ExpectsANumber)
{
    EXPECT_THAT(choose({"--all", "--expect", "4"}).misses, IsEmpty());
    EXPECT_EQ(choose({"--all", "--expect", "5"}).misses,
              QStringList{"5 camera(s) were expected, 4 were found."});
    EXPECT_EQ(choose({"--serial", "200", "--expect", "2"}).misses,
              QStringList{"2 camera(s) were expected, 1 was found."});
    EXPECT_EQ(choose({"--all", "--expect", "0"}).misses,
              QStringList{"0 camera(s) were expected, 4 were found."});
}

TEST(Selection, NeedsOneOptionAndNoOtherBesideAll)
{
    EXPECT_THROW(choose({}), CLI::ParseError);
    EXPECT_THROW(choose({"--all", "--serial", "100"}), CLI::ParseError);
    EXPECT_THROW(choose({"--serial"}), CLI::ParseError);
}
