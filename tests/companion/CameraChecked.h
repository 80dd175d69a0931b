// A fixture for checks: one camera behind a library that answers from tables, and files of one line.
#pragma once

#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/check/CheckReport.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/JsonLine.h"
#include "support/QtPrinting.h"
#include "support/ScriptedCamera.h"

#include <QDomDocument>
#include <SuiteTools/SuiteTools.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tests
{

inline QString plain(const char* name, const char* type, const char* value)
{
    return QString("<Feature><Name>%1</Name><Type>%2</Type><Value>%3</Value></Feature>")
        .arg(name, type, value);
}

inline QString block(const QString& attributes, const QString& registers)
{
    return "<ComplexFeature name='Lut' " + attributes + ">" + registers + "</ComplexFeature>";
}

inline ie::FeaturesContent parsed(const QString& text)
{
    QDomDocument document;
    EXPECT_TRUE(document.setContent(text)) << text.toStdString();
    return ie::readFeatures(document.documentElement());
}

inline int exitCodeOf(const companion::CameraCheck& check)
{
    return companion::exitCodeOf(check.verdict);
}

class CameraChecked : public ::testing::Test
{
protected:
    CameraChecked()
    {
        resetScriptedCamera();
        device().setAccessMode("Root", KX_AM_READ_ONLY); // which every description has
        device().setString("DeviceFirmwareVersion", "V1");
        device().setEnumeration("DeviceScanType", 0, {0, 1});
        device().setInteger("BoardDeviceType", 7);
    }
    ~CameraChecked() override
    {
        EXPECT_EQ(cameraViolations(), QStringList());
        EXPECT_EQ(livingHandles(), 0);
    }

    static ScriptedDevice& device() { return scriptedDevice("S1"); }

    static companion::ListedCamera camera(uint32_t transport = KX_TRANSPORT_GIGE)
    {
        companion::ListedCamera camera;
        camera.device.stDeviceInfo = deviceInfo(transport, "S1", "M");
        camera.model = "M";
        camera.serial = "S1";
        return camera;
    }

    companion::CameraCheck check(const QString& features, companion::CheckMode mode,
                                 uint32_t transport = KX_TRANSPORT_GIGE)
    {
        const QString file = "<F version='" + VELAInterface::softwareVersion() + "'>" + header +
                             "<Features>" + features + "</Features></F>";
        return companion::checkCamera(camera(transport), parsed(file), mode, [] { return true; });
    }

    // What is told of the entries, and behind them the counts, which people are told first.
    std::string told(const QString& features, companion::CheckMode mode,
                     uint32_t transport = KX_TRANSPORT_GIGE)
    {
        const companion::CameraCheck done = check(features, mode, transport);
        EXPECT_LE(done.verdict, companion::CameraVerdict::Incomplete);
        const QStringList lines = companion::checkText({done}, companion::Detail::All).split('\n');
        QStringList entries = lines.mid(2 + int(done.identity.size()));
        entries.insert(entries.size() - 1, lines.value(1));
        return entries.join('\n').toStdString();
    }

    QString header = "<DeviceFirmwareVersion>V1</DeviceFirmwareVersion><DeviceModelName>M</DeviceModelName>";
};

} // namespace tests
