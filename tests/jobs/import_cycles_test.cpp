// How plain features are applied: passes, cycles, what counts, how values are compared and written.
#include "ImportFixture.h"

namespace
{

class ImportCycles : public ImportFixture
{
protected:
    // What an import of one feature does to the camera.
    QStringList appliedFeature(const QByteArray& type, const QByteArray& value)
    {
        importFeatures(plainFeature("F", type, value));
        return applied();
    }
    void failWrites(KX_Status status)
    {
        camera->clearRules();
        camera->addRule({"SetIntValueEx", status});
    }
};

const QByteArray kWriteF2 = plainFeature("F", "Integer", "2");

} // namespace

TEST_F(ImportCycles, EqualValuesEndAfterOneCycleWithoutAWrite)
{
    camera->setBool("B", true);
    camera->setEnumeration("E", 3, {3});
    camera->setInteger("I", -7);
    camera->setFloat("D", 25.5f);
    camera->setString("S", "text");
    camera->setWord(0x1000, 9);
    importFeatures(plainFeature("B", "Boolean", "1") + plainFeature("E", "Enumeration", "3") +
                   plainFeature("I", "Integer", "-7") + plainFeature("D", "Float", "25.500000") +
                   plainFeature("S", "StringReg", "text") +
                   registerFeature("R", {}, "4", registerEntry("0x1000", "150994944")));
    EXPECT_EQ(applied(), QStringList({"GetBoolValue B", "GetEnumValue E", "GetIntValueEx I",
                                      "GetFloatValue D", "GetStringValue S", "ReadMemory 4096 4"}));
    expectSilentEnd();
}

TEST_F(ImportCycles, PassesGoByTypeAndThenInTheFilesOrder)
{
    for (const char* name : {"I", "J", "K"})
        camera->setInteger(name, 1);
    camera->setBool("B", false);
    camera->setEnumeration("E", 1, {1, 2});
    camera->setFloat("D", 1);
    camera->setString("S", "a");
    importFeatures(registerFeature("R", {}, "4", registerEntry("0x1000", "0")) +
                   plainFeature("S", "StringReg", "b") + plainFeature("D", "Float", "2") +
                   plainFeature("J", "IntReg", "2") + plainFeature("I", "Integer", "2") +
                   plainFeature("E", "Enumeration", "2") + plainFeature("B", "Boolean", "1") +
                   plainFeature("K", "Integer", "2"));
    EXPECT_EQ(applied(),
              QStringList({"GetBoolValue B", "SetBoolValue B true", "GetEnumValue E", "SetEnumValue E 2",
                           "GetStringValue S", "SetStringValue S b", "GetFloatValue D", "SetFloatValue D 2",
                           "GetIntValueEx J", "SetIntValueEx J 2", "GetIntValueEx I", "SetIntValueEx I 2",
                           "GetIntValueEx K", "SetIntValueEx K 2", "ReadMemory 4096 4"}));
}

TEST_F(ImportCycles, TheElementsTagDoesNotMatterAndTheTypeDoes)
{
    camera->setInteger("F", 1);
    importFeatures("<Anything><Name>F</Name><Type>Integer</Type><Value>2</Value></Anything>"
                   "<RegValue><Name>F</Name><Type>Integer</Type><Value>3</Value></RegValue>");
    EXPECT_EQ(writes(), QStringList({"SetIntValueEx F 2", "SetIntValueEx F 3"}));
    for (const char* type : {"Command", "integer", "MaskedIntReg", "FloatReg", "String", "SwissKnife", ""}) {
        EXPECT_EQ(appliedFeature(type, "1"), QStringList()) << type;
        expectSilentEnd();
    }
}

TEST_F(ImportCycles, ABlockIsNoPlainFeatureWhateverItHolds)
{
    camera->setInteger("F", 1);
    importFeatures("<ComplexFeature name=\"UserSetSelector\"><Name>F</Name><Type>Integer</Type>"
                   "<Value>2</Value></ComplexFeature>");
    EXPECT_EQ(applied(), QStringList());
}

TEST_F(ImportCycles, LaterDuplicatesOfAChildWinAndOthersAreIgnored)
{
    camera->setInteger("F", 1);
    importFeatures(
        "<Feature><Value>1</Value><Name>G</Name><Type>Float</Type><Extra>9</Extra><Type>Integer</Type>"
        "<Name>F</Name><Value>2</Value><Streamable>Yes</Streamable></Feature>");
    EXPECT_EQ(applied(), QStringList({"GetIntValueEx F", "SetIntValueEx F 2"}));
}

// Names are looked at one by one as they come.
TEST_F(ImportCycles, ASkippedNameRejectsTheFeatureEvenWhenAnotherFollows)
{
    for (const char* name : {"DeviceUserID", "GevSCDA"}) {
        importFeatures(QByteArray("<Feature><Name>") + name +
                       "</Name><Name>F</Name><Type>Integer</Type><Value>2</Value></Feature>");
        EXPECT_EQ(applied(), QStringList()) << name;
        importFeatures(QByteArray("<Feature><Name>F</Name><Type>Integer</Type><Value>2</Value><Name>") +
                       name + "</Name></Feature>");
        EXPECT_EQ(applied(), QStringList()) << name;
    }
}

TEST_F(ImportCycles, EmptyPartsMeanNothingToDo)
{
    camera->setString("F", "a");
    importFeatures(plainFeature("", "Integer", "2") + plainFeature("F", "", "2") +
                   plainFeature("F", "StringReg", "") + "<Feature/>" + "<Feature><Name>F</Name></Feature>");
    EXPECT_EQ(applied(), QStringList());
    expectSilentEnd();
}

// No cycle checks what the first one has written.
TEST_F(ImportCycles, ASuccessfulWriteNeedsNoSecondCycle)
{
    camera->setInteger("F", 1);
    importFeatures(kWriteF2);
    EXPECT_EQ(applied(), QStringList({"GetIntValueEx F", "SetIntValueEx F 2"}));
    expectSilentEnd();
}

TEST_F(ImportCycles, AWriteWithoutEffectIsASuccessAllTheSame)
{
    camera->setInteger("F", 1);
    camera->afterSet("F", [](tests::ScriptedDevice& self) { self.setInteger("F", 1); });
    importFeatures(kWriteF2);
    EXPECT_EQ(writes().size(), 1);
    expectSilentEnd();
}

TEST_F(ImportCycles, AnEverFailingFeatureTakesElevenCyclesAndEndsWell)
{
    camera->setInteger("F", 1);
    failWrites(KX_E_NO_ANSWER);
    importFeatures(kWriteF2);
    EXPECT_EQ(count("GetIntValueEx F"), 11);
    EXPECT_EQ(count("SetIntValueEx F 2 -> 80000200"), 11);
    EXPECT_EQ(count(nodeFailure("F", "-7ffffe00")), 11);
    EXPECT_EQ(applied().size(), 33);
    expectSilentEnd(0);
}

// Tolerated ones are no failures, and still what they leave unwritten is pending.
TEST_F(ImportCycles, EveryFailedWriteTakesElevenCyclesWhateverItsStatus)
{
    camera->setInteger("F", 1);
    for (const KX_Status status : {KX_E_PARAMETER, KX_E_GC_GENERIC, KX_E_GC_ARGUMENT, KX_E_GC_RANGE,
                                   KX_E_GC_PROPERTY, KX_E_GC_RUNTIME, KX_E_GC_LOGICAL, KX_E_GC_ACCESS,
                                   KX_Status(0x80000107), KX_E_CALL_ORDER, KX_E_MEMORY, KX_Status(1)}) {
        failWrites(status);
        importFeatures(kWriteF2);
        EXPECT_EQ(writes().size(), 11) << status;
        expectSilentEnd(0);
    }
}

TEST_F(ImportCycles, CyclesEndWithTheFirstThatFailsNothing)
{
    camera->setInteger("F", 1);
    camera->setInteger("G", 1);
    camera->addRule({"SetIntValueEx", KX_E_GC_ACCESS, QByteArray("F"), std::nullopt, 1, 9});
    importFeatures(kWriteF2 + plainFeature("G", "Integer", "2"));
    EXPECT_EQ(count("GetIntValueEx F"), 10);
    EXPECT_EQ(count("GetIntValueEx G"), 10);
    EXPECT_EQ(count("SetIntValueEx G 2"), 1);
    EXPECT_EQ(camera->node("F").integer->current, 2);
    expectSilentEnd();
}

TEST_F(ImportCycles, OtherFeaturesAreAppliedBehindAFailedOne)
{
    camera->setInteger("G", 1);
    importFeatures(plainFeature("Missing", "Integer", "2") + plainFeature("G", "Integer", "2"));
    EXPECT_EQ(applied().mid(0, 5),
              QStringList({"GetIntValueEx Missing -> 80000103", "SetIntValueEx Missing 2 -> 80000103",
                           nodeFailure("Missing", "-7ffffefd"), "GetIntValueEx G", "SetIntValueEx G 2"}));
}

TEST_F(ImportCycles, FeaturesThatDependOnOthersSettleInLaterCycles)
{
    // Last in the file's order comes what has to be written first.
    camera->setInteger("Offset", 0, 0, 0);
    camera->setInteger("Width", 10, 1, 10);
    camera->setInteger("Binning", 2);
    camera->afterSet("Binning", [](tests::ScriptedDevice& self) { self.setInteger("Width", 10, 1, 20); });
    camera->afterSet("Width", [](tests::ScriptedDevice& self) { self.setInteger("Offset", 0, 0, 5); });
    importFeatures(plainFeature("Offset", "Integer", "5") + plainFeature("Width", "Integer", "20") +
                   plainFeature("Binning", "Integer", "1"));
    EXPECT_EQ(writes(),
              QStringList({"SetIntValueEx Offset 5 -> 80000102", "SetIntValueEx Width 20 -> 80000102",
                           "SetIntValueEx Binning 1", "SetIntValueEx Offset 5 -> 80000102",
                           "SetIntValueEx Width 20", "SetIntValueEx Offset 5"}));
    EXPECT_EQ(count("GetIntValueEx Binning"), 3);
    expectSilentEnd();
}

TEST_F(ImportCycles, AValueThatCannotBeReadIsWrittenAllTheSame)
{
    camera->setInteger("F", 2);
    camera->addRule({"GetIntValueEx", KX_E_NO_ANSWER, QByteArray("F")});
    importFeatures(kWriteF2);
    EXPECT_EQ(applied(), QStringList({"GetIntValueEx F -> 80000200", "SetIntValueEx F 2"}));
    expectSilentEnd(); // the write's status counts, not the reading's

    camera->setInteger("W", 1);
    camera->setAccessMode("W", KX_AM_WRITE_ONLY);
    importFeatures(plainFeature("W", "Integer", "1"));
    EXPECT_EQ(applied(), QStringList({"GetIntValueEx W -> 80000106", "SetIntValueEx W 1"}));
}

TEST_F(ImportCycles, AStringThatCannotBeReadIsLoggedAndWritten)
{
    camera->setString("F", "a");
    camera->addRule({"GetStringValue", KX_E_NO_ANSWER, QByteArray("F")});
    EXPECT_EQ(
        appliedFeature("StringReg", "a"),
        QStringList({"GetStringValue F -> 80000200", nodeFailure("F", "-7ffffe00"), "SetStringValue F a"}));
}

TEST_F(ImportCycles, AccessModesOfPlainFeaturesAreNotAsked)
{
    camera->setInteger("F", 1);
    camera->setAccessMode("F", KX_AM_READ_ONLY);
    importFeatures(kWriteF2);
    EXPECT_EQ(writes().size(), 11);
    EXPECT_TRUE(recorder.calls("GetNodeAccessMode").isEmpty());
}

TEST_F(ImportCycles, TextsAreComparedAndNotNumbers)
{
    for (const char* same : {"007", "+7", " 7", "0x7"}) {
        camera->setInteger("F", 7);
        EXPECT_EQ(appliedFeature("Integer", same).size(), 2) << same;
    }
    camera->setInteger("F", 7);
    EXPECT_EQ(appliedFeature("Integer", "7").size(), 1);

    camera->setFloat("F", 25);
    for (const char* same : {"25", "25.0", "25.0000000", "2.5e1"})
        EXPECT_EQ(appliedFeature("Float", same), QStringList({"GetFloatValue F", "SetFloatValue F 25"}));
    EXPECT_EQ(appliedFeature("Float", "25.000000"), QStringList({"GetFloatValue F"}));

    camera->setEnumeration("F", 3, {3});
    EXPECT_EQ(appliedFeature("Enumeration", "03"), QStringList({"GetEnumValue F", "SetEnumValue F 3"}));
}

TEST_F(ImportCycles, BooleansAreTrueFromOneUp)
{
    const QList<QPair<QByteArray, QString>> written = {
        {"2", "true"},     {"01", "true"},   {"0", "false"},         {"-1", "false"},
        {"true", "false"}, {"0x1", "false"}, {"2147483648", "false"}};
    for (const auto& [value, text] : written) {
        camera->setBool("F", true);
        EXPECT_EQ(appliedFeature("Boolean", value), QStringList({"GetBoolValue F", "SetBoolValue F " + text}))
            << value.constData();
    }
    camera->setBool("F", false);
    EXPECT_EQ(appliedFeature("Boolean", "1"), QStringList({"GetBoolValue F", "SetBoolValue F true"}));
    EXPECT_EQ(appliedFeature("Boolean", "1"), QStringList({"GetBoolValue F"}));
}

TEST_F(ImportCycles, EnumerationsAreWrittenAsTheirNumbers)
{
    camera->setEnumeration("F", 1, {0, 1, 0xFFFFFFFF});
    EXPECT_EQ(appliedFeature("Enumeration", "4294967295"),
              QStringList({"GetEnumValue F", "SetEnumValue F 4294967295"}));
    EXPECT_EQ(appliedFeature("Enumeration", "4294967295"), QStringList({"GetEnumValue F"}));
    EXPECT_EQ(appliedFeature("Enumeration", "Mono8"), QStringList({"GetEnumValue F", "SetEnumValue F 0"}));
}

// Not even the negative integers that an export writes come back.
TEST_F(ImportCycles, IntegersGoThrough32BitsWithoutASign)
{
    const QList<QPair<QByteArray, QString>> written = {{"-5", "0"},
                                                       {"0x10", "0"},
                                                       {"4294967296", "0"},
                                                       {"4294967295", "4294967295"},
                                                       {"2147483648", "2147483648"},
                                                       {"1.5", "0"},
                                                       {"12abc", "0"}};
    for (const char* type : {"Integer", "IntReg"}) {
        for (const auto& [value, text] : written) {
            camera->setInteger("F", 1);
            EXPECT_EQ(appliedFeature(type, value),
                      QStringList({"GetIntValueEx F", "SetIntValueEx F " + text}))
                << value.constData();
            expectSilentEnd();
        }
    }
    camera->setInteger("F", -5);
    EXPECT_EQ(appliedFeature("Integer", "-5"), QStringList({"GetIntValueEx F"}));
    camera->setInteger("F", 4294967296);
    EXPECT_EQ(appliedFeature("Integer", "4294967296"), QStringList({"GetIntValueEx F"}));
}

TEST_F(ImportCycles, FloatsThatAreNoNumberAreZero)
{
    camera->setFloat("F", 1);
    EXPECT_EQ(appliedFeature("Float", "1,5"), QStringList({"GetFloatValue F", "SetFloatValue F 0"}));
    EXPECT_EQ(appliedFeature("Float", "-0.125"), QStringList({"GetFloatValue F", "SetFloatValue F -0.125"}));
}

TEST_F(ImportCycles, StringsAreTakenAsTheyStand)
{
    camera->setString("F", "a");
    EXPECT_EQ(appliedFeature("StringReg", " a&amp;%1 "),
              QStringList({"GetStringValue F", "SetStringValue F  a&%1 "}));
    EXPECT_EQ(camera->node("F").text->current, std::string(" a&%1 "));
}

TEST_F(ImportCycles, NamesAreReadInLatin1AndWrittenInTheLocalEncoding)
{
    const QByteArray utf8 = "N\xC3\xA9";
    for (const char* type : {"Boolean", "Enumeration", "Integer", "Float", "StringReg"}) {
        importFeatures(plainFeature(utf8, type, "1"));
        const QByteArrayList names = callNames().mid(callNames().indexOf("DeviceFirmwareVersion") + 1);
        EXPECT_EQ(names.value(0), type == QByteArray("StringReg") ? utf8 : QByteArray("N\xE9")) << type;
        EXPECT_EQ(names.value(1), utf8) << type;
    }
}

TEST_F(ImportCycles, ACameraThatLeavesInTheSecondCycleIsAskedToTheEnd)
{
    camera->setInteger("F", 1, 1, 1);
    camera->setInteger("G", 1);
    int cycle = 0;
    tests::setCallHook([&](const QByteArray&, const tests::TraceEntry& call) {
        if (call.operation == "GetIntValueEx" && call.name == "F" && ++cycle == 2)
            camera->loseConnection();
    });
    importFeatures(kWriteF2 + plainFeature("G", "Integer", "2"));
    EXPECT_EQ(applied().mid(0, 9),
              QStringList({"GetIntValueEx F", "SetIntValueEx F 2 -> 80000102", nodeFailure("F", "-7ffffefe"),
                           "GetIntValueEx G", "SetIntValueEx G 2", "GetIntValueEx F -> 80000201",
                           "SetIntValueEx F 2 -> 80000201", nodeFailure("F", "-7ffffdff"),
                           "GetIntValueEx G -> 80000201"}));
    EXPECT_EQ(count("SetIntValueEx G 2 -> 80000201"), 10);
    expectSilentEnd(0);
    EXPECT_EQ(tests::livingHandles(), 0);
}

TEST_F(ImportCycles, TheCodeStaysUntilTheNextImport)
{
    importFeatures(registerFeature("R", {}, {}, {}));
    EXPECT_EQ(worker.ErrorCode(), 0xE0000005u);
    importPath("/nonexistent");
    EXPECT_EQ(worker.ErrorCode(), 0xE0000005u);
    importFeatures({});
    EXPECT_EQ(worker.ErrorCode(), 0u);
}

TEST_F(ImportCycles, CountersBeginAnewWithEachImport)
{
    camera->setInteger("F", 1);
    failWrites(KX_E_NO_ANSWER);
    for (int run = 0; run < 2; ++run) {
        importFeatures(kWriteF2);
        EXPECT_EQ(writes().size(), 11);
    }
}
