// The scripted camera library keeps its word: what it records, answers and complains of.
#include "QtPrinting.h"
#include "ScriptedCamera.h"

#include <gtest/gtest.h>

#include <QDebug>

#include <cstring>
#include <thread>

using namespace tests;

namespace
{

class ScriptedCameraTest : public ::testing::Test
{
protected:
    ~ScriptedCameraTest() override { resetScriptedCamera(); }

    KX_HANDLE openCamera()
    {
        const KX_DeviceInfo info = deviceInfo(KX_TRANSPORT_USB3, "S1", "M");
        KX_HANDLE handle = nullptr;
        EXPECT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
        EXPECT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
        return handle;
    }
    static QStringList texts() { return Recorder::instance().texts(); }

    static ScriptedDevice& freshDevice()
    {
        resetScriptedCamera();
        Recorder::instance().clear();
        return scriptedDevice("S1");
    }

    ScriptedDevice& device = freshDevice();
};

TEST_F(ScriptedCameraTest, RecordsCallsLogsInOneSequence)
{
    LogCapture capture;
    KX_HANDLE handle = openCamera();
    qCritical() << QString("a");
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);
    EXPECT_EQ(livingHandles(), 1);
    EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
    EXPECT_EQ(livingHandles(), 0);
    EXPECT_EQ(texts(), QStringList({"CreateHandle S1", "OpenDevice 1 0", "log \"a\"", "CloseDevice",
                                    "DestroyHandle"}));
    EXPECT_EQ(Recorder::instance().calls("OpenDevice").at(0).handle, 1);
    EXPECT_TRUE(cameraViolations().isEmpty());
}

TEST_F(ScriptedCameraTest, ReportsNullAndDeadHandles)
{
    bool value = false;
    EXPECT_EQ(KX_CC_GetBoolValue(nullptr, "A", &value), KX_E_HANDLE);
    EXPECT_TRUE(cameraViolations().isEmpty());
    KX_HANDLE handle = openCamera();
    KX_CC_DestroyHandle(handle);
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_E_HANDLE);
    EXPECT_EQ(cameraViolations().size(), 1);
    EXPECT_EQ(Recorder::instance().calls("GetBoolValue").at(0).handle, 0);
    EXPECT_EQ(Recorder::instance().calls("CloseDevice").at(0).handle, -1);
}

TEST_F(ScriptedCameraTest, AnUnknownSerialNumberHasNoHandle)
{
    const KX_DeviceInfo info = deviceInfo(KX_TRANSPORT_GIGE, "nobody", "M");
    KX_HANDLE handle = nullptr;
    EXPECT_EQ(KX_CC_CreateHandle(&handle, &info), KX_E_NO_DEVICE);
    EXPECT_EQ(handle, nullptr);
}

TEST_F(ScriptedCameraTest, RulesCountTheirOwnCalls)
{
    KX_HANDLE handle = openCamera();
    device.setBool("A", true);
    device.setBool("B", true);
    device.addRule({"GetBoolValue", KX_E_BUSY, QByteArray("A"), std::nullopt, 2, 2});
    bool value = false;
    EXPECT_EQ(KX_CC_GetBoolValue(handle, "A", &value), KX_OK);
    EXPECT_EQ(KX_CC_GetBoolValue(handle, "B", &value), KX_OK);
    EXPECT_EQ(KX_CC_GetBoolValue(handle, "A", &value), KX_E_BUSY);
    EXPECT_EQ(KX_CC_GetBoolValue(handle, "A", &value), KX_OK);
    EXPECT_TRUE(cameraViolations().isEmpty());
    device.addRule({"GetBool"});
    EXPECT_EQ(cameraViolations(), QStringList({"a rule for an unknown operation: GetBool"}));
}

TEST_F(ScriptedCameraTest, MemoryIsSparseAndGuarded)
{
    KX_HANDLE handle = openCamera();
    device.setWord(0x100, 0x04030201);
    QByteArray buffer(6, 'x');
    EXPECT_EQ(KX_CC_ReadMemory(handle, buffer.data(), 0x101, 6), KX_OK);
    EXPECT_EQ(buffer, QByteArray("\x02\x03\x04\0\0\0", 6));
    device.rejectUnaligned();
    buffer.fill('x');
    EXPECT_EQ(KX_CC_ReadMemory(handle, buffer.data(), 0x101, 6), KX_E_GC_ACCESS);
    EXPECT_EQ(buffer, QByteArray(6, 'x'));
    device.makeUnreadable(0x104, 1);
    EXPECT_EQ(KX_CC_ReadMemory(handle, buffer.data(), 0x100, 4), KX_OK);
    EXPECT_EQ(KX_CC_ReadMemory(handle, buffer.data(), 0x100, 5), KX_E_GC_ACCESS);
    guardBuffer(buffer.constData(), 6);
    EXPECT_EQ(KX_CC_ReadMemory(handle, buffer.data() + 4, 0x200, 4), KX_E_PARAMETER);
    EXPECT_EQ(cameraViolations(), QStringList({"a read of 4 bytes goes beyond its buffer"}));
    device.makeUnwritable(0x300, 4);
    EXPECT_EQ(KX_CC_WriteMemory(handle, "abcd", 0x2FC, 4), KX_OK);
    EXPECT_EQ(KX_CC_WriteMemory(handle, "abcd", 0x300, 4), KX_E_GC_ACCESS);
    EXPECT_EQ(device.memory(0x2FC, 8), QByteArray("abcd\0\0\0\0", 8));
    EXPECT_EQ(texts().last(), QString("WriteMemory 768 4 61626364 -> 80000106"));
}

TEST_F(ScriptedCameraTest, OneNodeMayOpenAnother)
{
    KX_HANDLE handle = openCamera();
    device.setBool("A", false);
    device.setInteger("B", 1, 0, 10, 2);
    device.setAccessMode("B", KX_AM_READ_ONLY);
    device.afterSet("A", [](ScriptedDevice& camera) { camera.setAccessMode("B", KX_AM_READ_WRITE); });
    EXPECT_EQ(KX_CC_SetIntValueEx(handle, "B", 4), KX_E_GC_ACCESS);
    EXPECT_EQ(KX_CC_SetBoolValue(handle, "A", true), KX_OK);
    EXPECT_EQ(KX_CC_SetIntValueEx(handle, "B", 4), KX_OK);
    EXPECT_EQ(KX_CC_SetIntValueEx(handle, "B", 5), KX_E_GC_ARGUMENT);
    EXPECT_EQ(KX_CC_SetIntValueEx(handle, "B", 12), KX_E_GC_RANGE);
    EXPECT_EQ(KX_CC_SetFloatValue(handle, "B", 1), KX_E_GC_LOGICAL);
    EXPECT_EQ(KX_CC_SetIntValueEx(handle, "C", 1), KX_E_GC_PROPERTY);
    EXPECT_EQ(device.node("B").integer->current, 4);
}

TEST_F(ScriptedCameraTest, AStringRecordMustArriveZeroed)
{
    KX_HANDLE handle = openCamera();
    device.setString("T", "text");
    KX_StringValue record{};
    EXPECT_EQ(KX_CC_GetStringValue(handle, "T", &record), KX_OK);
    EXPECT_STREQ(record.current, "text");
    EXPECT_TRUE(cameraViolations().isEmpty());
    EXPECT_EQ(KX_CC_GetStringValue(handle, "T", &record), KX_OK);
    EXPECT_EQ(cameraViolations().size(), 1);
}

TEST_F(ScriptedCameraTest, TheDescriptionIsAnsweredByTheHeaderOrByScript)
{
    KX_HANDLE handle = openCamera();
    device.setDescription("<a/>");
    char buffer[8] = "";
    uint32_t length = 99;
    EXPECT_EQ(KX_XML_GetGenICamXML(handle, buffer, 4, &length), KX_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, 5u);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(KX_XML_GetGenICamXML(handle, buffer, 5, &length), KX_OK);
    EXPECT_STREQ(buffer, "<a/>");
    device.setDescriptionAnswers({{"12345678", std::nullopt, KX_OK}, {"", 0x300000, KX_E_DESCRIPTION}});
    length = 99;
    EXPECT_EQ(KX_XML_GetGenICamXML(handle, buffer, 8, &length), KX_OK);
    EXPECT_EQ(length, 99u);
    EXPECT_EQ(std::memcmp(buffer, "12345678", 8), 0);
    EXPECT_EQ(KX_XML_GetGenICamXML(handle, buffer, 8, &length), KX_E_DESCRIPTION);
    EXPECT_EQ(length, 0x300000u);
}

TEST_F(ScriptedCameraTest, AHookHoldsOneCameraWhileAnotherGoesOn)
{
    Gate gate;
    KX_HANDLE handle = openCamera();
    setCallHook([&gate](const QByteArray& serial, const TraceEntry& call) {
        if (serial == "S1" && call.operation == "CloseDevice")
            gate.pass();
    });
    std::thread held([handle] { KX_CC_CloseDevice(handle); });
    gate.waitForArrivals(1);
    EXPECT_EQ(texts().last(), QString("CloseDevice ..."));
    EXPECT_NE(Recorder::instance().calls("CloseDevice").at(0).thread, std::this_thread::get_id());
    scriptedDevice("S2");
    const KX_DeviceInfo other = deviceInfo(KX_TRANSPORT_GIGE, "S2", "M");
    KX_HANDLE second = nullptr;
    EXPECT_EQ(KX_CC_CreateHandle(&second, &other), KX_OK);
    gate.open();
    held.join();
    EXPECT_EQ(texts().mid(2), QStringList({"CloseDevice", "CreateHandle S2"}));
}

TEST_F(ScriptedCameraTest, ALostConnectionIsToldAndAnswersEveryCall)
{
    KX_HANDLE handle = openCamera();
    KX_Status told = KX_OK;
    KX_CC_SetConnectionLostHandler(
        handle, [](void* user, KX_Status status) { *static_cast<KX_Status*>(user) = status; }, &told);
    device.loseConnection();
    EXPECT_EQ(told, KX_E_CONNECTION_LOST);
    bool value = false;
    EXPECT_EQ(KX_CC_GetBoolValue(handle, "A", &value), KX_E_CONNECTION_LOST);
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);
}

TEST_F(ScriptedCameraTest, AnObserverMayRefuse)
{
    KX_HANDLE handle = openCamera();
    KX_CC_SetCallObserver(
        handle, [](void*, const KX_CallEvent* event) { return event->finished ? 0 : 1; }, nullptr);
    uint32_t word = 7;
    EXPECT_EQ(KX_CC_ReadMemory(handle, &word, 0, 4), KX_E_ABORTED);
    EXPECT_EQ(word, 7u);
    EXPECT_EQ(KX_CC_CloseDevice(handle), KX_OK);
}

TEST_F(ScriptedCameraTest, tellsWhatADescriptionWouldSay)
{
    const KX_HANDLE handle = openCamera();
    device.setInteger("Width", 1);
    bool writable = false;
    EXPECT_EQ(KX_CC_IsEverWritable(handle, "Width", &writable), KX_OK);
    EXPECT_TRUE(writable);
    device.setEverWritable("Width", false);
    EXPECT_EQ(KX_CC_IsEverWritable(handle, "Width", &writable), KX_OK);
    EXPECT_FALSE(writable);
    EXPECT_EQ(KX_CC_IsEverWritable(handle, "Nobody", &writable), KX_E_GC_PROPERTY);

    char text[20] = {};
    uint32_t length = 0;
    device.setRelatedNames("Width", KX_RELATED_LOCKS, "A\nB");
    EXPECT_EQ(KX_CC_GetRelatedNames(handle, "Width", KX_RELATED_LOCKS, text, sizeof text, &length), KX_OK);
    EXPECT_STREQ(text, "A\nB");
    EXPECT_EQ(KX_CC_GetRelatedNames(handle, "Width", KX_RELATED_PLACE, text, sizeof text, &length), KX_OK);
    EXPECT_STREQ(text, "");

    KX_RegisterCoverage coverage{};
    EXPECT_EQ(KX_CC_GetRegisterCoverage(handle, 0x100, 4, &coverage), KX_OK);
    EXPECT_EQ(coverage.unplacedWritable, 1u);
    device.addDescribedRegister("Reg", 0x100, 4, false);
    EXPECT_EQ(KX_CC_GetRegisterCoverage(handle, 0x102, 4, &coverage), KX_OK);
    EXPECT_EQ(coverage.registers, 1u);
    EXPECT_EQ(coverage.writable, 0u);
    EXPECT_EQ(coverage.unplaced, 0u);
    EXPECT_EQ(KX_CC_GetRegisterNames(handle, 0x102, 4, text, sizeof text, &length), KX_OK);
    EXPECT_STREQ(text, "Reg");
    EXPECT_EQ(KX_CC_GetRegisterCoverage(handle, 0x104, 4, &coverage), KX_OK);
    EXPECT_EQ(coverage.registers, 0u);
    EXPECT_TRUE(cameraViolations().isEmpty());
}

} // namespace
