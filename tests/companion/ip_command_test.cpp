// iefeatures ip, over emulated cameras.
#include "companion/DoubtfulWrites.h"
#include "iefeatures/network/IpPlace.h"
#include "support/LoopbackAddress.h"

#include "gvcp/Gvcp.h"

#include <sstream>

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using tests::Arguments;
using tests::lastObject;
using tests::Result;
using tests::runInProcess;

namespace
{

class IpCommand : public tests::DoubtfulWrites
{
protected:
    static Result ip(Arguments arguments)
    {
        arguments.insert(arguments.begin(), "ip");
        return runInProcess(arguments);
    }
    static std::string quad(const emu::EmulatedCamera& camera, uint32_t address)
    {
        return gvcp::formatAddress(camera.peekWord(address));
    }
    static std::string nameOf(const emu::EmulatedCamera& camera)
    {
        return std::get<std::string>(*camera.node("DeviceUserID"));
    }
};

} // namespace

TEST(IpPlace, IsReadAsPeopleWriteIt)
{
    QString problem;
    const auto place = companion::parseIpPlace("10.0.0.7/255.255.255.0/10.0.0.1", problem);
    ASSERT_TRUE(place);
    EXPECT_EQ(place->address, 0x0A000007u);
    EXPECT_EQ(place->mask, 0xFFFFFF00u);
    EXPECT_EQ(place->gateway, 0x0A000001u);
    EXPECT_EQ(companion::ipPlaceText(*place), "10.0.0.7/24 with the gateway 10.0.0.1");
    EXPECT_EQ(companion::parseIpPlace("10.0.0.7/24", problem)->mask, 0xFFFFFF00u);
    EXPECT_EQ(companion::parseIpPlace("10.0.0.7/24", problem)->gateway, 0u);
    EXPECT_EQ(problem, "");
}

TEST(IpPlace, IsNoneThatACameraCannotHave)
{
    for (const char* wrong :
         {"", "10.0.0.7", "10.0.0/24", "10.0.0.7/0", "10.0.0.7/33", "10.0.0.7/255.0.255.0", "10.0.0.256/24",
          "10.0.0.0/24", "10.0.0.255/24", "224.0.0.1/24", "0.0.0.1/8", "10.0.0.7/24/10.0.1.1",
          "10.0.0.7/24/10.0.0.255", "10.0.0.7/24/10.0.0.1/1", "10.0.0.7/24/x"}) {
        QString problem;
        EXPECT_FALSE(companion::parseIpPlace(wrong, problem)) << wrong;
        EXPECT_THAT(problem.toStdString(), StartsWith(wrong));
        EXPECT_THAT(problem.toStdString(), EndsWith("."));
    }
}

TEST_F(IpCommand, SetsNameAddressAndSwitches)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string kept = tests::freshLoopbackAddress();
    const Result run =
        ip({"--serial", "S1", "--persistent", kept + "/8", "--dhcp", "on", "--user-name", "Gate 3", "--yes"});
    EXPECT_EQ(run.code, 0) << run.err << run.out;
    EXPECT_EQ(nameOf(camera), "Gate 3");
    EXPECT_EQ(quad(camera, gvcp::RegPersistentAddress), kept);
    EXPECT_EQ(camera.peekWord(gvcp::RegPersistentMask), 0xFF000000u);
    EXPECT_EQ(camera.peekWord(gvcp::RegIpCurrent), 7u);
    EXPECT_EQ(controlOf(camera), 0u);
    EXPECT_THAT(run.err, HasSubstr("GevPersistentIPAddress: " + camera.config().address + " -> " + kept));
    EXPECT_THAT(lastAuditLine(), HasSubstr("\"command\":\"ip\""));
    EXPECT_THAT(lastAuditLine(), HasSubstr("Gate 3"));
    EXPECT_EQ(ip({"--serial", "S1", "--dhcp", "off", "--lla", "off", "--yes"}).code, 0);
    EXPECT_EQ(camera.peekWord(gvcp::RegIpCurrent), 1u);
}

TEST_F(IpCommand, ForcesAnAddressAndGoesOnThere)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string forced = tests::freshLoopbackAddress();
    const Result run =
        ip({"--serial", "S1", "--force", forced + "/8", "--user-name", "Gate 3", "--yes", "--json"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(quad(camera, gvcp::RegCurrentAddress), forced);
    EXPECT_EQ(quad(camera, gvcp::RegPersistentAddress), camera.config().address);
    EXPECT_EQ(nameOf(camera), "Gate 3");
    EXPECT_EQ(lastObject(run, "result")["result"], "applied");
    EXPECT_THAT(lastAuditLine(), HasSubstr("GevCurrentIPAddress"));
}

TEST_F(IpCommand, LeavesAloneAnAddressThatSomebodyHas)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string taken = addCamera("S2").config().address;
    for (const char* way : {"--force", "--persistent"}) {
        const Result run = ip({"--serial", "S1", way, taken + "/8", "--yes"});
        EXPECT_EQ(run.code, 1) << way;
        EXPECT_THAT(run.err, StartsWith("EMU-1 S1: the address " + taken + " is somebody else's (02:00:"));
        EXPECT_THAT(run.err, EndsWith("Nothing was written.\n"));
    }
    EXPECT_EQ(camera.counters().settingWrites, 0u);
    EXPECT_EQ(camera.counters().forceIp, 0u);
    // Its own is nobody else's.
    EXPECT_EQ(ip({"--serial", "S1", "--persistent", camera.config().address + "/8", "--yes"}).code, 0);
}

TEST_F(IpCommand, AsksFirst)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    std::ostringstream out, err;
    companion::Console console(out, err, false, false);
    companion::World world{console};
    std::string question;
    world.ask = [&](companion::Console&, const std::string& text) {
        question = text;
        return std::string("n");
    };
    EXPECT_EQ(companion::runCompanion({"ip", "--all", "--lla", "off", "--user-name", "X"}, world), 1);
    EXPECT_THAT(question, StartsWith("Give EMU-1 S1 (02:00:"));
    EXPECT_THAT(question, EndsWith("): link-local addresses off; the name \"X\"? [y/N] "));
    EXPECT_EQ(camera.counters().settingWrites, 0u);
}

TEST_F(IpCommand, LooksAgainBehindTheAnswer)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string wanted = tests::freshLoopbackAddress();
    std::ostringstream out, err;
    companion::Console console(out, err, false, false);
    companion::World world{console};
    world.ask = [&](companion::Console&, const std::string&) {
        addCamera("S2", [&](emu::CameraConfig& config) { config.address = wanted; });
        return std::string("y");
    };
    EXPECT_EQ(companion::runCompanion({"ip", "--serial", "S1", "--persistent", wanted + "/8"}, world), 1);
    EXPECT_THAT(err.str(), HasSubstr("EMU-1 S1: the address " + wanted + " is somebody else's"));
    EXPECT_THAT(err.str(), EndsWith("Nothing was written.\n"));
    EXPECT_EQ(camera.counters().settingWrites, 0u);
}

TEST_F(IpCommand, TellsWhatMayHaveBeenChanged)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const auto reset = [&] { camera.pokeWord(gvcp::RegIpCurrent, 5); };
    const auto isWritten = [&] { return (camera.peekWord(gvcp::RegIpCurrent) & gvcp::kIpDhcp) != 0; };
    expectDoubt(camera, {"ip", "--serial", "S1", "--yes", "--dhcp", "on", "--json"},
                {"GevCurrentIPConfigurationDHCP", reset, isWritten});
    const auto unname = [&] { camera.setNode("DeviceUserID", std::string("old")); };
    const auto isNamed = [&] { return nameOf(camera) == "new"; };
    expectDoubt(camera, {"ip", "--serial", "S1", "--yes", "--user-name", "new", "--json"},
                {"DeviceUserID", unname, isNamed});
}

TEST_F(IpCommand, RefusesWhatMakesNoSense)
{
    addCamera("S1");
    addCamera("S2");
    EXPECT_EQ(ip({"--all", "--yes"}).code, 2);
    EXPECT_EQ(ip({"--all", "--yes", "--user-name", "X"}).code, 2);
    EXPECT_EQ(ip({"--serial", "S1", "--yes", "--persistent", "10.0.0.7"}).code, 2);
    EXPECT_EQ(ip({"--serial", "S1", "--yes", "--dhcp", "maybe"}).code, 2);
    EXPECT_EQ(ip({"--serial", "S9", "--yes", "--dhcp", "on"}).code, 3);
    const Result run = ip({"--serial", "S1", "--yes", "--user-name", "seventeen letters"});
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("takes 17 bytes, and the camera has room for 16."));
    EXPECT_EQ(ip({"--all", "--yes", "--dhcp", "on"}).code, 0);
}

TEST_F(IpCommand, TellsWhatTheCameraDoesNotTake)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    emu::Faults faults;
    faults.refusals = {{gvcp::RegIpCurrent, 4, gvcp::WriteProtect}};
    camera.setFaults(faults);
    EXPECT_NE(ip({"--serial", "S1", "--yes", "--dhcp", "on"}).code, 0);
    camera.setFaults({});
    camera.stealControl();
    const Result held = ip({"--serial", "S1", "--yes", "--dhcp", "on"});
    EXPECT_EQ(held.code, 1);
    const Result forced = ip({"--serial", "S1", "--yes", "--force", tests::freshLoopbackAddress() + "/8"});
    EXPECT_EQ(forced.code, 1);
    EXPECT_THAT(forced.out + forced.err, HasSubstr("it did not take the address"));
    EXPECT_EQ(camera.counters().forceIp, 0u);
}
