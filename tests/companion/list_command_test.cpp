#include "companion/CompanionFixture.h"

#include "gvcp/Gvcp.h"

#include <SuiteTools/SuiteTools.h>

#include <nlohmann/json.hpp>

using tests::CompanionTest;
using tests::entries;
using tests::gigeEntry;
using tests::Result;
using tests::runInProcess;

TEST(ListCommand, PrintsAnAlignedTable)
{
    const Result run =
        runInProcess({"list"}, entries({gigeEntry("A1", "100", "门 1", 0x7F000001),
                                        gigeEntry("Longer", "2", "", 0xC0A80102, KX_AVAILABILITY_IN_USE),
                                        gigeEntry("X", "30", "n", 0x0A000001, KX_AVAILABILITY_UNREACHABLE)}));
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, "ID  TRANSPORT  MODEL   SERIAL  NAME  ADDRESS      STATUS\n"
                       " 1  GigE       A1      100     门 1  127.0.0.1    free\n"
                       " 2  GigE       Longer  2             192.168.1.2  in use\n"
                       " 3  GigE       X       30      n     10.0.0.1     unreachable\n");
    EXPECT_EQ(run.err, "");
}

TEST(ListCommand, PrintsJsonWithTheCamerasOwnTexts)
{
    const Result run =
        runInProcess({"list", "--json"}, entries({gigeEntry("A\033\"1", "100", "门", 0x7F000001)}));
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out,
              "{\"format_version\":1,\"command\":\"list\",\"kind\":\"camera\",\"camera\":{\"number\":1,"
              "\"transport\":\"GigE\",\"model\":\"A\\u001b\\\"1\",\"serial\":\"100\",\"name\":\"门\","
              "\"address\":\"127.0.0.1\"},\"status\":\"free\",\"reason\":null,\"mac\":\"00:00:00:00:00:00\","
              "\"controller\":null}\n"
              "{\"format_version\":1,\"command\":\"list\",\"kind\":\"end\",\"exit\":0,\"messages\":[]}\n");
}

TEST(ListCommand, SaysWhyACameraOfAnotherNetworkIsUnreachable)
{
    KX_DeviceEntry elsewhere = gigeEntry("A1", "100", "", 0x0A4D0509, KX_AVAILABILITY_UNREACHABLE);
    elsewhere.info.special.gige.interfaceAddress = 0xC0A84D01;
    elsewhere.interfaceMask = 0xFFFFFF00;
    qstrcpy(elsewhere.interfaceName, "eth1");
    KX_DeviceEntry routed = elsewhere;
    routed.availability = KX_AVAILABILITY_FREE;
    EXPECT_EQ(runInProcess({"list"}, entries({elsewhere, routed})).out,
              "ID  TRANSPORT  MODEL  SERIAL  NAME  ADDRESS    STATUS\n"
              " 1  GigE       A1     100           10.77.5.9  unreachable: not in the network of eth1 "
              "(192.168.77.1/24)\n"
              " 2  GigE       A1     100           10.77.5.9  free\n");
    EXPECT_NE(runInProcess({"list", "--json"}, entries({elsewhere}))
                  .out.find("\"reason\":\"not in the network of eth1 (192.168.77.1/24)\""),
              std::string::npos);
}

TEST(ListCommand, KeepsControlSequencesFromTheTerminal)
{
    const Result run = runInProcess({"list"}, entries({gigeEntry("A\033[2J", "1\n2", "\r")}));
    EXPECT_EQ(run.out.find('\033'), std::string::npos);
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 2);
    EXPECT_EQ(run.out.find('\r'), std::string::npos);
}

TEST(ListCommand, SaysThatNoneWasFound)
{
    const Result table = runInProcess({"list"}, entries({}));
    EXPECT_EQ(table.code, 0);
    EXPECT_EQ(table.out, "");
    EXPECT_EQ(table.err, "No camera was found.\n");

    const Result json = runInProcess({"list", "--json"}, entries({}));
    EXPECT_EQ(json.code, 0);
    EXPECT_EQ(json.out, "{\"format_version\":1,\"command\":\"list\",\"kind\":\"end\",\"exit\":0,"
                        "\"messages\":[\"No camera was found.\"]}\n");
    EXPECT_EQ(json.err, "No camera was found.\n");
}

TEST(ListCommand, TellsThatTheNetworkCouldNotBeAsked)
{
    const Result run = runInProcess({"list"}, [](std::vector<KX_DeviceEntry>&) { return KX_E_NETWORK; });
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, std::string("Cameras cannot be looked for: ") + KX_CC_StatusText(KX_E_NETWORK) +
                           " [0x80000204]\n");
}

class ListOnTheWire : public CompanionTest
{
};

TEST_F(ListOnTheWire, ShowsWhoIsThereInOneOrderAndTakesNothing)
{
    emu::EmulatedCamera& second =
        addCamera("B2", [](emu::CameraConfig& config) { config.userName = "Gate 2"; });
    emu::EmulatedCamera& first = addCamera("A1", [](emu::CameraConfig& config) { config.model = "Other"; });
    emu::EmulatedCamera& third = addCamera("C3");
    second.stealControl();
    emu::Faults deaf;
    deaf.discoveryOnly = true;
    third.setFaults(deaf);

    const Result run = runInProcess({"list", "--json"});
    ASSERT_EQ(run.code, 0);
    const auto told = [&](int number, const emu::EmulatedCamera& camera, const char* status,
                          const tests::Json& controller) {
        const emu::CameraConfig& config = camera.config();
        const QString mac = VELAInterface::int2StringMacAddress(camera.peekWord(gvcp::RegMacHigh),
                                                                camera.peekWord(gvcp::RegMacLow));
        return tests::Json{{"camera",
                            {{"number", number},
                             {"transport", "GigE"},
                             {"model", config.model},
                             {"serial", config.serial},
                             {"name", config.userName},
                             {"address", config.address}}},
                           {"status", status},
                           {"reason", nullptr},
                           {"mac", mac.toStdString()},
                           {"controller", controller}};
    };
    std::vector<tests::Json> list = tests::objects(run);
    ASSERT_EQ(list.size(), 4u);
    list.pop_back(); // the closing one
    for (tests::Json& object : list)
        for (const char* key : {"format_version", "command", "kind"})
            object.erase(key);
    EXPECT_EQ(list, (std::vector<tests::Json>{told(1, first, "free", nullptr),
                                              told(2, second, "in use", "127.255.255.254:1"),
                                              told(3, third, "unreachable", nullptr)}));
    for (const emu::EmulatedCamera* camera : {&first, &second, &third})
        EXPECT_EQ(camera->counters().writeReg, 0u);
    EXPECT_EQ(runInProcess({"list", "--json"}).out, run.out);
}

TEST(ListCommand, HoldsTheirNumberAgainstTheExpectedOne)
{
    const auto one = entries({gigeEntry("A1", "100")});
    EXPECT_EQ(runInProcess({"list", "--expect", "1"}, one).code, 0);
    const Result run = runInProcess({"list", "--expect", "2"}, one);
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.err, "2 camera(s) were expected, 1 was found.\n");
    EXPECT_NE(run.out.find(" 1  GigE       A1 "), std::string::npos); // all the same
}

TEST(ListCommand, WaitsForThemUntilTheTimeIsOver)
{
    int looks = 0;
    const auto late = [&looks](std::vector<KX_DeviceEntry>& found) {
        found = {gigeEntry("A1", "100")};
        if (++looks > 2)
            found.push_back(gigeEntry("A1", "101", {}, 0x7F010204));
        return KX_OK;
    };
    const Result run = runInProcess({"list", "--expect", "2", "--wait", "20"}, late);
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(looks, 3);
    EXPECT_EQ(run.err, "Waiting for 20 s at most: 2 camera(s) were expected, 1 was found.\n");
    const Result none = runInProcess({"list", "--wait", "0.1"}, entries({}));
    EXPECT_EQ(none.code, 0);
    EXPECT_EQ(none.err, "Waiting for 0.1 s at most: No camera was found.\nNo camera was found.\n");
    EXPECT_EQ(runInProcess({"list", "--watch", "--expect", "1"}, entries({})).code, 2);
}
