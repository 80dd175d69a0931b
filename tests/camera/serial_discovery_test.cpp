// Cameras behind serial lines and behind serial libraries of grabbers through the C interface: who is listed,
// who is in use, and what the lines are called.
#include "ClserStage.h"

#include "camera_emulator/SerialCamera.h"

#include <KXCameraControl/KXCameraControl.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>

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
        unsetenv("CLSERIALPATH");
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
    static std::string problems()
    {
        char words[8192] = "";
        uint32_t length = 0;
        EXPECT_EQ(KX_CC_GetSearchProblems(words, sizeof words, &length), KX_OK);
        return words;
    }

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
    EXPECT_EQ(problems(), "There is no serial line /dev/no_such_line, which KX_CAMERA_SERIAL_PORTS names.");
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

// ---- serial libraries of grabbers ----

namespace
{

class ClserDiscovery : public SerialDiscovery
{
protected:
    ClserDiscovery() { setenv("KX_GENTL_TIMEOUT", "1000", 1); }
    ~ClserDiscovery() override { unsetenv("KX_GENTL_TIMEOUT"); }

    ClserStage stage;
};

} // namespace

TEST_F(ClserDiscovery, camerasBehindTheLibrarysPortsAreListedUnderItsWordsForThem)
{
    stage.addPort(add("B").path());
    stage.addPort("/dev/no_such_line");
    stage.addPort(add("A").path());
    const std::string library = stage.addLibrary();
    name(add("C").path());
    const auto found = list();
    ASSERT_EQ(found.size(), 3u);
    const KX_CameraLinkDeviceInfo& first = found[0].info.special.cameraLink;
    EXPECT_EQ(text(first.serialNumber), "A");
    EXPECT_EQ(text(first.portId), "Emulated board, port C");
    EXPECT_EQ(text(first.producerId).substr(0, 20), library.substr(0, 20));
    EXPECT_EQ(text(first.interfaceId), "2");
    EXPECT_STREQ(found[0].interfaceName, "clseremu.so");
    EXPECT_EQ(found[0].availability, uint32_t(KX_AVAILABILITY_FREE));
    EXPECT_EQ(text(found[1].info.special.cameraLink.serialNumber), "B");
    EXPECT_EQ(text(found[2].info.special.cameraLink.serialNumber), "C");
    EXPECT_STREQ(found[2].interfaceName, "serial");
    EXPECT_EQ(problems(), "");
}

TEST_F(ClserDiscovery, featuresAreReadAndWrittenAndTheOpenCameraIsStillListedAsFree)
{
    emu::SerialCamera& camera = add("A");
    stage.addPort(camera.path());
    stage.addLibrary();
    const KX_DeviceInfo info = list().at(0).info;
    KX_HANDLE handle = nullptr;
    ASSERT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
    ASSERT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    KX_IntegerValue width{};
    ASSERT_EQ(KX_CC_GetIntValueEx(handle, "Width", &width), KX_OK);
    EXPECT_EQ(camera.node("Width"), emu::NodeValue(width.current));
    ASSERT_EQ(KX_CC_SetIntValueEx(handle, "Width", 640), KX_OK);
    EXPECT_EQ(camera.node("Width"), emu::NodeValue(int64_t(640)));
    EXPECT_EQ(camera.baudRate(), 921600u);
    const auto found = list();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(text(found[0].info.special.cameraLink.serialNumber), "A");
    EXPECT_EQ(found[0].availability, uint32_t(KX_AVAILABILITY_FREE));
    EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
    EXPECT_EQ(camera.baudRate(), 9600u);
}

TEST_F(ClserDiscovery, aPortThatAnotherProgramHasIsInUse)
{
    emu::SerialCamera& camera = add("A");
    stage.addPort(camera.path());
    stage.addLibrary();
    const KX_DeviceInfo info = list().at(0).info;
    const int other = ::open(camera.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
    const auto found = list();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(text(found[0].info.special.cameraLink.serialNumber), "A") << "as it was last seen";
    EXPECT_EQ(found[0].availability, uint32_t(KX_AVAILABILITY_IN_USE));
    uint32_t availability = 0;
    EXPECT_EQ(KX_CC_IsDeviceAccessible(&info, &availability), KX_OK);
    EXPECT_EQ(availability, uint32_t(KX_AVAILABILITY_IN_USE));
    KX_HANDLE handle = nullptr;
    ASSERT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
    EXPECT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_E_CONTROL_REFUSED);
    EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
    ::close(other);
}

TEST_F(ClserDiscovery, librariesThatCannotBeUsedAreToldAndHideNothing)
{
    stage.addPort(add("A").path());
    stage.addLibrary();
    const std::string old = stage.addLibrary("old");
    const std::string words = stage.addFile("clserwords.so", "no library");
    std::string elf("\x7F"
                    "ELF\x01\x01\x01",
                    7);
    elf.resize(64);
    const std::string foreign = stage.addFile("libclserforeign.so", elf);
    stage.addFile("clallserial.so", "nobody's");
    EXPECT_EQ(list().size(), 1u);
    EXPECT_EQ(problems(), "The serial library " + old +
                              " cannot be used: it is no serial library of Camera Link 1.1: it lacks "
                              "clGetNumSerialPorts, clGetSerialPortIdentifier.\n"
                              "The serial library " +
                              words + " is no shared library.\nThe serial library " + foreign +
                              " is made for another kind of machine.");
}

TEST_F(ClserDiscovery, aLibraryThatFailsInASearchIsToldAndLeftAlone)
{
    for (const auto& [fault, told] : std::map<std::string, std::string>{
             {"clGetNumSerialPorts=crash", "crashed in clGetNumSerialPorts (signal 6)"},
             {"clGetNumSerialPorts=hang", "hung in clGetNumSerialPorts for 1000 ms and was ended"},
             {"clGetNumSerialPorts=refuse", "refuses: clGetNumSerialPorts: the board refuses (-10500)"},
             {"clGetSerialPortIdentifier=long",
              "breaks the standard: clGetSerialPortIdentifier gives a length of 5096 for a buffer of 4096"},
             {"clSerialWrite=crash", "crashed in clSerialWrite (signal 6)"},
             {"clSerialRead=hang", "hung in clSerialRead for 1000 ms and was ended"}}) {
        ClserStage own;
        own.setFaults(fault);
        own.addPort(add("A").path());
        const std::string library = own.addLibrary();
        EXPECT_TRUE(list().empty()) << fault;
        EXPECT_EQ(problems(), "The serial library " + library + " " + told + ".");
        const auto began = std::chrono::steady_clock::now();
        EXPECT_TRUE(list().empty());
        EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(900)) << "it rests";
    }
}

TEST_F(ClserDiscovery, aRecordOfALibraryThatIsNotThereAnyMoreOpensNothing)
{
    emu::SerialCamera& camera = add("A");
    stage.addPort(camera.path());
    stage.addLibrary();
    const KX_DeviceInfo info = list().at(0).info;
    unsetenv("CLSERIALPATH");
    camera.resetCounters();
    EXPECT_TRUE(list().empty());
    KX_HANDLE handle = nullptr;
    ASSERT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
    EXPECT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
    EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
    EXPECT_EQ(camera.counters().requests(), 0u);
}
