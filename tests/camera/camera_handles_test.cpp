// Handles, the order of calls, observers, texts of failures: what every function of the C header shares.
#include "camera/EveryNodeKind.h"

#include <atomic>
#include <condition_variable>
#include <set>
#include <thread>

namespace
{

KX_DeviceInfo anyDevice()
{
    KX_DeviceInfo info{};
    info.transportType = KX_TRANSPORT_GIGE;
    info.layout = KX_DEVICE_INFO_LAYOUT;
    return info;
}

std::string threadError()
{
    char text[500] = {};
    uint32_t length = 0;
    KX_CC_GetLastErrorText(nullptr, text, sizeof text, &length);
    return text;
}

// Every function that takes a handle, by its status.
std::map<std::string, KX_Status> callEverything(KX_HANDLE handle)
{
    bool flag = false;
    KX_EnumValue entry;
    KX_FloatValue real;
    KX_IntegerValue integer;
    KX_StringValue text;
    KX_XML_AccessMode mode;
    int64_t origin = 0;
    char bytes[8] = {};
    uint32_t length = 0;
    return {{"GetBool", KX_CC_GetBoolValue(handle, "Flag", &flag)},
            {"GetEnum", KX_CC_GetEnumValue(handle, "Mode", &entry)},
            {"GetFloat", KX_CC_GetFloatValue(handle, "Gain", &real)},
            {"GetInt", KX_CC_GetIntValueEx(handle, "Width", &integer)},
            {"GetIncrementOrigin", KX_CC_GetIntIncrementOrigin(handle, "Width", &origin)},
            {"GetString", KX_CC_GetStringValue(handle, "Text", &text)},
            {"SetBool", KX_CC_SetBoolValue(handle, "Flag", true)},
            {"SetEnum", KX_CC_SetEnumValue(handle, "Mode", 10)},
            {"SetFloat", KX_CC_SetFloatValue(handle, "Gain", 0.2F)},
            {"SetInt", KX_CC_SetIntValueEx(handle, "Width", 64)},
            {"SetString", KX_CC_SetStringValue(handle, "Text", "a")},
            {"Execute", KX_CC_ExecuteCommand(handle, "Start")},
            {"ReadMemory", KX_CC_ReadMemory(handle, bytes, 0x100, 4)},
            {"WriteMemory", KX_CC_WriteMemory(handle, bytes, 0x100, 4)},
            {"GetXml", KX_XML_GetGenICamXML(handle, bytes, sizeof bytes, &length)},
            {"GetEntryName", KX_CC_GetEnumEntryName(handle, "Mode", 10, bytes, sizeof bytes, &length)},
            {"GetAccessMode", KX_XML_GetNodeAccessMode(handle, "Width", &mode)},
            {"FeatureSave", KX_CC_FeatureSave(handle, "file")},
            {"FeatureLoad", KX_CC_FeatureLoad(handle, "file")}};
}

class Handles : public tests::EveryNodeKind
{
};

TEST_F(Handles, nullNeverOpenedAndDestroyedOnesAreRecognised)
{
    const KX_DeviceInfo info = anyDevice();
    KX_HANDLE fresh = nullptr;
    ASSERT_EQ(KX_CC_CreateHandle(&fresh, &info), KX_OK);
    EXPECT_NE(fresh, nullptr);
    for (const auto& [name, status] : callEverything(fresh))
        EXPECT_EQ(status, KX_E_HANDLE) << name;
    EXPECT_EQ(KX_CC_CloseDevice(fresh), KX_OK); // harmless
    EXPECT_EQ(KX_CC_DestroyHandle(fresh), KX_OK);
    const auto strange = reinterpret_cast<KX_HANDLE>(uintptr_t{0xDEADBEEF});
    for (const KX_HANDLE dead : {fresh, KX_HANDLE{nullptr}, strange}) {
        for (const auto& [name, status] : callEverything(dead))
            EXPECT_EQ(status, KX_E_HANDLE) << name;
        EXPECT_EQ(KX_CC_OpenDevice(dead, KX_ACCESS_EXCLUSIVE, 0), KX_E_HANDLE);
        EXPECT_EQ(KX_CC_CloseDevice(dead), KX_E_HANDLE);
        EXPECT_EQ(KX_CC_DestroyHandle(dead), KX_E_HANDLE);
        EXPECT_EQ(KX_CC_SetTimeout(dead, 100, 1), KX_E_HANDLE);
        EXPECT_EQ(KX_CC_SetConnectionLostHandler(dead, nullptr, nullptr), KX_E_HANDLE);
    }
    EXPECT_EQ(KX_CC_SetCallObserver(fresh, nullptr, nullptr), KX_E_HANDLE);
    EXPECT_EQ(threadError(), "The camera handle is null, destroyed or not open.");
    uint32_t length = 0;
    char text[8];
    EXPECT_EQ(KX_CC_GetLastErrorText(fresh, text, sizeof text, &length), KX_E_HANDLE);
}

TEST_F(Handles, areNeverUsedTwice)
{
    const KX_DeviceInfo info = anyDevice();
    std::set<KX_HANDLE> seen;
    for (int i = 0; i < 100; ++i) {
        KX_HANDLE handle = nullptr;
        ASSERT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
        EXPECT_TRUE(seen.insert(handle).second);
        ASSERT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
    }
}

// The record's second number was the MAC address' upper half, or the first letters of a name.
TEST_F(Handles, recordsOfOtherLayoutsAreRefused)
{
    for (const uint32_t second : {0u, 0x0000ABCDu, 0x2D554D45u, KX_DEVICE_INFO_LAYOUT - 1}) {
        KX_DeviceInfo old = anyDevice();
        old.layout = second;
        KX_HANDLE handle = nullptr;
        uint32_t availability = 7;
        KX_Controller controller{};
        EXPECT_EQ(KX_CC_CreateHandle(&handle, &old), KX_E_RECORD);
        EXPECT_EQ(threadError(), KX_CC_StatusText(KX_E_RECORD));
        EXPECT_EQ(handle, nullptr);
        EXPECT_EQ(KX_CC_IsDeviceAccessible(&old, &availability), KX_E_RECORD);
        EXPECT_EQ(availability, 7u);
        EXPECT_EQ(KX_CC_GetController(&old, &controller), KX_E_RECORD);
    }
}

TEST_F(Handles, openAndCloseInOrder)
{
    EXPECT_EQ(KX_CC_OpenDevice(camera.handle, KX_ACCESS_EXCLUSIVE, 0), KX_E_CALL_ORDER);
    EXPECT_EQ(KX_CC_CloseDevice(camera.handle), KX_OK);
    EXPECT_EQ(device().closed, 1u);
    EXPECT_EQ(KX_CC_CloseDevice(camera.handle), KX_OK);
    EXPECT_EQ(device().closed, 1u);
    EXPECT_EQ(statusOf("Width"), KX_E_HANDLE);
    EXPECT_EQ(KX_CC_OpenDevice(camera.handle, 2, 0), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_OpenDevice(camera.handle, KX_ACCESS_CONTROL, 0), KX_OK);
    EXPECT_EQ(value("Literal"), 42);
    EXPECT_EQ(device().opened, 2u);
}

TEST_F(Handles, aFailedOpenLeavesNothingConnected)
{
    ASSERT_EQ(KX_CC_CloseDevice(camera.handle), KX_OK);
    for (const KX_Status status : {KX_E_CONTROL_REFUSED, KX_E_NO_ANSWER, KX_E_NO_DEVICE, KX_E_NETWORK}) {
        device().openStatus = status;
        EXPECT_EQ(KX_CC_OpenDevice(camera.handle, KX_ACCESS_EXCLUSIVE, 0), status);
        EXPECT_EQ(camera.lastError(), "the fake line says no");
        EXPECT_EQ(statusOf("Width"), KX_E_HANDLE);
    }
    device().openStatus = KX_OK;
    device().failures = {{tests::FakeDevice::descriptionAddress, KX_E_NO_ANSWER}};
    EXPECT_EQ(KX_CC_OpenDevice(camera.handle, KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_ANSWER);
    EXPECT_EQ(device().opened, device().closed);
    EXPECT_EQ(statusOf("Width"), KX_E_HANDLE);
}

TEST_F(Handles, aDestroyedHandleIsClosedFirst)
{
    EXPECT_EQ(KX_CC_DestroyHandle(camera.handle), KX_OK);
    EXPECT_EQ(device().closed, 1u);
}

TEST_F(Handles, parametersAreChecked)
{
    const KX_DeviceInfo info = anyDevice();
    KX_HANDLE handle = nullptr;
    EXPECT_EQ(KX_CC_CreateHandle(nullptr, &info), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_CreateHandle(&handle, nullptr), KX_E_PARAMETER);
    EXPECT_EQ(handle, nullptr);
    bool flag;
    KX_IntegerValue integer;
    uint32_t word = 0;
    uint32_t length = 0;
    KX_XML_AccessMode mode;
    EXPECT_EQ(KX_CC_GetBoolValue(camera.handle, nullptr, &flag), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetBoolValue(camera.handle, "", &flag), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetBoolValue(camera.handle, "Flag", nullptr), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetIntValueEx(camera.handle, "", &integer), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_SetStringValue(camera.handle, "Text", nullptr), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_ExecuteCommand(camera.handle, nullptr), KX_E_PARAMETER);
    EXPECT_EQ(KX_XML_GetNodeAccessMode(camera.handle, "Width", nullptr), KX_E_PARAMETER);
    EXPECT_EQ(KX_XML_GetNodeAccessMode(camera.handle, "", &mode), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_ReadMemory(camera.handle, nullptr, 0, 4), KX_E_PARAMETER);
    for (const int64_t bad : {int64_t{0}, int64_t{-1}, int64_t{0x1000001}}) {
        EXPECT_EQ(KX_CC_ReadMemory(camera.handle, &word, 0, bad), KX_E_PARAMETER);
        EXPECT_EQ(KX_CC_WriteMemory(camera.handle, &word, 0, bad), KX_E_PARAMETER);
    }
    EXPECT_EQ(KX_XML_GetGenICamXML(camera.handle, nullptr, 4, &length), KX_E_PARAMETER);
    EXPECT_EQ(KX_XML_GetGenICamXML(camera.handle, &word, 4, nullptr), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_FeatureSave(camera.handle, nullptr), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_FeatureLoad(camera.handle, ""), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_EnumDevices(KX_TRANSPORT_ALL, nullptr, 1, &length), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_EnumDevices(KX_TRANSPORT_ALL, nullptr, 0, nullptr), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetSearchAddresses(nullptr, 1, &length), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetSearchAddresses(nullptr, 0, nullptr), KX_E_PARAMETER);
    KX_Controller controller{};
    EXPECT_EQ(KX_CC_GetController(nullptr, &controller), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetController(&info, nullptr), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_IsDeviceAccessible(nullptr, &length), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_IsDeviceAccessible(&info, nullptr), KX_E_PARAMETER);
    for (const auto& [milliseconds, tries] : {std::pair{9U, 3U}, {60001U, 3U}, {200U, 0U}, {200U, 21U}})
        EXPECT_EQ(KX_CC_SetTimeout(camera.handle, milliseconds, tries), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_SetTimeout(camera.handle, 60000, 20), KX_OK);
    EXPECT_EQ(device().timeouts.perTry.count(), 60000);
    EXPECT_EQ(device().timeouts.tries, 20u);
}

TEST_F(Handles, aTransportWithoutAPortIsNotSupported)
{
    kx::setPortFactory([](const KX_DeviceInfo&) { return nullptr; });
    const KX_DeviceInfo info = anyDevice();
    KX_HANDLE handle = nullptr;
    EXPECT_EQ(KX_CC_CreateHandle(&handle, &info), KX_E_NOT_SUPPORTED);
    EXPECT_EQ(handle, nullptr);
}

TEST_F(Handles, anExceptionBecomesAStatus)
{
    const KX_DeviceInfo info = anyDevice();
    KX_HANDLE handle = nullptr;
    kx::setPortFactory([](const KX_DeviceInfo&) -> std::unique_ptr<kx::Port> { throw std::bad_alloc(); });
    EXPECT_EQ(KX_CC_CreateHandle(&handle, &info), KX_E_MEMORY);
    kx::setPortFactory([](const KX_DeviceInfo&) -> std::unique_ptr<kx::Port> { throw 7; });
    EXPECT_EQ(KX_CC_CreateHandle(&handle, &info), KX_E_INTERNAL);
}

TEST_F(Handles, theDescriptionIsHandedOutWithItsTerminator)
{
    const std::string xml = tests::testData("every_node_kind.xml");
    std::vector<char> buffer(xml.size() + 1, '?');
    uint32_t length = 0;
    EXPECT_EQ(KX_XML_GetGenICamXML(camera.handle, buffer.data(), 10, &length), KX_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, xml.size() + 1);
    EXPECT_EQ(buffer[0], '?');
    EXPECT_EQ(KX_XML_GetGenICamXML(camera.handle, buffer.data(), length - 1, &length), KX_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(KX_XML_GetGenICamXML(camera.handle, buffer.data(), length, &length), KX_OK);
    EXPECT_TRUE(xml == buffer.data());
}

TEST_F(Handles, memoryGoesStraightToTheWire)
{
    device().set(0x100, {1, 2, 3, 4});
    unsigned char bytes[4] = {9, 9, 9, 9};
    EXPECT_EQ(KX_CC_ReadMemory(camera.handle, bytes, 0x100, 3), KX_OK);
    EXPECT_EQ(KX_CC_ReadMemory(camera.handle, bytes, 0x100, 3), KX_OK);
    EXPECT_EQ(bytes[2], 3);
    EXPECT_EQ(bytes[3], 9);
    EXPECT_EQ(takeRequests(), (std::vector<std::string>{"read 100 3", "read 100 3"}));
    device().failures = {{0x200, KX_E_GC_ACCESS}};
    EXPECT_EQ(KX_CC_ReadMemory(camera.handle, bytes, 0x1FE, 4), KX_E_GC_ACCESS);
    EXPECT_EQ(bytes[0], 1); // untouched by a failure
    EXPECT_EQ(camera.lastError(), "the fake line says no");
    EXPECT_EQ(KX_CC_WriteMemory(camera.handle, bytes, 0x200, 4), KX_E_GC_ACCESS);
}

TEST_F(Handles, featureFilesThatCannotBeOpenedSaySo)
{
    EXPECT_EQ(KX_CC_FeatureSave(camera.handle, "/nowhere/file"), KX_E_FILE);
    EXPECT_EQ(camera.lastError(),
              "The feature file /nowhere/file cannot be written: No such file or directory");
    EXPECT_EQ(KX_CC_FeatureLoad(camera.handle, "/nowhere/file"), KX_E_FILE);
    EXPECT_EQ(camera.lastError(),
              "The feature file /nowhere/file cannot be opened: No such file or directory");
    EXPECT_EQ(KX_CC_FeatureSave(camera.handle, nullptr), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_FeatureLoad(camera.handle, ""), KX_E_PARAMETER);
}

TEST_F(Handles, textsOfFailuresAreKeptPerHandleAndPerThread)
{
    statusOf("Nobody");
    EXPECT_EQ(camera.lastError(), "There is no feature \"Nobody\".");
    EXPECT_EQ(threadError(), "There is no feature \"Nobody\".");
    EXPECT_EQ(statusOf("Literal"), KX_OK); // a success says nothing
    EXPECT_EQ(camera.lastError(), "There is no feature \"Nobody\".");
    std::thread([] { EXPECT_EQ(threadError(), ""); }).join();
    char text[10] = "untouched";
    uint32_t length = 0;
    EXPECT_EQ(KX_CC_GetLastErrorText(camera.handle, text, 10, &length), KX_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, 29u);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(KX_CC_GetLastErrorText(camera.handle, nullptr, 0, &length), KX_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(KX_CC_GetLastErrorText(camera.handle, nullptr, 1, &length), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetLastErrorText(camera.handle, text, 1, nullptr), KX_E_PARAMETER);
}

TEST_F(Handles, aLostConnectionIsToldOnceAndEndsAllCalls)
{
    std::vector<KX_Status> told;
    const auto handler = [](void* user, KX_Status status) {
        static_cast<std::vector<KX_Status>*>(user)->push_back(status);
    };
    EXPECT_EQ(KX_CC_SetConnectionLostHandler(camera.handle, handler, &told), KX_OK);
    EXPECT_EQ(statusOf("Big4"), KX_OK);
    device().lostHandler(KX_E_NO_ANSWER);
    EXPECT_EQ(told, (std::vector<KX_Status>{KX_E_NO_ANSWER}));
    takeRequests();
    EXPECT_EQ(statusOf("Big4"), KX_E_CONNECTION_LOST);
    uint32_t word = 0;
    EXPECT_EQ(KX_CC_ReadMemory(camera.handle, &word, 0x100, 4), KX_E_CONNECTION_LOST);
    EXPECT_TRUE(takeRequests().empty());
    EXPECT_EQ(KX_CC_CloseDevice(camera.handle), KX_OK);
    EXPECT_EQ(KX_CC_OpenDevice(camera.handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    EXPECT_EQ(statusOf("Big4"), KX_OK);
    EXPECT_EQ(KX_CC_SetConnectionLostHandler(camera.handle, nullptr, nullptr), KX_OK);
    device().lostHandler(KX_E_NO_ANSWER);
    EXPECT_EQ(told.size(), 1u);
}

// ---- observers ----

struct Recorder
{
    std::vector<std::string> lines;
    unsigned refuseAfter = 1000000;

    static int observe(void* user, const KX_CallEvent* event)
    {
        auto& self = *static_cast<Recorder*>(user);
        char line[200];
        std::snprintf(line, sizeof line, "%u%s %s %llx+%lld %x", event->operation,
                      event->finished ? " done" : "", event->nodeName ? event->nodeName : "-",
                      static_cast<unsigned long long>(event->address), static_cast<long long>(event->length),
                      event->status);
        self.lines.emplace_back(line);
        EXPECT_EQ(event->device->transportType, static_cast<uint32_t>(KX_TRANSPORT_GIGE));
        EXPECT_NE(event->handle, nullptr);
        return !event->finished && self.lines.size() > self.refuseAfter;
    }
};

TEST_F(Handles, anObserverIsToldBeforeAndAfter)
{
    Recorder recorder;
    ASSERT_EQ(KX_CC_SetCallObserver(camera.handle, Recorder::observe, &recorder), KX_OK);
    uint32_t word = 0;
    statusOf("Literal");
    KX_CC_ReadMemory(camera.handle, &word, 0x100, 4);
    statusOf("Nobody");
    KX_CC_FeatureSave(camera.handle, "/nowhere/a.file");
    EXPECT_EQ(recorder.lines,
              (std::vector<std::string>{"13 Literal 0+0 0", "13 done Literal 0+0 0", "30 - 100+4 0",
                                        "30 done - 100+4 0", "13 Nobody 0+0 0", "13 done Nobody 0+0 80000103",
                                        "50 /nowhere/a.file 0+0 0", "50 done /nowhere/a.file 0+0 80000300"}));
    recorder.lines.clear();
    ASSERT_EQ(KX_CC_SetCallObserver(camera.handle, nullptr, nullptr), KX_OK);
    statusOf("Literal");
    EXPECT_TRUE(recorder.lines.empty());
}

TEST_F(Handles, anObserverIsToldTheValueOfACallThatWentWell)
{
    struct Values
    {
        std::vector<std::string> lines;
        static int observe(void* user, const KX_CallEvent* event)
        {
            auto& lines = static_cast<Values*>(user)->lines;
            if (!event->value)
                lines.push_back("none");
            else if (event->operation == KX_OP_GET_INT)
                lines.push_back(std::to_string(static_cast<const KX_IntegerValue*>(event->value)->current));
            else if (event->operation == KX_OP_READ_MEMORY)
                lines.push_back(std::to_string(*static_cast<const uint32_t*>(event->value)));
            return 0;
        }
    } values;
    KX_IntegerValue literal{};
    ASSERT_EQ(KX_CC_GetIntValueEx(camera.handle, "Literal", &literal), KX_OK);
    ASSERT_EQ(KX_CC_SetCallObserver(camera.handle, Values::observe, &values), KX_OK);
    uint32_t word = 0;
    statusOf("Literal");
    KX_CC_ReadMemory(camera.handle, &word, 0x100, 4);
    statusOf("Nobody");
    KX_CC_SetCallObserver(camera.handle, nullptr, nullptr);
    EXPECT_EQ(values.lines, (std::vector<std::string>{"none", std::to_string(literal.current), "none",
                                                      std::to_string(word), "none", "none"}));
}

TEST_F(Handles, anObserverMayRefuseEverythingButClosing)
{
    Recorder recorder;
    recorder.refuseAfter = 0;
    ASSERT_EQ(KX_CC_SetCallObserver(camera.handle, Recorder::observe, &recorder), KX_OK);
    for (const auto& [name, status] : callEverything(camera.handle))
        EXPECT_EQ(status, KX_E_ABORTED) << name;
    EXPECT_TRUE(takeRequests().empty());
    recorder.lines.clear();
    EXPECT_EQ(KX_CC_CloseDevice(camera.handle), KX_OK);
    EXPECT_EQ(KX_CC_OpenDevice(camera.handle, KX_ACCESS_EXCLUSIVE, 0), KX_E_ABORTED);
    EXPECT_EQ(recorder.lines, (std::vector<std::string>{"2 - 0+0 0", "2 done - 0+0 0", "1 - 0+0 0",
                                                        "1 done - 0+0 80000007"}));
    EXPECT_EQ(device().closed, 1u);
}

TEST_F(Handles, aDefaultObserverSeesHandlesThatComeLater)
{
    Recorder recorder;
    ASSERT_EQ(KX_CC_SetCallObserver(nullptr, Recorder::observe, &recorder), KX_OK);
    statusOf("Literal"); // its handle is older
    EXPECT_TRUE(recorder.lines.empty());
    const KX_DeviceInfo info = anyDevice();
    KX_HANDLE later = nullptr;
    ASSERT_EQ(KX_CC_CreateHandle(&later, &info), KX_OK);
    ASSERT_EQ(KX_CC_SetCallObserver(nullptr, nullptr, nullptr), KX_OK);
    ASSERT_EQ(KX_CC_OpenDevice(later, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    EXPECT_EQ(recorder.lines, (std::vector<std::string>{"1 - 0+0 0", "1 done - 0+0 0"}));
    KX_CC_DestroyHandle(later);
    KX_HANDLE afterwards = nullptr;
    ASSERT_EQ(KX_CC_CreateHandle(&afterwards, &info), KX_OK);
    recorder.lines.clear();
    KX_CC_OpenDevice(afterwards, KX_ACCESS_EXCLUSIVE, 0);
    EXPECT_TRUE(recorder.lines.empty());
    KX_CC_DestroyHandle(afterwards);
}

// ---- threads ----

TEST(HandleThreads, handlesLiveAndDieOnManyThreads)
{
    const std::string xml = tests::testData("every_node_kind.xml");
    std::atomic<unsigned> good{0};
    std::vector<std::unique_ptr<tests::FakeDevice>> devices(8);
    for (auto& device : devices) {
        device = std::make_unique<tests::FakeDevice>();
        device->offer(xml);
    }
    kx::setPortFactory([&](const KX_DeviceInfo& info) {
        return std::make_unique<tests::FakePort>(*devices[info.special.gige.ipAddress]);
    });
    std::vector<std::thread> threads;
    for (uint32_t i = 0; i < devices.size(); ++i) {
        threads.emplace_back([&good, i] {
            KX_DeviceInfo info = anyDevice();
            info.special.gige.ipAddress = i;
            for (int round = 0; round < 5; ++round) {
                KX_HANDLE handle = nullptr;
                KX_IntegerValue value{};
                if (KX_CC_CreateHandle(&handle, &info) == KX_OK && KX_CC_OpenDevice(handle, 1, 0) == KX_OK &&
                    KX_CC_SetIntValueEx(handle, "Big4", i + 1) == KX_OK &&
                    KX_CC_GetIntValueEx(handle, "Big4", &value) == KX_OK && value.current == i + 1 &&
                    KX_CC_GetIntValueEx(handle, "Unguarded", &value) == KX_OK &&
                    value.current == 100 / (i + 1) && KX_CC_DestroyHandle(handle) == KX_OK)
                    ++good;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    kx::setPortFactory(nullptr);
    EXPECT_EQ(good, 40u);
}

TEST(HandleThreads, aHandleMayBeDestroyedWhileOthersUseIt)
{
    for (int round = 0; round < 10; ++round) {
        tests::FakeCamera camera(tests::testData("every_node_kind.xml"));
        std::atomic<unsigned> running{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([&] {
                KX_IntegerValue value{};
                KX_Status status = KX_CC_GetIntValueEx(camera.handle, "Width", &value);
                ++running;
                while (status == KX_OK)
                    status = KX_CC_GetIntValueEx(camera.handle, "Width", &value);
                EXPECT_EQ(status, KX_E_HANDLE);
            });
        }
        while (running < 3)
            std::this_thread::yield();
        EXPECT_EQ(KX_CC_DestroyHandle(camera.handle), KX_OK);
        for (std::thread& thread : threads)
            thread.join();
    }
}

// ---- texts ----

TEST(StatusText, everyStatusHasASentenceOfItsOwn)
{
    std::set<std::string> seen;
    const KX_Status all[] = {
        KX_OK,           KX_E_HANDLE,      KX_E_NOT_SUPPORTED,    KX_E_BUFFER_TOO_SMALL, KX_E_CALL_ORDER,
        KX_E_PARAMETER,  KX_E_MEMORY,      KX_E_INTERNAL,         KX_E_ABORTED,          KX_E_RECORD,
        KX_E_GC_GENERIC, KX_E_GC_ARGUMENT, KX_E_GC_RANGE,         KX_E_GC_PROPERTY,      KX_E_GC_RUNTIME,
        KX_E_GC_LOGICAL, KX_E_GC_ACCESS,   KX_E_NO_ANSWER,        KX_E_CONNECTION_LOST,  KX_E_CONTROL_REFUSED,
        KX_E_BUSY,       KX_E_NETWORK,     KX_E_MALFORMED_ANSWER, KX_E_DEVICE,           KX_E_NO_DEVICE,
        KX_E_FILE,       KX_E_FILE_FORMAT, KX_E_DESCRIPTION,      KX_E_INCOMPLETE};
    for (const KX_Status status : all) {
        const std::string text = KX_CC_StatusText(status);
        EXPECT_TRUE(seen.insert(text).second) << text;
        EXPECT_EQ(text.back(), '.') << text;
    }
    EXPECT_STREQ(KX_CC_StatusText(12345), "An unknown status.");
    EXPECT_EQ(KX_CC_GetSDKVersion(), 0x01000000u);
}

} // namespace
