// How a file proves that it belongs to the camera: order of the checks, their words and their codes.
#include "ImportFixture.h"

#include <QTranslator>

#include <cstring>

using ImportChecks = ImportFixture;

namespace
{

const QString kMismatch = "Failed to import features. Camera models mismatch.";
const QString kIncompatible = "Failed to import features. Possible version incompatibility.";
const QString kScanType = "GetEnumValue DeviceScanType";
const QString kFirmware = "GetStringValue DeviceFirmwareVersion";
const QByteArray kFirmwareLine = "<DeviceFirmwareVersion>V1</DeviceFirmwareVersion>";
const QByteArray kModelLine = "<DeviceModelName>Cam</DeviceModelName>";
const QByteArray kFeatures = "<Features></Features>";

QStringList refused(const QString& text)
{
    return {"log \"" + text + "\"", "info 7 failed " + text};
}

} // namespace

TEST_F(ImportChecks, AFittingFileIsImportedInSilence)
{
    importFeatures({});
    EXPECT_EQ(trace(), QStringList({"begin 7 2", "CreateHandle S1", "OpenDevice 1 0", kScanType, kFirmware,
                                    "CloseDevice", "DestroyHandle", "end 7 2 " + source() + "/Cam_S1.fpk"}));
    EXPECT_EQ(worker.ErrorCode(), 0u);
    EXPECT_EQ(probe.handle, nullptr);
}

TEST_F(ImportChecks, ACameraWithoutHandleIsReportedBeforeTheFileIsLookedAt)
{
    failCall("CreateHandle", KX_E_PARAMETER);
    importPath(folder.filePath("missing.fpk"));
    EXPECT_EQ(trace(), QStringList({"begin 7 2", "CreateHandle S1 -> 80000004", "log \"OpenDevice failed.\"",
                                    "info 7 failed Failed to import features.Failed to open device.",
                                    "end 7 2 " + folder.filePath("missing.fpk") + "/Cam_S1.fpk"}));
}

TEST_F(ImportChecks, ACameraThatDoesNotOpenIsReportedAndItsHandleDestroyed)
{
    failCall("OpenDevice", KX_E_CONTROL_REFUSED);
    probe.errorCode = 0xE0000005;
    import(fittingFile({}));
    EXPECT_EQ(trace(), QStringList({"begin 7 2", "CreateHandle S1", "OpenDevice 1 0 -> 80000202",
                                    "log \"OpenDevice failed.\"",
                                    "info 7 failed Failed to import features.Failed to open device.",
                                    "CloseDevice", "DestroyHandle", "end 7 2 " + source() + "/Cam_S1.fpk"}));
    EXPECT_EQ(worker.ErrorCode(), 0xE0000005u);
}

// The camera is opened first: a developer would look at the file before.
TEST_F(ImportChecks, AMissingFileIsFoundOutBehindTheOpenCamera)
{
    probe.errorCode = 0xE0000005;
    importPath(folder.filePath("missing.fpk"));
    EXPECT_EQ(trace(),
              QStringList({"begin 7 2", "CreateHandle S1", "OpenDevice 1 0", "log \"Open xml failed.\"",
                           "info 7 failed Failed to import features.Failed to open xml.", "CloseDevice",
                           "DestroyHandle", "end 7 2 " + folder.filePath("missing.fpk") + "/Cam_S1.fpk"}));
    EXPECT_EQ(worker.ErrorCode(), 0xE0000005u); // of the import before
}

TEST_F(ImportChecks, AnEmptyFileCannotBeOpened)
{
    import("");
    EXPECT_EQ(inside(), QStringList({"log \"Open xml failed.\"",
                                     "info 7 failed Failed to import features.Failed to open xml."}));
}

TEST_F(ImportChecks, ABrokenFileCannotBeLoaded)
{
    probe.errorCode = 0xE0000005;
    import("<FeaturesFile version=\"7.8.9\"><Features>");
    EXPECT_EQ(inside(), QStringList({"log \"Load xml failed.\"",
                                     "info 7 failed Failed to import features.Failed to load xml."}));
    EXPECT_EQ(worker.ErrorCode(), 0xE0000005u);
}

TEST_F(ImportChecks, AFileWithoutVersionIsRefusedBeforeAnythingElse)
{
    for (const char* root : {"<FeaturesFile>", "<FeaturesFile version=\"\">"}) {
        import(QByteArray(root) + "<BoardDeviceType>1</BoardDeviceType></FeaturesFile>");
        EXPECT_EQ(inside(), QStringList({kScanType}) + refused(kIncompatible)) << root;
        EXPECT_EQ(worker.ErrorCode(), 0xE0000003u);
    }
}

TEST_F(ImportChecks, AnotherVersionIsRememberedAndNotSaid)
{
    camera->setInteger("W", 1);
    for (const char* version : {"7.8.8", "7.8.9 ", "7.8.09"}) {
        camera->setInteger("W", 1);
        import(fittingFile(plainFeature("W", "Integer", "2"), version));
        EXPECT_EQ(camera->node("W").integer->current, 2) << version;
        EXPECT_TRUE(logs().isEmpty());
        expectSilentEnd(0xE0000003);
    }
    importFeatures({});
    expectSilentEnd(0);
}

TEST_F(ImportChecks, ALaterCheckTakesTheVersionsPlace)
{
    import(featuresFile(kFirmwareLine + "<DeviceModelName>Dog</DeviceModelName>" + kFeatures, "1"));
    EXPECT_EQ(inside(), QStringList({kScanType, kFirmware}) + refused(kMismatch));
    EXPECT_EQ(worker.ErrorCode(), 0xE0000004u);
}

TEST_F(ImportChecks, AnotherVersionAndABrokenBlockAreSaidToNobody)
{
    import(fittingFile(registerFeature("R", {}, {}, {}), "1"));
    EXPECT_EQ(applied(), QStringList({"log \"Import R failed. no value len\""}));
    expectSilentEnd(0xE0000005);
}

TEST_F(ImportChecks, TheBoardTypeIsComparedAsDecimalText)
{
    camera->setInteger("BoardDeviceType", -3);
    const auto fits = [this](const QByteArray& board) {
        import(featuresFile(board + kFirmwareLine + kModelLine + kFeatures));
        EXPECT_EQ(inside().mid(0, 2), QStringList({kScanType, "GetIntValueEx BoardDeviceType"}));
        return inside().size() == 3 && inside()[2] == kFirmware;
    };
    EXPECT_TRUE(fits("<BoardDeviceType>-3</BoardDeviceType>"));
    for (const char* other :
         {"<BoardDeviceType>-03</BoardDeviceType>", "<BoardDeviceType>3</BoardDeviceType>",
          "<BoardDeviceType></BoardDeviceType>", "<BoardDeviceType/>"}) {
        EXPECT_FALSE(fits(other)) << other;
        EXPECT_EQ(inside().mid(2), refused(kMismatch)) << other;
        EXPECT_EQ(worker.ErrorCode(), 0xE0000004u);
    }
}

TEST_F(ImportChecks, OnlyTheFirstBoardTypeCounts)
{
    camera->setInteger("BoardDeviceType", 5);
    import(featuresFile("<BoardDeviceType>5</BoardDeviceType><BoardDeviceType>6</BoardDeviceType>" +
                        kFirmwareLine + kModelLine + kFeatures));
    expectSilentEnd(0);
}

TEST_F(ImportChecks, ABoardTypeThatCannotBeReadIsAMismatch)
{
    import(featuresFile("<BoardDeviceType>0</BoardDeviceType>" + kFirmwareLine + kModelLine + kFeatures));
    EXPECT_EQ(inside(),
              QStringList({kScanType, "GetIntValueEx BoardDeviceType -> 80000103"}) + refused(kMismatch));
}

TEST_F(ImportChecks, UnreadableFirmwareIsSaidThrice)
{
    camera->addRule({"GetStringValue", KX_E_NO_ANSWER, QByteArray("DeviceFirmwareVersion")});
    import(fittingFile({}));
    EXPECT_EQ(inside(), QStringList({kScanType, kFirmware + " -> 80000200",
                                     nodeFailure("DeviceFirmwareVersion", "-7ffffe00"),
                                     "log \"Get XML_NODE_FIRMWARE failed.\""}) +
                            refused(kMismatch));
    EXPECT_EQ(worker.ErrorCode(), 0xE0000004u);
}

TEST_F(ImportChecks, FirmwareAndModelHaveToBeThereAndEqual)
{
    const QByteArrayList others = {
        kModelLine + kFeatures,
        "<DeviceFirmwareVersion>V1 </DeviceFirmwareVersion>" + kModelLine + kFeatures,
        "<DeviceFirmwareVersion>v1</DeviceFirmwareVersion>" + kModelLine + kFeatures,
        kFirmwareLine + kFeatures,
        kFirmwareLine + "<DeviceModelName>cam</DeviceModelName>" + kFeatures,
        kFirmwareLine + "<DeviceModelName/>" + kFeatures,
        "<Inner>" + kFirmwareLine + kModelLine + "</Inner>" + kFeatures,
    };
    for (const QByteArray& other : others) {
        import(featuresFile(other));
        EXPECT_EQ(inside(), QStringList({kScanType, kFirmware}) + refused(kMismatch)) << other.constData();
        EXPECT_EQ(worker.ErrorCode(), 0xE0000004u);
    }
}

TEST_F(ImportChecks, TheSerialNumberDoesNotMatter)
{
    import(featuresFile(kFirmwareLine + kModelLine + "<DeviceSerialNumber>other</DeviceSerialNumber>" +
                        kFeatures));
    expectSilentEnd(0);
}

TEST_F(ImportChecks, TheModelComesFromTheRecordsPartOfItsTransport)
{
    camera->setString("DeviceModelName", "Camera's own");
    for (const StructDeviceInfo& record :
         {gigeDevice("G", "S1", 7), usbDevice("G", "S1", 7), cameraLinkDevice("G", "S1", 7)}) {
        device = record;
        import(featuresFile(kFirmwareLine + "<DeviceModelName>G</DeviceModelName>" + kFeatures));
        EXPECT_EQ(worker.ErrorCode(), 0u) << record.stDeviceInfo.transportType;
        import(featuresFile(kFirmwareLine + kModelLine + kFeatures));
        EXPECT_EQ(worker.ErrorCode(), 0xE0000004u);
    }
}

TEST_F(ImportChecks, ARecordOfAnotherTransportHasAnEmptyModel)
{
    device = cameraLinkDevice("Cam", "S1", 7);
    device.stDeviceInfo.transportType = 16;
    import(fittingFile({}));
    EXPECT_EQ(worker.ErrorCode(), 0xE0000004u);
    import(featuresFile(kFirmwareLine + kFeatures));
    EXPECT_EQ(worker.ErrorCode(), 0xE0000004u);
    import(featuresFile(kFirmwareLine + "<DeviceModelName/>" + kFeatures));
    EXPECT_EQ(worker.ErrorCode(), 0u);
    EXPECT_TRUE(infos().isEmpty());
}

// Not by the common library's conversion, which the export uses.
TEST_F(ImportChecks, TheModelsBytesAreUtf8)
{
    device = gigeDevice("C\xC3\xA4m", "S1", 7);
    QStringList calls;
    tests::suiteScript().onCall = [&](const QString& call) { calls.append(call); };
    import(featuresFile(kFirmwareLine + "<DeviceModelName>C\xC3\xA4m</DeviceModelName>" + kFeatures));
    EXPECT_EQ(worker.ErrorCode(), 0u);
    EXPECT_EQ(calls, QStringList({"softwareVersion()", "char2QStringLocale(-1)",
                                  "GetEncodeQStringFromUnChar(-1)", "GetEncodeQStringFromUnChar(-1)"}));
}

TEST_F(ImportChecks, AFileWithoutFeaturesIsSaidToNobody)
{
    import(featuresFile(kFirmwareLine + kModelLine));
    EXPECT_EQ(inside(), QStringList({kScanType, kFirmware}));
    expectSilentEnd(0xE0000002);
    import(featuresFile(kFirmwareLine + kModelLine + "<features/>"));
    expectSilentEnd(0xE0000002);
}

TEST_F(ImportChecks, ABrokenBlockIsSaidToNobody)
{
    importFeatures(registerFeature("R", {}, "4", registerEntry("0x1000", "")));
    EXPECT_EQ(applied(), QStringList());
    expectSilentEnd(0xE0000005);
}

TEST_F(ImportChecks, OnlyTheFirstFeaturesElementIsApplied)
{
    camera->setInteger("A", 1);
    camera->setInteger("B", 1);
    import(featuresFile(kFirmwareLine + kModelLine + "<Features>" + plainFeature("A", "Integer", "2") +
                        "</Features><Features>" + plainFeature("B", "Integer", "2") + "</Features>"));
    EXPECT_EQ(applied(), QStringList({"GetIntValueEx A", "SetIntValueEx A 2"}));
}

TEST_F(ImportChecks, TheUsersTextsAreTranslatedAndTheLogIsNot)
{
    class Translator : public QTranslator
    {
    public:
        bool isEmpty() const override { return false; }
        QString translate(const char* context, const char* source, const char*, int) const override
        {
            return QString("%1: %2").arg(context, source);
        }
    } translator;
    QCoreApplication::installTranslator(&translator);
    QStringList said;
    failCall("OpenDevice", KX_E_NO_ANSWER);
    import(fittingFile({}));
    said += infos() + logs();
    camera->clearRules();
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray("<"), QByteArray("<R/>"), featuresFile(kFeatures)}) {
        import(bytes);
        said += infos() + logs();
    }
    QCoreApplication::removeTranslator(&translator);
    const QString begin = "info 7 failed QOperateThread: ";
    EXPECT_EQ(
        said,
        QStringList({begin + "Failed to import features.Failed to open device.", "log \"OpenDevice failed.\"",
                     begin + "Failed to import features.Failed to open xml.", "log \"Open xml failed.\"",
                     begin + "Failed to import features.Failed to load xml.", "log \"Load xml failed.\"",
                     begin + kIncompatible, "log \"" + kIncompatible + "\"", begin + kMismatch,
                     "log \"" + kMismatch + "\""}));
    for (const tests::TraceEntry& line : recorder.logs())
        EXPECT_EQ(line.level, QtCriticalMsg);
}

TEST_F(ImportChecks, TheCameraIsAskedOnTheWorkersThreadOnly)
{
    importFeatures(plainFeature("A", "Integer", "2"));
    std::set<std::thread::id> threads;
    for (const tests::TraceEntry& event : recorder.entries())
        threads.insert(event.thread);
    ASSERT_EQ(threads.size(), 1u);
    EXPECT_NE(*threads.begin(), std::this_thread::get_id());
}

namespace
{

const QByteArrayList kSkipped = {"LUTValueAll",
                                 "GevPAUSEFrameReception",
                                 "GevCurrentIPConfigurationPersistentIP",
                                 "GevCurrentIPConfigurationDHCP",
                                 "GevSCDA",
                                 "GevPersistentDefaultGateway",
                                 "GevPersistentSubnetMask",
                                 "GevPersistentIPAddress",
                                 "GevCurrentDefaultGateway",
                                 "GevCurrentSubnetMask",
                                 "GevCurrentIPAddress"};
const QByteArrayList kProtected = {"UserSetDefault", "UserSetSelector", "DeviceSerialNumber",
                                   "DeviceUserID",   "BoardDeviceType", "DeviceFirmwareVersion"};

QByteArray bothForms(const QByteArray& name)
{
    return plainFeature(name, "Integer", "2") +
           registerFeature(name, name, "4", registerEntry("0x1000", "5"));
}

} // namespace

TEST_F(ImportChecks, ProtectedAndSkippedNamesAreLeftAloneInBothForms)
{
    QByteArray features;
    for (const QByteArray& name : kProtected + kSkipped)
        features += bothForms(name);
    importFeatures(features);
    EXPECT_EQ(applied(), QStringList());
    expectSilentEnd(0);
}

TEST_F(ImportChecks, NamesAreComparedExactly)
{
    QByteArrayList names;
    for (const QByteArray& name : kProtected + kSkipped)
        names << name.toLower() << name + "s" << name + " " << name.mid(1);
    names << "GevMACAddress"
          << "LUTIndex"
          << "AcquisitionFrameRate"
          << "GevSCPSPacketSize";
    QByteArray features;
    for (const QByteArray& name : names) {
        camera->setInteger(name, 2);
        features += plainFeature(name, "Integer", "2");
    }
    importFeatures(features);
    EXPECT_EQ(applied().size(), names.size());
}

TEST_F(ImportChecks, TheExportsFilterFilesDoNotMatter)
{
    QTemporaryDir data;
    tests::suiteScript().programDataPath = data.path();
    probe.filter["GigE"] = QStringList({"W"});
    camera->setInteger("W", 1);
    importFeatures(plainFeature("W", "Integer", "2"));
    EXPECT_EQ(writes(), QStringList({"SetIntValueEx W 2"}));
    EXPECT_TRUE(tests::suiteCalls("programDataPath").isEmpty());
}

TEST_F(ImportChecks, LineRatesAreForLineScanCamerasOnly)
{
    const QByteArray rates = plainFeature("AcquisitionLineRateEnable", "Boolean", "1") +
                             plainFeature("AcquisitionLineRate", "Integer", "2");
    camera->setBool("AcquisitionLineRateEnable", false);
    camera->setInteger("AcquisitionLineRate", 1);
    for (const quint32 type : {0u, 2u}) {
        camera->setEnumeration("DeviceScanType", type, {0, 1, 2});
        importFeatures(rates);
        EXPECT_EQ(applied(), QStringList()) << type;
    }
    camera->setEnumeration("DeviceScanType", 1, {0, 1, 2});
    camera->addRule({"GetEnumValue", KX_E_NO_ANSWER, QByteArray("DeviceScanType")});
    importFeatures(rates);
    EXPECT_EQ(applied(), QStringList());
    camera->clearRules();
    importFeatures(rates);
    EXPECT_EQ(writes(), QStringList({"SetBoolValue AcquisitionLineRateEnable true",
                                     "SetIntValueEx AcquisitionLineRate 2"}));
    camera->setInteger("AcquisitionLineRate", 1);
    camera->setEnumeration("DeviceScanType", 0, {0, 1, 2}); // the list is made anew each time
    importFeatures(rates);
    EXPECT_EQ(applied(), QStringList());
}

namespace
{

QString shown(const QString& name, const QString& representation)
{
    return QString("<Integer Name=\"%1\"><Representation>%2</Representation></Integer>")
        .arg(name, representation);
}

} // namespace

// How a node is shown counts only when an earlier export of the same worker has left the nodes behind.
TEST_F(ImportChecks, NodesOfAnEarlierExportDecideToo)
{
    const QStringList names = {"Ip", "Mac", "Hex", "GevMACAddress", "GevSCDA", "Plain", "Linear"};
    QByteArray features;
    for (const QString& name : names) {
        camera->setInteger(name.toLatin1(), 2);
        features += plainFeature(name.toLatin1(), "Integer", "2");
    }
    importFeatures(features);
    EXPECT_EQ(applied(),
              QStringList({"GetIntValueEx Ip", "GetIntValueEx Mac", "GetIntValueEx Hex",
                           "GetIntValueEx GevMACAddress", "GetIntValueEx Plain", "GetIntValueEx Linear"}));
    EXPECT_TRUE(probe.nodes.isEmpty());
    EXPECT_TRUE(trace().filter("GetGenICamXML").isEmpty());

    describe({shown("Ip", "IPV4Address"), shown("Mac", "MACAddress"), shown("Hex", "HexNumber"),
              shown("GevMACAddress", "HexNumber"), shown("GevSCDA", "HexNumber"), "<Integer Name=\"Plain\"/>",
              shown("Linear", "Linear")});
    runExport();
    const int nodes = probe.nodes.size();
    importFeatures(features);
    EXPECT_EQ(applied(), QStringList({"GetIntValueEx Hex", "GetIntValueEx Plain", "GetIntValueEx Linear"}));
    EXPECT_EQ(probe.nodes.size(), nodes);
    EXPECT_TRUE(trace().filter("GetGenICamXML").isEmpty());
}
