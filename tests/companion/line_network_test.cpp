// Names, addresses and switches of the cameras of a line, put right by iefeatures line apply.
#include "companion/LineCompanion.h"
#include "support/LoopbackAddress.h"

#include "gvcp/Gvcp.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using tests::LineOfCameras;
using tests::Result;
using tests::runInProcess;

TEST_F(LineOfCameras, GivesCamerasTheirNamesAndSwitchesBack)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    ASSERT_EQ(camera.setNode("DeviceUserID", std::string("Gate 7")), "");
    camera.pokeWord(gvcp::RegIpCurrent, gvcp::kIpPersistent | gvcp::kIpDhcp);
    const Result dry = line({"apply"}, {"--dry-run"});
    EXPECT_EQ(dry.code, 0);
    EXPECT_THAT(dry.err, HasSubstr("Gate 1: would get DHCP off; link-local addresses on; the name \"Gate "
                                   "1\".\n"));
    const Result run = line({"apply"}, {"--yes"});
    EXPECT_EQ(run.code, 0) << run.err << run.out;
    EXPECT_EQ(std::get<std::string>(*camera.node("DeviceUserID")), "Gate 1");
    EXPECT_EQ(camera.peekWord(gvcp::RegIpCurrent), gvcp::kIpPersistent | gvcp::kIpLinkLocal);
    EXPECT_THAT(lastAuditLine(), HasSubstr("\"command\":\"line apply\""));
    EXPECT_THAT(lastAuditLine(), HasSubstr("DeviceUserID"));
    EXPECT_THAT(states(), ElementsAre("Gate 1: in order"));
}

TEST_F(LineOfCameras, GivesCamerasTheirAddressesBackThatNobodyElseHas)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    const std::string other = tests::freshLoopbackAddress();
    qputenv("KX_CAMERA_ADDRESSES", qgetenv("KX_CAMERA_ADDRESSES") + ',' + QByteArray::fromStdString(other));
    ASSERT_EQ(runInProcess({"ip", "--serial", "S1", "--force", other + "/8", "--yes"}).code, 0);
    EXPECT_THAT(states(), ElementsAre("Gate 1: elsewhere"));

    emu::CameraConfig config;
    config.address = camera.config().address;
    config.serial = "S2";
    config.mac = "02:00:00:00:00:77";
    {
        emu::EmulatedCamera thief(config);
        ASSERT_TRUE(thief.start());
        const Result kept = line({"apply"}, {"--yes"});
        EXPECT_EQ(kept.code, 4);
        EXPECT_THAT(kept.err, HasSubstr("is somebody else's (02:00:00:00:00:77)"));
        EXPECT_EQ(gvcp::formatAddress(camera.peekWord(gvcp::RegCurrentAddress)), other);
    }
    const Result run = line({"apply"}, {"--yes"});
    EXPECT_EQ(run.code, 0) << run.err << run.out;
    EXPECT_EQ(gvcp::formatAddress(camera.peekWord(gvcp::RegCurrentAddress)), config.address);
    EXPECT_THAT(states(), ElementsAre("Gate 1: in order"));
}

// DHCP, where the inventory has it on.
TEST_F(LineOfCameras, LeavesAddressesToTheServer)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    const std::string address = camera.config().address;
    const std::string other = tests::freshLoopbackAddress();
    write("hall.toml", fileText("hall.toml")
                           .replace("dhcp = false", "dhcp = true")
                           .replace("address = \"" + QByteArray::fromStdString(address),
                                    "address = \"" + QByteArray::fromStdString(other)));
    const Result run = line({"apply"}, {"--yes"});
    EXPECT_EQ(run.code, 4) << run.err;
    EXPECT_THAT(run.err, HasSubstr("; that stays as it is.\n"));
    EXPECT_EQ(camera.counters().forceIp, 0u);
    EXPECT_EQ(gvcp::formatAddress(camera.peekWord(gvcp::RegPersistentAddress)), address);
    EXPECT_NE(camera.peekWord(gvcp::RegIpCurrent) & gvcp::kIpDhcp, 0u);
}

// Whoever would be moved first would take the other one's address.
TEST_F(LineOfCameras, LeavesSwappedAddressesToAPerson)
{
    emu::EmulatedCamera& first = addNamed("S1", "Gate 1");
    emu::EmulatedCamera& second = addNamed("S2", "Gate 2");
    ASSERT_EQ(init().code, 0);
    const QByteArray one = QByteArray::fromStdString(first.config().address);
    const QByteArray two = QByteArray::fromStdString(second.config().address);
    write("hall.toml", fileText("hall.toml").replace(one, "?").replace(two, one).replace("?", two));
    EXPECT_THAT(states(), ElementsAre("Gate 1: elsewhere", "Gate 2: elsewhere"));
    for (emu::EmulatedCamera* camera : {&first, &second})
        camera->resetCounters();
    const Result run = line({"apply"}, {"--yes"});
    EXPECT_EQ(run.code, 4) << run.err;
    EXPECT_THAT(run.err,
                HasSubstr("Gate 1: elsewhere: the address " + two.toStdString() + " is somebody else's ("));
    EXPECT_THAT(run.err,
                HasSubstr("Gate 2: elsewhere: the address " + one.toStdString() + " is somebody else's ("));
    for (const emu::EmulatedCamera* camera : {&first, &second}) {
        EXPECT_EQ(camera->counters().forceIp, 0u);
        EXPECT_EQ(camera->counters().settingWrites, 0u);
    }
}

// It is where it should be, and will not be when it is switched on again.
TEST_F(LineOfCameras, FinishesAnAddressThatTheCommandBeforeHasOnlyForced)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    const std::string home = camera.config().address;
    const std::string other = tests::freshLoopbackAddress();
    qputenv("KX_CAMERA_ADDRESSES", qgetenv("KX_CAMERA_ADDRESSES") + ',' + QByteArray::fromStdString(other));
    const uint32_t away = gvcp::parseAddress(other).value();
    camera.pokeWord(gvcp::RegPersistentAddress, away);
    camera.switchOff();
    ASSERT_TRUE(camera.start());
    emu::Faults faults;
    faults.refusals = {{gvcp::RegPersistentAddress, 4, gvcp::WriteProtect}};
    camera.setFaults(faults);
    EXPECT_NE(line({"apply"}, {"--yes"}).code, 0);
    EXPECT_EQ(gvcp::formatAddress(camera.peekWord(gvcp::RegCurrentAddress)), home);
    camera.setFaults({});
    const Result run = line({"apply"}, {"--yes", "--json"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(gvcp::formatAddress(camera.peekWord(gvcp::RegPersistentAddress)), home);
    EXPECT_EQ(tests::lastObject(run, "result")["changed"], tests::Json::array({"GevPersistentIPAddress"}));
}
