// Cameras behind serial lines through the C interface: who is listed, who is in use, and what the lines are
// called.
#include "camera_emulator/SerialCamera.h"

#include <KXCameraControl/KXCameraControl.h>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace
{

std::string text(const uint8_t* field)
{
    return reinterpret_cast<const char*>(field);
}

std::vector<KX_DeviceEntry> list(uint32_t mask = KX_TRANSPORT_CAMERA_LINK)
{
    KX_DeviceEntry entries[16];
    uint32_t count = 0;
    EXPECT_EQ(KX_CC_EnumDevices(mask, entries, 16, &count), KX_OK);
    return {entries, entries + count};
}

class SerialDiscovery : public testing::Test
{
protected:
    SerialDiscovery()
    {
        setenv("KX_CAMERA_INTERFACES", "none", 1);
        unsetenv("KX_CAMERA_ADDRESSES");
        unsetenv("KX_CAMERA_SERIAL_PORTS");
    }
    emu::SerialCamera& add(const std::string& serialNumber, emu::SerialConfig serial = {})
    {
        emu::CameraConfig config;
        config.serial = serialNumber;
        cameras.push_back(std::make_unique<emu::SerialCamera>(config, serial));
        EXPECT_TRUE(cameras.back()->start());
        return *cameras.back();
    }
    static void name(const std::string& ports) { setenv("KX_CAMERA_SERIAL_PORTS", ports.c_str(), 1); }

    std::vector<std::unique_ptr<emu::SerialCamera>> cameras;
};

} // namespace

TEST_F(SerialDiscovery, linesThatNobodyNamedAreNotTouched)
{
    emu::SerialCamera& camera = add("A");
    EXPECT_TRUE(list(KX_TRANSPORT_ALL).empty());
    EXPECT_EQ(camera.counters().requests(), 0u);
}

TEST_F(SerialDiscovery, camerasAreListedBySerialNumber)
{
    emu::SerialCamera& second = add("B");
    emu::SerialCamera& first = add("A");
    name(second.path() + " , " + first.path() + ",/dev/no_such_line," + first.path());
    const auto found = list();
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].info.transportType, uint32_t(KX_TRANSPORT_CAMERA_LINK));
    EXPECT_EQ(text(found[0].info.special.cameraLink.serialNumber), "A");
    EXPECT_EQ(text(found[0].info.special.cameraLink.modelName), "EMU-1");
    EXPECT_EQ(text(found[0].info.special.cameraLink.portId), first.path());
    EXPECT_STREQ(found[0].interfaceName, "serial");
    EXPECT_EQ(found[0].availability, uint32_t(KX_AVAILABILITY_FREE));
    EXPECT_EQ(text(found[1].info.special.cameraLink.serialNumber), "B");
    EXPECT_TRUE(list(KX_TRANSPORT_GIGE).empty());
}

TEST_F(SerialDiscovery, aCameraOfThisProcessIsListedAsFreeWhileItIsOpen)
{
    emu::SerialCamera& camera = add("A");
    name(camera.path());
    const KX_DeviceInfo info = list().at(0).info;
    KX_Controller controller{};
    EXPECT_EQ(KX_CC_GetController(&info, &controller), KX_E_NOT_SUPPORTED);
    KX_HANDLE handle = nullptr;
    ASSERT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
    ASSERT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    const auto found = list();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(text(found[0].info.special.cameraLink.serialNumber), "A");
    EXPECT_EQ(found[0].availability, uint32_t(KX_AVAILABILITY_FREE));
    uint32_t availability = 0;
    EXPECT_EQ(KX_CC_IsDeviceAccessible(&info, &availability), KX_OK);
    EXPECT_EQ(availability, uint32_t(KX_AVAILABILITY_FREE));
    EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
    EXPECT_EQ(KX_CC_IsDeviceAccessible(&info, &availability), KX_OK);
    EXPECT_EQ(availability, uint32_t(KX_AVAILABILITY_FREE));
    cameras[0]->stop();
    EXPECT_EQ(KX_CC_IsDeviceAccessible(&info, &availability), KX_OK);
    EXPECT_EQ(availability, uint32_t(KX_AVAILABILITY_UNREACHABLE));
    EXPECT_TRUE(list().empty());
}

TEST_F(SerialDiscovery, aRecordOfALineThatNobodyNamesAnyMoreOpensNothing)
{
    emu::SerialCamera& camera = add("A");
    name(camera.path());
    const KX_DeviceInfo info = list().at(0).info;
    unsetenv("KX_CAMERA_SERIAL_PORTS");
    camera.resetCounters();
    KX_HANDLE handle = nullptr;
    ASSERT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
    EXPECT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
    EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
    EXPECT_EQ(camera.counters().requests(), 0u);
}

TEST_F(SerialDiscovery, longPathsAreToldApart)
{
    const auto folder =
        std::filesystem::temp_directory_path() / (std::string(70, 'x') + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    emu::SerialConfig serial;
    serial.link = (folder / "a").string();
    add("A", serial);
    serial.link = (folder / "b").string();
    add("B", serial);
    name((folder / "a").string() + "," + (folder / "b").string());
    const auto found = list();
    ASSERT_EQ(found.size(), 2u);
    EXPECT_NE(text(found[0].info.special.cameraLink.portId), text(found[1].info.special.cameraLink.portId));
    KX_HANDLE handle = nullptr;
    ASSERT_EQ(KX_CC_CreateHandle(&handle, &found[1].info), KX_OK);
    EXPECT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
    cameras.clear();
    std::filesystem::remove_all(folder);
}

TEST_F(SerialDiscovery, theStampChangesWhenALineComesOrGoes)
{
    emu::SerialCamera& camera = add("A");
    name(camera.path());
    const uint32_t before = KX_CC_GetInterfaceStamp();
    EXPECT_EQ(KX_CC_GetInterfaceStamp(), before);
    camera.stop();
    EXPECT_NE(KX_CC_GetInterfaceStamp(), before);
}

TEST_F(SerialDiscovery, featuresAreReadAndWrittenOverTheLine)
{
    emu::SerialCamera& camera = add("A");
    name(camera.path());
    const KX_DeviceInfo info = list().at(0).info;
    KX_HANDLE handle = nullptr;
    ASSERT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
    ASSERT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    KX_IntegerValue width{};
    ASSERT_EQ(KX_CC_GetIntValueEx(handle, "Width", &width), KX_OK);
    EXPECT_EQ(camera.node("Width"), emu::NodeValue(width.current));
    ASSERT_EQ(KX_CC_SetIntValueEx(handle, "Width", 640), KX_OK);
    EXPECT_EQ(camera.node("Width"), emu::NodeValue(int64_t(640)));
    EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
}
