// Values of formulas and of what stands in for them.
#include "EvaluatorFixture.h"

#include <SuiteTools/SuiteTools.h>

namespace
{

class FormulaValue : public EvaluatorFixture
{
protected:
    // A SwissKnife "K" with variables "NAME=NODE".
    void describeKnife(const QString& formula, const QStringList& variables, const QString& more = {})
    {
        QString children;
        for (const QString& variable : variables)
            children += QString("<pVariable Name=\"%1\">%2</pVariable>")
                            .arg(variable.section('=', 0, 0), variable.section('=', 1));
        describe(
            "<IntSwissKnife Name=\"K\">" + children + "<Formula>" + formula + "</Formula></IntSwissKnife>" +
            "<Integer Name=\"N2\"><Value>2</Value></Integer><Integer Name=\"N5\"><Value>5</Value></Integer>" +
            "<Integer Name=\"LinkP\"><pValue>EnumP</pValue></Integer><Enumeration Name=\"EnumP\"/>" +
            "<Integer Name=\"LinkQ\"><pValue>EnumQ</pValue></Integer><Enumeration Name=\"EnumQ\"/>" + more);
        camera.setEnumeration("EnumP", 10, {10, 20});
        camera.setEnumeration("EnumQ", 1, {1, 2});
    }
    // The line for a formula of "K" that could not be computed just now.
    static QString computeError(const QString& substituted)
    {
        const QString error = VELAInterface::GetCalculatorErro();
        EXPECT_FALSE(error.isEmpty());
        return QString("getValue  failed:K compute erro,formula:%1.msg:%2").arg(substituted, error);
    }
    QStringList computed() const { return tests::suiteCalls("Compute"); }
};

} // namespace

TEST_F(FormulaValue, ANullNodeFailsWithoutAWord)
{
    describe("");
    EXPECT_FAILURE(value("Nothing"), {});
}

TEST_F(FormulaValue, AnIntegerIsItsValue)
{
    describe(
        "<Integer Name=\"N\"><Value>0x10</Value></Integer><Integer Name=\"Bad\"><Value>-1</Value></Integer>");
    EXPECT_VALUES(value("N"), {"16"});
    EXPECT_FAILURE(value("Bad"), {"getIntValue failed:Bad valuenode content is unsupport",
                                  "getValue  getIntValue failed:Bad"});
}

TEST_F(FormulaValue, AnEnumerationIsAllItsSupportedValues)
{
    describe("<Enumeration Name=\"E\"><EnumEntry Name=\"X\"><Value>9</Value></EnumEntry></Enumeration>");
    camera.setEnumeration("E", 9, {9, 3, 7});
    EXPECT_VALUES(value("E"), {"9", "3", "7"});
    EXPECT_EQ(tests::suiteCalls(), QStringList());
}

TEST_F(FormulaValue, NodeNamesGoToTheCameraAsLatin1)
{
    const QString name = QString::fromUtf8("Gr\xC3\xB6\xC3\x9F"
                                           "e");
    describe("<Enumeration Name=\"" + name + "\"/>");
    camera.setEnumeration(name.toLatin1(), 1, {4});
    EXPECT_VALUES(value(name), {"4"});
}

TEST_F(FormulaValue, AnEnumerationThatCannotBeReadFails)
{
    describe("<Enumeration Name=\"E\"/>");
    EXPECT_FAILURE(value("E"), {"getValue  GetEnumerationNodePropertyValue failed:E"});
    nodes["Nameless"] = document.createElement("Enumeration");
    EXPECT_EQ(takeCalls(), QStringList({"GetEnumValue E -> 80000103"}));
    EXPECT_FAILURE(value("Nameless"), {"getValue  GetEnumerationNodePropertyValue failed:"});
    EXPECT_EQ(takeCalls(), QStringList());
    camera.setEnumeration("E", 1, {1});
    const KX_HANDLE open = handle;
    handle = nullptr;
    EXPECT_EQ(takeCalls(), QStringList());
    EXPECT_FALSE(value("E").ok);
    EXPECT_EQ(takeCalls(), QStringList());
    takeLogs();
    handle = open;
    EXPECT_VALUES(value("E"), {"1"});
}

TEST_F(FormulaValue, OtherNodesHaveNoValue)
{
    for (const QString tag : {"IntReg", "MaskedIntReg", "SwissKnife", "IntConverter", "Float", "Boolean"}) {
        describe("<" + tag + " Name=\"A\"><Value>1</Value></" + tag + ">");
        EXPECT_FAILURE(value("A"), {"getValue  failed:A unsupport tagname" + tag});
    }
}

TEST_F(FormulaValue, AFormulaIsComputedWithItsVariables)
{
    describeKnife("A*100+B", {"A=N2", "B=N5"});
    EXPECT_VALUES(value("K"), {"205 [N2:2][N5:5] A*100+B"});
    EXPECT_EQ(computed(), QStringList({"Compute(2*100+5)"}));
}

TEST_F(FormulaValue, VariablesAreTakenInTheOrderOfTheirNames)
{
    describeKnife("ZZ+MM", {"ZZ=LinkQ", "MM=LinkP"});
    EXPECT_VALUES(value("K"), {"11 [LinkP:10][LinkQ:1] ZZ+MM", "12 [LinkP:10][LinkQ:2] ZZ+MM",
                               "21 [LinkP:20][LinkQ:1] ZZ+MM", "22 [LinkP:20][LinkQ:2] ZZ+MM"});
}

TEST_F(FormulaValue, ANameInsideALongerOneIsReplacedToo)
{
    describeKnife("AB+A", {"A=N2", "AB=N5"});
    EXPECT_FAILURE(value("K"), {computeError("2B+2")});
    describeKnife("ROUND(ROU)", {"ROU=N2"});
    EXPECT_FALSE(value("K").ok);
    EXPECT_EQ(computed().last(), QString("Compute(2ND(2))"));
}

TEST_F(FormulaValue, SubstitutionMindsCase)
{
    describeKnife("a+A", {"A=N2"});
    EXPECT_FAILURE(value("K"), {computeError("a+2")});
}

TEST_F(FormulaValue, NegativeValuesGoInWithoutParentheses)
{
    describeKnife("5-X", {"X=Neg"},
                  "<IntSwissKnife Name=\"Neg\"><pVariable Name=\"Y\">N2</pVariable>"
                  "<Formula>0-Y</Formula></IntSwissKnife>");
    EXPECT_VALUES(value("K"), {"7 [Neg:-2] 5-X"});
    EXPECT_EQ(computed(), QStringList({"Compute(0-2)", "Compute(5--2)"}));
}

TEST_F(FormulaValue, ResultsAreTruncatedTowardZero)
{
    describeKnife("X*(27/10)", {"X=N2"});
    EXPECT_VALUES(value("K"), {"5 [N2:2] X*(27/10)"});
    describeKnife("0-X*(27/10)/2", {"X=N2"});
    EXPECT_VALUES(value("K"), {"-2 [N2:2] 0-X*(27/10)/2"});
}

TEST_F(FormulaValue, ResultsBeyond64BitsStayInside)
{
    const std::pair<double, const char*> cases[] = {{1e300, "9223372036854775807"},
                                                    {-1e300, "-9223372036854775808"},
                                                    {9223372036854775808.0, "9223372036854775807"},
                                                    {-9223372036854775808.0, "-9223372036854775808"}};
    for (const auto& [result, text] : cases) {
        describeKnife("X", {"X=N2"});
        tests::suiteScript().compute = [result = result](const char*, bool& ok) {
            ok = true;
            return result;
        };
        EXPECT_VALUES(value("K"), {QString(text) + " [N2:2] X"});
    }
}

TEST_F(FormulaValue, AVariableWithoutNameOrNodeFails)
{
    describeKnife("X", {"=N2"});
    EXPECT_FAILURE(value("K"), {"getValue failed:K pVariable noname"});
    describeKnife("X", {"X="});
    EXPECT_FAILURE(value("K"), {"getValue failed:K pVariable noname"});
}

TEST_F(FormulaValue, AVariableOfAnUnknownNodeFailsDifferentlyOnceTheNodeWasAskedFor)
{
    describeKnife("X", {"X=Gone"}, "<Integer Name=\"Asks\"><pValue>Gone</pValue></Integer>");
    EXPECT_FAILURE(value("K"), {"getValue failed:pVariableX Gone no mapdom"});
    EXPECT_FALSE(nodes.contains("Gone"));
    EXPECT_EQ(registerOf("Asks"), QString("-"));
    EXPECT_FAILURE(value("K"), {"getIntReg failed:", "getValue getIntValue failed:Gone"});
}

TEST_F(FormulaValue, AVariableThatFailsOrIsEmptyFailsTheFormula)
{
    describeKnife("X", {"X=LinkP"});
    camera.setEnumeration("EnumP", 0, {});
    EXPECT_FAILURE(value("K"), {"getValue getIntValue failed:LinkP value is empty"});
    camera.setAccessMode("EnumP", KX_AM_NOT_AVAILABLE);
    EXPECT_FAILURE(value("K"), {"getValue  GetEnumerationNodePropertyValue failed:EnumP",
                                "getValue getIntValue failed:LinkP"});
}

TEST_F(FormulaValue, AFormulaNeedsTextAndVariables)
{
    describeKnife("4096", {});
    EXPECT_FAILURE(value("K"), {"getValue  failed:K no formula or variables"});
    describeKnife("", {"X=N2"});
    EXPECT_FAILURE(value("K"), {"getValue  failed:K no formula or variables"});
    EXPECT_EQ(computed(), QStringList());
}

TEST_F(FormulaValue, ConstantsAndExpressionsAreNotRead)
{
    describe("<Integer Name=\"N2\"><Value>2</Value></Integer><IntSwissKnife Name=\"K\">"
             "<pVariable Name=\"X\">N2</pVariable><Constant Name=\"CC\">3</Constant>"
             "<Expression Name=\"EE\">4</Expression><Formula>X+CC</Formula></IntSwissKnife>");
    EXPECT_FAILURE(value("K"), {computeError("2+CC")});
}

TEST_F(FormulaValue, TheLastFormulaAndTheLastVariableOfANameCount)
{
    describe("<Integer Name=\"N2\"><Value>2</Value></Integer><Integer Name=\"N5\"><Value>5</Value></Integer>"
             "<IntSwissKnife Name=\"K\"><Formula>X+1</Formula><pVariable Name=\"X\">N2</pVariable>"
             "<pVariable Name=\"X\">N5</pVariable><Formula>X+2</Formula></IntSwissKnife>");
    EXPECT_VALUES(value("K"), {"7 [N5:5] X+2"});
}

TEST_F(FormulaValue, AFailedCombinationFailsTheWholeButTheOthersAreComputed)
{
    describeKnife("10/(X-10)", {"X=LinkP"});
    camera.setEnumeration("EnumP", 10, {10, 20, 15});
    const Outcome seen = value("K");
    EXPECT_FALSE(seen.ok);
    EXPECT_EQ(seen.values, QStringList({"1 [LinkP:20] 10/(X-10)", "2 [LinkP:15] 10/(X-10)"}));
    EXPECT_EQ(takeLogs(), QStringList({computeError("10/(10-10)")}));
    EXPECT_EQ(computed().size(), 3);
}

TEST_F(FormulaValue, EachCombinationIsComputedOnce)
{
    describeKnife("P+Q", {"P=LinkP", "Q=LinkQ"});
    ASSERT_TRUE(value("K").ok);
    EXPECT_EQ(computed(), QStringList({"Compute(10+1)", "Compute(10+2)", "Compute(20+1)", "Compute(20+2)"}));
}

TEST_F(FormulaValue, APercentSignInATextIsNotFilledIn)
{
    describeKnife("X%2 + 1%1", {"X=N5"});
    EXPECT_VALUES(value("K"), {"1 [N5:5] X%2 + 1%1"});
    describeKnife("X%2 + %1", {"X=N5"});
    EXPECT_FAILURE(value("K"), {computeError("5%2 + %1")});
}
