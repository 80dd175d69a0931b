// What a command before has not finished on a line.
#include "companion/LineCompanion.h"

#include <QFile>
#include <QRegularExpression>

using ::testing::HasSubstr;
using tests::Result;

namespace
{

class UnfinishedLine : public tests::LineOfCameras
{
};

} // namespace

// Nobody sees of a camera what its user set holds.
TEST_F(UnfinishedLine, FinishesTheUserSetThatTheCommandBeforeHasNotSaved)
{
    constexpr uint32_t kUserSetSave = 0x16008;
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    emu::Faults faults;
    faults.refusals = {{kUserSetSave, 4}};
    camera.setFaults(faults);
    EXPECT_EQ(line({"apply"}, {"--yes"}).code, 1);
    EXPECT_EQ(std::get<int64_t>(*camera.node("Height")), 480);
    EXPECT_EQ(fileText("hall.toml.unfinished.json").simplified(), "{ \"cameras\": [ \"Gate 1\" ] }");
    camera.setFaults({});
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
