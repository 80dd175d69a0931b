// Cameras of a line that can have no features file.
#include "camera_emulator/BuiltIn.h"
#include "companion/LineCompanion.h"

#include <QFile>

using ::testing::HasSubstr;
using ::testing::Not;
using tests::Json;
using tests::lastObject;
using tests::LineOfCameras;
using tests::Result;

namespace
{

class LineOfSomeWithoutFirmwareVersion : public LineOfCameras
{
protected:
    emu::EmulatedCamera& addWithoutFirmwareVersion(const std::string& serial, const std::string& name,
                                                   const std::string& description = emu::builtInDescription())
    {
        return addCamera(serial, [&](emu::CameraConfig& config) {
            config.userName = name;
            config.description = QString::fromStdString(description)
                                     .replace("DeviceFirmwareVersion", "AnotherVersion")
                                     .toStdString();
        });
    }
};

} // namespace

// Those have no features file; the others on the line have theirs.
TEST_F(LineOfSomeWithoutFirmwareVersion, TakesABagAloneOfThem)
{
    addNamed("S1", "Gate 1");
    emu::EmulatedCamera& camera = addWithoutFirmwareVersion("S2", "Gate 2");
    const Result run = init({"--all", "--json"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S2: it has no DeviceFirmwareVersion, without which there is no "
                                   "features file; a feature bag of it was taken, which can be set and not "
                                   "be compared.\n"));
    const Json taken = lastObject(run, "line_camera");
    EXPECT_TRUE(taken["features"].is_null());
    EXPECT_EQ(taken["bag"], "hall-files/bags/Gate 2.fpk");
    const companion::Inventory line = inventory();
    EXPECT_FALSE(line.cameras[0].hasBagAlone());
    EXPECT_TRUE(line.cameras[1].hasBagAlone());
    EXPECT_EQ(line.cameras[1].featuresHash, "");
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path("hall-files/features/Gate 2.fpk"))));

    const Result checked = check();
    EXPECT_EQ(checked.code, 0) << checked.err;
    EXPECT_THAT(checked.out, HasSubstr("Gate 2  in order"));
    EXPECT_THAT(checked.out, HasSubstr("features not compared\n2 cameras: 2 in order\n"));
    const Json told = lastObject(check({"--json"}), "line");
    EXPECT_EQ(told["compared"], false);
    EXPECT_THAT(this->line({"apply", "--yes"}).err,
                HasSubstr("Gate 2: in order: its features are not compared: the inventory names no features "
                          "file of it\n"));
    EXPECT_THAT(this->line({"adopt", "--camera", "Gate 2", "--yes"}).err,
                HasSubstr("Gate 2 is as the inventory says; its features are not compared, and \"line init "
                          "--refresh\" takes them again.\n"));
    EXPECT_EQ(this->line({"init", "--refresh", "Gate 2", "--pause", "0"}).code, 0);
    camera.stop();
    EXPECT_THAT(check().out, Not(HasSubstr("not compared")));
}

// As old descriptions do, the one of this camera calls nothing streamable: its bag would set nothing.
TEST_F(LineOfSomeWithoutFirmwareVersion, KeepsNoBagThatIsEmpty)
{
    addWithoutFirmwareVersion("S1", "Gate 1", tests::descriptionWithOneRegister());
    const Result run = init({"--all", "--json"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: it has no DeviceFirmwareVersion, without which there is no "
                                   "features file, and its description calls no feature streamable: none of "
                                   "its features is kept.\n"));
    EXPECT_TRUE(lastObject(run, "line_camera")["bag"].is_null());
    EXPECT_EQ(inventory().cameras[0].bagFile + inventory().cameras[0].bagHash, "");
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path("hall-files/bags/Gate 1.fpk"))));
    EXPECT_THAT(check().out, HasSubstr("features not compared\n1 camera: 1 in order\n"));
    cameras().front().stop();
    addWithoutFirmwareVersion("S9", "", tests::descriptionWithOneRegister());
    EXPECT_THAT(line({"replace", "--camera", "Gate 1", "--yes"}).err,
                HasSubstr("  none of its features: the inventory names no file of them\n"));
}

// An older features file would be taken for what the camera is now.
TEST_F(LineOfSomeWithoutFirmwareVersion, IsNotTakenAgainWithoutTheFeaturesFileThatItsInventoryHas)
{
    addWithoutFirmwareVersion("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    const QByteArray text = fileText("hall.toml") + "features = 'hall-files/features/Gate 1.fpk'\n";
    write("hall.toml", text);
    const Result run = line({"init", "--refresh", "Gate 1", "--pause", "0"});
    EXPECT_EQ(run.code, 6);
    EXPECT_THAT(run.err,
                HasSubstr("Gate 1: there can be no features file of it any more; take \"features\" and "
                          "\"features_sha256\" out of the inventory.\n"));
    EXPECT_EQ(fileText("hall.toml"), text);
}
