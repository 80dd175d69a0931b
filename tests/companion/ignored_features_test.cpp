// --ignore, with each command that tells whether a camera is as a file says.
#include "companion/ImportCompanion.h"

#include <nlohmann/json.hpp>

#include <QDir>

using ::testing::HasSubstr;
using tests::Arguments;
using tests::Result;
using tests::runInProcess;

namespace
{

const Arguments kHeightAndWhatHangsOnIt = {"Height", "OffsetY"};

class IgnoredFeatures : public tests::ImportCompanion
{
protected:
    // Without --ignore and with it.
    static void expectItMatters(Arguments arguments, const Arguments& features)
    {
        SCOPED_TRACE(arguments[0] + ' ' + arguments.back());
        arguments.push_back("--json");
        const Result plain = runInProcess(arguments);
        EXPECT_EQ(plain.code, 4) << plain.err;
        EXPECT_EQ(tests::lastObject(plain, "result")["result"], "incomplete");
        arguments.push_back("--ignore");
        for (const std::string& feature : features)
            arguments.push_back(feature.substr(0, feature.size() - 1) + '*');
        const Result ignoring = runInProcess(arguments);
        EXPECT_EQ(ignoring.code, 0) << ignoring.err;
        const tests::Json told = tests::lastObject(ignoring, "result");
        EXPECT_THAT(told["result"].get<std::string>(), ::testing::AnyOf("applied", "ready"));
        EXPECT_EQ(told["not_applied"], tests::Json::array());
        for (const std::string& feature : features)
            EXPECT_EQ(verdictOf(told, feature), "ignored");
    }

    static std::string verdictOf(const tests::Json& told, const std::string& feature)
    {
        for (const tests::Json& entry : told["features"])
            if (entry["feature"] == feature)
                return entry["verdict"];
        return {};
    }

    // The camera refuses its height from now on.
    static void refuseHeight(emu::EmulatedCamera& camera)
    {
        emu::Faults faults;
        faults.refusals = {{0x11014, 4}};
        camera.setFaults(faults);
    }
};

} // namespace

TEST_F(IgnoredFeatures, MakeNothingAmissInAFile)
{
    addCamera("S1");
    const std::string file = path(
        altered(exported("S1"), feature("Width", "Integer", "640"), feature("Width", "Integer", "64000")));
    expectItMatters({"plan", file, "--all"}, {"Width"});
    expectItMatters({"verify", file, "--all"}, {"Width"});
    expectItMatters({"import", file, "--all"}, {"Width"});
    expectItMatters({"import", file, "--all", "--dry-run"}, {"Width"});
    expectItMatters({"import", file, "--all", "--verify"}, {"Width"});
    expectItMatters({"import", file, "--all", "--persist", "UserSet1"}, {"Width"});
    EXPECT_THAT(runInProcess({"verify", file, "--all", "--ignore", "Width"}).out,
                HasSubstr("ignored: 1 differs\n"));
}

TEST_F(IgnoredFeatures, MakeNothingAmissInASnapshot)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    QDir().mkdir(QString::fromStdString(path("snapshots")));
    import(exported("S1"), {"--all", "--snapshot", path("snapshots")});
    const QString name = QDir(QString::fromStdString(path("snapshots"))).entryList({"*_S1"}).value(0);
    refuseHeight(camera);
    expectItMatters({"rollback", path("snapshots/" + name.toStdString()), "--all"}, kHeightAndWhatHangsOnIt);
}

TEST_F(IgnoredFeatures, MakeNothingAmissInAClone)
{
    addCamera("Source");
    refuseHeight(addCamera("Target"));
    expectItMatters({"clone", "--from", "Source", "--to", "Target", "--yes"}, kHeightAndWhatHangsOnIt);
}

TEST_F(IgnoredFeatures, HaveNames)
{
    const std::string file = path("none.fpk");
    for (const Arguments& command : {Arguments{"plan", file, "--all"}, Arguments{"diff", file, file},
                                     Arguments{"import", file, "--all"}}) {
        Arguments arguments = command;
        arguments.insert(arguments.end(), {"--ignore", ""});
        EXPECT_EQ(runInProcess(arguments).code, 2) << command[0];
    }
}
