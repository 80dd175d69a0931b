// What cameras are called, and what their texts say, through every command: nothing lies outside of the
// folder, nothing acts on a terminal, everything for programs is well-formed, and no two cameras look like
// one.
#include "companion/LineCompanion.h"
#include "companion/SmallDescription.h"
#include "iefeatures/console/Text.h"
#include "support/FileNames.h"

#include <QDirIterator>
#include <QXmlStreamReader>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>

using ::testing::HasSubstr;
using tests::Arguments;
using tests::Json;
using tests::Result;
using tests::runInProcess;

namespace
{

// At most 15 bytes, as a serial number has them.
const char* const kTries[] = {
    "..",          // folders
    "../../x",     //
    "/tmp/x",      //
    "a/b",         //
    "..\\x",       //
    "a\nb",        // lines
    "a\rb",        //
    "a\tb",        //
    "a\033[31m",   // terminals
    "a\033]0;t\a", //
    "a\xC2\x9B"
    "31m",             // the same in one character
    "a\x7F",           //
    "\xE2\x80\xAEtxt", // bidirectional marks
    "\xE2\x81\xA6txt", //
    "\xE2\x80\xA8x",   // a line separator
    "\xFF\xFE\xFD",    // no UTF-8
    "a\xED\xA0\x80",   // a surrogate
    "<b>&\"'",         // markup
    "]]>",             //
    "%1%s%n",          // formats
    "-rf",             // words
    "*",               //
    "\"\\",            //
    "exactly15bytes!", // without a zero
};

class HostileNames : public tests::LineOfCameras
{
protected:
    HostileNames() { QDir().mkdir(QString::fromStdString(path("to"))); }

    // The format does not escape what cameras say: some make no file that could be read again, and some would
    // lie outside of the folder.
    static bool hasFile(const std::string& text)
    {
        return text.find_first_of(tests::kNotInFileNames) == text.npos && text.find('<') == text.npos &&
               text != "]]>";
    }
    // Whose files an import takes for theirs.
    static bool hasFileOfItsOwn(const std::string& text)
    {
        return hasFile(text) && QString::fromStdString(text).toStdString() == text;
    }
    static int count(bool (*isMeant)(const std::string&))
    {
        return int(std::count_if(std::begin(kTries), std::end(kTries), isMeant));
    }

    // A camera a try, which says it in all its texts.
    void add(bool (*isMeant)(const std::string&))
    {
        for (const char* text : kTries)
            if (isMeant(text))
                addCamera(text, [text](emu::CameraConfig& config) {
                    config.manufacturer = config.model = config.firmware = config.userName = text;
                    config.seed = seedOf(text);
                });
    }
    void addAll()
    {
        add([](const std::string&) { return true; });
    }

    static std::string seedOf(const std::string& text)
    {
        const Json seed = {{"nodes", {{"DeviceLocation", text}}}};
        return seed.dump(-1, ' ', false, Json::error_handler_t::replace);
    }

    static void expectNothingActs(const std::string& text)
    {
        const QByteArray bytes = QByteArray::fromStdString(text);
        const QString read = QString::fromUtf8(bytes);
        EXPECT_EQ(read.toUtf8(), bytes) << "no UTF-8";
        for (const uint character : read.toUcs4())
            if (character != '\n' && companion::actsOnTerminal(character)) {
                ADD_FAILURE() << "character " << character << " in " << text;
                return;
            }
    }

    // The companion, twice: for people and for scripts.
    Result runBoth(const Arguments& arguments)
    {
        const Result text = runInProcess(arguments);
        expectNothingActs(text.out);
        expectNothingActs(text.err);
        Arguments more = arguments;
        more.push_back("--json");
        const Result json = runInProcess(more);
        expectNothingActs(json.out);
        expectNothingActs(json.err);
        tests::objects(json); // each line is one
        expectFolderWasNotLeft();
        return text;
    }

    // Whatever was written lies where it should, and nothing beside the folder that the test has.
    void expectFolderWasNotLeft() const
    {
        const QStringList expected = {"hall-files", "hall.toml",  "hall.toml.lock",
                                      "page.html",  "report.xml", "samples.prom",
                                      "snapshots",  "to",         "user-data"};
        for (const QString& name : allInFolder())
            EXPECT_TRUE(expected.contains(name)) << name.toStdString();
        for (const char* outside : {"../x", "../../x", "../b", "../b_..", "/tmp/x"}) {
            const QString stem = QString(outside).startsWith('/')
                                     ? QString(outside)
                                     : QString::fromStdString(folder()) + '/' + outside;
            for (const char* end : {"", ".fpk", "_a", "_..", "_x.fpk", "_.._.._x.fpk"})
                EXPECT_FALSE(QFile::exists(stem + end)) << (stem + end).toStdString();
        }
    }

    // Files in a folder of the test and all below it.
    QStringList filesBelow(const std::string& name) const
    {
        QStringList files;
        for (QDirIterator at(QString::fromStdString(path(name)), QDir::Files | QDir::Hidden | QDir::System,
                             QDirIterator::Subdirectories);
             at.hasNext();)
            files += at.next();
        return files;
    }
};

} // namespace

TEST_F(HostileNames, EachHasALineOfItsOwn)
{
    addAll();
    const Result table = runBoth({"list"});
    EXPECT_EQ(QString::fromStdString(table.out).count('\n'), int(std::size(kTries)) + 1) << table.out;
    std::set<std::string> seen;
    for (const Json& object : tests::objects(runInProcess({"list", "--json"})))
        if (object["kind"] == "camera")
            seen.insert(object["camera"].dump());
    EXPECT_EQ(seen.size(), std::size(kTries));
}

TEST_F(HostileNames, FilesStayInTheFolderAndAreToldApart)
{
    addAll();
    for (const char* naming : {"model-and-serial", "serial", "name", "address"}) {
        Arguments arguments{"export", "--all", "--to", path("to")};
        if (naming != std::string("model-and-serial"))
            arguments.insert(arguments.end(), {"--file-name", naming});
        runBoth(arguments);
    }
    runBoth({"export", "--all", "--to", path("to"), "--format", "bag"});
    EXPECT_THAT(filesBelow("to"),
                ::testing::Contains(QString::fromStdString(path("to/exactly15bytes!.fpk"))));
    const std::string address = path("to/127.");
    int byAddress = 0;
    for (const QString& file : filesBelow("to"))
        byAddress += file.startsWith(QString::fromStdString(address));
    EXPECT_EQ(byAddress, count(hasFile));
}

TEST_F(HostileNames, FilesOfThemAreShownComparedAndTakenBack)
{
    addAll();
    runInProcess({"export", "--all", "--to", path("to"), "--file-name", "address"});
    const QStringList files = filesBelow("to");
    ASSERT_GE(files.size(), 2);
    for (const QString& file : files) {
        runBoth({"show", file.toStdString()});
        runBoth({"diff", files.first().toStdString(), file.toStdString()});
    }
    ASSERT_TRUE(QDir(QString::fromStdString(folder())).mkdir("snapshots"));
    runBoth({"plan", path("to"), "--by", "address", "--all"});
    runBoth({"verify", path("to"), "--by", "address", "--all"});
    const Result taken = runBoth({"import", path("to"), "--by", "address", "--all", "--keep-going",
                                  "--verify", "--snapshot", path("snapshots")});
    EXPECT_THAT(taken.out, HasSubstr("exactly15bytes!")) << taken.err;
    for (const QString& file : filesBelow("snapshots"))
        EXPECT_TRUE(file.endsWith(".fpk")) << file.toStdString();
    std::istringstream audit(fileText("user-data/Audit/iefeatures.jsonl").toStdString());
    for (std::string line; std::getline(audit, line);) {
        expectNothingActs(line);
        EXPECT_TRUE(Json::accept(line)) << line;
    }
}

TEST_F(HostileNames, FeaturesAreReadAndSet)
{
    addAll();
    runBoth({"get", "DeviceLocation", "DeviceModelName", "DeviceUserID", "--all"});
    runBoth({"set", "DeviceLocation=a\033[31m\n\xE2\x80\xAE", "--all"});
    runBoth({"get", "No\033[31mSuch\nFeature", "--all"});
}

TEST_F(HostileNames, ALineOfThemHasReports)
{
    add(hasFileOfItsOwn);
    expectNothingActs(init({"--all"}).err); // names that no file can have
    const Result taken = init({"--all", "--name-by", "address"});
    ASSERT_EQ(taken.code, 0) << taken.err;
    expectNothingActs(taken.out);
    expectNothingActs(taken.err);
    EXPECT_EQ(int(inventory().cameras.size()), count(hasFileOfItsOwn));
    expectNothingActs(fileText("hall.toml").toStdString());
    runBoth({"line", "check", file(), "--junit", path("report.xml"), "--report", path("page.html"),
             "--metrics", path("samples.prom")});
    QXmlStreamReader xml(fileText("report.xml"));
    while (!xml.atEnd())
        xml.readNext();
    EXPECT_EQ(xml.error(), QXmlStreamReader::NoError) << xml.errorString().toStdString();
    EXPECT_FALSE(fileText("page.html").contains("<b>"));
    expectNothingActs(fileText("page.html").toStdString());
    expectNothingActs(fileText("report.xml").toStdString());
}

// Names of the description: the camera's maker may mean no good either.
TEST_F(HostileNames, DescriptionsNameNothingThatActs)
{
    const std::string name = "F&#10;&#27;[31m&#x202E;/../&lt;b&gt;";
    addCamera("S1", [&](emu::CameraConfig& config) {
        config.description = tests::smallDescription(
            "<pFeature>" + name + "</pFeature><pFeature>Choice</pFeature>",
            "<Integer Name=\"" + name + "\"><Streamable>Yes</Streamable><pValue>Reg</pValue></Integer>" +
                tests::wordRegister("Reg", "0x20000") +
                "<Enumeration Name=\"Choice\"><Streamable>Yes</Streamable>" +
                "<EnumEntry "
                "Name=\"E&#27;[31m&#10;x\"><Value>0</Value></EnumEntry><pValue>Other</pValue></Enumeration>" +
                tests::wordRegister("Other", "0x20004"));
    });
    runBoth({"export", "--all", "--to", path("to")});
    for (const QString& file : filesBelow("to"))
        runBoth({"show", file.toStdString()});
    runBoth({"export", "--all", "--to", path("to"), "--format", "bag"});
    runBoth({"get", "--all", "Choice"});
    runBoth({"set", "Choice=1", "--all", "--yes"});
}

TEST_F(HostileNames, LongTextsOfFilesAreOneLineEach)
{
    addCamera("S1");
    const std::string name = exported("S1");
    QByteArray content = fileText(name);
    const QByteArray features = "<Features>\r\n";
    const QByteArray hostile = "\xE2\x80\xAE&#9;&lt;b&gt;\xC2\x9B" + QByteArray(64 * 1024, 'x');
    content.replace(features, features + feature("DeviceLocation", "StringReg", hostile) +
                                  feature(hostile, "Integer", hostile) + feature("Width", hostile, "8"));
    QFile::remove(QString::fromStdString(path(name)));
    QFile file(QString::fromStdString(path("to/long.fpk")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    const std::string longFile = path("to/long.fpk");
    runBoth({"show", longFile});
    runBoth({"diff", longFile, longFile});
    runBoth({"plan", longFile, "--all"});
    runBoth({"import", longFile, "--all", "--verify"});
    EXPECT_THAT(runInProcess({"plan", longFile, "--all"}).out, HasSubstr("DeviceLocation"));
}
