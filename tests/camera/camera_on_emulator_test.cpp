// The shared library as programs link it, over UDP to emulated cameras.
#include "camera_emulator/EmulatedCamera.h"
#include "gvcp/Gvcp.h"
#include "support/LoopbackAddress.h"

#include <KXCameraControl/KXCameraControl.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <future>
#include <thread>
#include <vector>

namespace
{

emu::CameraConfig freshConfig()
{
    emu::CameraConfig config;
    config.address = tests::freshLoopbackAddress();
    return config;
}

class CameraOnEmulator : public testing::Test
{
protected:
    explicit CameraOnEmulator(const emu::CameraConfig& config = freshConfig()) : camera(config)
    {
        const auto started = camera.start();
        EXPECT_TRUE(started) << started.message;
        KX_DeviceInfo info{};
        info.transportType = KX_TRANSPORT_GIGE;
        info.layout = KX_DEVICE_INFO_LAYOUT;
        info.special.gige.ipAddress = *gvcp::parseAddress(config.address);
        EXPECT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
    }
    ~CameraOnEmulator() override { KX_CC_DestroyHandle(handle); }

    KX_Status open(uint32_t mode = KX_ACCESS_EXCLUSIVE) { return KX_CC_OpenDevice(handle, mode, 0); }
    int64_t integer(const char* name)
    {
        KX_IntegerValue value{};
        const KX_Status status = KX_CC_GetIntValueEx(handle, name, &value);
        return status == KX_OK ? value.current : -static_cast<int64_t>(status);
    }

    emu::EmulatedCamera camera;
    KX_HANDLE handle = nullptr;
};

class ZippedOnEmulator : public CameraOnEmulator
{
protected:
    ZippedOnEmulator() : CameraOnEmulator(config()) {}
    static emu::CameraConfig config()
    {
        emu::CameraConfig result = freshConfig();
        result.zipped = true;
        return result;
    }
};

class BrokenFirstUrlOnEmulator : public CameraOnEmulator
{
protected:
    BrokenFirstUrlOnEmulator() : CameraOnEmulator(config()) {}
    static emu::CameraConfig config()
    {
        emu::CameraConfig result = freshConfig();
        result.firstUrl = "http://maker.example/camera.xml";
        result.secondUrl = "local:///{name};{address};{length}?SchemaVersion=1.1.0";
        return result;
    }
};

class CutShortOnEmulator : public CameraOnEmulator
{
protected:
    CutShortOnEmulator() : CameraOnEmulator(config()) {}
    static emu::CameraConfig config()
    {
        emu::CameraConfig result = freshConfig();
        result.descriptionLimit = 5000;
        return result;
    }
};

TEST_F(CameraOnEmulator, featuresAreReadAndWrittenOverTheWire)
{
    ASSERT_EQ(open(), KX_OK);
    EXPECT_TRUE(camera.isControlled());
    EXPECT_EQ(integer("Width"), 640);
    EXPECT_EQ(KX_CC_SetIntValueEx(handle, "Width", 320), KX_OK);
    EXPECT_EQ(camera.peekWord(0x11010), 320u);
    EXPECT_EQ(integer("Width"), 320);
    EXPECT_EQ(KX_CC_SetIntValueEx(handle, "Width", 321), KX_E_GC_ARGUMENT);
    KX_StringValue location{};
    ASSERT_EQ(KX_CC_GetStringValue(handle, "DeviceLocation", &location), KX_OK);
    EXPECT_STREQ(location.current, "Line 4");
    EXPECT_EQ(KX_CC_SetStringValue(handle, "DeviceLocation", "Line 5"), KX_OK);
    EXPECT_EQ(camera.node("DeviceLocation"), emu::NodeValue(std::string("Line 5")));
    KX_FloatValue exposure{};
    ASSERT_EQ(KX_CC_GetFloatValue(handle, "ExposureTime", &exposure), KX_OK);
    EXPECT_NEAR(exposure.current, 5000, 0.05);
    EXPECT_EQ(KX_CC_ExecuteCommand(handle, "DeviceReset"), KX_OK);
    EXPECT_EQ(camera.peekWord(0x10048), 1u);
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);
    EXPECT_FALSE(camera.isControlled());
}

TEST_F(CameraOnEmulator, theDescriptionArrivesAsItStands)
{
    ASSERT_EQ(open(KX_ACCESS_MONITOR), KX_OK);
    std::vector<char> buffer(camera.description().size() + 1);
    uint32_t length = 0;
    ASSERT_EQ(KX_XML_GetGenICamXML(handle, buffer.data(), static_cast<uint32_t>(buffer.size()), &length),
              KX_OK);
    EXPECT_EQ(length, buffer.size());
    EXPECT_TRUE(camera.description() == buffer.data());
}

TEST_F(ZippedOnEmulator, aZippedDescriptionIsUnpacked)
{
    ASSERT_EQ(open(), KX_OK);
    EXPECT_EQ(integer("Width"), 640);
}

TEST_F(BrokenFirstUrlOnEmulator, theSecondUrlServes)
{
    ASSERT_EQ(open(), KX_OK);
    EXPECT_EQ(integer("Width"), 640);
}

TEST_F(CutShortOnEmulator, aDescriptionCutShortLeavesItsTextAndTheMemory)
{
    ASSERT_EQ(open(), KX_OK);
    EXPECT_EQ(integer("Width"), -static_cast<int64_t>(KX_E_GC_PROPERTY));
    std::vector<char> buffer(100000);
    uint32_t length = 0;
    ASSERT_EQ(KX_XML_GetGenICamXML(handle, buffer.data(), static_cast<uint32_t>(buffer.size()), &length),
              KX_OK);
    EXPECT_TRUE(camera.description().substr(0, 5000) == buffer.data());
    uint32_t word = 0;
    EXPECT_EQ(KX_CC_ReadMemory(handle, &word, 0x11010, 4), KX_OK);
}

TEST_F(CameraOnEmulator, whatTheCameraRefusesIsAMatterOfAccess)
{
    ASSERT_EQ(open(), KX_OK);
    emu::Faults faults;
    faults.refusals = {{0x11010, 4, gvcp::InvalidAddress}};
    camera.setFaults(faults);
    EXPECT_EQ(integer("Width"), -static_cast<int64_t>(KX_E_GC_ACCESS));
    uint32_t word = 0;
    EXPECT_EQ(KX_CC_ReadMemory(handle, &word, 0x11010, 4), KX_E_GC_ACCESS);
    EXPECT_EQ(KX_CC_ReadMemory(handle, &word, 0x11012, 4), KX_E_GC_ACCESS);
    EXPECT_EQ(KX_CC_ReadMemory(handle, &word, 0x100000000, 4), KX_E_GC_ACCESS);
}

TEST_F(CameraOnEmulator, controlOfAnotherHostIsRefused)
{
    camera.stealControl(false);
    EXPECT_EQ(open(), KX_E_CONTROL_REFUSED);
    EXPECT_EQ(open(KX_ACCESS_MONITOR), KX_OK);
    EXPECT_EQ(integer("Width"), 640);
    EXPECT_EQ(KX_CC_SetIntValueEx(handle, "Width", 320), KX_E_GC_ACCESS);
}

// Found by the heartbeat, between calls.
TEST_F(CameraOnEmulator, aLossOfControlSaysWhoHasIt)
{
    ASSERT_EQ(open(), KX_OK);
    std::promise<KX_Status> told;
    const auto handler = [](void* user, KX_Status status) {
        static_cast<std::promise<KX_Status>*>(user)->set_value(status);
    };
    ASSERT_EQ(KX_CC_SetConnectionLostHandler(handle, handler, &told), KX_OK);
    camera.stealControl();
    ASSERT_EQ(told.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(integer("Width"), -static_cast<int64_t>(KX_E_CONNECTION_LOST));
    char text[200] = {};
    uint32_t length = 0;
    EXPECT_EQ(KX_CC_GetLastErrorText(handle, text, sizeof text, &length), KX_OK);
    EXPECT_EQ(text, "the connection is lost: another host has taken control of the camera at " +
                        camera.config().address);
}

TEST_F(CameraOnEmulator, aCameraThatVanishesEndsTheCallWithinItsTimeouts)
{
    ASSERT_EQ(KX_CC_SetTimeout(handle, 50, 2), KX_OK);
    ASSERT_EQ(open(), KX_OK);
    std::promise<KX_Status> told;
    const auto handler = [](void* user, KX_Status status) {
        static_cast<std::promise<KX_Status>*>(user)->set_value(status);
    };
    ASSERT_EQ(KX_CC_SetConnectionLostHandler(handle, handler, &told), KX_OK);
    camera.stop();
    const auto start = std::chrono::steady_clock::now();
    const int64_t failure = -integer("Width");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    EXPECT_TRUE(failure == KX_E_NO_ANSWER || failure == KX_E_CONNECTION_LOST || failure == KX_E_NETWORK)
        << std::hex << failure;
    ASSERT_EQ(told.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(integer("Width"), -static_cast<int64_t>(KX_E_CONNECTION_LOST));
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);
}

TEST_F(CameraOnEmulator, isFoundAndAskedWithoutTakingControl)
{
    ::setenv("KX_CAMERA_INTERFACES", "none", 1);
    ::setenv("KX_CAMERA_ADDRESSES", camera.config().address.c_str(), 1);
    KX_DeviceEntry entries[2];
    uint32_t count = 0;
    ASSERT_EQ(KX_CC_EnumDevices(KX_TRANSPORT_ALL, entries, 2, &count), KX_OK);
    ASSERT_EQ(count, 1u);
    EXPECT_STREQ(reinterpret_cast<const char*>(entries[0].info.special.gige.modelName), "EMU-1");
    EXPECT_EQ(entries[0].availability, static_cast<uint32_t>(KX_AVAILABILITY_FREE));
    count = 7;
    ASSERT_EQ(KX_CC_EnumDevices(KX_TRANSPORT_ALL, nullptr, 0, &count), KX_OK);
    EXPECT_EQ(count, 1u);
    uint32_t availability = 0;
    ASSERT_EQ(KX_CC_IsDeviceAccessible(&entries[0].info, &availability), KX_OK);
    EXPECT_EQ(availability, static_cast<uint32_t>(KX_AVAILABILITY_FREE));
    KX_DeviceInfo other = entries[0].info;
    other.transportType = 2;
    EXPECT_EQ(KX_CC_IsDeviceAccessible(&other, &availability), KX_E_NOT_SUPPORTED);
    KX_Controller controller{};
    EXPECT_EQ(KX_CC_GetController(&other, &controller), KX_E_NOT_SUPPORTED);
    KX_HANDLE none = nullptr;
    EXPECT_EQ(KX_CC_CreateHandle(&none, &other), KX_E_NOT_SUPPORTED);
    EXPECT_EQ(none, nullptr);
}

TEST_F(CameraOnEmulator, isAskedForByAddressOrTheWrongPlaceIsNamed)
{
    ::setenv("KX_CAMERA_INTERFACES", "none", 1);
    ::setenv("KX_CAMERA_ADDRESSES", "127.0.0.2,127.0.0.1", 1);
    uint32_t addresses[2] = {};
    uint32_t count = 0;
    EXPECT_EQ(KX_CC_CheckSearchPlaces(), KX_OK);
    ASSERT_EQ(KX_CC_GetSearchAddresses(addresses, 1, &count), KX_OK);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(addresses[0], 0x7F000001u);
    EXPECT_EQ(addresses[1], 0u);

    ::setenv("KX_CAMERA_ADDRESSES", "gate1,gate2", 1);
    EXPECT_EQ(KX_CC_CheckSearchPlaces(), KX_E_PARAMETER);
    char text[256] = {};
    uint32_t length = 0;
    ASSERT_EQ(KX_CC_GetLastErrorText(nullptr, text, sizeof text, &length), KX_OK);
    EXPECT_STREQ(text, "KX_CAMERA_ADDRESSES: \"gate1\" is no address; several are separated by commas.\n"
                       "KX_CAMERA_ADDRESSES: \"gate2\" is no address; several are separated by commas.");
}

TEST_F(CameraOnEmulator, controlThatThisProcessHoldsDoesNotMakeTheCameraTaken)
{
    ::setenv("KX_CAMERA_INTERFACES", "none", 1);
    ::setenv("KX_CAMERA_ADDRESSES", camera.config().address.c_str(), 1);
    KX_DeviceEntry entry{};
    uint32_t count = 0;
    const auto seen = [&] {
        EXPECT_EQ(KX_CC_EnumDevices(KX_TRANSPORT_ALL, &entry, 1, &count), KX_OK);
        uint32_t availability = 0;
        EXPECT_EQ(KX_CC_IsDeviceAccessible(&entry.info, &availability), KX_OK);
        EXPECT_EQ(availability, entry.availability);
        return availability;
    };
    ASSERT_EQ(open(), KX_OK);
    EXPECT_TRUE(camera.isControlled());
    EXPECT_EQ(seen(), uint32_t(KX_AVAILABILITY_FREE));
    KX_CC_CloseDevice(handle);
    camera.stealControl();
    EXPECT_EQ(seen(), uint32_t(KX_AVAILABILITY_IN_USE)) << "somebody else's";
    EXPECT_NE(open(), KX_OK);
    EXPECT_EQ(seen(), uint32_t(KX_AVAILABILITY_IN_USE)) << "asking for control is not having it";
}

TEST_F(CameraOnEmulator, manyHandlesTalkToTheirCamerasAtOnce)
{
    std::atomic<unsigned> good{0};
    std::vector<std::thread> threads;
    std::vector<std::unique_ptr<emu::EmulatedCamera>> cameras;
    for (int i = 0; i < 4; ++i) {
        cameras.push_back(std::make_unique<emu::EmulatedCamera>(freshConfig()));
        ASSERT_TRUE(cameras.back()->start());
    }
    for (const auto& each : cameras) {
        threads.emplace_back([&good, address = each->config().address] {
            KX_DeviceInfo info{};
            info.transportType = KX_TRANSPORT_GIGE;
            info.layout = KX_DEVICE_INFO_LAYOUT;
            info.special.gige.ipAddress = *gvcp::parseAddress(address);
            KX_HANDLE mine = nullptr;
            KX_IntegerValue value{};
            if (KX_CC_CreateHandle(&mine, &info) == KX_OK &&
                KX_CC_OpenDevice(mine, KX_ACCESS_EXCLUSIVE, 0) == KX_OK &&
                KX_CC_GetIntValueEx(mine, "Width", &value) == KX_OK && value.current == 640)
                ++good;
            KX_CC_DestroyHandle(mine);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(good, 4u);
}

} // namespace
