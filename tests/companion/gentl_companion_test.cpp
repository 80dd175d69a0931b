// The companion and cameras behind GenTL producers, bad ones among them.
#include "camera/GentlStage.h"
#include "support/RegisterByRegister.h"
#include "support/RunProgram.h"

#include <QFile>
#include <QTemporaryDir>

namespace
{

class GentlCompanion : public testing::Test
{
protected:
    GentlCompanion() { setenv("KX_GENTL_TIMEOUT", "3000", 1); }

    static tests::Ran run(const QStringList& arguments) { return tests::runProgram(IEFEATURES, arguments); }

    GentlStage stage;
    QTemporaryDir folder;
};

TEST_F(GentlCompanion, theCompanionListsLayersByTheirNamesAndTellsWhatFails)
{
    stage.setFaults("bad:TLOpen=crash");
    stage.addProducer("good");
    stage.addProducer("bad");
    const std::string words = stage.addFile("words.cti", "no library");
    stage.addCamera("A", "good");
    emu::GrabberConfig grabber;
    grabber.layer = "CLHS";
    grabber.interface = "HS";
    stage.addCamera("B", "good", grabber);
    const tests::Ran ran = run({"list"});
    EXPECT_EQ(ran.code, 0) << ran;
    const QStringList lines = ran.output.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3) << ran;
    EXPECT_EQ(lines[1].simplified().toStdString(), "1 CXP EMU-1 A EMU-Grabber (emulated) free");
    EXPECT_EQ(lines[2].simplified().toStdString(), "2 CLHS EMU-1 B HS (emulated) free");
    EXPECT_TRUE(ran.errors.contains("/bad.cti crashed in TLOpen (signal ")) << ran;
    EXPECT_TRUE(ran.errors.contains(
        QString::fromStdString("The GenTL producer " + words + " is no shared library.\n")))
        << ran;
}

TEST_F(GentlCompanion, theCompanionExportsPlansImportsAndVerifies)
{
    stage.addProducer();
    emu::GrabberCamera& camera = stage.addCamera("A");
    const QString file = folder.path() + "/EMU-1_A.fpk";
    tests::Ran ran = run({"export", "--to", folder.path(), "--serial", "A"});
    ASSERT_EQ(ran.code, 0) << ran;
    const auto before = camera.node("Width");
    camera.change(R"({"nodes": {"Width": 320}})");
    const auto changed = camera.node("Width");
    ran = run({"plan", file, "--serial", "A"});
    EXPECT_TRUE(ran.output.contains("Width")) << ran;
    EXPECT_EQ(camera.node("Width"), changed);
    ran = run({"import", file, "--serial", "A", "--verify", "--snapshot", folder.path(), "--no-audit"});
    EXPECT_EQ(ran.code, 0) << ran;
    EXPECT_EQ(camera.node("Width"), before);
    ran = run({"verify", file, "--serial", "A"});
    EXPECT_EQ(ran.code, 0) << ran;
}

TEST_F(GentlCompanion, inOneBatchABadProducerFailsAloneAndTheOthersGoOn)
{
    const tests::RegisterByRegister oneByOne;
    setenv("KX_GENTL_TIMEOUT", "1500", 1);
    stage.setFaults("bad:GCReadPort=hang@60,worse:GCReadPort=crash@30");
    for (const char* name : {"good", "bad", "worse"})
        stage.addProducer(name);
    stage.addCamera("A", "good");
    stage.addCamera("B", "bad");
    stage.addCamera("C", "worse");
    stage.addCamera("D", "good");
    const tests::Ran ran = run({"export", "--to", folder.path(), "--all"});
    EXPECT_EQ(ran.code, 1) << ran;
    EXPECT_TRUE(ran.output.contains("2 exported, 2 failed")) << ran;
    for (const char* serial : {"A", "D"})
        EXPECT_TRUE(QFile::exists(folder.path() + "/EMU-1_" + serial + ".fpk")) << serial << ran;
    for (const char* serial : {"B", "C"})
        EXPECT_FALSE(QFile::exists(folder.path() + "/EMU-1_" + serial + ".fpk")) << serial << ran;
}

} // namespace
