// An open camera "S1" by script, for what works over a handle alone.
#pragma once

#include "support/QtPrinting.h"
#include "support/Recorder.h"
#include "support/RecordingSuiteTools.h"
#include "support/ScriptedCamera.h"

#include <QByteArrayList>
#include <QRegularExpression>

#include <gtest/gtest.h>

class HandleFixture : public ::testing::Test
{
protected:
    HandleFixture()
    {
        tests::resetScriptedCamera();
        tests::resetSuiteTools();
        recorder.clear();
        camera = &tests::scriptedDevice("S1");
        const KX_DeviceInfo record = tests::deviceInfo(KX_TRANSPORT_USB3, "S1", "Cam");
        EXPECT_EQ(KX_CC_CreateHandle(&handle, &record), KX_OK);
        EXPECT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
        recorder.clear();
    }
    ~HandleFixture() override
    {
        KX_CC_CloseDevice(handle);
        KX_CC_DestroyHandle(handle);
        EXPECT_EQ(tests::cameraViolations(), QStringList());
    }

    QStringList trace() const { return recorder.texts(); }
    QStringList logs() const { return trace().filter(QRegularExpression("^log ")); }
    // Raw bytes of the node names of all calls.
    QByteArrayList callNames() const
    {
        QByteArrayList names;
        for (const tests::TraceEntry& call : recorder.calls())
            if (!call.name.isEmpty())
                names.append(call.name);
        return names;
    }
    // The node fails with that status from now on, and nothing else does.
    void failNode(const QByteArray& name, KX_Status status)
    {
        camera->clearRules();
        for (const char* operation : {"GetBoolValue", "GetEnumValue", "GetFloatValue", "GetIntValueEx",
                                      "GetStringValue", "SetBoolValue", "SetEnumValue", "SetFloatValue",
                                      "SetIntValueEx", "SetStringValue", "GetNodeAccessMode"})
            camera->addRule({operation, status, name});
    }

    QStringList takeTrace()
    {
        const QStringList texts = recorder.texts();
        recorder.clear();
        return texts;
    }

    tests::LogCapture logCapture;
    tests::Recorder& recorder = tests::Recorder::instance();
    tests::ScriptedDevice* camera = nullptr;
    KX_HANDLE handle = nullptr;
};
