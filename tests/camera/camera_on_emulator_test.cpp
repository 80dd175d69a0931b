// The shared library as programs link it, over each transport to emulated cameras; and what GigE Vision alone
// has.
#include "gvcp/Gvcp.h"
#include "support/AllTransports.h"

#include <KXCameraControl/KXCameraControl.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <future>
#include <thread>
#include <vector>

using tests::Transport;

namespace
{

emu::CameraConfig freshConfig()
{
    emu::CameraConfig config;
    config.address = tests::freshLoopbackAddress();
    return config;
}

int64_t integerOf(KX_HANDLE handle, const char* name)
{
    KX_IntegerValue value{};
    const KX_Status status = KX_CC_GetIntValueEx(handle, name, &value);
    return status == KX_OK ? value.current : -static_cast<int64_t>(status);
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
    int64_t integer(const char* name) { return integerOf(handle, name); }

    emu::EmulatedCamera camera;
    KX_HANDLE handle = nullptr;
};

class CameraOverEachTransport : public testing::TestWithParam<Transport>
{
protected:
    ~CameraOverEachTransport() override
    {
        if (handle)
            KX_CC_DestroyHandle(handle);
    }
    void start()
    {
        camera = &line.add(GetParam(), config);
        const KX_DeviceInfo info = tests::AllTransports::record(config.serial);
        ASSERT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
    }
    KX_Status open(uint32_t mode = KX_ACCESS_EXCLUSIVE) { return KX_CC_OpenDevice(handle, mode, 0); }
    int64_t integer(const char* name) { return integerOf(handle, name); }

    emu::CameraConfig config;
    tests::AllTransports line;
    emu::Shell* camera = nullptr;
    KX_HANDLE handle = nullptr;
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

TEST_F(BrokenFirstUrlOnEmulator, theSecondUrlServes)
{
    ASSERT_EQ(open(), KX_OK);
    EXPECT_EQ(integer("Width"), 640);
}

TEST_F(CameraOnEmulator, controlIsTakenAndGivenBack)
{
    ASSERT_EQ(open(), KX_OK);
    EXPECT_TRUE(camera.isControlled());
    uint32_t word = 0;
    EXPECT_EQ(KX_CC_ReadMemory(handle, &word, 0x100000000, 4), KX_E_GC_ACCESS) << "addresses have 32 bits";
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);
    EXPECT_FALSE(camera.isControlled());
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

TEST_P(CameraOverEachTransport, featuresAreReadAndWrittenOverTheWire)
{
    start();
    ASSERT_EQ(open(), KX_OK);
    EXPECT_EQ(integer("Width"), 640);
    EXPECT_EQ(KX_CC_SetIntValueEx(handle, "Width", 320), KX_OK);
    EXPECT_EQ(camera->peek(0x11010, 4), (emu::Bytes{0, 0, 1, 64}));
    EXPECT_EQ(integer("Width"), 320);
    EXPECT_EQ(KX_CC_SetIntValueEx(handle, "Width", 321), KX_E_GC_ARGUMENT);
    KX_StringValue location{};
    ASSERT_EQ(KX_CC_GetStringValue(handle, "DeviceLocation", &location), KX_OK);
    EXPECT_STREQ(location.current, "Line 4");
    EXPECT_EQ(KX_CC_SetStringValue(handle, "DeviceLocation", "Line 5"), KX_OK);
    EXPECT_EQ(camera->node("DeviceLocation"), emu::NodeValue(std::string("Line 5")));
    KX_FloatValue exposure{};
    ASSERT_EQ(KX_CC_GetFloatValue(handle, "ExposureTime", &exposure), KX_OK);
    EXPECT_NEAR(exposure.current, 5000, 0.05);
    EXPECT_EQ(KX_CC_ExecuteCommand(handle, "DeviceReset"), KX_OK);
    EXPECT_EQ(camera->peek(0x10048, 4), (emu::Bytes{0, 0, 0, 1}));
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);
}

TEST_P(CameraOverEachTransport, theDescriptionArrivesAsItStands)
{
    start();
    ASSERT_EQ(open(KX_ACCESS_MONITOR), KX_OK);
    std::vector<char> buffer(camera->description().size() + 1);
    uint32_t length = 0;
    ASSERT_EQ(KX_XML_GetGenICamXML(handle, buffer.data(), static_cast<uint32_t>(buffer.size()), &length),
              KX_OK);
    EXPECT_EQ(length, buffer.size());
    EXPECT_TRUE(camera->description() == buffer.data());
}

TEST_P(CameraOverEachTransport, aZippedDescriptionIsUnpacked)
{
    config.zipped = true;
    start();
    ASSERT_EQ(open(), KX_OK);
    EXPECT_EQ(integer("Width"), 640);
}

TEST_P(CameraOverEachTransport, aDescriptionCutShortLeavesItsTextAndTheMemory)
{
    config.descriptionLimit = 5000;
    start();
    ASSERT_EQ(open(), KX_OK);
    EXPECT_EQ(integer("Width"), -static_cast<int64_t>(KX_E_GC_PROPERTY));
    std::vector<char> buffer(100000);
    uint32_t length = 0;
    ASSERT_EQ(KX_XML_GetGenICamXML(handle, buffer.data(), static_cast<uint32_t>(buffer.size()), &length),
              KX_OK);
    EXPECT_TRUE(camera->description().substr(0, 5000) == buffer.data());
    uint32_t word = 0;
    EXPECT_EQ(KX_CC_ReadMemory(handle, &word, 0x11010, 4), KX_OK);
}

TEST_P(CameraOverEachTransport, whatTheCameraRefusesIsAMatterOfAccess)
{
    start();
    ASSERT_EQ(open(), KX_OK);
    emu::Faults faults;
    faults.refusals = {{0x11010, 4, gvcp::InvalidAddress}};
    camera->setFaults(faults);
    EXPECT_EQ(integer("Width"), -static_cast<int64_t>(KX_E_GC_ACCESS));
    uint32_t word = 0;
    EXPECT_EQ(KX_CC_ReadMemory(handle, &word, 0x11010, 4), KX_E_GC_ACCESS);
    EXPECT_EQ(KX_CC_ReadMemory(handle, &word, 0x11012, 4), KX_E_GC_ACCESS);
}

TEST_P(CameraOverEachTransport, aCameraThatVanishesEndsTheCallWithinItsTimeouts)
{
    start();
    ASSERT_EQ(KX_CC_SetTimeout(handle, 50, 2), KX_OK);
    ASSERT_EQ(open(), KX_OK);
    std::promise<KX_Status> told;
    const auto handler = [](void* user, KX_Status status) {
        static_cast<std::promise<KX_Status>*>(user)->set_value(status);
    };
    ASSERT_EQ(KX_CC_SetConnectionLostHandler(handle, handler, &told), KX_OK);
    camera->stop();
    const auto start = std::chrono::steady_clock::now();
    const int64_t failure = -integer("Width");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    EXPECT_TRUE(failure == KX_E_NO_ANSWER || failure == KX_E_CONNECTION_LOST || failure == KX_E_NETWORK)
        << std::hex << failure;
    // A grabber's serial library tells of no loss: its calls fail.
    if (GetParam() != Transport::Clser) {
        ASSERT_EQ(told.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
        EXPECT_EQ(integer("Width"), -static_cast<int64_t>(KX_E_CONNECTION_LOST));
    }
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);
}

TEST_P(CameraOverEachTransport, manyHandlesTalkToTheirCamerasAtOnce)
{
    std::vector<KX_DeviceInfo> records(4);
    for (size_t i = 0; i < records.size(); ++i) {
        config.serial = "MANY" + std::to_string(i);
        line.add(GetParam(), config);
    }
    for (size_t i = 0; i < records.size(); ++i)
        records[i] = tests::AllTransports::record("MANY" + std::to_string(i));
    std::atomic<unsigned> good{0};
    std::vector<std::thread> threads;
    for (const KX_DeviceInfo& info : records)
        threads.emplace_back([&good, info] {
            KX_HANDLE mine = nullptr;
            KX_IntegerValue value{};
            if (KX_CC_CreateHandle(&mine, &info) == KX_OK &&
                KX_CC_OpenDevice(mine, KX_ACCESS_EXCLUSIVE, 0) == KX_OK &&
                KX_CC_GetIntValueEx(mine, "Width", &value) == KX_OK && value.current == 640)
                ++good;
            KX_CC_DestroyHandle(mine);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(good, 4u);
}

INSTANTIATE_TEST_SUITE_P(Over, CameraOverEachTransport, tests::everyTransport(), tests::transportName);

} // namespace
