// Registers behind nodes, and the addresses of registers.
#include "EvaluatorFixture.h"

#include <QElapsedTimer>

namespace
{

using RegisterOf = EvaluatorFixture;
using RegisterAddress = EvaluatorFixture;

// A SwissKnife "Offset" = SEL*4 over the values 0..3 of the selector "Sel", which its value node "N" stands
// for.
const QString kSelected = "<Integer Name=\"Sel\"><pValue>N</pValue><pSelected>F</pSelected></Integer>"
                          "<Integer Name=\"N\"><Value>0</Value></Integer>"
                          "<IntSwissKnife Name=\"Offset\"><pVariable Name=\"SEL\">N</pVariable>"
                          "<Formula>SEL*4</Formula></IntSwissKnife>";

} // namespace

TEST(NumberTexts, AreHexadecimalDigitsAsAWhole)
{
    for (const char* text : {"0", "10", "0x10", "0xabCDef", "FF", "ABC", "face", "00"})
        EXPECT_TRUE(RegisterEvaluator::isNumber(text)) << text;
    for (const char* text :
         {"", "0x", "0X10", "-1", "+1", " 10", "10 ", "10\n", "1.5", "G", "1_0", "x10", "0x0x1"})
        EXPECT_FALSE(RegisterEvaluator::isNumber(text)) << text;
    EXPECT_FALSE(RegisterEvaluator::isNumber(QString::fromUtf8("\xD9\xA1"))); // a digit, but no ASCII one
}

TEST_F(RegisterOf, ARegisterIsItsOwn)
{
    for (const QString tag : {"Register", "IntReg", "MaskedIntReg", "StructReg", "StringReg"}) {
        describe(QString("<%1 Name=\"A\"><pValue>B</pValue></%1><IntReg Name=\"B\"/>").arg(tag));
        QString converter;
        EXPECT_EQ(registerOf("A", &converter), QString("A")) << tag.toStdString();
        EXPECT_EQ(converter, QString("-"));
    }
}

TEST_F(RegisterOf, FollowsTheFirstLinkToARegister)
{
    describe("<Integer Name=\"A\"><Value>1</Value><pValue>B</pValue><pValue>Other</pValue></Integer>"
             "<Integer Name=\"B\"><pValue>R</pValue></Integer>"
             "<MaskedIntReg Name=\"R\"/><IntReg Name=\"Other\"/>");
    EXPECT_EQ(registerOf("A"), QString("R"));
}

TEST_F(RegisterOf, NoLinkLeadsNowhere)
{
    describe("<Integer Name=\"A\"><Value>1</Value></Integer><Integer Name=\"B\"><pValue>A</pValue></Integer>"
             "<FloatReg Name=\"F\"/><Float Name=\"G\"><pValue>F</pValue></Float>");
    for (const char* name : {"A", "B", "F", "G"})
        EXPECT_EQ(registerOf(name), QString("-")) << name;
    EXPECT_EQ(takeLogs(), QStringList());
}

// A plain Register behind a link is not taken; it has no link of its own to follow, but is met as a node.
TEST_F(RegisterOf, APlainRegisterBehindALinkIsTakenAsANode)
{
    describe("<Integer Name=\"A\"><pValue>R</pValue></Integer><Register Name=\"R\"/>");
    EXPECT_EQ(registerOf("A"), QString("R"));
}

TEST_F(RegisterOf, TheLastConverterOnTheWayIsRemembered)
{
    describe("<IntConverter Name=\"A\"><pValue>B</pValue></IntConverter>"
             "<Converter Name=\"B\"><pValue>C</pValue></Converter>"
             "<Integer Name=\"C\"><pValue>R</pValue></Integer><IntReg Name=\"R\"/>");
    QString converter;
    EXPECT_EQ(registerOf("A", &converter), QString("R"));
    EXPECT_EQ(converter, QString("B"));
    EXPECT_EQ(registerOf("C", &converter), QString("R"));
    EXPECT_EQ(converter, QString("-"));
}

TEST_F(RegisterOf, SwissKnivesAreNoConverters)
{
    describe("<SwissKnife Name=\"A\"><pVariable Name=\"X\">R</pVariable><Formula>X</Formula></SwissKnife>"
             "<IntSwissKnife Name=\"B\"><pValue>R</pValue></IntSwissKnife><IntReg Name=\"R\"/>");
    QString converter;
    EXPECT_EQ(registerOf("A", &converter), QString("-"));
    EXPECT_EQ(converter, QString("-"));
    EXPECT_EQ(registerOf("B", &converter), QString("R"));
    EXPECT_EQ(converter, QString("-"));
}

TEST_F(RegisterOf, AnUnknownLinkIsEnteredIntoTheMap)
{
    describe("<Integer Name=\"A\"><pValue>Missing</pValue></Integer>");
    EXPECT_FALSE(nodes.contains("Missing"));
    EXPECT_EQ(registerOf("A"), QString("-"));
    ASSERT_TRUE(nodes.contains("Missing"));
    EXPECT_TRUE(nodes["Missing"].isNull());
}

TEST_F(RegisterOf, AStructEntrysRegisterIsItsOwnerKeptUnderAnotherName)
{
    describe("<StructReg Name=\"S\"><StructEntry Name=\"E\"><Bit>1</Bit></StructEntry></StructReg>"
             "<Integer Name=\"A\"><pValue>E</pValue></Integer>");
    EXPECT_EQ(registerOf("E"), QString("S"));
    ASSERT_TRUE(nodes.contains("E_"));
    EXPECT_EQ(nodes["E_"].tagName(), QString("StructReg"));
    const QDomElement node = nodes.value("A");
    QDomElement* converter = nullptr;
    EXPECT_EQ(evaluator->getRegNode(node, &converter), &nodes["E_"]); // a pointer into the map itself
    startRun();
    EXPECT_TRUE(nodes.contains("E_")); // the entry outlives the run
}

TEST_F(RegisterOf, AStructEntryOutsideOfAnElementHasNoRegister)
{
    describe("<Integer Name=\"A\"><pValue>E</pValue></Integer>");
    nodes["E"] = document.createElement("StructEntry"); // without a parent
    EXPECT_EQ(registerOf("A"), QString("-"));
    EXPECT_FALSE(nodes.contains("E_"));
}

TEST_F(RegisterAddress, ConstantsAddUp)
{
    describe("<IntReg Name=\"R\"><Address>0x1000</Address><pAddress>16</pAddress><Length>4</Length>"
             "<Address>0x20</Address></IntReg>");
    EXPECT_VALUES(addresses("R"), {"4144"});
    EXPECT_EQ(tests::suiteCalls("string2Int"),
              QStringList({"string2Int(0x1000)", "string2Int(16)", "string2Int(0x20)"}));
}

TEST_F(RegisterAddress, ANameOfHexadecimalLettersIsANumber)
{
    describe("<IntReg Name=\"R\"><pAddress>FACE</pAddress></IntReg>"
             "<Integer Name=\"FACE\"><Value>7</Value></Integer>");
    EXPECT_VALUES(addresses("R"), {"64206"});
}

TEST_F(RegisterAddress, IndexesAndInlineFormulasAreIgnored)
{
    describe("<IntReg Name=\"R\"><Address>0x100</Address><pIndex Offset=\"4\">N</pIndex><Offset>8</Offset>"
             "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">N</pVariable><Formula>X+1</Formula>"
             "</IntSwissKnife></IntReg><Integer Name=\"N\"><Value>3</Value></Integer>");
    EXPECT_VALUES(addresses("R"), {"256"});
    EXPECT_EQ(tests::suiteCalls("Compute"), QStringList());
}

TEST_F(RegisterAddress, EachSelectorValueGivesAnAddress)
{
    describe(kSelected + "<IntReg Name=\"R\"><Address>0x1000</Address><pAddress>Offset</pAddress></IntReg>");
    camera.setInteger("Sel", 2, 0, 3);
    select("Sel", "F");
    ASSERT_TRUE(evaluator->isSelectedFeature("F"));
    EXPECT_VALUES(addresses("R"), {"4096 [N:0]", "4100 [N:1]", "4104 [N:2]", "4108 [N:3]"});
}

TEST_F(RegisterAddress, TheFormulaIsThatOfTheBase)
{
    describe("<IntReg Name=\"R\"><pAddress>K</pAddress><Address>0x10</Address></IntReg>"
             "<IntReg Name=\"Alone\"><pAddress>K</pAddress></IntReg>"
             "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">N</pVariable><Formula>X+1</Formula>"
             "</IntSwissKnife><Integer Name=\"N\"><Value>3</Value></Integer>");
    EXPECT_VALUES(addresses("R"), {"20 [N:3] X+1"}); // with single values all, the first one is the base
    EXPECT_VALUES(addresses("Alone"), {"4 [N:3] X+1"});
}

TEST_F(RegisterAddress, TermsRunInParallel)
{
    describe(
        "<Enumeration Name=\"EnumA\"/><Enumeration Name=\"EnumB\"/>"
        "<IntSwissKnife Name=\"KA\"><pVariable Name=\"X\">LA</pVariable><Formula>X*16</Formula>"
        "</IntSwissKnife>"
        "<IntSwissKnife Name=\"KB\"><pVariable Name=\"X\">LB</pVariable><Formula>X</Formula></IntSwissKnife>"
        "<Integer Name=\"LA\"><pValue>EnumA</pValue></Integer><Integer "
        "Name=\"LB\"><pValue>EnumB</pValue></Integer>"
        "<IntReg "
        "Name=\"R\"><pAddress>KA</pAddress><Address>0x1000</Address><pAddress>KB</pAddress></IntReg>");
    camera.setEnumeration("EnumA", 1, {1, 2, 3, 4});
    camera.setEnumeration("EnumB", 1, {5, 6, 7, 8});
    EXPECT_VALUES(addresses("R"),
                  {"4117 [LA:1][LB:5]", "4134 [LA:2][LB:6]", "4151 [LA:3][LB:7]", "4168 [LA:4][LB:8]"});
}

TEST_F(RegisterAddress, TermsOfDifferentCountsFail)
{
    describe("<Enumeration Name=\"EnA\"/><Enumeration Name=\"EnB\"/>"
             "<IntReg "
             "Name=\"R\"><Address>0x1000</Address><pAddress>EnA</pAddress><pAddress>EnB</pAddress></IntReg>");
    camera.setEnumeration("EnA", 1, {1, 2, 3});
    camera.setEnumeration("EnB", 1, {1, 2, 3, 4});
    EXPECT_FAILURE(addresses("R"), {"getIntRegAddress  failed:R"});
}

TEST_F(RegisterAddress, ABaseOfOneValueIsNeeded)
{
    describe("<Enumeration Name=\"EnA\"/>"
             "<IntReg Name=\"R\"><pAddress>EnA</pAddress></IntReg><IntReg "
             "Name=\"None\"><Length>4</Length></IntReg>");
    camera.setEnumeration("EnA", 1, {1, 2, 3});
    EXPECT_FAILURE(addresses("R"), {"getIntRegAddress  failed:R"});
    EXPECT_FAILURE(addresses("None"), {"getIntRegAddress  failed:None"});
}

TEST_F(RegisterAddress, ATermOfNoValuesGivesNoAddress)
{
    describe("<Enumeration Name=\"EnA\"/>"
             "<IntReg Name=\"R\"><Address>0</Address><pAddress>EnA</pAddress></IntReg>");
    camera.setEnumeration("EnA", 1, {});
    EXPECT_VALUES(addresses("R"), {});
}

TEST_F(RegisterAddress, AnIntRegCannotBeAnAddress)
{
    describe("<IntReg Name=\"R\"><pAddress>Pointer</pAddress></IntReg>"
             "<IntReg Name=\"Pointer\"><Address>0</Address></IntReg>");
    EXPECT_FAILURE(addresses("R"), {"getValue  failed:Pointer unsupport tagnameIntReg",
                                    "getIntRegAddress getValue failed:Pointer"});
    EXPECT_EQ(takeCalls(), QStringList());
}

TEST_F(RegisterAddress, AMissingNodeFailsAndIsEntered)
{
    describe("<IntReg Name=\"R\"><Address>0</Address><pAddress>Nowhere</pAddress></IntReg>");
    EXPECT_FAILURE(addresses("R"), {"getIntRegAddress getValue failed:Nowhere"});
    EXPECT_TRUE(nodes.contains("Nowhere"));
}

TEST_F(RegisterAddress, TextsThatOnlyLookLikeNumbersAreNames)
{
    for (const QString text : {"0X10", "-1", " 10", "10&#10;"}) {
        describe("<IntReg Name=\"R\"><Address>" + text + "</Address></IntReg>");
        QString shown = text;
        EXPECT_FAILURE(addresses("R"), {"getIntRegAddress getValue failed:" + shown.replace("&#10;", "\\n")});
    }
}

TEST_F(RegisterAddress, SumsBeyond64BitsWrap)
{
    describe("<IntReg Name=\"R\"><Address>0x7FFFFFFFFFFFFFFF</Address><Address>2</Address>"
             "<Address>0x100000000</Address></IntReg>");
    EXPECT_VALUES(addresses("R"), {"-9223372032559808511"});
}
