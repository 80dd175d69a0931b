// What is left when any one request of a job goes wrong: what is told is what is in the camera and on the
// disk.
#include "companion/Sweep.h"

#include "companion/ImportCompanion.h"
#include "companion/SmallDescription.h"

#include <nlohmann/json.hpp>

#include <QDir>

#include <set>

using nlohmann::json;
using tests::Result;
using tests::runInProcess;
using tests::Settings;
using tests::Sweep;
using tests::SweptJob;

namespace
{

using Names = std::set<std::string>;

constexpr uint32_t kLevelOfFirstSlot = 0x10190;
constexpr size_t kRuns = 1; // of each trouble, where not all are made

const std::vector<std::string> kNumbers{"Width", "Height", "OffsetX", "OffsetY", "Delay", "Repeat"};

// Numbers that a limit ties together, an enumeration, a switch, a text, a list behind a selector, a table.
std::string description()
{
    std::string root;
    std::string nodes;
    unsigned address = 0x10100;
    for (const std::string& name : kNumbers) {
        char place[16];
        std::snprintf(place, sizeof place, "0x%X", address);
        address += 4;
        root += "<pFeature>" + name + "</pFeature>";
        nodes += "<Integer Name=\"" + name + "\"><Streamable>Yes</Streamable><pValue>" + name +
                 "Reg</pValue>" + (name == "OffsetX" ? "<pMax>Width</pMax>" : "") + "</Integer>" +
                 tests::wordRegister(name + "Reg", place);
    }
    root += "<pFeature>Mode</pFeature><pFeature>Slot</pFeature><pFeature>Level</pFeature><pFeature>Flip</"
            "pFeature>"
            "<pFeature>Label</pFeature>";
    nodes += "<Enumeration Name=\"Mode\"><Streamable>Yes</Streamable>"
             "<EnumEntry Name=\"Slow\"><Value>0</Value></EnumEntry>"
             "<EnumEntry Name=\"Fast\"><Value>1</Value></EnumEntry><pValue>ModeReg</pValue></Enumeration>" +
             tests::wordRegister("ModeReg", "0x10180") +
             "<Integer Name=\"Slot\"><Streamable>Yes</Streamable><pValue>SlotReg</pValue><Min>0</Min>"
             "<Max>3</Max><pSelected>Level</pSelected></Integer>" +
             tests::wordRegister("SlotReg", "0x10184") +
             "<Integer Name=\"Level\"><Streamable>Yes</Streamable><pValue>LevelReg</pValue></Integer>"
             "<IntReg Name=\"LevelReg\"><Address>0x10190</Address><pIndex Offset=\"4\">Slot</pIndex>"
             "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign>"
             "<Endianess>BigEndian</Endianess></IntReg>"
             "<Boolean Name=\"Flip\"><Streamable>Yes</Streamable><pValue>FlipReg</pValue></Boolean>" +
             tests::wordRegister("FlipReg", "0x10188") +
             "<StringReg Name=\"Label\"><Streamable>Yes</Streamable><Address>0x101B0</Address>"
             "<Length>16</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>";
    return tests::smallDescription(root, nodes);
}

class SweptJobs : public tests::ImportCompanion
{
protected:
    SweptJobs()
        : m_camera(addCamera("S1",
                             [](emu::CameraConfig& config) {
                                 config.description = description();
                                 config.seed = R"({"nodes": {"DeviceFirmwareVersion": "1.0"}})";
                             })),
          m_sweep(m_camera)
    {
        set(7);
        m_high = Settings::of(m_camera);
        m_fileText = fileText(exported("S1"));
        write("a.fpk", m_fileText);
        m_file = path("a.fpk");
        m_bagText = fileText(exported("S1", {"--format", "bag"}));
        write("a.bag", m_bagText);
        m_bag = path("a.bag");
        set(3);
        m_low = Settings::of(m_camera);
        QDir().mkdir(QString::fromStdString(path("to")));
    }
    ~SweptJobs() override { m_sweep.printSums(); }

    void set(int64_t base)
    {
        for (size_t i = 0; i < kNumbers.size(); ++i)
            EXPECT_EQ(m_camera.setNode(kNumbers[i], base * 10 - static_cast<int64_t>(i)), "");
        EXPECT_EQ(m_camera.setNode("Mode", base % 2), "");
        EXPECT_EQ(m_camera.setNode("Flip", base / 4), "");
        EXPECT_EQ(m_camera.setNode("Label", "set to " + std::to_string(base)), "");
        m_camera.pokeWord(kLevelOfFirstSlot, static_cast<uint32_t>(base));
    }

    std::map<std::string, emu::NodeValue> values() const
    {
        std::map<std::string, emu::NodeValue> found;
        for (const std::string& name : kNumbers)
            found[name] = m_camera.node(name).value();
        for (const char* name : {"Mode", "Flip", "Label"})
            found[name] = m_camera.node(name).value();
        found["Level"] = static_cast<int64_t>(m_camera.peekWord(kLevelOfFirstSlot));
        return found;
    }

    void begin(const Settings& settings)
    {
        settings.putInto(m_camera);
        m_valuesBefore = values();
        m_auditBefore = auditLog().size();
    }

    QByteArray auditLog() const
    {
        QFile file(QString::fromStdString(path("user-data/Audit/iefeatures.jsonl")));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void makeEmpty(const std::string& name) const
    {
        QDir(QString::fromStdString(path(name))).removeRecursively();
        QDir().mkdir(QString::fromStdString(path(name)));
    }

    // The features whose value in the camera is not what it was before.
    Names changed() const
    {
        Names names;
        for (const auto& [name, value] : values())
            if (!(value == m_valuesBefore.at(name)))
                names.insert(name);
        return names;
    }

    void sweepOver(SweptJob job) { m_sweep.over(job, kRuns); }

    SweptJob exportOf(const std::string& format, const QByteArray& right, const tests::Arguments& more = {})
    {
        const std::string name = "to/EMU-1_S1.fpk";
        tests::Arguments words{"export", "--all", "--to", path("to"), "--format", format, "--json"};
        words.insert(words.end(), more.begin(), more.end());
        return {
            "export of " + format,
            [this, name] {
                write(name, "old");
                begin(m_high);
            },
            [words] { return runInProcess(words); },
            [this, name, right](const Result& run) { return exportObjections(run, fileText(name), right); }};
    }

    static std::vector<std::string> exportObjections(const Result& run, const QByteArray& now,
                                                     const QByteArray& right)
    {
        std::vector<std::string> found;
        if (run.code == 0 && now != right)
            found.push_back("a file that is not right was called good");
        // What could not be read is left out, and that is told.
        if (run.code == 4)
            for (const QByteArray& line : now.split('\n'))
                if (!right.contains(line))
                    found.push_back("wrong: " + line.toStdString());
        if (run.code != 0 && run.code != 4 && now != right && now != "old")
            found.push_back("a part of a file was left");
        if (run.code != 0 && tests::lastObject(run, "export").is_null() && run.err.empty())
            found.push_back("nothing was said");
        return found;
    }

    // Of a job that sets the camera.
    std::vector<std::string> settingObjections(const Result& run, const Settings& goal)
    {
        std::vector<std::string> found;
        const bool isSet = Settings::of(m_camera) == goal;
        if (run.code == 0 && !isSet)
            found.push_back("a camera that is not set was called set: " +
                            ::testing::PrintToString(Settings::of(m_camera).differences(goal)));
        const auto object = tests::lastObject(run, "result");
        if (object.is_null())
            return changed().empty() ? found
                                     : std::vector<std::string>{"it has changed things without a word"};
        const Names told = namesOf(object.value("changed", tests::Json::array()));
        const Names doubted = namesOf(object.value("in_doubt", tests::Json::array()));
        const Names done = changed();
        // What a camera has forgotten cannot be known without it, or is not as the file says.
        const bool isSilent = run.code == 1;
        const Names missing = namesOf(object["not_applied"]);
        for (const std::string& name : done)
            if (told.count(name) + doubted.count(name) == 0)
                found.push_back(name + " was changed, and is not told");
        for (const std::string& name : told)
            if (done.count(name) + missing.count(name) == 0 && !isSilent)
                found.push_back(name + " was not changed, and is told");
        Names audited;
        if (auditLog().size() > m_auditBefore)
            for (const auto& change : json::parse(lastAuditLine()).value("changes", json::array()))
                audited.insert(change["feature"].get<std::string>());
        if (audited != told)
            found.push_back("the audit line tells other changes: " + ::testing::PrintToString(audited));
        if (run.code == 0 && !doubted.empty())
            found.push_back("set, and in doubt");
        if (object["result"] == "incomplete" && object["not_applied"].empty())
            found.push_back("incomplete, and nothing is named");
        return found;
    }

    // "Level" of "Level (Slot=0)".
    static std::string withoutSelectors(const std::string& name) { return name.substr(0, name.find(" (")); }

    static Names namesOf(const tests::Json& list)
    {
        Names names;
        for (const auto& name : list)
            names.insert(withoutSelectors(name.get<std::string>()));
        return names;
    }

    SweptJob importOf(const std::string& file, const tests::Arguments& more)
    {
        std::string name = "import of " + file.substr(file.rfind('/') + 1);
        for (const std::string& word : more)
            name += ' ' + word;
        return {name,
                [this] {
                    begin(m_low);
                    makeEmpty("snapshots");
                },
                [file, more] {
                    tests::Arguments words{"import", file, "--all", "--json"};
                    words.insert(words.end(), more.begin(), more.end());
                    return runInProcess(words);
                },
                [this](const Result& run) { return settingObjections(run, m_high); }};
    }

    emu::EmulatedCamera& m_camera;
    Sweep m_sweep;
    Settings m_high; // what the files hold
    Settings m_low;
    std::map<std::string, emu::NodeValue> m_valuesBefore;
    int m_auditBefore = 0;
    std::string m_file;
    std::string m_bag;
    QByteArray m_fileText;
    QByteArray m_bagText;
};

} // namespace

TEST_F(SweptJobs, ExportOfAFeaturesFile)
{
    sweepOver(exportOf("xml", m_fileText));
}

TEST_F(SweptJobs, ExportOfAFeatureBag)
{
    sweepOver(exportOf("bag", m_bagText));
}

TEST_F(SweptJobs, ImportOfAFeaturesFile)
{
    sweepOver(importOf(m_file, {}));
}

TEST_F(SweptJobs, ImportWithSnapshotAndVerification)
{
    sweepOver(importOf(m_file, {"--snapshot", path("snapshots"), "--verify"}));
}

TEST_F(SweptJobs, ImportOfAFeatureBag)
{
    sweepOver(importOf(m_bag, {}));
}

// Reads beside others, without control and its heartbeat.
TEST_F(SweptJobs, SharedExport)
{
    sweepOver(exportOf("xml", m_fileText, {"--shared"}));
}

TEST_F(SweptJobs, Rollback)
{
    begin(m_low);
    makeEmpty("snapshots");
    ASSERT_EQ(import("a.fpk", {"--all", "--snapshot", path("snapshots")}).code, 0);
    sweepOver({"rollback", [this] { begin(m_high); },
               [this] {
                   return runInProcess({"rollback", path("snapshots"), "--all", "--json"});
               },
               [this](const Result& run) { return settingObjections(run, m_low); }});
}

TEST_F(SweptJobs, Clone)
{
    emu::EmulatedCamera& source = addCamera("S2", [this](emu::CameraConfig& config) {
        config.description = description();
        config.seed = m_camera.config().seed;
    });
    m_high.putInto(source);
    const SweptJob clone{"clone", [this] { begin(m_low); },
                         [] {
                             return runInProcess({"clone", "--from", "S2", "--to", "S1", "--yes", "--json"});
                         },
                         [this](const Result& run) { return settingObjections(run, m_high); }};
    sweepOver(clone);
    Sweep ofSource(source);
    ofSource.over(clone, kRuns);
    EXPECT_TRUE(Settings::of(source) == m_high);
    ofSource.printSums();
}
