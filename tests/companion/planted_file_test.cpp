// Names that somebody else has prepared.
#include "companion/ImportCompanion.h"

#include <QDir>

using ::testing::HasSubstr;
using tests::Result;
using tests::runInProcess;

namespace
{

class PlantedFile : public tests::ImportCompanion
{
protected:
    Result exportAll() const { return runInProcess({"export", "--all", "--to", folder()}); }
};

const std::string kFile = "EMU-1_S1.fpk";

} // namespace

TEST_F(PlantedFile, IsNoTargetWhereItIsAFolder)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    ASSERT_TRUE(QDir().mkdir(QString::fromStdString(path(kFile))));
    EXPECT_EQ(exportAll().code, 6);
    EXPECT_EQ(camera.counters().writeReg, 0u); // no control was taken
    EXPECT_EQ(allInFolder(), QStringList{"EMU-1_S1.fpk"});
    const Result show = runInProcess({"show", folder()});
    EXPECT_EQ(show.code, 6);
    EXPECT_THAT(show.err, HasSubstr("(it is no regular file)"));
}

TEST_F(PlantedFile, IsNoFilterThatIsTooLarge)
{
    addCamera("S1");
    qputenv("VELA_PROGRAM_DATA", QByteArray::fromStdString(path("data")));
    ASSERT_TRUE(QDir().mkpath(QString::fromStdString(path("data/Streamable"))));
    write("data/Streamable/GigE.filter", QByteArray((1 << 20) + 1, 'x'));
    const Result large = exportAll();
    EXPECT_EQ(large.code, 6);
    EXPECT_EQ(large.err,
              "The filter is too large (1 MiB at most): " + path("data/Streamable/GigE.filter") + "\n");
    write("data/Streamable/GigE.filter", "Width,Height");
    EXPECT_EQ(exportAll().code, 0);
    EXPECT_FALSE(fileText(kFile).contains("<Name>Width</Name>"));
}
