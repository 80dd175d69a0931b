// Reading beside a program that controls the camera.
#include "companion/ImportCompanion.h"

using ::testing::HasSubstr;
using ::testing::Not;
using tests::Result;
using tests::runInProcess;

namespace
{

class SharedRead : public tests::ImportCompanion
{
};

const char* const kRemark = "EMU-1 S1: read without control: it may have been changed while it was read.\n";

} // namespace

// An import of who controls the camera would give its own control away.
TEST_F(SharedRead, ExportsTheSameButForWhoHasControl)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    QByteArray whole = fileText(exported("S1"));
    const QByteArray control = feature("GevCCP", "Enumeration", "1");
    ASSERT_EQ(whole.count(control), 1);
    camera.stealControl();
    EXPECT_EQ(runInProcess({"export", "--all", "--to", folder()}).code, 1);
    camera.resetCounters();
    const Result run = runInProcess({"export", "--all", "--to", folder(), "--shared"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.err, HasSubstr(kRemark));
    EXPECT_EQ(fileText("EMU-1_S1.fpk"), whole.replace(control, ""));
    EXPECT_EQ(camera.counters().writeReg, 0u);
    EXPECT_NE(controlOf(camera), 0u);
    camera.releaseControl();
    EXPECT_EQ(import("EMU-1_S1.fpk").code, 0);
}

TEST_F(SharedRead, DoesNotWaitForControl)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    camera.stealControl();
    EXPECT_EQ(runInProcess({"export", "--all", "--to", folder(), "--shared", "--wait", "3600"}).code, 0);
}

TEST_F(SharedRead, IsNotForFeatureBags)
{
    addCamera("S1");
    const Result run = runInProcess({"export", "--all", "--to", folder(), "--shared", "--format", "bag"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err, "--shared needs a features file: a feature bag moves selectors.\n");
}

TEST_F(SharedRead, ComparesACameraThatIsInUse)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = path(exported("S1"));
    EXPECT_THAT(runInProcess({"diff", file, "serial:S1"}).err, Not(HasSubstr(kRemark)));
    camera.stealControl();
    const Result same = runInProcess({"diff", file, "serial:S1"});
    EXPECT_EQ(same.code, 0) << same.out << same.err;
    EXPECT_THAT(same.err, HasSubstr(kRemark));
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const Result other = runInProcess({"diff", file, "serial:S1"});
    EXPECT_EQ(other.code, 1);
    EXPECT_THAT(other.out, HasSubstr("Height"));
}
