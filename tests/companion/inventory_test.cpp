// The inventory of a line: what it may say, where its faults are told to be, and that a change of one value
// leaves every other character as it was.
#include "iefeatures/line/InventoryEdit.h"
#include "iefeatures/line/InventoryText.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

using companion::editedText;
using companion::Inventory;
using companion::InventoryCamera;
using companion::InventoryChange;
using companion::InventoryKind;
using companion::InventoryReading;
using companion::InventoryValue;
using companion::parseInventory;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace
{

const QString kPath = "/lines/hall.toml";

const char* const kWhole = R"(# Hall 2, by the gates
[line]
name = "Hall 2"
folder = "files"
ignored."EMU-1" = ["DeviceTemperature*"]

[line.x-notes]
since = 2024-05-01

[camera."Gate 3"]   # north
model = "EMU-1"
serial = "S3"
mac = "02-00-00-00-00-0a" # a sticker has it
interface = "eth1"
address = "10.0.0.7"
mask = "255.255.255.0"
gateway = "10.0.0.1"
dhcp = false
lla = true
firmware = "1.0.0"
features = "files/Gate 3.fpk"
features_sha256 = "0123456789ABCDEF0123456789abcdef0123456789abcdef0123456789abcdef"
bag = 'bags/Gate 3.fpk'
user_set = "UserSet1"
ignored = [
  "Gain",  # the program's
  "Zone*", ]
retired = ["02:00:00:00:00:0b"]
comment = ""

[camera."Gate 3".x-owner]
name = 7

[camera.Roof]
model = "U-2"
guid = "GUID1"

[x-other]
anything = [1, 2]
)";

Inventory whole()
{
    const InventoryReading reading = parseInventory(kWhole, kPath);
    for (const auto& fault : reading.faults)
        ADD_FAILURE() << companion::faultText(kPath, fault).toStdString();
    return reading.inventory;
}

std::vector<std::string> faultsOf(const QByteArray& text)
{
    std::vector<std::string> faults;
    for (const auto& fault : parseInventory(text, kPath).faults)
        faults.push_back(companion::faultText("f", fault).toStdString());
    return faults;
}

struct Wrong
{
    const char* text; // behind "[line]\nname='L'\n"
    const char* fault;
};

// clang-format off
const Wrong kWrong[] = {
    {"color = 1", "f:3:1: no such key here: color."},
    {"folder = 1", "f:3:10: folder has to be a text."},
    {"folder = ''", "f:3:10: folder is empty."},
    {"ignored = []", "f:3:11: ignored has to be a table."},
    {"ignored.M = 'Gain'", "f:3:13: M has to be a list of texts."},
    {"ignored.M = ['Gain', 1]", "f:3:22: M has to be a text."},
    {"x-a = 1", "f:3:1: no such key here: x-a."},
    {"[lines]", "f:3:2: no such key here: lines."},
    {"[[camera]]", "f:3:1: camera has to be a table."},
    {"[camera]\nA = 'x'", "f:4:5: A has to be a table."},
    {"[camera.A]\nserial = '1'", "f:3:9: camera \"A\" has no model."},
    {"[camera.A]\nmodel = 'M'", "f:3:9: camera \"A\" has no mac, guid or serial, so that nobody could tell it from others."},
    {"[camera.'']\nmodel = 'M'\nserial = '1'", "f:3:9: a camera needs a name."},
    {"[camera.A]\nmodel = 'M'\nserial = 1", "f:5:10: serial has to be a text."},
    {"[camera.A]\nmodel = ''\nserial = '1'", "f:4:9: model is empty."},
    {"[camera.A]\nmodel = 'M'\nserial = '1'\n  Serial = '1'", "f:6:3: no such key here: Serial."},
    {"[camera.A]\nmodel = 'M'\nmac = '02:00:00:00:00'", "f:5:7: mac is no MAC address."},
    {"[camera.A]\nmodel = 'M'\nserial = '1'\naddress = '10.0.0.256'", "f:6:11: address is no IPv4 address."},
    {"[camera.A]\nmodel = 'M'\nserial = '1'\naddress = '10.0.0'", "f:6:11: address is no IPv4 address."},
    {"[camera.A]\nmodel = 'M'\nserial = '1'\ngateway = ' 10.0.0.1'", "f:6:11: gateway is no IPv4 address."},
    {"[camera.A]\nmodel = 'M'\nserial = '1'\nmask = '255.0.255.0'", "f:6:8: mask is no network mask."},
    {"[camera.A]\nmodel = 'M'\nserial = '1'\ndhcp = 'no'", "f:6:8: dhcp has to be true or false."},
    {"[camera.A]\nmodel = 'M'\nserial = '1'\nlla = 1", "f:6:7: lla has to be true or false."},
    {"[camera.A]\nmodel = 'M'\nserial = '1'\nfeatures = 'f'\nfeatures_sha256 = 'abc'", "f:7:19: features_sha256 is no SHA-256."},
    {"[camera.A]\nmodel = 'M'\nserial = '1'\nbag_sha256 = '0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef'",
     "f:3:9: camera \"A\" has bag_sha256 without bag."},
    {"[camera.A]\nmodel = 'M'\nserial = '1'\nignored = 'Gain'", "f:6:11: ignored has to be a list of texts."},
    {"[camera.A]\nmodel = 'M'\nserial = '1'\nretired = ['02:00:00:00:00:01',\n 'x']", "f:7:2: retired: \"x\" is no MAC address."},
    {"[camera.A]\nmodel = 'M'\nmac = '02:00:00:00:00:01'\nretired = ['02-00-00-00-00-01']",
     "f:3:9: camera \"A\" has a MAC address that is retired as well."},
    {"[camera.'Gate 3 Nord-Ost!!']\nmodel = 'M'\nmac = '02:00:00:00:00:01'",
     "f:3:9: the name \"Gate 3 Nord-Ost!!\" takes 17 bytes, and the camera has room for 16."},
    {"[camera.A]\nmodel = 'M'\nmac = '02:00:00:00:00:01'\n[camera.B]\nmodel = 'M'\nmac = '02-00-00-00-00-01'",
     "f:6:9: camera \"B\" has the MAC address of camera \"A\": 02:00:00:00:00:01."},
    {"[camera.B]\nmodel = 'M'\nserial = '1'\naddress = '10.0.0.1'\n[camera.A]\nmodel = 'M'\nserial = '2'\naddress = '10.0.0.1'",
     "f:7:9: camera \"A\" has the address of camera \"B\": 10.0.0.1."},
    {"[camera.A]\nmodel = 'M'\nguid = 'G'\n[camera.B]\nmodel = 'M'\nguid = 'G'", "f:6:9: camera \"B\" has the GUID of camera \"A\": G."},
    {"[camera.A]\nmodel = 'M'\nserial = '1'\n[camera.B]\nmodel = 'M'\nserial = '1'",
     "f:6:9: camera \"B\" has the model and serial number of camera \"A\": M 1."},
    // What is no TOML: the parser's own words and places.
    {"[camera.A]\nmodel = 'M'\nserial = '1'\n[camera.A]\nmodel = 'M'", "f:6:1: Error while parsing table header: cannot redefine existing table"},
    {"[camera.A]\nmodel = 'M'\nmodel = 'N'", "f:5:"},
    {"[camera.A]\nmodel = ", "f:4:"},
    {"[camera.A\nmodel = 'M'", "f:3:"},
    {"[camera.A]\nmodel = 'M\xFF'", "f:4:"},
};
// clang-format on

} // namespace

TEST(Inventory, SaysWhatShouldBeThere)
{
    const Inventory line = whole();
    EXPECT_EQ(line.name, "Hall 2");
    EXPECT_EQ(line.resolved(line.folder), QFileInfo("/lines/files").absoluteFilePath());
    ASSERT_EQ(line.cameras.size(), 2u);
    const InventoryCamera& gate = line.cameras[0];
    EXPECT_EQ(gate.name, "Gate 3");
    EXPECT_EQ(gate.mac, "02:00:00:00:00:0A");
    EXPECT_EQ(gate.address, "10.0.0.7");
    EXPECT_EQ(gate.usesDhcp, false);
    EXPECT_EQ(gate.usesLla, true);
    EXPECT_TRUE(gate.featuresHash.startsWith("0123456789abcdef"));
    EXPECT_EQ(gate.bagFile, "bags/Gate 3.fpk");
    EXPECT_EQ(line.ignoredOf(gate), (QStringList{"DeviceTemperature*", "Gain", "Zone*"}));
    EXPECT_EQ(gate.retired, QStringList{"02:00:00:00:00:0B"});
    EXPECT_EQ(line.find("Roof")->guid, "GUID1");
    EXPECT_EQ(line.find("Roof")->usesDhcp, std::nullopt);
    EXPECT_EQ(line.find("gate 3"), nullptr);
}

TEST(Inventory, TellsWhereItIsWrong)
{
    EXPECT_GE(std::size(kWrong), 30u);
    for (const Wrong& wrong : kWrong) {
        const std::vector<std::string> faults = faultsOf(QByteArray("[line]\nname='L'\n") + wrong.text);
        ASSERT_FALSE(faults.empty()) << wrong.text;
        EXPECT_EQ(faults.size(), 1u) << wrong.text << '\n' << faults.back();
        EXPECT_EQ(faults.front().rfind(wrong.fault, 0), 0u) << wrong.text << '\n' << faults.front();
    }
    EXPECT_THAT(faultsOf(""), ElementsAre("f:1:1: a table [line] is missing."));
    EXPECT_THAT(faultsOf("[line]"), ElementsAre("f:1:1: the line has no name."));
    EXPECT_THAT(faultsOf("line = 1"), ElementsAre("f:1:8: line has to be a table."));
}

TEST(Inventory, TellsAllFaultsInTheirOrder)
{
    EXPECT_THAT(
        faultsOf("[line]\r\nname = 1\r\n[camera.\"G\xC3\xA4te\"]\r\nserial='1'\r\nmac = '\xC3\xA4'\r\n"),
        ElementsAre("f:2:8: name has to be a text.", "f:3:9: camera \"G\xC3\xA4te\" has no model.",
                    "f:5:7: mac is no MAC address."));
}

// Only their names are seen, whatever is in them.
TEST(Inventory, TellsNamesThatWouldActOnATerminalHarmlessly)
{
    EXPECT_THAT(faultsOf("[line]\nname='L'\n\"a\\u001B[31m\" = 1"),
                ElementsAre("f:3:1: no such key here: a\xEF\xBF\xBD[31m."));
}

TEST(Inventory, IsReadFromRegularFilesOnly)
{
    const QTemporaryDir folder;
    for (const QString& path : {folder.path(), folder.filePath("none.toml")}) {
        const InventoryReading reading = companion::readInventory(path);
        ASSERT_EQ(reading.faults.size(), 1u);
        EXPECT_EQ(reading.faults[0].line, 0);
        EXPECT_THAT(companion::faultText("f", reading.faults[0]).toStdString(),
                    HasSubstr("f: it cannot be read: "));
    }
}

// docs/ has a schema of the format.
TEST(Inventory, HasASchemaThatKnowsEachOfItsKeys)
{
    QFile file(IE_INVENTORY_SCHEMA);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QJsonObject properties = QJsonDocument::fromJson(file.readAll()).object();
    for (const char* step : {"$defs", "camera", "properties"})
        properties = properties[step].toObject();
    QStringList keys;
    for (const auto& key : companion::inventoryKeys()) {
        keys += key.name;
        const bool isSwitch = properties[key.name].toObject()["type"] == "boolean";
        EXPECT_EQ(isSwitch, key.kind == InventoryKind::Switch) << key.name;
    }
    keys.sort();
    EXPECT_EQ(properties.keys(), keys);
}

TEST(InventoryEdit, ReplacesTheCharactersOfOneValue)
{
    QString problem;
    const QByteArray text =
        editedText(whole(), {{"Gate 3", "mac", QString("02:00:00:00:00:0C")}}, {}, problem);
    EXPECT_EQ(problem, "");
    EXPECT_EQ(text, QByteArray(kWhole).replace("\"02-00-00-00-00-0a\"", "\"02:00:00:00:00:0C\""));
}

TEST(InventoryEdit, GivesNewKeysALineBehindTheLastOfTheirCamera)
{
    QString problem;
    const QByteArray text = editedText(
        whole(), {{"Roof", "firmware", QString("2")}, {"Roof", "retired", QStringList{"02:00:00:00:00:01"}}},
        {}, problem);
    EXPECT_EQ(problem, "");
    EXPECT_EQ(text, QByteArray(kWhole).replace(
                        "guid = \"GUID1\"\n",
                        "guid = \"GUID1\"\nfirmware = \"2\"\nretired = [\"02:00:00:00:00:01\"]\n"));
    // Where the file has no last end of line.
    const QByteArray open = "[line]\r\nname='L'\r\n[camera.A]\r\nmodel='M'\r\nserial='1' # end";
    EXPECT_EQ(editedText(parseInventory(open, kPath).inventory, {{"A", "dhcp", true}}, {}, problem),
              open + "\r\ndhcp = true");
}

TEST(InventoryEdit, AddsCamerasAtTheEnd)
{
    InventoryCamera added;
    added.name = "A \"b\" \\ \x1B";
    added.model = "M";
    added.serial = "1";
    added.usesLla = false;
    added.ignored = QStringList{"Gain", "x"};
    QString problem;
    const QByteArray text = editedText(whole(), {}, {added}, problem);
    EXPECT_EQ(problem, "");
    EXPECT_EQ(text, kWhole + QByteArray("\n[camera.\"A \\\"b\\\" \\\\ \\u001b\"]\nmodel = \"M\"\nserial = "
                                        "\"1\"\nlla = false\nignored = [\"Gain\", \"x\"]\n"));
}

// Nothing that does not read as it should is written.
TEST(InventoryEdit, LeavesAloneWhatItCannotChange)
{
    const QByteArray text = "[line]\nname='L'\n[camera]\nA = {model='M', serial='1'}\n";
    const Inventory line = parseInventory(text, kPath).inventory;
    QString problem;
    EXPECT_EQ(editedText(line, {{"A", "dhcp", true}}, {}, problem), QByteArray());
    EXPECT_NE(problem, "");
    problem.clear();
    EXPECT_EQ(editedText(line, {{"A", "serial", QString("2")}}, {}, problem),
              QByteArray(text).replace("'1'", "\"2\""));
    EXPECT_EQ(editedText(line, {{"A", "mac", QString("nonsense")}}, {}, problem), QByteArray());
    problem.clear();
    EXPECT_EQ(editedText(line, {}, {line.cameras[0]}, problem), QByteArray());
    EXPECT_NE(problem, "");
}

namespace
{

class Random
{
public:
    explicit Random(unsigned seed) : m_engine(seed) {}
    int below(int end) { return int(m_engine() % unsigned(end)); }
    template <typename List>
    const auto& oneOf(const List& list)
    {
        return list[size_t(below(int(list.size())))];
    }

    QString text()
    {
        static const QString alphabet =
            QString::fromUtf8("ab C\"\\#='[]\t\n\r\x1b\x7f\xC3\xA4\xE2\x80\xAE\xE9\x95\x9C");
        QString made = "x";
        for (int i = below(12); i > 0; --i)
            made += alphabet[below(alphabet.size())];
        return made + (below(3) ? "" : QString::fromUtf8("\xF0\x9F\x98\x80"));
    }
    QString mac() { return QString("02:00:00:00:%1:%2").arg(two(), two()); }
    QString address() { return QString("10.%1.%2.%3").arg(below(256)).arg(below(256)).arg(below(256)); }
    QString hash() { return QString(two()).repeated(32).toLower(); }

    InventoryValue value(const companion::InventoryKey& key)
    {
        const QString name = key.name;
        if (key.kind == InventoryKind::Switch)
            return below(2) == 1;
        if (key.kind == InventoryKind::List) {
            QStringList list;
            for (int i = below(4); i > 0; --i)
                list += name == "retired" ? mac() : text();
            return list;
        }
        return name == "mac"                            ? mac()
               : name == "address" || name == "gateway" ? address()
               : name == "mask"                         ? QString("255.255.0.0")
               : name.endsWith("_sha256")               ? hash()
                                                        : text();
    }

private:
    QString two() { return QString("%1").arg(below(256), 2, 16, QChar('0')).toUpper(); }
    std::mt19937 m_engine;
};

// Every way to write a value, with and without comments behind it.
QByteArray written(Random& random, const QByteArray& key, const QByteArray& value, const QByteArray& lineEnd)
{
    static const std::vector<QByteArray> before = {"", "  ", "\t"};
    static const std::vector<QByteArray> behind = {"", " # it's \"so\"", "   ", "\t# [camera.X]"};
    return random.oneOf(before) + key + " =" + random.oneOf(before) + value + random.oneOf(behind) + lineEnd;
}

QByteArray randomInventory(Random& random, const QByteArray& lineEnd)
{
    QByteArray text = random.below(4) ? "" : "\xEF\xBB\xBF";
    text += "# \xC3\xA4 line" + lineEnd + "[line]" + lineEnd + "name = \"\xE2\x82\xAC\"" + lineEnd + lineEnd;
    for (int i = 0; i < 4; ++i) {
        text += "[camera.\"\xC3\xA4 " + QByteArray::number(i) + "\"] # " + QByteArray::number(i) + lineEnd;
        text += written(random, "model", "'M'", lineEnd);
        text += written(random, "mac", "\"02:00:00:00:01:0" + QByteArray::number(i) + '"', lineEnd);
        if (random.below(2))
            text += written(random, "comment", "\"\"\"" + lineEnd + "two" + lineEnd + "lines\"\"\"", lineEnd);
        if (random.below(2))
            text += written(random, "ignored",
                            "[ 'a', # one" + lineEnd + lineEnd + "  \"b]\" , " + lineEnd + "]", lineEnd);
        if (random.below(2))
            text += written(random, "lla", "true", lineEnd);
        if (random.below(2))
            text += lineEnd + "# of " + QByteArray::number(i) + lineEnd;
    }
    return text + "[x-rest]" + lineEnd + "a = [ 1,2 ]" + (random.below(2) ? lineEnd : QByteArray());
}

// What is left when the value is cut out of both texts.
QByteArray without(const Inventory& line, const InventoryChange& change)
{
    const companion::TextSpan span = line.find(change.camera)->places.at(change.key);
    return line.text.left(span.begin) + "<>" + line.text.mid(span.end);
}

QByteArray lineOf(const Inventory& line, const InventoryChange& change)
{
    const companion::TextSpan span = line.find(change.camera)->places.at(change.key);
    const int begin = line.text.lastIndexOf('\n', span.begin) + 1;
    const int end = line.text.indexOf('\n', span.end);
    return line.text.mid(begin, end < 0 ? -1 : end + 1 - begin);
}

} // namespace

TEST(InventoryEdit, Changes500RandomValuesAndNothingElse)
{
    Random random(16);
    int changed = 0, given = 0;
    for (int round = 0; changed + given < 500; ++round) {
        const QByteArray lineEnd = round % 2 ? "\r\n" : "\n";
        const InventoryReading before = parseInventory(randomInventory(random, lineEnd), kPath);
        ASSERT_TRUE(before.isGood()) << companion::faultText("f", before.faults[0]).toStdString();
        const auto& key = random.oneOf(companion::inventoryKeys());
        const InventoryChange change{random.oneOf(before.inventory.cameras).name, key.name,
                                     random.value(key)};
        QString problem;
        const QByteArray text = editedText(before.inventory, {change}, {}, problem);
        if (text.isEmpty()) { // a hash without a file, a MAC address that somebody has
            ASSERT_NE(problem, "");
            continue;
        }
        const Inventory after = parseInventory(text, kPath).inventory;
        const bool wasThere = before.inventory.find(change.camera)->places.count(change.key) != 0;
        if (wasThere) {
            ++changed;
            ASSERT_EQ(without(before.inventory, change), without(after, change)) << text.constData();
        } else {
            ++given;
            const QByteArray added = lineOf(after, change);
            QByteArray rest = after.text;
            rest.remove(rest.indexOf(added), added.size());
            if (!added.endsWith('\n')) // the file's last line had no end, which is now in front
                rest.chop(lineEnd.size());
            ASSERT_EQ(rest, before.inventory.text) << text.constData();
            ASSERT_EQ(added, change.key.toUtf8() + " = " + companion::tomlValue(change.value) +
                                 (added.endsWith('\n') ? lineEnd : QByteArray()));
        }
    }
    EXPECT_GT(changed, 90);
    EXPECT_GT(given, 100);
}

TEST(InventoryEdit, IsWrittenOverWhatItWasMadeFromOnly)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("line.toml");
    const auto onDisk = [&] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    Inventory line = whole();
    line.path = path;
    EXPECT_EQ(companion::saveInventory(line, line.text, true), "");
    EXPECT_EQ(onDisk(), line.text);
    EXPECT_THAT(companion::saveInventory(line, "x", true).toStdString(), HasSubstr("is there by now"));
    EXPECT_EQ(companion::saveInventory(line, line.text + "# more\n"), "");
    EXPECT_EQ(onDisk(), line.text + "# more\n");
    EXPECT_THAT(companion::saveInventory(line, "x").toStdString(), HasSubstr("changed by somebody else"));
    EXPECT_EQ(onDisk(), line.text + "# more\n");
}
