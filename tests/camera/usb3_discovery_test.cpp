// USB3 Vision cameras through the C interface: who is listed, who is in use, who may not be opened.
#include "camera/UsbFixture.h"

#include <functional>

// libusb loses what it has read of descriptors that are cut off.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions()
{
    return "leak:libusb-1.0";
}

namespace
{

using tests::OrdinaryUser;

class Usb3Discovery : public tests::UsbFixture
{
protected:
    static uint32_t availabilityOf(const KX_DeviceInfo& info)
    {
        uint32_t availability = 0;
        EXPECT_EQ(KX_CC_IsDeviceAccessible(&info, &availability), KX_OK);
        return availability;
    }
    static KX_Status open(const KX_DeviceInfo& info, KX_HANDLE& handle)
    {
        EXPECT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
        return KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0);
    }
    static std::string searchProblems()
    {
        char problems[1000] = {};
        uint32_t length = 0;
        EXPECT_EQ(KX_CC_GetSearchProblems(problems, sizeof problems, &length), KX_OK);
        return problems;
    }
    static std::string lastError(KX_HANDLE handle)
    {
        char error[500] = {};
        uint32_t length = 0;
        KX_CC_GetLastErrorText(handle, error, sizeof error, &length);
        return error;
    }
};

TEST_F(Usb3Discovery, anEmptyBusHasNoCameras)
{
    EXPECT_TRUE(list().empty());
}

TEST_F(Usb3Discovery, camerasAreListedWithWhatTheirDescriptorsTell)
{
    emu::CameraConfig config;
    config.userName = "Belt 1";
    add("B");
    emu::Usb3Camera& first = add("A", {}, config);
    const auto found = list();
    ASSERT_EQ(found.size(), 2u);
    const KX_Usb3DeviceInfo& info = found[0].info.special.usb3;
    EXPECT_EQ(found[0].info.transportType, uint32_t(KX_TRANSPORT_USB3));
    EXPECT_EQ(text(info.serialNumber), "A");
    EXPECT_EQ(text(info.modelName), "EMU-1");
    EXPECT_EQ(text(info.manufacturerName), "Emulated cameras");
    EXPECT_EQ(text(info.userDefinedName), "Belt 1");
    EXPECT_EQ(text(info.guid), first.guid());
    EXPECT_EQ(text(info.location), first.place());
    EXPECT_EQ(info.vendorId, 0x1209u);
    EXPECT_EQ(info.productId, 0x0001u);
    EXPECT_EQ(found[0].interfaceName, "USB " + first.place());
    EXPECT_EQ(found[0].availability, uint32_t(KX_AVAILABILITY_FREE));
    EXPECT_EQ(text(found[1].info.special.usb3.serialNumber), "B");
    EXPECT_TRUE(list(KX_TRANSPORT_GIGE | KX_TRANSPORT_CAMERA_LINK).empty());
    EXPECT_EQ(first.counters().requests(), 0u) << "a look takes no control and asks no register";
}

TEST_F(Usb3Discovery, theEnvironmentKeepsTheProgramOffUsb)
{
    add("A");
    const KX_DeviceInfo info = list().at(0).info;
    setenv("KX_CAMERA_USB", "none", 1);
    EXPECT_TRUE(list().empty());
    KX_HANDLE handle = nullptr;
    EXPECT_EQ(open(info, handle), KX_E_NO_DEVICE);
    EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
}

TEST_F(Usb3Discovery, twoCamerasOfOneSerialNumberAreTwoCameras)
{
    emu::Usb3Config one;
    one.guid = "120900000001";
    emu::Usb3Config other;
    other.guid = "120900000002";
    emu::Usb3Camera& first = add("TWIN", one);
    emu::Usb3Camera& second = add("TWIN", other);
    const auto found = list();
    ASSERT_EQ(found.size(), 2u);
    KX_HANDLE handle = nullptr;
    ASSERT_EQ(open(found[1].info, handle), KX_OK);
    EXPECT_EQ(first.counters().requests(), 0u);
    EXPECT_GT(second.counters().requests(), 0u);
    EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
}

TEST_F(Usb3Discovery, aCameraIsFoundAgainAtAnotherPort)
{
    emu::Usb3Camera& camera = add("A");
    const KX_DeviceInfo info = list().at(0).info;
    camera.stop();
    EXPECT_EQ(availabilityOf(info), uint32_t(KX_AVAILABILITY_UNREACHABLE));
    ASSERT_TRUE(camera.start());
    EXPECT_NE(camera.place(), text(info.special.usb3.location));
    EXPECT_EQ(availabilityOf(info), uint32_t(KX_AVAILABILITY_FREE));
    KX_HANDLE handle = nullptr;
    EXPECT_EQ(open(info, handle), KX_OK);
    EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
}

TEST_F(Usb3Discovery, aCameraOfThisProcessIsListedAsFreeWhileItIsOpen)
{
    add("A");
    const KX_DeviceInfo info = list().at(0).info;
    KX_Controller controller{};
    EXPECT_EQ(KX_CC_GetController(&info, &controller), KX_E_NOT_SUPPORTED);
    KX_HANDLE handle = nullptr;
    ASSERT_EQ(open(info, handle), KX_OK);
    const auto found = list();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(text(found[0].info.special.usb3.serialNumber), "A") << "its texts are told by its descriptors";
    EXPECT_EQ(found[0].availability, uint32_t(KX_AVAILABILITY_FREE));
    EXPECT_EQ(availabilityOf(info), uint32_t(KX_AVAILABILITY_FREE));
    KX_HANDLE second = nullptr;
    EXPECT_EQ(open(info, second), KX_E_CONTROL_REFUSED);
    EXPECT_EQ(lastError(second), "USB " + cameras[0]->place() + ": another program uses the camera");
    EXPECT_EQ(KX_CC_DestroyHandle(second), KX_OK);
    EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
    EXPECT_EQ(availabilityOf(info), uint32_t(KX_AVAILABILITY_FREE));
}

TEST_F(Usb3Discovery, aCameraThatAMonitorHasIsInUse)
{
    add("A");
    const KX_DeviceInfo info = list().at(0).info;
    KX_HANDLE monitor = nullptr;
    ASSERT_EQ(KX_CC_CreateHandle(&monitor, &info), KX_OK);
    ASSERT_EQ(KX_CC_OpenDevice(monitor, KX_ACCESS_MONITOR, 0), KX_OK);
    EXPECT_EQ(list().at(0).availability, uint32_t(KX_AVAILABILITY_IN_USE)) << "nobody shares a USB camera";
    EXPECT_EQ(availabilityOf(info), uint32_t(KX_AVAILABILITY_IN_USE));
    EXPECT_EQ(KX_CC_DestroyHandle(monitor), KX_OK);
}

TEST_F(Usb3Discovery, aCameraThatThisUserMayNotOpenIsUnreachableAndSaysWhatHelps)
{
    emu::Usb3Camera& camera = add("A");
    const KX_DeviceInfo known = list().at(0).info;
    EXPECT_EQ(searchProblems(), "");
    stage().setOpenable(camera.place(), false);
    KX_DeviceInfo seen;
    {
        const OrdinaryUser user;
        EXPECT_EQ(searchProblems().find("USB " + camera.place() + ": this user may not open the camera."),
                  0u);
        const auto found = list();
        ASSERT_EQ(found.size(), 1u);
        EXPECT_EQ(found[0].availability, uint32_t(KX_AVAILABILITY_UNREACHABLE));
        EXPECT_EQ(text(found[0].info.special.usb3.modelName), "Shown by sysfs");
        EXPECT_EQ(text(found[0].info.special.usb3.guid), "");
        EXPECT_EQ(text(found[0].info.special.usb3.location), camera.place());
        for (const KX_DeviceInfo& info : {known, found[0].info}) {
            EXPECT_EQ(availabilityOf(info), uint32_t(KX_AVAILABILITY_UNREACHABLE));
            KX_HANDLE handle = nullptr;
            EXPECT_EQ(open(info, handle), KX_E_NETWORK);
            EXPECT_NE(lastError(handle).find("60-usb3-vision.rules"), std::string::npos) << lastError(handle);
            EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
        }
        seen = found[0].info;
    }
    stage().setOpenable(camera.place(), true);
    EXPECT_EQ(availabilityOf(seen), uint32_t(KX_AVAILABILITY_FREE)) << "found by where it hangs";
}

TEST_F(Usb3Discovery, theStampChangesWhenACameraComesOrGoes)
{
    const uint32_t empty = KX_CC_GetInterfaceStamp();
    emu::Usb3Camera& camera = add("A");
    const uint32_t plugged = KX_CC_GetInterfaceStamp();
    EXPECT_NE(plugged, empty);
    EXPECT_EQ(KX_CC_GetInterfaceStamp(), plugged);
    camera.stop();
    EXPECT_NE(KX_CC_GetInterfaceStamp(), plugged);
}

// Positions: 18 bytes of the device, then configuration (9), association (8), interface (9), information
// (20).
TEST_F(Usb3Discovery, devicesWithBrokenDescriptorsHideNoOthers)
{
    constexpr size_t kConfig = 18;
    constexpr size_t kInterface = kConfig + 9 + 8;
    constexpr size_t kInfo = kInterface + 9;
    constexpr size_t kOut = kInfo + 20;
    const std::vector<std::pair<const char*, std::function<void(emu::Bytes&)>>> breakers = {
        {"nothing behind the device descriptor", [&](emu::Bytes& bytes) { bytes.resize(kConfig); }},
        {"cut in the middle", [&](emu::Bytes& bytes) { bytes.resize(kInfo + 5); }},
        {"another class", [&](emu::Bytes& bytes) { bytes[kInterface + 5] = 0x0E; }},
        {"lengths of nothing", [&](emu::Bytes& bytes) { bytes[kInterface] = 0; }},
        {"endpoints that are not bulk", [&](emu::Bytes& bytes) { bytes[kOut + 3] = 3; }},
        {"packets of no size", [&](emu::Bytes& bytes) { bytes[kOut + 4] = bytes[kOut + 5] = 0; }},
        {"no endpoints", [&](emu::Bytes& bytes) { bytes[kInterface + 4] = 0; }},
        {"a total length beyond all",
         [&](emu::Bytes& bytes) { bytes[kConfig + 2] = bytes[kConfig + 3] = 0xFF; }},
    };
    int number = 0;
    for (const auto& [what, breaker] : breakers) {
        emu::Usb3Config usb;
        usb.breakDescriptors = breaker;
        add("BROKEN" + std::to_string(++number), usb);
    }
    add("WHOLE");
    bool isThere = false;
    for (const KX_DeviceEntry& entry : list())
        isThere = isThere || text(entry.info.special.usb3.serialNumber) == "WHOLE";
    EXPECT_TRUE(isThere);
    EXPECT_LE(list().size(), 2u) << "one with a wrong total length may still make sense";
}

TEST_F(Usb3Discovery, aCameraWithoutInformationIsKnownByWhatEveryUsbDeviceTells)
{
    for (const uint8_t wrongLength : {uint8_t{0}, uint8_t{19}, uint8_t{255}}) {
        emu::Usb3Config usb;
        usb.breakDescriptors = [&](emu::Bytes& bytes) { bytes[18 + 9 + 8 + 9] = wrongLength; };
        emu::Usb3Camera& camera = add("A", usb);
        for (const KX_DeviceEntry& entry : list()) {
            EXPECT_EQ(text(entry.info.special.usb3.serialNumber), "A");
            EXPECT_EQ(text(entry.info.special.usb3.guid), "");
            KX_HANDLE handle = nullptr;
            EXPECT_EQ(open(entry.info, handle), KX_OK) << "by where it hangs";
            EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
        }
        camera.stop();
    }
}

} // namespace
