// What is left of a line when any one request to one of its cameras goes wrong: the camera is as it is told,
// inventory and journal are whole, and the same command, given again, finishes the work.
#include "companion/SweptSettings.h"

#include "support/LoopbackAddress.h"

#include <QDir>
#include <QDirIterator>

using companion::Inventory;
using tests::Arguments;
using tests::Json;
using tests::Result;
using tests::runInProcess;
using tests::Settings;
using tests::Sweep;
using tests::SweptJob;

namespace
{

constexpr size_t kRuns = 1;                         // of each trouble, where not all are made
constexpr size_t kFewRuns = 0;                      // of some: they take seconds each
constexpr std::chrono::milliseconds kRestart{1500}; // long enough to be seen off the line
constexpr std::chrono::seconds kWait{3};            // for a camera that restarts
constexpr uint64_t kSettings = 0x10000;
constexpr size_t kSettingsSize = 0x1000;

// Beyond what is compared of settings.
std::string userSets()
{
    return "<Enumeration Name=\"UserSetSelector\"><EnumEntry Name=\"Default\"><Value>0</Value></EnumEntry>"
           "<EnumEntry Name=\"UserSet1\"><Value>1</Value></EnumEntry><pValue>UserSetSelectorReg</pValue>"
           "<pSelected>UserSetLoad</pSelected><pSelected>UserSetSave</pSelected></Enumeration>"
           "<Enumeration Name=\"UserSetDefault\"><EnumEntry Name=\"Default\"><Value>0</Value></EnumEntry>"
           "<EnumEntry Name=\"UserSet1\"><Value>1</Value></EnumEntry><pValue>UserSetDefaultReg</pValue>"
           "</Enumeration>"
           "<Command Name=\"UserSetLoad\"><pValue>UserSetLoadReg</pValue><CommandValue>1</CommandValue>"
           "</Command>"
           "<Command Name=\"UserSetSave\"><pValue>UserSetSaveReg</pValue><CommandValue>1</CommandValue>"
           "</Command>"
           "<Command Name=\"DeviceReset\"><pValue>DeviceResetReg</pValue><CommandValue>1</CommandValue>"
           "</Command>" +
           tests::wordRegister("UserSetSelectorReg", "0x40000") +
           tests::wordRegister("UserSetDefaultReg", "0x40004") +
           tests::wordRegister("UserSetLoadReg", "0x40008") +
           tests::wordRegister("UserSetSaveReg", "0x4000C") +
           tests::wordRegister("DeviceResetReg", "0x40010");
}

class SweptLine : public tests::SweptSettings
{
protected:
    // "Gate 1" of the inventory, with the settings that it should have, kept in its user set.
    SweptLine() : m_camera(addCamera("S1", [](emu::CameraConfig& config) { prepareConfig(config); }))
    {
        m_camera.pokeWord(gvcp::RegIpCurrent, gvcp::kIpPersistent | gvcp::kIpLinkLocal);
        nameCamera("Gate 1");
        set(m_camera, 7);
        m_goal = Settings::of(m_camera);
        m_kept = m_camera.peek(kSettings, kSettingsSize);
        const Result made = init();
        EXPECT_EQ(made.code, 0) << made.err;
        QByteArray text = fileText("hall.toml");
        if (!text.contains("user_set"))
            text += "user_set = \"UserSet1\"\n";
        write("hall.toml", text);
        m_inventory = fileText("hall.toml");
    }

    static void prepareConfig(emu::CameraConfig& config)
    {
        config.description = description(userSets());
        config.seed = R"({"nodes": {"DeviceFirmwareVersion": "1.0"}})";
        config.restartTime = kRestart;
    }

    void nameCamera(const std::string& name)
    {
        emu::Bytes field(16);
        std::copy(name.begin(), name.end(), field.begin());
        m_camera.poke(gvcp::RegUserName, field);
    }

    // The set keeps what the camera has now, and is what it starts with.
    static void keepAsSet(emu::EmulatedCamera& camera, int64_t startUp)
    {
        const std::string serial = camera.config().serial;
        const Result chosen = runInProcess({"set", "UserSetSelector=UserSet1", "--serial", serial});
        EXPECT_EQ(chosen.code, 0) << chosen.err << chosen.out;
        EXPECT_EQ(runInProcess({"run", "UserSetSave", "--serial", serial}).code, 0);
        EXPECT_EQ(camera.setNode("UserSetDefault", startUp), "");
    }

    bool startsAs(const emu::EmulatedCamera& camera, const emu::Bytes& settings) const
    {
        return camera.peekAtPowerUp(kSettings, kSettingsSize) == settings;
    }

    // Neither journals nor locks nor parts of files.
    QStringList leftovers() const
    {
        QStringList found;
        QDirIterator all(QString::fromStdString(folder()),
                         QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
        while (all.hasNext()) {
            const QString name = QFileInfo(all.next()).fileName();
            if (name.startsWith('.') || name.endsWith(".lock") || name.contains(".toml."))
                found += name;
        }
        return found;
    }

    emu::EmulatedCamera& m_camera;
    Settings m_goal;
    emu::Bytes m_kept; // what the set should hold
    QByteArray m_inventory;
};

class SweptApplication : public SweptLine
{
protected:
    SweptApplication() : m_sweep(m_camera)
    {
        set(m_camera, 3);
        m_low = Settings::of(m_camera);
    }
    ~SweptApplication() override { m_sweep.printSums(); }

    Result apply() const { return line({"apply"}, {"--yes", "--json"}); }

    std::vector<std::string> inOrderObjections() const
    {
        std::vector<std::string> found;
        if (!(Settings::of(m_camera) == m_goal))
            found.push_back("it has other settings");
        if (!startsAs(m_camera, m_kept))
            found.push_back("its user set keeps other settings");
        if (valuesOf(m_camera) != m_valuesWanted)
            found.push_back("its name or address is another one");
        return found;
    }

    std::vector<std::string> objections(const Result& run) const
    {
        std::vector<std::string> found = tellingObjections(run, m_camera);
        if (run.code == 0)
            for (const std::string& text : inOrderObjections())
                found.push_back("called well, but " + text);
        for (const Json& object : objects(run)) {
            if (object["kind"] != "result" || !object.contains("user_set") || !object["user_set"].is_object())
                continue;
            const Json& userSet = object["user_set"];
            if (userSet["saved"].is_boolean() && userSet["saved"].get<bool>() != startsAs(m_camera, m_kept))
                found.push_back("what is told of the user set is wrong: " + userSet.dump());
        }
        if (fileText("hall.toml") != m_inventory)
            found.push_back("the inventory is another one");
        return found;
    }

    SweptJob job(const std::string& name, const std::function<void()>& prepare)
    {
        return {name,
                prepare,
                [this] { return apply(); },
                [this](const Result& run) { return objections(run); },
                [this](const Result&) {
                    std::vector<std::string> found = inOrderObjections();
                    for (const QString& file : leftovers())
                        found.push_back("left: " + file.toStdString());
                    return found;
                },
                [this] { m_camera.switchOff(); }};
    }

    void isWanted() { m_valuesWanted = valuesOf(m_camera); }

    Sweep m_sweep;
    Settings m_low;
    Values m_valuesWanted;
};

class SweptReplacement : public SweptLine
{
protected:
    SweptReplacement()
        : m_new(addCamera("N1",
                          [](emu::CameraConfig& config) {
                              prepareConfig(config);
                              config.isPersistent = false;
                          })),
          m_sweep(m_new)
    {
        m_camera.stop();
    }
    ~SweptReplacement() override { m_sweep.printSums(); }

    // As out of its box.
    void prepare()
    {
        m_new.stop();
        m_new.poke(gvcp::RegUserName, emu::Bytes(16));
        m_new.pokeWord(gvcp::RegIpCurrent, gvcp::kIpDhcp | gvcp::kIpLinkLocal);
        for (const uint32_t word :
             {gvcp::RegPersistentAddress, gvcp::RegPersistentMask, gvcp::RegPersistentGateway})
            m_new.pokeWord(word, 0);
        ASSERT_EQ(m_new.setNode("UserSetDefault", int64_t(0)), "");
        m_new.switchOff();
        ASSERT_TRUE(m_new.start());
        keepAsSet(m_new, 0);
        write("hall.toml", m_inventory);
        for (const QString& journal : journals())
            QFile::remove(QString::fromStdString(path(journal.toStdString())));
        begin(m_new);
    }

    Result replace() const
    {
        return runInProcess({"line", "replace", file(), "--camera", "Gate 1", "--yes", "--json", "--wait",
                             std::to_string(kWait.count())});
    }

    QStringList journals() const
    {
        return QDir(QString::fromStdString(folder())).entryList({"*.replace-*"}, QDir::Files);
    }

    bool isInInventory() const { return fileText("hall.toml").contains("retired"); }

    std::vector<std::string> inPlaceObjections() const
    {
        std::vector<std::string> found;
        if (!(Settings::of(m_new) == m_goal))
            found.push_back("it has other settings");
        if (!startsAs(m_new, m_kept))
            found.push_back("it starts with other settings");
        const Values values = valuesOf(m_new);
        const Values wanted = valuesOf(m_camera);
        for (const auto& [name, value] : wanted)
            if (!(values.at(name) == value))
                found.push_back(name + " is another one than that of the camera that is gone");
        if (!isInInventory())
            found.push_back("the inventory does not have it");
        for (const QString& name : leftovers())
            found.push_back("left: " + name.toStdString());
        return found;
    }

    std::vector<std::string> objections(const Result& run) const
    {
        std::vector<std::string> found = tellingObjections(run, m_new);
        if (run.code == 0)
            for (const std::string& text : inPlaceObjections())
                found.push_back("called well, but " + text);
        const companion::InventoryReading reading = companion::readInventory(QString::fromStdString(file()));
        if (!reading.isGood() || (!isInInventory() && fileText("hall.toml") != m_inventory))
            found.push_back("the inventory is not whole");
        if (run.code != 0 && !changedIn(m_new).empty() && journals().size() != 1)
            found.push_back("it was begun, and there is no journal");
        return found;
    }

    emu::EmulatedCamera& m_new;
    Sweep m_sweep;
};

} // namespace

TEST_F(SweptReplacement, GoesOnWhereItWasStopped)
{
    m_sweep.over({"line replace", [this] { prepare(); }, [this] { return replace(); },
                  [this](const Result& run) { return objections(run); },
                  [this](const Result&) { return inPlaceObjections(); }, [this] { m_new.switchOff(); },
                  2 * kWait},
                 kFewRuns);
}

TEST_F(SweptApplication, SetsFeaturesAndName)
{
    m_goal.putInto(m_camera);
    isWanted();
    m_sweep.over(job("line apply",
                     [this] {
                         m_low.putInto(m_camera);
                         keepAsSet(m_camera, 1);
                         nameCamera("Other");
                         m_camera.pokeWord(gvcp::RegIpCurrent, gvcp::kIpPersistent | gvcp::kIpDhcp);
                         begin(m_camera);
                     }),
                 kRuns);
}

// An address first, by which nothing but its name is left to be set.
TEST_F(SweptApplication, GivesAnAddressBack)
{
    m_goal.putInto(m_camera);
    keepAsSet(m_camera, 1);
    m_camera.pokeWord(gvcp::RegPersistentAddress, m_camera.peekWord(gvcp::RegCurrentAddress));
    m_camera.pokeWord(gvcp::RegPersistentMask, m_camera.peekWord(gvcp::RegCurrentMask));
    isWanted();
    const std::string other = tests::freshLoopbackAddress();
    qputenv("KX_CAMERA_ADDRESSES", qgetenv("KX_CAMERA_ADDRESSES") + ',' + QByteArray::fromStdString(other));
    m_sweep.over(job("line apply of an address",
                     [this, other] {
                         m_camera.stop();
                         m_camera.pokeWord(gvcp::RegPersistentAddress, gvcp::parseAddress(other).value());
                         nameCamera("Other");
                         m_camera.switchOff();
                         ASSERT_TRUE(m_camera.start());
                         begin(m_camera);
                     }),
                 kFewRuns);
}
