// A camera that takes back its own export, with nothing changed in between: nothing is amiss, whatever the
// description is. Over the emulator's own description, and over real ones from the folder that
// KX_DESCRIPTIONS names.
#include "companion/CompanionFixture.h"
#include "companion/RealSeed.h"
#include "support/OwnDescription.h"
#include "support/RealExport.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QFile>

#include <cstdio>
#include <map>

using tests::Result;
using tests::runInProcess;

namespace
{

class UnchangedImport : public tests::CompanionTest
{
protected:
    struct Row
    {
        bool isExported = false; // without a firmware version there is no file
        std::map<std::string, int> verdicts;
    };

    Row tryCamera(emu::EmulatedCamera& camera)
    {
        Row row;
        const std::string serial = camera.config().serial;
        const Result exported = runInProcess({"export", "--serial", serial, "--to", folder()});
        row.isExported = !filesInFolder().isEmpty();
        if (!row.isExported) {
            EXPECT_EQ(exported.code, 1) << exported.err;
            return row;
        }
        const std::string file = path(filesInFolder().first().toStdString());
        const uint64_t byJob = settingWritesOf(
            camera, [&] { tests::importFile(camera.config(), QString::fromStdString(file)); });
        Result imported;
        const uint64_t byCompanion = settingWritesOf(camera, [&] {
            imported = runInProcess({"import", file, "--serial", serial, "--verify"});
        });
        EXPECT_EQ(byCompanion, byJob);
        EXPECT_EQ(imported.code, 0) << imported.err << imported.out;
        const Result plain = runInProcess({"import", file, "--serial", serial});
        EXPECT_EQ(plain.code, 0) << plain.err << plain.out;
        const Result verified = runInProcess({"verify", file, "--serial", serial, "--json"});
        EXPECT_EQ(verified.code, 0) << imported.out;
        const auto told = tests::lastObject(verified, "result");
        EXPECT_EQ(told["result"], "applied");
        for (const auto& entry : told["features"])
            ++row.verdicts[entry["verdict"]];
        return row;
    }

    static void print(const QString& name, const Row& row)
    {
        std::printf("%-28s", qPrintable(name));
        if (!row.isExported)
            std::printf("  no firmware version, no file");
        for (const auto& [verdict, count] : row.verdicts)
            std::printf("  %d %s", count, verdict.c_str());
        std::puts("");
    }

    emu::EmulatedCamera& addDescribed(const QFileInfo& description)
    {
        QFile file(description.filePath());
        tests::OwnDescription index;
        EXPECT_TRUE(file.open(QIODevice::ReadOnly) && index.index.index(QString::fromUtf8(file.readAll())));
        return addCamera("R1", [&](emu::CameraConfig& config) {
            config.model = description.completeBaseName().left(31).toStdString();
            config.descriptionFile = description.filePath().toStdString();
            config.seed = tests::seedFor(index.nodes).toStdString();
        });
    }

private:
    template <class Work>
    static uint64_t settingWritesOf(emu::EmulatedCamera& camera, Work work)
    {
        camera.resetCounters();
        work();
        return camera.counters().settingWrites;
    }
};

} // namespace

TEST_F(UnchangedImport, OfTheEmulatorsOwnCameraIsApplied)
{
    const Row row = tryCamera(addCamera("S1"));
    EXPECT_TRUE(row.isExported);
    EXPECT_GT(row.verdicts.at("unchanged"), 100);
    print("emulator", row);
}

class UnchangedRealImport : public UnchangedImport, public ::testing::WithParamInterface<QString>
{
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(UnchangedRealImport);

TEST_P(UnchangedRealImport, IsApplied)
{
    const Row row = tryCamera(addDescribed(QFileInfo(GetParam())));
    print(QFileInfo(GetParam()).completeBaseName(), row);
}

namespace
{

QList<QString> descriptions()
{
    QList<QString> paths;
    if (qEnvironmentVariableIsEmpty("KX_DESCRIPTIONS"))
        return paths;
    const QDir folder(qEnvironmentVariable("KX_DESCRIPTIONS"));
    for (const QFileInfo& file : folder.entryInfoList({"*.xml"}, QDir::Files, QDir::Name))
        paths += file.filePath();
    return paths;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Real, UnchangedRealImport, ::testing::ValuesIn(descriptions()));

TEST(UnchangedRealImports, AreTried)
{
    if (qEnvironmentVariableIsEmpty("KX_DESCRIPTIONS")) {
        std::puts("SKIPPED: KX_DESCRIPTIONS names no folder");
        GTEST_SKIP();
    }
    EXPECT_FALSE(descriptions().isEmpty());
}
