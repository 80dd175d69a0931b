// Which features an export skips: filter files, the built-in list, nodes shown as addresses.
#include "JobFixture.h"

#include <QTextCodec>

namespace
{

const QStringList kBuiltIn = {"GevCurrentIPAddress",           "GevCurrentSubnetMask",
                              "GevCurrentDefaultGateway",      "LUTValueAll",
                              "GevPersistentIPAddress",        "GevPersistentSubnetMask",
                              "GevPersistentDefaultGateway",   "GevSCDA",
                              "GevCurrentIPConfigurationDHCP", "GevCurrentIPConfigurationPersistentIP",
                              "GevPAUSEFrameReception"};

class ExportFilter : public JobFixture
{
protected:
    void SetUp() override
    {
        JobFixture::SetUp();
        camera->setString("DeviceFirmwareVersion", "V1");
        ASSERT_TRUE(QDir(programData.path()).mkdir("Streamable"));
        tests::suiteScript().programDataPath = programData.path();
        QStringList nodes = {"<Integer Name=\"Other\"/>"};
        camera->setInteger("Other", 1);
        for (const QString& name : kBuiltIn) {
            nodes.append("<Integer Name=\"" + name + "\"/>");
            camera->setInteger(name.toLatin1(), 1);
        }
        describe(nodes);
    }

    void writeFilter(const QString& word, const QByteArray& text)
    {
        QFile file(programData.filePath("Streamable/" + word + ".filter"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    QStringList exportedNames(const StructDeviceInfo& record)
    {
        runExport(record);
        QStringList names;
        for (const QByteArray& line : features().split('\n'))
            if (line.startsWith("<Name>"))
                names.append(QString(line.mid(6, line.indexOf('<', 6) - 6)));
        return names;
    }
    QStringList exportedNames() { return exportedNames(device); }

    // All node names but these.
    static QStringList allBut(const QStringList& skipped)
    {
        QStringList names = kBuiltIn;
        names.append("Other");
        for (const QString& name : skipped)
            names.removeAll(name);
        names.sort();
        return names;
    }

    QTemporaryDir programData;
};

} // namespace

TEST_F(ExportFilter, WithoutAFileElevenNamesAreSkippedOnEveryTransport)
{
    EXPECT_EQ(exportedNames(), QStringList({"Other"}));
    EXPECT_EQ(exportedNames(usbDevice("Cam", "S1", 7)), QStringList({"Other"}));
    EXPECT_EQ(exportedNames(cameraLinkDevice("Cam", "S1", 7)), QStringList({"Other"}));
}

TEST_F(ExportFilter, AFileReplacesTheBuiltInList)
{
    writeFilter("GigE", "LUTValueAll");
    EXPECT_EQ(exportedNames(), allBut({"LUTValueAll"}));
}

TEST_F(ExportFilter, EachTransportHasItsOwnFile)
{
    writeFilter("GigE", "GevSCDA");
    writeFilter("U3V", "LUTValueAll");
    writeFilter("CL", "Other");
    EXPECT_EQ(exportedNames(), allBut({"GevSCDA"}));
    EXPECT_EQ(exportedNames(usbDevice("Cam", "S1", 7)), allBut({"LUTValueAll"}));
    EXPECT_EQ(exportedNames(cameraLinkDevice("Cam", "S1", 7)), allBut({"Other"}));
}

TEST_F(ExportFilter, AnotherTransportsFileLeavesTheBuiltInListInPlace)
{
    writeFilter("U3V", "Other");
    writeFilter("CXP", "Other");
    EXPECT_EQ(exportedNames(), QStringList({"Other"}));
    EXPECT_EQ(probe.filter.keys(), QStringList({"CXP", "U3V"}));
}

TEST_F(ExportFilter, NamesAreSplitAtCommasAndNotTrimmed)
{
    writeFilter("GigE", "GevSCDA,,LUTValueAll\n");
    EXPECT_EQ(exportedNames(), allBut({"GevSCDA"}));
    EXPECT_EQ(probe.filter.value("GigE"), QStringList({"GevSCDA", "", "LUTValueAll\n"}));
}

TEST_F(ExportFilter, BlanksBelongToNames)
{
    writeFilter("GigE", "GevSCDA, LUTValueAll,other");
    EXPECT_EQ(exportedNames(), allBut({"GevSCDA"}));
}

TEST_F(ExportFilter, AnEmptyFileSwitchesTheBuiltInListOff)
{
    writeFilter("GigE", "");
    EXPECT_EQ(exportedNames(), allBut({}));
    EXPECT_EQ(probe.filter.value("GigE"), QStringList({""}));
}

TEST_F(ExportFilter, FilesAreReadOnceForAWorkersLife)
{
    writeFilter("GigE", "LUTValueAll");
    EXPECT_EQ(exportedNames(), allBut({"LUTValueAll"}));
    writeFilter("GigE", "GevSCDA");
    EXPECT_EQ(exportedNames(), allBut({"LUTValueAll"}));
}

TEST_F(ExportFilter, WithoutAnyFileTheNextExportLooksAgain)
{
    EXPECT_EQ(exportedNames(), QStringList({"Other"}));
    EXPECT_TRUE(probe.filter.isEmpty());
    writeFilter("GigE", "LUTValueAll");
    EXPECT_EQ(exportedNames(), allBut({"LUTValueAll"}));
}

TEST_F(ExportFilter, MissingFilesAreNotMentioned)
{
    exportedNames();
    EXPECT_TRUE(logs().isEmpty());
    EXPECT_TRUE(infos().isEmpty());
}

TEST_F(ExportFilter, NodesShownAsAddressesAreSkippedEvenWithAFile)
{
    writeFilter("GigE", "");
    QStringList nodes;
    const auto node = [&](const QString& name, const QString& representation) {
        camera->setInteger(name.toLatin1(), 255);
        nodes.append("<Integer Name=\"" + name + "\"><Representation>" + representation +
                     "</Representation></Integer>");
    };
    node("Ip", "IPV4Address");
    node("Mac", "MACAddress");
    node("Hex", "HexNumber");
    node("Linear", "Linear");
    node("GevMACAddress", "HexNumber");
    describe(nodes);
    EXPECT_EQ(exportedNames(), QStringList({"Hex", "Linear"}));
}

TEST_F(ExportFilter, TheMacAddressIsExportedWhenItIsShownAsANumber)
{
    camera->setInteger("GevMACAddress", 255);
    describe({"<Integer Name=\"GevMACAddress\"><Representation>PureNumber</Representation></Integer>"});
    EXPECT_EQ(exportedNames(), QStringList({"GevMACAddress"}));
    describe({"<Integer Name=\"GevMACAddress\"/>"});
    EXPECT_EQ(exportedNames(), QStringList({"GevMACAddress"}));
}

TEST_F(ExportFilter, HexadecimalNodesFollowTheList)
{
    camera->setInteger("LUTValueAll", 1);
    describe({"<Integer Name=\"LUTValueAll\"><Representation>HexNumber</Representation></Integer>"});
    EXPECT_EQ(exportedNames(), QStringList());
}

TEST_F(ExportFilter, AnUnknownTransportHasTheBuiltInListWhateverFilesThereAre)
{
    StructDeviceInfo unknown = device;
    unknown.stDeviceInfo.transportType = 2;
    camera = &tests::scriptedDevice(""); // which is all that the record says of it
    camera->setString("DeviceFirmwareVersion", "V1");
    camera->setInteger("LUTValueAll", 1);
    camera->setInteger("Other", 1);
    describe({"<Integer Name=\"Other\"/>", "<Integer Name=\"LUTValueAll\"/>"});
    for (const char* word : {"CL", "CXP", "GigE", "U3V"})
        writeFilter(word, "Other");
    runExport(unknown);
    const QByteArray bytes = fileBytes(folder.filePath("_.fpk"));
    EXPECT_TRUE(bytes.contains("<Name>Other</Name>"));
    EXPECT_FALSE(bytes.contains("<Name>LUTValueAll</Name>"));
}

TEST_F(ExportFilter, FilesAreInTheLocalEncoding)
{
    const QString name = QString::fromUtf8("\xC3\xA9");
    camera->setInteger("\xE9", 1); // names are sent in Latin-1
    describe({"<Integer Name=\"" + name + "\"/>", "<Integer Name=\"Other\"/>"});
    writeFilter("GigE", "\xE9");
    QTextCodec* const codec = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    const QStringList names = exportedNames();
    QTextCodec::setCodecForLocale(codec);
    EXPECT_EQ(names, QStringList({"Other"}));
    EXPECT_EQ(probe.filter.value("GigE"), QStringList({name}));
}
