// The XML export as far as plain values carry it: order of its steps, the file's bytes, what stops it.
#include "JobFixture.h"

#if !defined(_WIN32)
#include "support/OrdinaryUser.h"
#endif

#include <SuiteTools/SuiteTools.h>

#include <QTextCodec>

namespace
{

class PlainExport : public JobFixture
{
protected:
    void SetUp() override
    {
        JobFixture::SetUp();
        camera->setString("DeviceFirmwareVersion", "V1");
    }

    // The lines that an export gives for these nodes, all of them listed.
    QByteArray exported(const QStringList& nodes)
    {
        describe(nodes);
        runExport();
        return features();
    }
};

QByteArray block(const QByteArray& name, const QByteArray& type, const QByteArray& value)
{
    return "<Feature>\r\n<Name>" + name + "</Name>\r\n<Type>" + type + "</Type>\r\n<Value>" + value +
           "</Value>\r\n<Streamable>Yes</Streamable>\r\n</Feature>\r\n";
}

const QStringList kSaveFailed = {"info 7 failed Failed to save feature."};

} // namespace

TEST_F(PlainExport, WritesTheWholeFileByteForByte)
{
    camera->setInteger("BoardDeviceType", -3);
    camera->setBool("Reverse", true);
    camera->setInteger("Width", 640);
    describe({"<Integer Name=\"Width\"/>", "<Boolean Name=\"Reverse\"/>"});
    runExport();
    EXPECT_EQ(fileBytes(), QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
                                      "<FeaturesFile version=\"7.8.9\">\r\n"
                                      "<DeviceFirmwareVersion>V1</DeviceFirmwareVersion>\r\n"
                                      "<DeviceModelName>Cam</DeviceModelName>\r\n"
                                      "<BoardDeviceType>-3</BoardDeviceType>\r\n"
                                      "<Features>\r\n") +
                               block("Reverse", "Boolean", "1") + block("Width", "Integer", "640") +
                               "</Features>\r\n</FeaturesFile>");
    EXPECT_TRUE(infos().isEmpty());
}

TEST_F(PlainExport, AsksInAFixedOrder)
{
    camera->setInteger("Width", 640);
    camera->setBool("Reverse", false);
    describe({"<Integer Name=\"Width\"/>", "<Boolean Name=\"Reverse\"/>"});
    runExport();
    EXPECT_EQ(trace(),
              QStringList({"begin 7 3", "CreateHandle S1", "OpenDevice 1 0", kFirstFetch,
                           "GetStringValue DeviceFirmwareVersion",
                           "GetIntValueEx BoardDeviceType -> 80000103", "GetBoolValue Reverse",
                           "GetIntValueEx Width", "CloseDevice", "DestroyHandle", "end 7 3 " + target()}));
}

TEST_F(PlainExport, LeavesTheBoardTypeLineOutWhenItCannotBeRead)
{
    for (const KX_Status status : {KX_E_GC_PROPERTY, KX_E_CONNECTION_LOST}) {
        failNode("BoardDeviceType", status);
        describe({});
        runExport();
        EXPECT_TRUE(fileBytes().contains("<DeviceModelName>Cam</DeviceModelName>\r\n<Features>\r\n"));
        EXPECT_TRUE(infos().isEmpty());
    }
}

TEST_F(PlainExport, TakesTheModelFromTheRecordAndNotFromTheCamera)
{
    camera->setString("DeviceModelName", "Other");
    describe({});
    runExport();
    EXPECT_TRUE(fileBytes().contains("<DeviceModelName>Cam</DeviceModelName>\r\n"));
    EXPECT_TRUE(trace().filter("GetStringValue DeviceModelName").isEmpty());

    StructDeviceInfo unknown = device;
    unknown.stDeviceInfo.transportType = 2;
    camera = &tests::scriptedDevice(""); // which is all that the record says of it
    camera->setString("DeviceFirmwareVersion", "V1");
    describe({});
    runExport(unknown);
    EXPECT_TRUE(fileBytes(folder.filePath("_.fpk")).contains("<DeviceModelName></DeviceModelName>\r\n"));
}

TEST_F(PlainExport, PrintsEachTypeInItsOwnWay)
{
    camera->setBool("B0", false);
    camera->setInteger("I", INT64_MIN);
    camera->setInteger("R", 9223372036854775807);
    camera->setEnumeration("E", 4294967295u, {4294967295u});
    camera->setFloat("F", 0.1f);
    camera->setString("S", "a<b&c \"d\"");
    EXPECT_EQ(exported({"<Boolean Name=\"B0\"/>", "<Enumeration Name=\"E\"/>", "<Float Name=\"F\"/>",
                        "<Integer Name=\"I\"><Representation>HexNumber</Representation></Integer>",
                        "<IntReg Name=\"R\"/>", "<StringReg Name=\"S\"/>"}),
              block("B0", "Boolean", "0") + block("E", "Enumeration", "4294967295") +
                  block("F", "Float", "0.100000") + block("I", "Integer", "-9223372036854775808") +
                  block("R", "IntReg", "9223372036854775807") + block("S", "StringReg", "a<b&c \"d\""));
}

TEST_F(PlainExport, IsStreamableWhateverTheNodeSays)
{
    camera->setInteger("W", 1);
    EXPECT_EQ(exported({"<Integer Name=\"W\"><Streamable>No</Streamable></Integer>"}),
              block("W", "Integer", "1"));
}

TEST_F(PlainExport, SortsByNameInUtf16OrderAndNotByCategory)
{
    for (const char* name : {"b", "B", "a", "A1", "A"})
        camera->setInteger(name, 1);
    EXPECT_EQ(exported({"<Integer Name=\"b\"/>", "<Integer Name=\"B\"/>", "<Integer Name=\"a\"/>",
                        "<Integer Name=\"A1\"/>", "<Integer Name=\"A\"/>"}),
              block("A", "Integer", "1") + block("A1", "Integer", "1") + block("B", "Integer", "1") +
                  block("a", "Integer", "1") + block("b", "Integer", "1"));
}

TEST_F(PlainExport, WritesAFeatureOnceHoweverOftenItIsListed)
{
    camera->setInteger("W", 1);
    camera->setDescription(
        "<R><Category Name=\"Root\"><pFeature>A</pFeature><pFeature>B</pFeature></Category>"
        "<Category Name=\"A\"><pFeature>W</pFeature><pFeature>W</pFeature></Category>"
        "<Category Name=\"B\"><pFeature>W</pFeature></Category><Integer Name=\"W\"/></R>");
    runExport();
    EXPECT_EQ(features(), block("W", "Integer", "1"));
}

TEST_F(PlainExport, SendsLatin1NamesExceptForStrings)
{
    const QString name = QString::fromUtf8("\xC3\xA9");
    describe({"<Integer Name=\"" + name + "\"/>"});
    runExport();
    EXPECT_EQ(callNames().last(), QByteArray("\xE9"));
    takeTrace();
    describe({"<StringReg Name=\"" + name + "\"/>"});
    runExport();
    EXPECT_EQ(callNames().last(), QByteArray("\xC3\xA9"));
}

TEST_F(PlainExport, WritesTheLocalEncodingWhateverTheDeclarationSays)
{
    camera->setString("S", "\xC3\xA9"); // the camera's bytes are UTF-8
    describe({"<StringReg Name=\"S\"/>"});
    QTextCodec* const codec = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    runExport();
    QTextCodec::setCodecForLocale(codec);
    EXPECT_EQ(features(), block("S", "StringReg", "\xE9"));
    EXPECT_TRUE(fileBytes().startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
}

TEST_F(PlainExport, NeverAsksForAnAccessMode)
{
    camera->setInteger("W", 1);
    exported({"<Integer Name=\"W\"><ImposedAccessMode>WO</ImposedAccessMode></Integer>"});
    EXPECT_TRUE(trace().filter("GetNodeAccessMode").isEmpty());
}

TEST_F(PlainExport, LeavesOutProtectedNamesAndCommands)
{
    QStringList nodes = {"<Command Name=\"Go\"/>", "<Integer Name=\"userSetDefault\"/>"};
    camera->setInteger("Go", 1);
    camera->setInteger("userSetDefault", 1);
    for (const char* name :
         {"UserSetDefault", "UserSetSelector", "DeviceSerialNumber", "DeviceUserID", "BoardDeviceType"}) {
        camera->setInteger(name, 1);
        nodes.append(QString("<Integer Name=\"%1\"/>").arg(name));
    }
    nodes.append("<StringReg Name=\"DeviceFirmwareVersion\"/>");
    EXPECT_EQ(exported(nodes), block("userSetDefault", "Integer", "1"));
    EXPECT_EQ(trace().filter("UserSet").size(), 0);
    EXPECT_TRUE(logs().isEmpty());
}

TEST_F(PlainExport, LeavesOutNodesThatNoCategoryLists)
{
    camera->setInteger("Listed", 1);
    camera->setInteger("Hidden", 1);
    camera->setDescription("<R><Category Name=\"Root\"><pFeature>A</pFeature></Category>"
                           "<Category Name=\"A\"><pFeature>Listed</pFeature></Category>"
                           "<Integer Name=\"Listed\"/><Integer Name=\"Hidden\"/></R>");
    runExport();
    EXPECT_EQ(features(), block("Listed", "Integer", "1"));
    EXPECT_TRUE(trace().filter("Hidden").isEmpty());
}

TEST_F(PlainExport, FirmwareThatCannotBeReadLeavesTheTargetAlone)
{
    writeTarget("old content");
    failNode("DeviceFirmwareVersion", KX_E_GC_PROPERTY);
    camera->setInteger("W", 1);
    describe({"<Integer Name=\"W\"/>"});
    runExport();
    EXPECT_EQ(logs(),
              QStringList({"log \"Operate Feature Failed; NodeName : DeviceFirmwareVersion;  ErrorCode : "
                           "-7ffffefd\"",
                           "log \"Get XML_NODE_FIRMWARE failed.\""}));
    EXPECT_EQ(infos(), kSaveFailed);
    EXPECT_TRUE(trace().filter("GetIntValueEx").isEmpty());
    EXPECT_EQ(fileBytes(), QByteArray("old content"));
}

TEST_F(PlainExport, AFailureOfTheLineStopsTheExport)
{
    camera->setInteger("A", 1);
    camera->setInteger("C", 1);
    for (const KX_Status status : {0x80000107u, 0x80000003u, 0x80000005u, 0x800000FFu, 0x80000201u, 1u}) {
        writeTarget("old content");
        failNode("B", status);
        describe({"<Integer Name=\"A\"/>", "<Integer Name=\"B\"/>", "<Integer Name=\"C\"/>"});
        runExport();
        EXPECT_EQ(infos(), kSaveFailed) << status;
        EXPECT_EQ(fileBytes(), QByteArray("old content"));
        EXPECT_TRUE(trace().filter("GetIntValueEx C").isEmpty());
        EXPECT_EQ(trace().mid(trace().size() - 3),
                  QStringList({"CloseDevice", "DestroyHandle", "end 7 3 " + target()}));
        takeTrace();
    }
}

TEST_F(PlainExport, WhatDoesNotApplyIsLeftOut)
{
    camera->setInteger("A", 1);
    camera->setInteger("C", 2);
    for (const KX_Status status : {0x80000004u, 0x80000100u, 0x80000101u, 0x80000102u, 0x80000103u,
                                   0x80000104u, 0x80000105u, 0x80000106u}) {
        failNode("B", status);
        EXPECT_EQ(exported({"<Integer Name=\"A\"/>", "<Integer Name=\"B\"/>", "<Integer Name=\"C\"/>"}),
                  block("A", "Integer", "1") + block("C", "Integer", "2"))
            << status;
        EXPECT_TRUE(infos().isEmpty());
    }
}

TEST_F(PlainExport, AToleratedStringFailureIsLogged)
{
    failNode("S", KX_E_GC_ACCESS);
    EXPECT_EQ(exported({"<StringReg Name=\"S\"/>"}), QByteArray());
    EXPECT_EQ(logs().value(0),
              QString("log \"Operate Feature Failed; NodeName : S;  ErrorCode : -7ffffefa\""));
    EXPECT_TRUE(infos().isEmpty());
}

TEST_F(PlainExport, AStringFailureOfTheLineStopsTheExport)
{
    failNode("S", KX_E_NO_ANSWER);
    describe({"<StringReg Name=\"S\"/>"});
    runExport();
    EXPECT_EQ(infos(), kSaveFailed);
    EXPECT_FALSE(QFile::exists(target()));
}

TEST_F(PlainExport, ABrokenDescriptionExportsTheModelOfTheLastRun)
{
    camera->setInteger("W", 1);
    exported({"<Integer Name=\"W\"/>"});
    camera->setInteger("W", 2);
    camera->setDescription("<broken>");
    runExport();
    EXPECT_EQ(features(), block("W", "Integer", "2"));
    EXPECT_TRUE(logs().contains("log Load xml failed."));
    EXPECT_TRUE(infos().isEmpty());
}

TEST_F(PlainExport, ABrokenDescriptionOnAFreshWorkerExportsNoFeature)
{
    camera->setDescription("<broken>");
    runExport();
    EXPECT_EQ(features(), QByteArray());
    EXPECT_TRUE(fileBytes().endsWith("<Features>\r\n</Features>\r\n</FeaturesFile>"));
    EXPECT_TRUE(infos().isEmpty());
}

TEST_F(PlainExport, ReplacesALongerFile)
{
    writeTarget(QByteArray(100000, 'x'));
    describe({});
    runExport();
    EXPECT_TRUE(fileBytes().endsWith("</FeaturesFile>"));
    EXPECT_LT(fileBytes().size(), 1000);
}

namespace
{
const QStringList kOpenFailed = {"info 7 failed Failed to export features.Failed to open File.",
                                 "info 7 failed Failed to save feature."};
}

TEST_F(PlainExport, AMissingFolderIsNotMade)
{
    describe({});
    const QString missing = folder.filePath("missing");
    worker.SetXmlExportJob(device, missing);
    run();
    EXPECT_EQ(infos(), kOpenFailed);
    EXPECT_FALSE(QFile::exists(missing));
    EXPECT_EQ(trace().mid(trace().size() - 3),
              QStringList({"CloseDevice", "DestroyHandle", "end 7 3 " + missing + "/Cam_S1.fpk"}));
}

TEST_F(PlainExport, ATargetThatIsAFolderCannotBeOpened)
{
    ASSERT_TRUE(QDir().mkdir(target()));
    describe({});
    runExport();
    EXPECT_EQ(infos(), kOpenFailed);
    EXPECT_TRUE(QFileInfo(target()).isDir());
}

#if !defined(_WIN32) // no device there is always full
TEST_F(PlainExport, AFullDiskLeavesNoFile)
{
    ASSERT_TRUE(QFile::link("/dev/full", target()));
    ASSERT_TRUE(QFile::setPermissions(folder.path(), QFile::Permissions(0x7777)));
    describe({});
    {
        const tests::OrdinaryUser user;
        runExport();
    }
    EXPECT_EQ(infos(), kOpenFailed);
    EXPECT_FALSE(QFileInfo(target()).isSymLink());
    EXPECT_TRUE(QFileInfo::exists("/dev/full") && !QFileInfo("/dev/full").isFile());
}
#endif

TEST_F(PlainExport, NamesThatLeadOutOfTheFolderAreNotOpened)
{
    ASSERT_TRUE(QDir().mkdir(folder.filePath("in")));
    for (const char* model : {"../Out", "/Out", "in/Out", "../in/../Out"}) {
        worker.SetXmlExportJob(gigeDevice(model, "S1", 7), folder.filePath("in"));
        describe({});
        run();
        EXPECT_EQ(infos(), kOpenFailed) << model;
        takeTrace();
    }
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList({"in"}));
    EXPECT_TRUE(QDir(folder.filePath("in")).isEmpty());
}

TEST_F(PlainExport, DotsAloneStayInTheFolder)
{
    describe({});
    runExport(gigeDevice("..", "S1", 7));
    EXPECT_TRUE(infos().isEmpty());
    EXPECT_TRUE(QFile::exists(folder.filePath(".._S1.fpk")));
}

TEST_F(PlainExport, TwoCamerasOfOneNameShareOneFile)
{
    describe({});
    runExport();
    camera->setString("DeviceFirmwareVersion", "V2");
    StructDeviceInfo second = device;
    second.nDeviceID = 8;
    runExport(second);
    EXPECT_TRUE(fileBytes().contains("<DeviceFirmwareVersion>V2<"));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList({"Cam_S1.fpk"}));
}

TEST_F(PlainExport, TheEndNamesTheWrittenFileWhateverTheEncodingIsThen)
{
    makeExportable();
    device = gigeDevice("C\xC3\xA4m", "S1", 7);
    VELAInterface::SetEncodingType(static_cast<VELAInterface::_ENCODING_TYPE_>(1));
    tests::suiteScript().onCall = [](const QString& call) {
        if (call == "softwareVersion()") // behind the file's name
            VELAInterface::SetEncodingType(static_cast<VELAInterface::_ENCODING_TYPE_>(3));
    };
    runExport();
    VELAInterface::SetEncodingType(static_cast<VELAInterface::_ENCODING_TYPE_>(0));
    const QString path = folder.path() + QString::fromUtf8("/C\xC3\xA4m_S1.fpk");
    EXPECT_EQ(trace().last(), "end 7 3 " + path);
    EXPECT_FALSE(fileBytes(path).isEmpty());

    // A job without a file of its own has the default name of its end.
    takeTrace();
    tests::suiteScript().onCall = nullptr;
    failCall("OpenDevice", KX_E_NO_ANSWER);
    VELAInterface::SetEncodingType(static_cast<VELAInterface::_ENCODING_TYPE_>(3));
    runExport();
    VELAInterface::SetEncodingType(static_cast<VELAInterface::_ENCODING_TYPE_>(0));
    EXPECT_EQ(trace().last(), "end 7 3 " + folder.path() + QString::fromUtf8("/C\xC3\x83\xC2\xA4m_S1.fpk"));
}

TEST_F(PlainExport, ReadsTheRecordsFieldsToTheirWidthAndTheSuitesEncoding)
{
    describe({});
    runExport();
    EXPECT_EQ(tests::suiteCalls("GetEncodeQStringFromUnChar").mid(0, 2),
              QStringList({"GetEncodeQStringFromUnChar(32)", "GetEncodeQStringFromUnChar(16)"}));
    for (const StructDeviceInfo& record : {usbDevice("Cam", "S1", 7), cameraLinkDevice("Cam", "S1", 7)}) {
        tests::resetSuiteTools();
        runExport(record);
        EXPECT_EQ(tests::suiteCalls("GetEncodeQStringFromUnChar").mid(0, 2),
                  QStringList({"GetEncodeQStringFromUnChar(64)", "GetEncodeQStringFromUnChar(64)"}));
    }
    VELAInterface::SetEncodingType(static_cast<VELAInterface::_ENCODING_TYPE_>(3)); // Latin-1
    runExport(gigeDevice("C\xE4m", "S1", 7));
    VELAInterface::SetEncodingType(static_cast<VELAInterface::_ENCODING_TYPE_>(0));
    EXPECT_TRUE(fileBytes(folder.path() + QString::fromUtf8("/C\xC3\xA4m_S1.fpk"))
                    .contains("<DeviceModelName>C\xC3\xA4m</DeviceModelName>"));
}
