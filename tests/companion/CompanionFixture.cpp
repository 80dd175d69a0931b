#include "companion/CompanionFixture.h"

#include "gvcp/Gvcp.h"
#include "support/LoopbackAddress.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <csignal>
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

} // namespace

Result runInProcess(const Arguments& arguments, companion::Enumerate enumerate)
{
    std::ostringstream out;
    std::ostringstream err;
    companion::Console console(out, err, false, false);
    const int code = companion::runCompanion(arguments, {console, std::move(enumerate)});
    return {code, out.str(), err.str()};
}

Program::Program(const Arguments& arguments, const QString& wrapper) : m_wrapper(wrapper)
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

void Program::start()
{
    if (m_wrapper.isEmpty())
        m_process.start(IE_COMPANION, m_arguments);
    else
        m_process.start("/bin/sh",
                        QStringList{"-c", m_wrapper + " exec \"$0\" \"$@\"", IE_COMPANION} + m_arguments);
    ASSERT_TRUE(m_process.waitForStarted());
}

void Program::signal(int number)
{
    ASSERT_EQ(::kill(static_cast<pid_t>(m_process.processId()), number), 0);
}

Result Program::finish()
{
    if (!m_process.waitForFinished(kProgramMilliseconds))
        return {-1, {}, "the program did not end"};
    const int code = m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -2;
    return {code, m_process.readAllStandardOutput().toStdString(),
            m_process.readAllStandardError().toStdString()};
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
