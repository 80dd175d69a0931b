// Files that name what no import should write.
#include "companion/ImportCompanion.h"

#include <nlohmann/json.hpp>

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using tests::Result;
using tests::runInProcess;

namespace
{

class WriteSafety : public tests::ImportCompanion
{
protected:
    // An export in which one register of the gain lies elsewhere.
    std::string gainAt(const QByteArray& address)
    {
        const QByteArray there = "address=\"77824\"";
        QByteArray content = fileText(exported("S1"));
        const int begin = content.indexOf(there);
        EXPECT_GT(begin, 0);
        write("altered.fpk", content.replace(begin, there.size(), "address=\"" + address + '"'));
        return "altered.fpk";
    }

    static void expectUntouched(const emu::EmulatedCamera& camera)
    {
        EXPECT_EQ(camera.counters().settingWrites, 0u);
        EXPECT_EQ(camera.counters().writeReg, 0u) << "control was taken";
    }
};

} // namespace

TEST_F(WriteSafety, RefusesAddressesThatAreNoNumbers)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    for (const char* address : {"99999999999999999999", "-4", "gain", "0x"}) {
        const std::string file = gainAt(address);
        camera.resetCounters();
        const Result run = import(file);
        EXPECT_EQ(run.code, 5) << address;
        EXPECT_THAT(run.out, HasSubstr("EMU-1 S1: bad file: The file has an entry that no import should "
                                       "write. Nothing was written; --force does it all the same.\n"
                                       "  broken: Gain: the address \"" +
                                       std::string(address) + "\" is no number\n"));
        expectUntouched(camera);
        EXPECT_EQ(runInProcess({"plan", path(file), "--all"}).code, 5) << address;
    }
}

TEST_F(WriteSafety, RefusesTheRegistersOfControl)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    for (const char* address : {"2560", "0xA00", "2396"}) { // the privilege, and the key to it
        const std::string file = gainAt(address);
        camera.resetCounters();
        const Result run = import(file, {"--all", "--json"});
        EXPECT_EQ(run.code, 5) << address;
        const json object = tests::lastObject(run, "result");
        EXPECT_EQ(object["result"], "bad file");
        ASSERT_EQ(object["features"].size(), 1u);
        EXPECT_EQ(object["features"][0]["feature"], "Gain");
        EXPECT_EQ(object["features"][0]["verdict"], "broken");
        EXPECT_EQ(object["features"][0]["reason"], "the register says who controls the camera");
        expectUntouched(camera);
    }
}

TEST_F(WriteSafety, RefusesToGiveControlAway)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file =
        altered(exported("S1"), feature("GevCCP", "Enumeration", "1"), feature("GevCCP", "Enumeration", "0"));
    camera.resetCounters();
    EXPECT_EQ(import(file).code, 5);
    expectUntouched(camera);
    const Result plan = runInProcess({"plan", path(file), "--all"});
    EXPECT_EQ(plan.code, 5);
    EXPECT_THAT(plan.out, HasSubstr("  broken: GevCCP: it would give control of the camera away\n"));
}

TEST_F(WriteSafety, RefusesRegistersThatTheDescriptionDoesNotKnow)
{
    emu::EmulatedCamera& camera = addCamera(
        "S1", [](emu::CameraConfig& config) { config.description = tests::descriptionWithOneRegister(); });
    const std::string file = altered(exported("S1"), "address=\"65792\"", "address=\"66048\"");
    camera.resetCounters();
    const Result run = import(file);
    EXPECT_EQ(run.code, 5);
    EXPECT_THAT(run.out,
                HasSubstr("Zone (register 0x00010200): the camera's description has no register there"));
    expectUntouched(camera);
    EXPECT_EQ(runInProcess({"plan", path(file), "--all"}).code, 5);
    EXPECT_EQ(runInProcess({"verify", path(file), "--all"}).code, 0) << "which writes nothing";
}

// Registers of another model are no danger but somebody else's, and a camera without a description has none.
TEST_F(WriteSafety, IsAskedOfTheRightCameraOnly)
{
    addCamera("S1");
    const std::string file = exported("S1");
    emu::EmulatedCamera& other = addCamera("S2", [](emu::CameraConfig& config) {
        config.model = "Other";
        config.description = tests::descriptionWithOneRegister();
    });
    emu::EmulatedCamera& broken = addCamera("S3", [](emu::CameraConfig& config) {
        config.description = tests::descriptionWithOneRegister().substr(0, 500);
    });
    for (const char* command : {"plan", "import"}) {
        const auto result = [&](const char* serial) -> std::string {
            const Result run = runInProcess({command, path(file), "--serial", serial, "--json"});
            const json object = tests::lastObject(run, "result");
            return object["result"].get<std::string>() + ": " + object["error"].get<std::string>();
        };
        EXPECT_THAT(result("S2"), StartsWith("incompatible: The file belongs to another model"));
        EXPECT_EQ(result("S3"), "failed: The camera has no usable description.");
    }
    EXPECT_EQ(other.counters().settingWrites, 0u);
    expectUntouched(broken);
}

TEST_F(WriteSafety, IsPassedOverByForce)
{
    emu::EmulatedCamera& camera = addCamera(
        "S1", [](emu::CameraConfig& config) { config.description = tests::descriptionWithOneRegister(); });
    camera.pokeWord(0x10100, 5);
    const std::string file = altered(exported("S1"), "address=\"65792\"", "address=\"66048\"");
    EXPECT_EQ(import(file, {"--all", "--force", "--dry-run"}).code, 0);
    const Result run = import(file, {"--all", "--force"});
    EXPECT_EQ(run.code, 0) << run.out;
    EXPECT_EQ(camera.peekWord(66048), 5u);
}

// Nothing is done to the others' disadvantage: each camera is judged by its own description.
TEST_F(WriteSafety, RefusesTheCameraAndNoOther)
{
    addCamera("S1",
              [](emu::CameraConfig& config) { config.description = tests::descriptionWithOneRegister(); });
    emu::EmulatedCamera& other = addCamera("S2", [](emu::CameraConfig& config) {
        config.description = QString::fromStdString(tests::descriptionWithOneRegister())
                                 .replace("0x10100", "0x10200")
                                 .toStdString();
    });
    const std::string file = exported("S1");
    other.resetCounters();
    const Result run = import(file);
    EXPECT_EQ(run.code, 5);
    EXPECT_THAT(run.out, HasSubstr("\n1 applied, 0 incomplete, 0 incompatible, 1 failed\n"));
    expectUntouched(other);
}
