// Plain value or registers: in which order the export tries them, and what a failure of either leads to.
#include "JobFixture.h"

namespace
{

// An IntReg "R" at 0x1000 that holds 7 as a camera on GigE Vision keeps it, and its two blocks.
const QString kRegister = "<IntReg Name=\"R\"><Address>0x1000</Address><Length>4</Length></IntReg>";
const QString kSelector = "<Integer Name=\"Sel\"><Value>0</Value><pSelected>R</pSelected></Integer>";
const QByteArray kRegisterBlock = "<ComplexFeature name=\"R\" len=\"4\" reg=\"R\">\r\n"
                                  "<RegValue address=\"4096\" variables=\"\">7</RegValue>\r\n"
                                  "</ComplexFeature>\r\n";
const QByteArray kPlainBlock = "<Feature>\r\n<Name>R</Name>\r\n<Type>IntReg</Type>\r\n<Value>5</Value>\r\n"
                               "<Streamable>Yes</Streamable>\r\n</Feature>\r\n";

class RegisterVisit : public JobFixture
{
protected:
    void SetUp() override
    {
        JobFixture::SetUp();
        makeExportable();
        camera->setInteger("R", 5);
        camera->setMemory(0x1000, QByteArray("\0\0\0\7", 4));
        describe({kRegister});
    }

    // "R" is selected from now on; the selector itself is not listed as "R" is, so it leaves no block.
    void selectRegister()
    {
        describe({kRegister, kSelector});
        camera->setAccessMode("Sel", KX_AM_NOT_AVAILABLE);
    }

    // What concerned "R" in the trace: its getter, reads of memory, log lines.
    QStringList attempts() const
    {
        return trace().filter(QRegularExpression("^GetIntValueEx R|^ReadMemory|^log .*R[ :\"]"));
    }
};

const QString kReadFailed = "log \"Create RegAddress  failed:R addr:4096 formula: variables:\"";

} // namespace

TEST_F(RegisterVisit, AnUnselectedFeatureIsReadAsAPlainValue)
{
    runExport();
    EXPECT_EQ(features(), kPlainBlock);
    EXPECT_EQ(attempts(), QStringList({"GetIntValueEx R"}));
}

TEST_F(RegisterVisit, AnUnselectedFeatureWithoutAPlainValueIsReadAsRegisters)
{
    failNode("R", KX_E_GC_ACCESS);
    runExport();
    EXPECT_EQ(features(), kRegisterBlock);
    EXPECT_EQ(attempts(), QStringList({"GetIntValueEx R -> 80000106", "ReadMemory 4096 4"}));
}

TEST_F(RegisterVisit, AFeatureThatFailsBothWaysIsLeftOut)
{
    failNode("R", KX_E_GC_ACCESS);
    camera->makeUnreadable(0x1000, 4);
    runExport();
    EXPECT_EQ(features(), QByteArray());
    EXPECT_EQ(attempts(),
              QStringList({"GetIntValueEx R -> 80000106", "ReadMemory 4096 4 -> 80000106", kReadFailed}));
    EXPECT_TRUE(infos().isEmpty());
}

TEST_F(RegisterVisit, ASelectedFeatureIsReadAsRegistersFirst)
{
    selectRegister();
    runExport();
    EXPECT_EQ(features(), kRegisterBlock);
    EXPECT_EQ(attempts(), QStringList({"ReadMemory 4096 4"}));
}

TEST_F(RegisterVisit, ASelectedFeatureFallsBackToItsPlainValue)
{
    selectRegister();
    camera->makeUnreadable(0x1000, 4);
    runExport();
    EXPECT_EQ(features(), kPlainBlock);
    EXPECT_EQ(attempts(), QStringList({"ReadMemory 4096 4 -> 80000106", kReadFailed, "GetIntValueEx R"}));
}

TEST_F(RegisterVisit, ASelectedFeatureThatFailsBothWaysIsTriedAsRegistersTwice)
{
    selectRegister();
    failNode("R", KX_E_GC_ACCESS);
    camera->makeUnreadable(0x1000, 4);
    runExport();
    EXPECT_EQ(features(), QByteArray());
    EXPECT_EQ(attempts(),
              QStringList({"ReadMemory 4096 4 -> 80000106", kReadFailed, "GetIntValueEx R -> 80000106",
                           "ReadMemory 4096 4 -> 80000106", kReadFailed}));
    EXPECT_TRUE(infos().isEmpty());
}

TEST_F(RegisterVisit, ASelectedFeaturesSecondAttemptMayServe)
{
    selectRegister();
    failNode("R", KX_E_GC_ACCESS);
    camera->addRule({"ReadMemory", KX_E_GC_ACCESS, std::nullopt, 0x1000, 1, 1});
    runExport();
    EXPECT_EQ(features(), kRegisterBlock);
}

TEST_F(RegisterVisit, AFailureOfTheLineInThePlainAttemptStopsTheExport)
{
    selectRegister();
    failNode("R", KX_E_CONNECTION_LOST);
    camera->makeUnreadable(0x1000, 4);
    runExport();
    EXPECT_EQ(infos(), QStringList({"info 7 failed Failed to save feature."}));
    EXPECT_EQ(attempts().filter("ReadMemory").size(), 1);
    EXPECT_FALSE(QFile::exists(target()));
}

TEST_F(RegisterVisit, ARegisterOfNoLengthIsLeftOutWithoutAWord)
{
    const QString empty = "<IntReg Name=\"R\"><Address>0x1000</Address><Length>0</Length></IntReg>";
    describe({empty, kSelector});
    camera->setAccessMode("Sel", KX_AM_NOT_AVAILABLE);
    runExport();
    EXPECT_EQ(features(), QByteArray());
    EXPECT_EQ(attempts(), QStringList()); // selected, yet its plain value is not read either
}

TEST_F(RegisterVisit, NodesOfOtherKindsGoStraightToTheirRegisters)
{
    camera->setInteger("C", 5);
    describe({"<IntConverter Name=\"C\"><pValue>Raw</pValue></IntConverter>"});
    runExport();
    EXPECT_TRUE(trace().filter("IntValueEx C").isEmpty());
    EXPECT_EQ(logs(), QStringList({"log \"Reg is empty failed:C\""}));
    EXPECT_TRUE(infos().isEmpty());
}

TEST_F(RegisterVisit, AListedSubCategoryHasNoRegister)
{
    describe({"<Category Name=\"Sub\"/>", kRegister});
    runExport();
    EXPECT_EQ(features(), kPlainBlock);
    EXPECT_EQ(logs(), QStringList({"log \"Reg is empty failed:Sub\""}));
}

TEST_F(RegisterVisit, ACommandIsNotEvenTried)
{
    describe({"<Command Name=\"Go\"/>"});
    runExport();
    EXPECT_TRUE(logs().isEmpty());
}

TEST_F(RegisterVisit, WhatEvaluationAddsBehindTheCurrentNodeIsVisitedToo)
{
    // Evaluating "E" enters its register once more as "E_", which the visit then meets under its own name.
    camera->setDescription("<R><Category Name=\"Root\"><pFeature>A</pFeature></Category>"
                           "<Category Name=\"A\"><pFeature>E</pFeature><pFeature>S</pFeature></Category>"
                           "<StructReg Name=\"S\"><Address>0x1000</Address><Length>4</Length>"
                           "<StructEntry Name=\"E\"><Bit>0</Bit></StructEntry></StructReg></R>");
    runExport();
    EXPECT_EQ(features().count("<ComplexFeature name=\"E\""), 1);
    EXPECT_EQ(features().count("<ComplexFeature name=\"S\""), 2);
}

// The transport's flag reaches the words of the block and those that addresses are made of.
TEST_F(RegisterVisit, OnlyGigEVisionsRegistersAreSwapped)
{
    describe({"<IntReg Name=\"R\"><pAddress>Where</pAddress><Length>4</Length></IntReg>",
              "<Integer Name=\"Where\"><pValue>At</pValue></Integer>",
              "<IntReg Name=\"At\"><Address>0x2000</Address><Length>4</Length></IntReg>"});
    failNode("R", KX_E_GC_ACCESS);
    camera->setInteger("Where", 1);
    camera->setInteger("At", 1);
    const auto lineOf = [this](const StructDeviceInfo& record) {
        runExport(record);
        for (const QByteArray& line : fileBytes().split('\n'))
            if (line.startsWith("<RegValue"))
                return line.trimmed();
        return QByteArray();
    };
    camera->setMemory(0x2000, QByteArray("\0\0\x10\0", 4));
    EXPECT_EQ(lineOf(device), QByteArray("<RegValue address=\"4096\" variables=\"\">7</RegValue>"));
    camera->setMemory(0x2000, QByteArray("\0\x10\0\0", 4));
    for (const StructDeviceInfo& record : {usbDevice("Cam", "S1", 7), cameraLinkDevice("Cam", "S1", 7)})
        EXPECT_EQ(lineOf(record),
                  QByteArray("<RegValue address=\"4096\" variables=\"\">117440512</RegValue>"));
}

TEST_F(RegisterVisit, WhatSelectorsStandForIsForgottenWithTheRun)
{
    const QString addressed = "<IntReg Name=\"R\"><Address>0x1000</Address><pAddress>Sel</pAddress>"
                              "<Length>4</Length></IntReg>";
    const QString constant = "<Integer Name=\"Sel\"><Value>0</Value></Integer>";
    failNode("R", KX_E_GC_ACCESS);
    camera->setInteger("Sel", 0, 0, 8, 4);
    describe({addressed, QString(constant).replace("</Integer>", "<pSelected>R</pSelected></Integer>")});
    runExport();
    EXPECT_EQ(features().count("<RegValue "), 3);
    describe({addressed, constant});
    runExport();
    EXPECT_EQ(features().count("<RegValue "), 1);
}

// "A" is left out as a command, so its selector does not stand for anything when "R" is read.
TEST_F(RegisterVisit, OnlyFeaturesThatStayAskForTheirSelectors)
{
    failNode("R", KX_E_GC_ACCESS);
    camera->setInteger("Sel", 0, 0, 8, 4);
    describe(
        {"<Command Name=\"A\"/>",
         "<IntReg Name=\"R\"><Address>0x1000</Address><pAddress>Sel</pAddress><Length>4</Length></IntReg>",
         "<Integer Name=\"Sel\"><Value>0</Value><pSelected>A</pSelected></Integer>"});
    runExport();
    EXPECT_EQ(features().count("<RegValue "), 1);
}

// "B" stands for all values of its selector because "A", which it selects, was visited before it.
TEST_F(RegisterVisit, SelectorsCountFromTheVisitOfTheirFeatureOn)
{
    const QString reg = "<IntReg Name=\"%1\"><Address>0x1000</Address><pAddress>Sel</pAddress>"
                        "<Length>4</Length></IntReg>";
    camera->setInteger("Sel", 0, 0, 8, 4);
    for (const auto& [selected, lines] : {std::pair{"M", 3 + 3}, {"Z", 1 + 3}}) {
        failNode("Q", KX_E_GC_ACCESS);
        describe({reg.arg(selected), reg.arg("Q"),
                  QString("<Integer Name=\"Sel\"><Value>0</Value><pSelected>%1</pSelected></Integer>")
                      .arg(selected)});
        runExport();
        EXPECT_EQ(features().count("<RegValue "), lines) << selected;
    }
}
