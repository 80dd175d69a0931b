#include "companion/ImportCompanion.h"
#include "support/Device.h"

#include <nlohmann/json.hpp>

using ::testing::HasSubstr;
using tests::entries;
using tests::Result;
using tests::runInProcess;

namespace
{

std::string data(const std::string& name)
{
    return std::string(IE_TEST_DATA) + "/compare/" + name;
}

std::string golden(const std::string& name)
{
    QFile file(QString::fromStdString(data(name)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll().toStdString();
}

class ShowCommand : public tests::ImportCompanion
{
protected:
    static Result show(const std::string& file, const tests::Arguments& more = {})
    {
        tests::Arguments arguments{"show", file};
        arguments.insert(arguments.end(), more.begin(), more.end());
        // Nobody looks for cameras.
        return runInProcess(arguments, [](std::vector<KX_DeviceEntry>&) {
            ADD_FAILURE();
            return KX_E_NETWORK;
        });
    }
};

} // namespace

TEST_F(ShowCommand, PrintsHeaderFeaturesAndRegisters)
{
    const Result run = show(data("a.fpk"));
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, golden("show.txt"));
    EXPECT_EQ(run.err, "");
}

TEST_F(ShowCommand, PrintsJsonInTheFilesOrder)
{
    const Result run = show(data("a.fpk"), {"--json"});
    EXPECT_EQ(run.code, 0);
    nlohmann::json told = nlohmann::json::parse(tests::lastObject(run, "file").dump());
    EXPECT_EQ(told["path"], data("a.fpk"));
    for (const char* key : {"format_version", "command", "kind", "path"})
        told.erase(key);
    EXPECT_EQ(told, nlohmann::json::parse(golden("show.json"))) << told.dump(2);
}

TEST_F(ShowCommand, LeavesOutABoardTypeThatTheFileDoesNotHave)
{
    EXPECT_EQ(show(data("b.fpk")).out.find("Board type"), std::string::npos);
    EXPECT_TRUE(tests::lastObject(show(data("b.fpk"), {"--json"}), "file")["board_type"].is_null());
}

TEST_F(ShowCommand, KeepsWhatIsNoNumberAndNothingThatTheTerminalActsOn)
{
    write("odd", "<F version=\"\xC2\x9B\"><Features><ComplexFeature name=\"N\" len=\"0x8\" reg=\"\">"
                 "<RegValue address=\"0x10\">0x1F,4294967296,-1,,\xC2\x9Bx</RegValue></ComplexFeature>"
                 "</Features></F>");
    const Result run = show(path("odd"));
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, HasSubstr("  N  8 bytes\n"
                                   "    0x00000010    0x0000001F 4294967296 -1 \n"
                                   "    0x00000020    \xEF\xBF\xBDx\n"));
    EXPECT_EQ(run.out.find("\xC2\x9B"), std::string::npos);
}

TEST_F(ShowCommand, SaysWhatIsWrongWithAFile)
{
    EXPECT_EQ(show(path("missing")).code, 6);
    EXPECT_EQ(show(tests::kDevice).code, 6);
    write("no-xml", "<F version=\"1\"><Features>");
    EXPECT_EQ(show(path("no-xml")).code, 5);
    EXPECT_EQ(show(path("no-xml")).out, "");
    write("no-features", "<F version=\"1\"/>");
    EXPECT_EQ(show(path("no-features")).code, 5);
    EXPECT_EQ(show(path("no-features")).err, "The file has no features: " + path("no-features") + "\n");
    write("no-version", "<F><Features/></F>");
    EXPECT_EQ(show(path("no-version")).code, 5);
}

TEST_F(ShowCommand, ShowsEveryFeatureOfAnExport)
{
    addCamera("S1");
    const std::string file = exported("S1");
    const QByteArray text = fileText(file);
    const auto json = tests::lastObject(show(path(file), {"--json"}), "file");
    EXPECT_EQ(int(json["features"].size()), text.count("<Feature>") + text.count("<ComplexFeature "));
    size_t registers = 0;
    for (const auto& feature : json["features"])
        registers += feature.contains("values") ? feature["values"].size() : 0;
    EXPECT_EQ(int(registers), text.count("<RegValue "));
    EXPECT_GT(registers, 0u);
}
