#include "companion/CompanionFixture.h"

#include "companion/JsonLines.h"
#include "gvcp/Gvcp.h"
#include "support/LoopbackAddress.h"
#include "support/Processes.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QFile>
#include <QTemporaryFile>

#include <algorithm>
#include <cstring>
#include <sstream>

namespace tests
{
namespace
{

constexpr int kProgramMilliseconds = 30000;

template <std::size_t Size>
void fill(uint8_t (&field)[Size], const std::string& text)
{
    std::memcpy(field, text.data(), std::min(Size, text.size()));
}

// All objects for scripts that this program's tests have seen, held against the schema when all are over.
class SeenObjects : public ::testing::Environment
{
public:
    void SetUp() override { qputenv("COLUMNS", "0"); } // whatever terminal the tests run in

    void add(const std::string& lines)
    {
        ASSERT_TRUE(m_file.isOpen() || m_file.open());
        m_file.write(QByteArray::fromStdString(lines));
    }

    void TearDown() override
    {
        if (!m_file.isOpen())
            return;
        m_file.flush();
        holdJsonLines(m_file.fileName());
    }

private:
    QTemporaryFile m_file;
};
auto* const g_seenObjects = static_cast<SeenObjects*>(::testing::AddGlobalTestEnvironment(new SeenObjects));

// Whatever a command came to, its objects end with the closing one. One that was cut off has none.
Result seen(const Arguments& arguments, const Result& run)
{
    if (std::find(arguments.begin(), arguments.end(), "--json") == arguments.end())
        return run;
    g_seenObjects->add(run.out);
    EXPECT_EQ(lastObject(run, "end").value("exit", -1), run.code) << run.out;
    return run;
}

Result run(const Arguments& arguments, const std::function<companion::World(companion::Console&)>& worldOf)
{
    std::ostringstream out;
    std::ostringstream err;
    companion::Console console(out, err, false, false);
    const int code = companion::runCompanion(arguments, worldOf(console));
    return seen(arguments, {code, out.str(), err.str()});
}

} // namespace

Result runInProcess(const Arguments& arguments)
{
    return run(arguments, [](companion::Console& console) { return companion::World{console}; });
}

Result runInProcess(const Arguments& arguments, companion::Enumerate enumerate)
{
    return run(arguments, [&](companion::Console& console) {
        companion::World world{console};
        world.enumerate = std::move(enumerate);
        world.controller = [](const companion::ListedCamera&) { return QString(); };
        return world;
    });
}

Json lastObject(const Result& run, const char* kind)
{
    Json found;
    for (const Json& object : objects(run))
        if (object["kind"] == kind)
            found = object;
    return found;
}

std::vector<Json> objects(const Result& run)
{
    std::vector<Json> found;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);)
        found.push_back(Json::parse(line));
    return found;
}

Program::Program(const Arguments& arguments, const QString& wrapper) : m_words(arguments), m_wrapper(wrapper)
{
    for (const std::string& argument : arguments)
        m_arguments += QString::fromStdString(argument);
}

Program::~Program()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished();
}

QString Program::path()
{
    return IE_COMPANION;
}

void Program::start()
{
    startProgram(m_process, path(), m_arguments, m_wrapper);
    ASSERT_TRUE(m_process.waitForStarted()) << m_process.errorString().toStdString();
}

void Program::interrupt()
{
    ASSERT_TRUE(interruptProgram(m_process));
}

void Program::end()
{
    ASSERT_TRUE(endProgram(m_process));
}

Result Program::finish()
{
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(kProgramMilliseconds))
        return {-1, {}, "the program did not end"};
    const int code = m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -2;
    const Result run{code, m_process.readAllStandardOutput().toStdString(),
                     m_process.readAllStandardError().toStdString()};
    return run.out.empty() ? run : seen(m_words, run); // its reader may be another one
}

KX_DeviceEntry gigeEntry(const std::string& model, const std::string& serial, const std::string& userName,
                         uint32_t address, uint32_t availability)
{
    KX_DeviceEntry entry{};
    entry.info.transportType = KX_TRANSPORT_GIGE;
    KX_GigEDeviceInfo& gige = entry.info.special.gige;
    fill(gige.modelName, model);
    fill(gige.serialNumber, serial);
    fill(gige.userDefinedName, userName);
    gige.ipAddress = address;
    entry.availability = availability;
    return entry;
}

companion::Enumerate entries(std::vector<KX_DeviceEntry> list)
{
    return [list](std::vector<KX_DeviceEntry>& found) {
        found = list;
        return KX_OK;
    };
}

std::string descriptionWithOneRegister()
{
    return R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="M" VendorName="V" ToolTip="" StandardNameSpace="None"
    SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0"
    MajorVersion="1" MinorVersion="0" SubMinorVersion="0" ProductGuid="0" VersionGuid="0"
    xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Category Name="Root"><pFeature>Zones</pFeature></Category>
  <Category Name="Zones"><pFeature>Zone</pFeature></Category>
  <StringReg Name="DeviceFirmwareVersion">
    <Address>0x10000</Address><Length>32</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
  </StringReg>
  <Register Name="Zone">
    <Address>0x10100</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
  </Register>
  <Port Name="Device"/>
</RegisterDescription>)";
}

CompanionTest::CompanionTest()
{
    qputenv("KX_CAMERA_INTERFACES", "none");
    qputenv("KX_CAMERA_ADDRESSES", "");
    qputenv("KX_DESCRIPTION_CACHE", "off");
    qputenv("VELA_PROGRAM_DATA", m_folder.path().toUtf8() + "/no-filters-here");
    qputenv("VELA_USER_DATA", m_folder.path().toUtf8() + "/user-data");
}

CompanionTest::~CompanionTest() = default;

emu::EmulatedCamera& CompanionTest::addCamera(const std::string& serial, const Configure& configure)
{
    emu::CameraConfig config;
    config.address = freshLoopbackAddress();
    config.serial = serial;
    if (configure)
        configure(config);
    emu::EmulatedCamera& camera = m_cameras.emplace_back(config);
    const emu::StartResult started = camera.start();
    EXPECT_TRUE(started) << started.message;
    m_addresses += QByteArray::fromStdString(config.address);
    qputenv("KX_CAMERA_ADDRESSES", m_addresses.join(','));
    return camera;
}

QStringList CompanionTest::filesInFolder() const
{
    return QDir(m_folder.path()).entryList(QDir::Files, QDir::Name);
}

QStringList CompanionTest::allInFolder() const
{
    return QDir(m_folder.path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

QByteArray CompanionTest::fileText(const std::string& name) const
{
    QFile file(QString::fromStdString(path(name)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

void CompanionTest::awaitRequests(const emu::EmulatedCamera& camera, uint64_t count)
{
    ASSERT_TRUE(
        camera.waitFor([count](const emu::Counters& counters) { return counters.requests() >= count; },
                       std::chrono::seconds(20)));
}

uint32_t CompanionTest::controlOf(const emu::EmulatedCamera& camera)
{
    return camera.peekWord(gvcp::RegControlPrivilege);
}

} // namespace tests
