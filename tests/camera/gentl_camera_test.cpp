// Cameras behind GenTL producers through the C interface: who is listed, what opening and using them gives,
// and what producers can do wrong.
#include "GentlStage.h"

#include <KXCameraControl/KXCameraControl.h>

#include <gmock/gmock.h>

#include <condition_variable>
#include <mutex>

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::AllOf;
using testing::HasSubstr;

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

std::vector<std::string> serials()
{
    std::vector<std::string> all;
    for (const KX_DeviceEntry& entry : list())
        all.push_back(text(entry.info.special.cameraLink.serialNumber));
    return all;
}

std::string searchProblems()
{
    uint32_t length = 0;
    KX_CC_GetSearchProblems(nullptr, 0, &length);
    std::string all(length + 1, '\0');
    EXPECT_EQ(KX_CC_GetSearchProblems(all.data(), length + 1, &length), KX_OK);
    all.resize(length);
    return all;
}

uint32_t availability(const KX_DeviceInfo& info)
{
    uint32_t value = 0;
    EXPECT_EQ(KX_CC_IsDeviceAccessible(&info, &value), KX_OK);
    return value;
}

class Handle
{
public:
    explicit Handle(const KX_DeviceInfo& info) { EXPECT_EQ(KX_CC_CreateHandle(&m_handle, &info), KX_OK); }
    ~Handle() { EXPECT_EQ(KX_CC_DestroyHandle(m_handle), KX_OK); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    operator KX_HANDLE() const { return m_handle; }
    KX_Status open(uint32_t mode = KX_ACCESS_EXCLUSIVE) { return KX_CC_OpenDevice(m_handle, mode, 0); }
    std::string error() const
    {
        char words[4096] = {};
        uint32_t length = 0;
        KX_CC_GetLastErrorText(m_handle, words, sizeof words, &length);
        return words;
    }

private:
    KX_HANDLE m_handle = nullptr;
};

// Counts the losses that a handle tells of.
class Losses
{
public:
    explicit Losses(KX_HANDLE handle) { KX_CC_SetConnectionLostHandler(handle, told, this); }
    bool waitForOne(std::chrono::milliseconds patience)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, patience, [this] { return m_count > 0; });
    }
    int count()
    {
        const std::lock_guard lock(m_mutex);
        return m_count;
    }

private:
    static void told(void* user, KX_Status)
    {
        auto* self = static_cast<Losses*>(user);
        const std::lock_guard lock(self->m_mutex);
        ++self->m_count;
        self->m_changed.notify_all();
    }
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_count = 0;
};

class GentlCamera : public testing::Test
{
protected:
    GentlCamera() { setenv("KX_GENTL_TIMEOUT", "3000", 1); }
    GentlStage stage;
};

} // namespace

TEST_F(GentlCamera, withoutProducersNobodyIsListedAndNothingIsStarted)
{
    stage.addCamera("A");
    EXPECT_TRUE(list(KX_TRANSPORT_ALL).empty());
    unsetenv("GENICAM_GENTL64_PATH");
    EXPECT_TRUE(list(KX_TRANSPORT_ALL).empty());
    EXPECT_EQ(searchProblems(), "");
}

TEST_F(GentlCamera, camerasAreListedWithTheirPlaceAndLayer)
{
    const std::string path = stage.addProducer();
    emu::GrabberConfig hs;
    hs.interface = "HS-Grabber";
    hs.layer = "CLHS";
    stage.addCamera("B");
    stage.addCamera("A", {}, hs);
    const auto found = list();
    ASSERT_EQ(found.size(), 2u);
    const KX_CameraLinkDeviceInfo& first = found[0].info.special.cameraLink;
    EXPECT_EQ(found[0].info.transportType, uint32_t(KX_TRANSPORT_CAMERA_LINK));
    EXPECT_EQ(text(first.serialNumber), "A");
    EXPECT_EQ(text(first.modelName), "EMU-1");
    EXPECT_EQ(text(first.portId), "HS-Grabber (emulated)");
    EXPECT_EQ(text(first.layerName), "CLHS");
    EXPECT_EQ(text(first.producerId), path);
    EXPECT_EQ(text(first.interfaceId), "HS-Grabber");
    EXPECT_EQ(text(first.deviceId), "EMU-A");
    EXPECT_STREQ(found[0].interfaceName, "HS-Grabber (emulated)");
    EXPECT_EQ(found[0].availability, uint32_t(KX_AVAILABILITY_FREE));
    EXPECT_EQ(text(found[1].info.special.cameraLink.serialNumber), "B");
    EXPECT_EQ(text(found[1].info.special.cameraLink.layerName), "CXP");
    EXPECT_TRUE(list(KX_TRANSPORT_GIGE).empty());
}

TEST_F(GentlCamera, whatTheLibrarySpeaksItselfIsLeftOut)
{
    stage.addProducer();
    for (const char* layer : {"GEV", "U3V", "CL", "Custom"}) {
        emu::GrabberConfig grabber;
        grabber.interface = std::string("If-") + layer;
        grabber.layer = layer;
        stage.addCamera(layer, {}, grabber);
    }
    EXPECT_EQ(serials(), (std::vector<std::string>{"CL", "Custom"}));
}

TEST_F(GentlCamera, longIdentifiersAreToldApart)
{
    stage.addProducer(std::string(60, 'p'));
    const std::string stem(70, 'x');
    for (const char* end : {"1", "2"}) {
        emu::GrabberConfig grabber;
        grabber.interface = stem + end;
        stage.addCamera(std::string("S") + end, {}, grabber);
    }
    const auto found = list();
    ASSERT_EQ(found.size(), 2u);
    EXPECT_NE(text(found[0].info.special.cameraLink.interfaceId),
              text(found[1].info.special.cameraLink.interfaceId));
    Handle handle(found[1].info);
    EXPECT_EQ(handle.open(), KX_OK) << handle.error();
    KX_StringValue serial{};
    ASSERT_EQ(KX_CC_GetStringValue(handle, "DeviceSerialNumber", &serial), KX_OK) << handle.error();
}

TEST_F(GentlCamera, featuresAreReadAndWritten)
{
    stage.addProducer();
    emu::GrabberCamera& camera = stage.addCamera("A");
    Handle handle(list().at(0).info);
    ASSERT_EQ(handle.open(), KX_OK) << handle.error();
    KX_IntegerValue width{};
    ASSERT_EQ(KX_CC_GetIntValueEx(handle, "Width", &width), KX_OK) << handle.error();
    EXPECT_EQ(camera.node("Width"), emu::NodeValue(width.current));
    ASSERT_EQ(KX_CC_SetIntValueEx(handle, "Width", 640), KX_OK);
    EXPECT_EQ(camera.node("Width"), emu::NodeValue(int64_t(640)));
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);
    EXPECT_FALSE(camera.isControlled());
    EXPECT_EQ(handle.open(), KX_OK) << "a second time";
}

TEST_F(GentlCamera, aMonitorReadsAndWritesNothing)
{
    stage.addProducer();
    emu::GrabberCamera& camera = stage.addCamera("A");
    Handle handle(list().at(0).info);
    ASSERT_EQ(handle.open(KX_ACCESS_MONITOR), KX_OK) << handle.error();
    EXPECT_FALSE(camera.isControlled());
    KX_IntegerValue width{};
    EXPECT_EQ(KX_CC_GetIntValueEx(handle, "Width", &width), KX_OK);
    EXPECT_EQ(KX_CC_SetIntValueEx(handle, "Width", 640), KX_E_GC_ACCESS);
}

TEST_F(GentlCamera, aCameraOfThisProcessIsFreeAndOneOfAnotherInUse)
{
    stage.addProducer("mine");
    stage.addProducer("theirs"); // has a helper of its own, as another program would have
    stage.addCamera("A");
    const auto found = list();
    ASSERT_EQ(found.size(), 2u);
    Handle handle(found[0].info);
    ASSERT_EQ(handle.open(), KX_OK) << handle.error();
    EXPECT_EQ(availability(found[0].info), uint32_t(KX_AVAILABILITY_FREE));
    EXPECT_EQ(availability(found[1].info), uint32_t(KX_AVAILABILITY_IN_USE));
    Handle other(found[1].info);
    EXPECT_EQ(other.open(), KX_E_CONTROL_REFUSED);
    EXPECT_THAT(other.error(), AllOf(HasSubstr("theirs.cti"), HasSubstr("another process has the device")));
    EXPECT_EQ(other.open(KX_ACCESS_MONITOR), KX_OK) << other.error();
    Handle second(found[0].info);
    EXPECT_EQ(second.open(), KX_E_CONTROL_REFUSED) << "one handle at a time";
    KX_Controller controller{};
    EXPECT_EQ(KX_CC_GetController(&found[0].info, &controller), KX_E_NOT_SUPPORTED);
}

TEST_F(GentlCamera, aCameraThatIsGoneIsUnreachableAndCannotBeOpened)
{
    const std::string path = stage.addProducer();
    emu::GrabberCamera& camera = stage.addCamera("A");
    const KX_DeviceInfo info = list().at(0).info;
    camera.stop();
    EXPECT_EQ(availability(info), uint32_t(KX_AVAILABILITY_UNREACHABLE));
    EXPECT_TRUE(list().empty());
    Handle handle(info);
    EXPECT_EQ(handle.open(), KX_E_NO_DEVICE);
    EXPECT_EQ(handle.error(), "the GenTL producer " + path + " does not list the camera");
    unsetenv("GENICAM_GENTL64_PATH");
    EXPECT_EQ(handle.open(), KX_E_NO_DEVICE);
    EXPECT_THAT(handle.error(), HasSubstr("GENICAM_GENTL64_PATH"));
    EXPECT_EQ(availability(info), uint32_t(KX_AVAILABILITY_UNREACHABLE));
}

TEST_F(GentlCamera, aPulledCableIsToldWithinASecond)
{
    stage.addProducer();
    emu::GrabberCamera& camera = stage.addCamera("A");
    Handle handle(list().at(0).info);
    ASSERT_EQ(handle.open(), KX_OK) << handle.error();
    Losses losses(handle);
    camera.stop();
    EXPECT_TRUE(losses.waitForOne(seconds(1)));
    KX_IntegerValue width{};
    EXPECT_EQ(KX_CC_GetIntValueEx(handle, "Width", &width), KX_E_CONNECTION_LOST);
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);
    EXPECT_EQ(losses.count(), 1);
    EXPECT_EQ(handle.open(), KX_E_NO_DEVICE);
    ASSERT_TRUE(camera.start());
    EXPECT_EQ(handle.open(), KX_OK) << handle.error();
}

TEST_F(GentlCamera, withoutEventsALossIsFoundByTheNextRequest)
{
    stage.setFaults("GCRegisterEvent=-1003");
    stage.addProducer();
    emu::GrabberCamera& camera = stage.addCamera("A");
    Handle handle(list().at(0).info);
    ASSERT_EQ(handle.open(), KX_OK) << handle.error();
    Losses losses(handle);
    camera.stop();
    uint8_t bytes[4];
    EXPECT_EQ(KX_CC_ReadMemory(handle, bytes, 0x20000, 4), KX_E_CONNECTION_LOST);
    EXPECT_TRUE(losses.waitForOne(seconds(5)));
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);
    EXPECT_EQ(losses.count(), 1);
}

TEST_F(GentlCamera, refusalsSilenceAndBusyCamerasAreToldApart)
{
    stage.addProducer();
    emu::GrabberCamera& camera = stage.addCamera("A");
    Handle handle(list().at(0).info);
    ASSERT_EQ(handle.open(), KX_OK) << handle.error();
    uint8_t bytes[4] = {1, 2, 3, 4};
    // The last one is any fault of the camera's: producers tell it as an error of input.
    for (const unsigned refusal : {0x8003u, 0x8006u, 0x8FFFu}) {
        emu::Faults faults;
        faults.refusals = {{0x20000, 4, uint16_t(refusal)}};
        camera.setFaults(faults);
        EXPECT_EQ(KX_CC_ReadMemory(handle, bytes, 0x20000, 4), KX_E_GC_ACCESS) << refusal << handle.error();
        EXPECT_THAT(handle.error(), HasSubstr("reading memory at 0x00020000: The GenTL producer "));
        EXPECT_EQ(KX_CC_WriteMemory(handle, bytes, 0x20000, 4), KX_E_GC_ACCESS) << refusal << handle.error();
    }
    emu::Faults busy;
    busy.busy = 2;
    camera.setFaults(busy);
    EXPECT_EQ(KX_CC_ReadMemory(handle, bytes, 0x20000, 4), KX_OK) << handle.error();
    busy.busy = emu::kAlways;
    camera.setFaults(busy);
    EXPECT_EQ(KX_CC_ReadMemory(handle, bytes, 0x20000, 4), KX_E_BUSY);
    emu::Faults silence;
    silence.silence = emu::Silence{};
    camera.setFaults(silence);
    EXPECT_EQ(KX_CC_ReadMemory(handle, bytes, 0x20000, 4), KX_E_NO_ANSWER);
    camera.setFaults({});
    EXPECT_EQ(KX_CC_ReadMemory(handle, bytes, 0x20000, 4), KX_OK) << "silence is no loss";
}

// Else a feature would be left out of a file for a disturbance of a moment.
TEST_F(GentlCamera, aFaultOfTheLineThatHasPassedIsNoRefusal)
{
    stage.addProducer();
    emu::GrabberCamera& camera = stage.addCamera("A");
    Handle handle(list().at(0).info);
    ASSERT_EQ(handle.open(), KX_OK) << handle.error();
    uint8_t bytes[4] = {1, 2, 3, 4};
    emu::Faults faults;
    faults.accident = emu::Accident{emu::Mishap::AnswerShort};
    camera.setFaults(faults);
    EXPECT_EQ(KX_CC_ReadMemory(handle, bytes, 0x20000, 4), KX_OK) << handle.error();
    faults.accident = emu::Accident{emu::Mishap::Refused};
    camera.setFaults(faults);
    EXPECT_EQ(KX_CC_WriteMemory(handle, bytes, 0x20000, 4), KX_OK) << handle.error();
}

TEST_F(GentlCamera, aProducerOfTheFirstVersionNamesItsDescriptionInTheOldWay)
{
    stage.setFaults("GCGetNumPortURLs=-1003");
    stage.addProducer();
    stage.addCamera("A");
    Handle handle(list().at(0).info);
    ASSERT_EQ(handle.open(), KX_OK) << handle.error();
    KX_IntegerValue width{};
    EXPECT_EQ(KX_CC_GetIntValueEx(handle, "Width", &width), KX_OK) << handle.error();
}

TEST_F(GentlCamera, aProducerThatDoesNotKnowAnAccessIsAskedForTheWholeDevice)
{
    // Every first opening fails so.
    stage.setFaults("IFOpenDevice=-1003@2");
    stage.addProducer();
    stage.addCamera("A");
    const KX_DeviceInfo info = list().at(0).info;
    Handle handle(info);
    EXPECT_EQ(handle.open(KX_ACCESS_MONITOR), KX_OK) << handle.error();
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);
    EXPECT_EQ(handle.open(), KX_E_DEVICE);
    EXPECT_THAT(handle.error(), HasSubstr("IFOpenDevice: as it was told to (-1003)"));
}

TEST_F(GentlCamera, oneBadProducerHidesNoCameraOfAnother)
{
    // The fault, and what is told of it.
    const std::pair<const char*, const char*> faults[] = {
        {"GCInitLib=crash", "bad.cti crashed in GCInitLib (signal "},
        {"TLOpen=hang", "bad.cti hung in TLOpen for 400 ms and was ended."},
        {"IFGetDeviceInfo=crash", "bad.cti crashed in IFGetDeviceInfo (signal "},
        {"IFGetNumDevices=long", "IFGetDeviceID: no such device (-1017)."},
        {"TLGetNumInterfaces=long", "TLGetInterfaceID: no such interface (-1017)."},
        {"TLUpdateInterfaceList=-1010", "TLUpdateInterfaceList: as it was told to (-1010)."},
        {"IFGetDeviceID=long", "IFGetDeviceID gives a length of 1099511627776 for a buffer of 4096."}};
    for (const auto& [fault, words] : faults) {
        GentlStage own;
        setenv("KX_GENTL_TIMEOUT", "400", 1);
        own.setFaults(std::string("bad:") + fault);
        const std::string bad = own.addProducer("bad");
        own.addProducer("good");
        own.addCamera("A", "good");
        own.addCamera("B", "bad");
        EXPECT_EQ(serials(), std::vector<std::string>{"A"}) << fault;
        EXPECT_THAT(searchProblems(), AllOf(HasSubstr(bad), HasSubstr(words))) << fault;
        Handle handle(list().at(0).info);
        EXPECT_EQ(handle.open(), KX_OK) << fault << handle.error();
    }
}

TEST_F(GentlCamera, filesThatAreNoProducersAreToldAndHideNothing)
{
    const std::string words = stage.addFile("words.cti", "no library at all");
    stage.addProducer();
    stage.addCamera("A");
    EXPECT_EQ(serials(), std::vector<std::string>{"A"});
    EXPECT_EQ(searchProblems(), "The GenTL producer " + words + " is no shared library.");
}

TEST_F(GentlCamera, aProducerThatFailedRestsFromSearchesButNotFromOpening)
{
    setenv("KX_GENTL_TIMEOUT", "500", 1);
    stage.addProducer();
    stage.addCamera("A");
    const KX_DeviceInfo info = list().at(0).info;
    Handle handle(info);
    ASSERT_EQ(handle.open(), KX_OK);
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);

    GentlStage other;
    setenv("KX_GENTL_TIMEOUT", "500", 1);
    other.setFaults("IFUpdateDeviceList=hang");
    other.addProducer();
    other.addCamera("B");
    EXPECT_TRUE(list().empty());
    const auto began = std::chrono::steady_clock::now();
    EXPECT_TRUE(list().empty()) << "at once";
    EXPECT_LT(std::chrono::steady_clock::now() - began, milliseconds(300));
    EXPECT_THAT(searchProblems(), HasSubstr("hung in IFUpdateDeviceList"));
}

TEST_F(GentlCamera, aGrabberThatWantsSettingsShowsItsCamerasOnceItHasThem)
{
    setenv("CAMERA_EMULATOR_GENTL_HIDDEN", "1", 1);
    stage.addCamera("A");
    stage.addProducer("shy");
    EXPECT_TRUE(serials().empty());

    const std::string settings =
        stage.addFile("settings", "[other.cti / *]\nNoFeature = 1\n[told.cti / EMU-Grabber]\n"
                                  "DeviceControlProtocol = GenCP\nLinkSpeed = 6250\nLinkGain = 2.5\n"
                                  "LinkPower = 1\nLinkName = left\nLinkReset\n[told.cti]\nLinkSpeed = 7\n");
    setenv("KX_GENTL_SETTINGS", settings.c_str(), 1);
    stage.addProducer("told");
    EXPECT_EQ(serials(), std::vector<std::string>{"A"});
    EXPECT_EQ(searchProblems(), "");
    Handle handle(list().at(0).info);
    EXPECT_EQ(handle.open(), KX_OK) << handle.error();
}

TEST_F(GentlCamera, settingsThatCannotBeMadeAreToldWithTheirLine)
{
    stage.addCamera("A");
    const std::string settings = stage.addFile(
        "settings", "nonsense\n[emulated.cti / *]\nNoFeature = 1\nLinkSpeed = fast\nLinkSpeed = 99999\n"
                    "[emulated.cti / Nowhere]\nLinkSpeed = 1\n");
    setenv("KX_GENTL_SETTINGS", settings.c_str(), 1);
    const std::string path = stage.addProducer();
    EXPECT_EQ(serials(), std::vector<std::string>{"A"}) << "nothing is hidden by it";
    const std::string problems = searchProblems();
    EXPECT_THAT(problems, HasSubstr("KX_GENTL_SETTINGS, line 1: there is no [producer] before it."));
    for (const char* words : {", line 3, NoFeature: ", ", line 4, LinkSpeed: ", ", line 5, LinkSpeed: "})
        EXPECT_THAT(problems, HasSubstr("KX_GENTL_SETTINGS, interface \"EMU-Grabber\" of " + path + words));
    EXPECT_THAT(problems, HasSubstr("line 7: " + path + " has no interface \"Nowhere\"."));
}

TEST_F(GentlCamera, aSettingsFileThatIsNotThereIsTold)
{
    setenv("KX_GENTL_SETTINGS", "/no/such/file", 1);
    stage.addCamera("A");
    stage.addProducer();
    EXPECT_EQ(serials(), std::vector<std::string>{"A"});
    EXPECT_EQ(searchProblems(), "KX_GENTL_SETTINGS: /no/such/file cannot be read.");
}

// ---- every function -------------------------------------------------------------------------------------

namespace
{

struct Wrong
{
    const char* function;
    bool isNoticed = false;   // by who finds, opens and uses the camera
    const char* besides = ""; // another fault, without which the function is not called
};

// Test names in messages.
void PrintTo(const Wrong& wrong, std::ostream* out)
{
    *out << wrong.function;
}

class EveryFunction : public testing::TestWithParam<std::tuple<Wrong, std::string>>
{
protected:
    EveryFunction()
    {
        // Only who hangs uses it up; a machine may be slow to let a process crash.
        setenv("KX_GENTL_TIMEOUT", std::get<1>(GetParam()) == "hang" ? "600" : "5000", 1);
        stage.addProducer("good");
        stage.addProducer("twin");
        stage.addCamera("A", "good");
        stage.addCamera("B", "twin");
        for (const KX_DeviceEntry& entry : list())
            (text(entry.info.special.cameraLink.serialNumber) == "A" ? good : bad) = entry.info;
    }
    // From now on the second camera's record names a producer that does this.
    std::string makeBad(const std::string& faults)
    {
        const std::string path = stage.addProducer("bad");
        KX_CameraLinkDeviceInfo& record = bad.special.cameraLink;
        std::snprintf(reinterpret_cast<char*>(record.producerId), sizeof record.producerId, "%s",
                      path.c_str());
        stage.setFaults(faults);
        const std::string sockets = getenv("CAMERA_EMULATOR_GENTL");
        setenv("CAMERA_EMULATOR_GENTL", (sockets + ",bad:" + (stage.folder() / "B.socket").string()).c_str(),
               1);
        return path;
    }

    GentlStage stage;
    KX_DeviceInfo good{};
    KX_DeviceInfo bad{};
};

// Opens, uses and closes a camera; the first failure.
KX_Status useCamera(const KX_DeviceInfo& info, std::string& error)
{
    Handle handle(info);
    KX_Status status = handle.open();
    uint8_t bytes[4] = {1, 2, 3, 4};
    if (status == KX_OK)
        status = KX_CC_WriteMemory(handle, bytes, 0x20000, 4);
    if (status == KX_OK)
        status = KX_CC_ReadMemory(handle, bytes, 0x20000, 4);
    error = handle.error();
    return status;
}

} // namespace

TEST_P(EveryFunction, thatCrashesOrHangsCostsItsOwnCamerasAndNothingElse)
{
    const auto& [wrong, kind] = GetParam();
    const std::string path = makeBad(std::string("bad:") + wrong.function + "=" + kind + wrong.besides);
    const auto began = std::chrono::steady_clock::now();
    std::string error;
    const KX_Status status = useCamera(bad, error);
    if (wrong.isNoticed) {
        EXPECT_EQ(status, kind == "hang" ? KX_E_NO_ANSWER : KX_E_CONNECTION_LOST) << error;
        EXPECT_THAT(error, AllOf(HasSubstr(path), HasSubstr((kind == "hang" ? " hung in " : " crashed in ") +
                                                            std::string(wrong.function) + " ")));
    } else {
        EXPECT_EQ(status, KX_OK) << error;
    }
    EXPECT_EQ(useCamera(good, error), KX_OK) << error;
    EXPECT_THAT(serials(), testing::Contains("A"));
    EXPECT_LT(std::chrono::steady_clock::now() - began, seconds(20));
}

namespace
{

const Wrong kWrongs[] = {
    {"GCInitLib", true},
    {"TLOpen", true},
    {"TLUpdateInterfaceList", true},
    {"TLGetNumInterfaces", true},
    {"TLGetInterfaceID", true},
    {"TLGetInterfaceInfo", true},
    {"TLOpenInterface", true},
    {"IFUpdateDeviceList", true},
    {"IFGetNumDevices", true},
    {"IFGetDeviceID", true},
    {"IFGetDeviceInfo", true},
    {"IFOpenDevice", true},
    {"DevGetPort", true},
    {"GCRegisterEvent", true},
    {"GCGetLastError", true, ",bad:DevGetPort=-1010"},
    {"GCGetNumPortURLs", true},
    {"GCGetPortURLInfo", true},
    {"GCGetPortURL", true, ",bad:GCGetNumPortURLs=-1003"},
    {"GCReadPort", true},
    {"GCWritePort", true},
    // Called when everything is over and the camera was used well, or never.
    {"EventKill"},
    {"GCUnregisterEvent"},
    {"DevClose"},
    {"IFClose"},
    {"TLClose"},
    {"GCCloseLib"},
    {"TLGetInfo"},
    {"GCGetPortInfo"},
    {"GCReadPortStacked"},
    {"EventGetDataInfo"},
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Producers, EveryFunction,
                         testing::Combine(testing::ValuesIn(kWrongs),
                                          testing::Values(std::string("crash"), std::string("hang"))),
                         [](const auto& one) {
                             return std::get<0>(one.param).function + ("_" + std::get<1>(one.param));
                         });

TEST(EventThread, thatCrashesOrHangsIsALossOrNothing)
{
    for (const char* kind : {"crash", "hang"}) {
        GentlStage stage;
        setenv("KX_GENTL_TIMEOUT", "600", 1);
        stage.setFaults(std::string("EventGetData=") + kind);
        stage.addProducer();
        stage.addCamera("A");
        Handle handle(list().at(0).info);
        const KX_Status opened = handle.open();
        Losses losses(handle);
        if (std::string(kind) == "crash") {
            EXPECT_TRUE(opened != KX_OK || losses.waitForOne(seconds(5)));
        } else {
            EXPECT_EQ(opened, KX_OK) << handle.error();
            uint8_t bytes[4];
            EXPECT_EQ(KX_CC_ReadMemory(handle, bytes, 0x20000, 4), KX_OK) << handle.error();
        }
        EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);
    }
}
