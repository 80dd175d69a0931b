// What a command before has not finished on a line.
#include "companion/LineCompanion.h"
#include "support/LoopbackAddress.h"

#include "gvcp/Gvcp.h"

#include <QFile>
#include <QRegularExpression>

using ::testing::HasSubstr;
using tests::Result;
using tests::runInProcess;

namespace
{

constexpr uint32_t kUserSetSave = 0x16008;

class UnfinishedLine : public tests::LineOfCameras
{
protected:
    // Its features are written by line apply, and its user set cannot be saved.
    emu::EmulatedCamera& addWithoutUserSetSaved()
    {
        emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
        EXPECT_EQ(init().code, 0);
        EXPECT_EQ(camera.setNode("Height", int64_t(16)), "");
        emu::Faults faults;
        faults.refusals = {{kUserSetSave, 4}};
        camera.setFaults(faults);
        EXPECT_EQ(line({"apply"}, {"--yes"}).code, 1);
        camera.setFaults({});
        return camera;
    }
};

} // namespace

// Nobody sees of a camera what its user set holds.
TEST_F(UnfinishedLine, FinishesTheUserSetThatTheCommandBeforeHasNotSaved)
{
    const emu::EmulatedCamera& camera = addWithoutUserSetSaved();
    EXPECT_EQ(std::get<int64_t>(*camera.node("Height")), 480);
    EXPECT_EQ(fileText("hall.toml.unfinished.json").simplified(), "{ \"cameras\": [ \"Gate 1\" ] }");
    const Result run = line({"apply"}, {"--yes"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.err,
                HasSubstr("Gate 1: UserSet1 may not hold what was written before; it would be saved.\n"));
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: saved into UserSet1.\n"));
    EXPECT_EQ(camera.peekWord(kUserSetSave), 1u);
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path("hall.toml.unfinished.json"))));
    const uint64_t before = writes();
    EXPECT_EQ(line({"apply"}, {"--yes"}).code, 0);
    EXPECT_EQ(writes(), before);
}

TEST_F(UnfinishedLine, SaysOfUnfinishedCamerasThatTheyCannotBeRead)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    write("hall.toml.unfinished.json", "{\"cameras\": ");
    const uint64_t before = writes();
    const Result run = line({"apply"}, {"--yes"});
    EXPECT_EQ(run.code, 6);
    EXPECT_THAT(run.err, HasSubstr("should tell which cameras are not finished, and cannot be read.\n"));
    EXPECT_EQ(writes(), before);
}

TEST_F(UnfinishedLine, ForgetsAnUnfinishedCameraWhereNothingIsLeftToDo)
{
    addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    QByteArray text = fileText("hall.toml");
    for (const char* const key : {"user_set", "address"})
        text = QString::fromUtf8(text).remove(QRegularExpression(key + QString(" = [^\n]*\n"))).toUtf8();
    write("hall.toml", text);
    write("hall.toml.unfinished.json", "{\"cameras\": [\"Gate 1\"]}");
    EXPECT_EQ(line({"apply"}, {"--dry-run"}).code, 0);
    EXPECT_TRUE(QFile::exists(QString::fromStdString(path("hall.toml.unfinished.json"))));
    EXPECT_EQ(line({"apply"}, {"--yes"}).code, 0);
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path("hall.toml.unfinished.json"))));
}

// Whoever only gives it its address has not saved what was written to it before.
TEST_F(UnfinishedLine, RemembersTheUserSetOfACameraThatOnlyGetsItsAddress)
{
    const emu::EmulatedCamera& camera = addWithoutUserSetSaved();
    const std::string other = tests::freshLoopbackAddress();
    qputenv("KX_CAMERA_ADDRESSES", qgetenv("KX_CAMERA_ADDRESSES") + ',' + QByteArray::fromStdString(other));
    ASSERT_EQ(runInProcess({"ip", "--serial", "S1", "--force", other + "/8", "--yes"}).code, 0);

    std::ostringstream out, err;
    companion::Console console(out, err, false, false);
    companion::World world{console};
    const companion::Enumerate all = world.enumerate;
    world.enumerate = [&](std::vector<KX_DeviceEntry>& found) {
        const KX_Status status = all(found);
        if (gvcp::formatAddress(camera.peekWord(gvcp::RegCurrentAddress)) == other)
            for (KX_DeviceEntry& entry : found)
                entry.availability = KX_AVAILABILITY_UNREACHABLE;
        return status;
    };
    EXPECT_EQ(companion::runCompanion({"line", "apply", file(), "--yes"}, world), 4);
    EXPECT_THAT(err.str(), HasSubstr("Gate 1: unreachable now; "));
    EXPECT_EQ(gvcp::formatAddress(camera.peekWord(gvcp::RegCurrentAddress)), camera.config().address);
    EXPECT_EQ(camera.peekWord(kUserSetSave), 0u);
    const Result run = line({"apply"}, {"--yes"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(camera.peekWord(kUserSetSave), 1u);
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path("hall.toml.unfinished.json"))));
}
