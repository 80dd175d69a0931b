// A line against its inventory, over cameras that are made up: every difference that was made is found, and
// none that was not.
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/line/LineReport.h"
#include "support/QtPrinting.h"

#include "camera_line/RecordTexts.h"

#include <SuiteTools/SuiteTools.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <set>
#include <sstream>

using companion::CameraCheck;
using companion::CameraVerdict;
using companion::EntryCheck;
using companion::EntryVerdict;
using companion::Inventory;
using companion::InventoryCamera;
using companion::LineCameraCheck;
using companion::LineCheck;
using companion::LineState;
using companion::ListedCamera;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

namespace
{

template <std::size_t Size>
void fill(uint8_t (&field)[Size], const QString& text)
{
    const QByteArray bytes = text.toUtf8().left(int(Size));
    std::memset(field, 0, Size);
    std::memcpy(field, bytes.constData(), size_t(bytes.size()));
}

QString macOf(int number)
{
    return QString("02:00:00:00:%1:%2")
        .arg(number / 256, 2, 16, QChar('0'))
        .arg(number % 256, 2, 16, QChar('0'))
        .toUpper();
}

QString addressOf(int number)
{
    return QString("10.0.%1.%2").arg(number / 250).arg(number % 250 + 1);
}

// A camera that is as the inventory has it.
ListedCamera presentOf(const InventoryCamera& wanted)
{
    ListedCamera camera;
    camera.device.stDeviceInfo.transportType = KX_TRANSPORT_GIGE;
    camera.device.nStatus = KX_AVAILABILITY_FREE;
    fill(camera.device.stDeviceInfo.special.gige.userDefinedName, wanted.nameInCamera());
    camera.model = wanted.model;
    camera.serial = wanted.serial;
    camera.userName = wanted.nameInCamera();
    camera.mac = wanted.mac;
    camera.address = wanted.address;
    camera.interfaceName = wanted.interfaceName;
    camera.status = "free";
    return camera;
}

InventoryCamera wantedOf(int number)
{
    InventoryCamera wanted;
    wanted.name = QString("Gate %1").arg(number);
    wanted.model = number % 3 ? "M" : "N";
    wanted.serial = QString::number(1000 + number / 2); // two sensors, one number
    wanted.mac = macOf(number);
    wanted.interfaceName = QString("eth%1").arg(number % 4);
    wanted.address = addressOf(number);
    wanted.mask = "255.255.255.0";
    wanted.usesDhcp = false;
    wanted.firmware = "1.0";
    wanted.featuresFile = "f.fpk";
    wanted.retired = QStringList{macOf(20000 + number)};
    return wanted;
}

// What each camera answers; by MAC address.
struct Answers
{
    std::map<QString, CameraCheck> checks;
    std::map<QString, QMap<QString, QString>> network;

    companion::LineQuestions questions()
    {
        return {
            [this](const ListedCamera& camera, const ie::FeaturesContent&, const companion::CheckRule& rule) {
                CameraCheck check = checks.count(camera.mac) ? checks.at(camera.mac) : good();
                check.camera = camera;
                EXPECT_FALSE(rule.isStrict);
                return check;
            },
            [this](const ListedCamera& camera) {
                const QMap<QString, QString> usual{
                    {"mask", "255.255.255.0"}, {"gateway", "0.0.0.0"}, {"dhcp", "false"}, {"lla", "true"}};
                return network.count(camera.mac) ? network.at(camera.mac) : usual;
            }};
    }

    static CameraCheck good()
    {
        CameraCheck check;
        check.verdict = CameraVerdict::Applied;
        check.identity.push_back(
            {ie::IdentityComparison::What::Firmware, ie::IdentityComparison::Outcome::Good, "1.0", "1.0"});
        EntryCheck session;
        session.feature = "GevSCPSPacketSize";
        session.judge(EntryVerdict::Session, "set by the program that streams from the camera");
        check.entries.push_back(session);
        return check;
    }
    static CameraCheck differing()
    {
        CameraCheck check = good();
        EntryCheck entry;
        entry.feature = "Gain";
        entry.fileValue = "1";
        entry.cameraValue = "2";
        entry.judge(EntryVerdict::NotApplied);
        check.entries.push_back(entry);
        check.verdict = CameraVerdict::Incomplete;
        return check;
    }
    static CameraCheck failed(CameraVerdict verdict, const QString& error)
    {
        CameraCheck check;
        check.verdict = verdict;
        check.error = error;
        return check;
    }
};

// Some are alike where what a terminal would act on is left out.
const char* const kHostile[] = {
    "<b>&\"'",         "a\nb",         "a\rb",         "a\\nb",       "a\\u000ab",
    "x\x1B[31m",       "]]>",          "\\",           "{}",          "\xE2\x80\xAEtxt",
    "\xE2\x80\xADtxt", "\xEF\xBF\xBE", "\xEF\xBF\xBF", "\xEF\xBF\xBD"};

class Line : public ::testing::Test
{
protected:
    Line()
    {
        inventory.path = m_folder.filePath("hall.toml");
        inventory.name = "Hall 2";
        QFile file(m_folder.filePath("f.fpk"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        const QString text = "<F version='" + VELAInterface::softwareVersion() + "'><Features/></F>";
        file.write(text.toUtf8());
    }

    void add(int count)
    {
        for (int i = 0; i < count; ++i) {
            inventory.cameras.push_back(wantedOf(i));
            present.push_back(presentOf(inventory.cameras.back()));
        }
    }

    // Their names are another thing on the line than in the inventory.
    void addHostile()
    {
        add(int(std::size(kHostile)));
        for (size_t i = 0; i < std::size(kHostile); ++i)
            inventory.cameras[i].name = QString::fromUtf8(kHostile[i]);
    }

    LineCheck check()
    {
        std::ostringstream out, err;
        companion::Console console(out, err, false, false);
        return companion::checkLine(console, inventory, present, false, answers.questions());
    }

    // "Gate 1: elsewhere: address", of all that are not in order.
    std::vector<std::string> told(const LineCheck& done) const
    {
        std::vector<std::string> lines;
        for (const LineCameraCheck& one : done.cameras) {
            if (one.match.state == LineState::InOrder)
                continue;
            QStringList keys;
            for (const auto& difference : one.match.differences)
                keys += difference.what;
            const QString whose = one.match.wanted ? one.name() : one.match.camera->mac;
            lines.push_back((whose + ": " + companion::lineStateWord(one.match.state) +
                             (keys.isEmpty() ? QString() : ": " + keys.join(",")))
                                .toStdString());
        }
        return lines;
    }
    std::vector<std::string> told() { return told(check()); }

    QString path(const char* name) const { return m_folder.filePath(name); }

    Inventory inventory;
    std::vector<ListedCamera> present;
    Answers answers;

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(Line, IsInOrderAsItWasTaken)
{
    add(5);
    const LineCheck done = check();
    EXPECT_THAT(told(done), ElementsAre());
    EXPECT_EQ(done.gravest(), LineState::InOrder);
    EXPECT_EQ(companion::lineCounts(done), "5 cameras: 5 in order");
    EXPECT_EQ(done.cameras[0].count(EntryVerdict::Session), 1);
}

TEST_F(Line, MissesWhoIsGone)
{
    add(2);
    present.pop_back();
    EXPECT_THAT(told(), ElementsAre("Gate 1: missing"));
}

TEST_F(Line, KnowsASwappedPairOfCables)
{
    add(2);
    std::swap(present[0].interfaceName, present[1].interfaceName);
    EXPECT_THAT(told(), ElementsAre("Gate 0: elsewhere: interface", "Gate 1: elsewhere: interface"));
    // Who was asked by its address tells no place.
    present[0].interfaceName.clear();
    EXPECT_THAT(told(), ElementsAre("Gate 1: elsewhere: interface"));
}

TEST_F(Line, KnowsCamerasThatHaveSwappedTheirNames)
{
    add(2);
    std::swap(present[0].userName, present[1].userName);
    EXPECT_THAT(told(), ElementsAre("Gate 0: elsewhere: name", "Gate 1: elsewhere: name"));
}

TEST_F(Line, DoesNotTakeAnotherOfTheSameNameForTheRightOne)
{
    add(2);
    present[1].mac = macOf(999);
    EXPECT_THAT(told(), ElementsAre("Gate 1: other camera: mac"));
    present[1].model = "X";
    EXPECT_THAT(told(), ElementsAre("Gate 1: other model or firmware: model,mac"));
    // Where the right one is there as well, it is a stranger.
    present.push_back(presentOf(inventory.cameras[1]));
    EXPECT_THAT(told(), ElementsAre("02:00:00:00:03:E7: not in the inventory"));
}

TEST_F(Line, TellsARetiredCameraFromAStranger)
{
    add(1);
    present.push_back(presentOf(wantedOf(7)));
    present.back().mac = inventory.cameras[0].retired[0];
    EXPECT_THAT(told(), ElementsAre("02:00:00:00:4E:20: retired, and back"));
    // In the place of the one that has replaced it.
    present.erase(present.begin());
    present[0].userName = "Gate 0";
    present[0].model = inventory.cameras[0].model;
    EXPECT_THAT(told(), ElementsAre("Gate 0: retired, and back: serial,mac"));
}

TEST_F(Line, GoesBySerialNumbersWhereThereIsNothingElse)
{
    add(1);
    inventory.cameras[0].mac.clear();
    EXPECT_THAT(told(), ElementsAre());
    // Of two of one number the one that has the name is meant.
    present.push_back(present[0]);
    present[1].mac = macOf(2);
    present[1].userName = "Gate 9";
    EXPECT_THAT(told(), ElementsAre("02:00:00:00:00:02: not in the inventory"));
    present[0].userName = "Gate 8";
    EXPECT_THAT(told(), ElementsAre("Gate 0: missing", "02:00:00:00:00:00: not in the inventory",
                                    "02:00:00:00:00:02: not in the inventory"));
}

TEST_F(Line, HasCausesOfThisHostWithCamerasThatAreUnreachable)
{
    add(1);
    present[0].device.nStatus = KX_AVAILABILITY_UNREACHABLE;
    present[0].reason = "not in the network of eth0 (10.1.0.1/24)";
    const LineCheck done = check();
    EXPECT_THAT(told(done), ElementsAre("Gate 0: unreachable"));
    EXPECT_TRUE(done.cameras[0].match.reason.startsWith(present[0].reason))
        << done.cameras[0].match.reason.toStdString();
    EXPECT_FALSE(done.cameras[0].check.has_value());
}

TEST_F(Line, IsNotJudgedWhereCamerasCannotBeAsked)
{
    add(1);
    answers.checks[macOf(0)] =
        Answers::failed(CameraVerdict::Failed, "Another host has control (10.0.0.5:4000).");
    const LineCheck done = check();
    EXPECT_THAT(told(done), ElementsAre("Gate 0: not judged"));
    EXPECT_EQ(done.cameras[0].match.reason, "Another host has control (10.0.0.5:4000).");
}

TEST_F(Line, NeedsTheFilesThatTheInventoryMeans)
{
    add(2);
    inventory.cameras[0].featuresFile = "none.fpk";
    inventory.cameras[1].featuresHash = QString(64, 'a');
    EXPECT_THAT(told(), ElementsAre("Gate 0: bad files", "Gate 1: bad files"));
    inventory.cameras[0].featuresFile.clear(); // it says nothing of its features
    inventory.cameras[1].featuresHash = companion::hashOfFile(path("f.fpk"));
    EXPECT_THAT(told(), ElementsAre());
}

TEST_F(Line, HasOneExitCodeForTheGravest)
{
    using companion::exitCodeOf;
    std::vector<int> codes;
    for (const LineState state : companion::kLineStates)
        if (codes.empty() || codes.back() != exitCodeOf(state))
            codes.push_back(exitCodeOf(state));
    EXPECT_THAT(codes, ElementsAre(0, 4, 5, 3, 1, 6));
}

// ---- the model: what was done to a line, and what is told of it ----

namespace
{

// One thing that is done to a camera, and how that is told.
struct Deed
{
    const char* told; // behind the camera's name; empty: nothing may be told
    void (*act)(ListedCamera& camera, Answers& answers);
};

// clang-format off
const Deed kDeeds[] = {
    {"", [](ListedCamera&, Answers&) {}},
    {"", [](ListedCamera& camera, Answers&) { camera.device.nStatus = KX_AVAILABILITY_IN_USE; }}, // it streams
    {"", [](ListedCamera& camera, Answers&) { camera.interfaceName.clear(); }},
    {": elsewhere: name", [](ListedCamera& camera, Answers&) { camera.userName += "x"; }},
    {": elsewhere: address", [](ListedCamera& camera, Answers&) { camera.address = "10.9.9.9"; }},
    {": elsewhere: interface", [](ListedCamera& camera, Answers&) { camera.interfaceName = "eth9"; }},
    {": elsewhere: mask", [](ListedCamera& camera, Answers& answers) { answers.network[camera.mac] = {{"mask", "255.0.0.0"}, {"dhcp", "false"}}; }},
    {": elsewhere: dhcp", [](ListedCamera& camera, Answers& answers) { answers.network[camera.mac] = {{"dhcp", "true"}}; }},
    {": other model or firmware: model", [](ListedCamera& camera, Answers&) { camera.model = "X"; }},
    {": unreachable", [](ListedCamera& camera, Answers&) { camera.device.nStatus = KX_AVAILABILITY_UNREACHABLE; }},
    {": differs", [](ListedCamera& camera, Answers& answers) { answers.checks[camera.mac] = Answers::differing(); }},
    {": not judged", [](ListedCamera& camera, Answers& answers) { answers.checks[camera.mac] = Answers::failed(CameraVerdict::Failed, "No answer."); }},
    {": other model or firmware", [](ListedCamera& camera, Answers& answers) { answers.checks[camera.mac] = Answers::failed(CameraVerdict::Incompatible, "Firmware."); }},
    {": other model or firmware: firmware", [](ListedCamera& camera, Answers& answers) {
        CameraCheck check = Answers::good();
        check.identity[0].cameraValue = "1.1"; // which the file tolerates
        answers.checks[camera.mac] = check;
    }},
    {": missing", nullptr},
};
// clang-format on

} // namespace

TEST_F(Line, TellsAllThatWasDoneTo1000LinesAndNothingElse)
{
    std::mt19937 random(7);
    std::set<std::string> kinds;
    for (int round = 0; round < 1000; ++round) {
        inventory.cameras.clear();
        present.clear();
        answers = {};
        add(int(random() % 12));
        std::vector<std::string> expected;
        std::vector<ListedCamera> there;
        for (size_t i = 0; i < present.size(); ++i) {
            const Deed& deed = kDeeds[random() % std::size(kDeeds)];
            if (*deed.told)
                expected.push_back(inventory.cameras[i].name.toStdString() + deed.told);
            kinds.insert(deed.told);
            if (!deed.act)
                continue;
            deed.act(present[i], answers);
            there.push_back(present[i]);
        }
        std::shuffle(there.begin(), there.end(), random);
        for (int i = int(random() % 3); i > 0; --i) {
            const int number = 5000 + i;
            there.push_back(presentOf(wantedOf(number)));
            expected.push_back(macOf(number).toStdString() + ": not in the inventory");
        }
        present = there;
        ASSERT_EQ(told(), expected) << "round " << round;
    }
    EXPECT_EQ(kinds.size(), std::size(kDeeds) - 2); // three of them are told as nothing
}

// ---- reports ----

TEST_F(Line, IsToldToPeopleInATable)
{
    add(2);
    present[0].address = "10.9.9.9";
    answers.checks[macOf(0)] = Answers::differing();
    present.pop_back();
    EXPECT_EQ(companion::lineText(check(), companion::ReportStyle()).toStdString(),
              "CAMERA  STATE      MODEL  SERIAL  ADDRESS   ASIDE\n"
              "Gate 0  elsewhere  N      1000    10.9.9.9  session: 1\n"
              "Gate 1  missing    M      1000    10.0.0.2  \n"
              "2 cameras: 1 elsewhere, 1 missing\n"
              "Gate 0: elsewhere\n"
              "  address: 10.9.9.9, should be 10.0.0.1\n"
              "  not applied: Gain: camera 2, file 1\n");
}

TEST_F(Line, TellsScriptsWhatDiffersOnly)
{
    add(1);
    answers.checks[macOf(0)] = Answers::differing();
    const companion::Json object = companion::lineJson(check().cameras[0]);
    EXPECT_EQ(object["state"], "differs");
    ASSERT_EQ(object["features"].size(), 1u);
    EXPECT_EQ(object["features"][0]["feature"], "Gain");
    EXPECT_EQ(object["aside"]["session"], 1);
}

TEST_F(Line, IsWellFormedXmlWhateverCamerasAreCalled)
{
    addHostile();
    inventory.name = QString::fromUtf8("<&\x07\"");
    present[0].model = "<&";
    QXmlStreamReader xml(companion::lineJunit(inventory, check()));
    int cases = 0, failures = 0, errors = 0;
    std::set<QString> names;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == "testcase") {
            ++cases;
            names.insert(xml.attributes().value("name").toString());
        }
        failures += xml.name() == "failure";
        errors += xml.name() == "error";
        if (xml.name() == "testsuite") {
            EXPECT_EQ(xml.attributes().value("tests").toInt(), int(std::size(kHostile)));
        }
    }
    EXPECT_EQ(xml.error(), QXmlStreamReader::NoError) << xml.errorString().toStdString();
    EXPECT_EQ(cases, int(std::size(kHostile)));
    EXPECT_EQ(names.size(), std::size(kHostile)) << "no two cameras look like one";
    EXPECT_EQ(failures, int(std::size(kHostile)));
    EXPECT_EQ(errors, 0);
}

TEST_F(Line, IsAPageThatNothingInACameraCanWriteInto)
{
    addHostile();
    present[1].userName = "<script>alert(1)</script>";
    const QByteArray page = companion::linePage(inventory, check());
    EXPECT_EQ(page.count("<script"), 0);
    EXPECT_EQ(page.count("<b>"), 0);
    EXPECT_TRUE(page.contains("&lt;script&gt;"));
    EXPECT_FALSE(page.contains("\x1B"));
    for (const char* outside : {"http:", "https:", "src=", "url(", "@import"})
        EXPECT_FALSE(page.contains(outside)) << outside;
    EXPECT_TRUE(page.contains("@media print"));
    EXPECT_TRUE(page.contains("prefers-color-scheme: dark"));
    EXPECT_TRUE(page.contains(companion::hashOfFile(path("f.fpk")).toUtf8()));
}

TEST_F(Line, HasMetricsWhoseNamesStayApart)
{
    addHostile();
    inventory.cameras[0].name = "a\"\\\nb";
    present.clear();
    const QDateTime now = QDateTime::fromSecsSinceEpoch(1700000000);
    const QByteArray text = companion::lineMetrics("Hall \"2\"", check(), now);
    EXPECT_TRUE(text.contains("iefeatures_line_check_success{line=\"Hall \\\"2\\\"\"} 1\n"));
    EXPECT_TRUE(
        text.contains("iefeatures_line_check_timestamp_seconds{line=\"Hall \\\"2\\\"\"} 1700000000\n"));
    EXPECT_TRUE(text.contains("camera=\"a\\\"\\\\\\nb\",state=\"missing\"} 1\n"));
    std::set<QByteArray> series;
    for (const QByteArray& line : text.split('\n'))
        if (!line.isEmpty() && !line.startsWith('#')) {
            EXPECT_TRUE(series.insert(line.left(line.lastIndexOf(' '))).second) << line.constData();
        }
    const QByteArray failed = companion::lineMetrics("", std::nullopt, now);
    EXPECT_TRUE(failed.contains("iefeatures_line_check_success{line=\"\"} 0\n"));
    EXPECT_FALSE(failed.contains("iefeatures_line_cameras"));
    for (const QByteArray& line : failed.split('\n'))
        if (line.startsWith("# ")) {
            EXPECT_TRUE(text.contains(line + '\n')) << line.constData();
        }
}

TEST_F(Line, HasMetricsThatAreReplacedInOneStep)
{
    EXPECT_EQ(companion::writeMetrics(path("a.prom"), "one\n"), "");
    EXPECT_EQ(companion::writeMetrics(path("a.prom"), "two\n"), "");
    QFile file(path("a.prom"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "two\n");
    EXPECT_EQ(QDir(path("")).entryList({"*.prom*"}, QDir::Files), QStringList{"a.prom"});
    EXPECT_THAT(companion::writeMetrics(path("none/a.prom"), "x").toStdString(),
                HasSubstr("cannot be written"));
}
