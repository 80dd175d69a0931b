// Descriptions that would have an evaluator work for ever, take all memory, or run out of stack.
#include "EvaluatorFixture.h"

#include "jobs/rules/BoundedText.h"

#include <QThread>

#include <limits>
#include <memory>

namespace
{

class EvaluatorLimits : public EvaluatorFixture
{
protected:
    void describeSelector(qint64 minimum, qint64 maximum, qint64 increment = 1)
    {
        describe("<Integer Name=\"Sel\"/>");
        camera.setInteger("Sel", minimum, minimum, maximum, increment);
        nodes["V"] = valueThatSelects();
    }
    static QString knife(const QString& name, const QString& node)
    {
        return QString("<IntSwissKnife Name=\"%1\"><pVariable Name=\"X\">%2</pVariable><Formula>X</Formula>"
                       "</IntSwissKnife>")
            .arg(name, node);
    }

    // An integer "Sel" whose value is its whole range.
    QDomElement valueThatSelects()
    {
        QDomElement node = document.createElement("Integer");
        node.setAttribute("Name", "Sel");
        node.appendChild(document.createElement("Value")).appendChild(document.createElement("pSelected"));
        document.documentElement().appendChild(node);
        return node;
    }
};

constexpr qint64 kLowest = std::numeric_limits<qint64>::min();
constexpr qint64 kHighest = std::numeric_limits<qint64>::max();

} // namespace

TEST_F(EvaluatorLimits, RangesEndAtTheLastValueOf64Bits)
{
    describeSelector(kHighest - 2, kHighest);
    EXPECT_VALUES(integer("V"), {"9223372036854775805", "9223372036854775806", "9223372036854775807"});
    describeSelector(kLowest, kHighest, kHighest);
    EXPECT_VALUES(integer("V"), {"-9223372036854775808", "-1", "9223372036854775806"});
}

TEST_F(EvaluatorLimits, ARangeHoldsAtMostAMillionValues)
{
    describeSelector(1, 1048576);
    EXPECT_EQ(integer("V").values.size(), 1048576);
    describeSelector(0, 1048576);
    EXPECT_FAILURE(integer("V"), {"getIntValue failed:Sel GetIntegerNodePropertyValue failed"});
    describeSelector(0, kHighest);
    EXPECT_FAILURE(integer("V"), {"getIntValue failed:Sel GetIntegerNodePropertyValue failed"});
    describeSelector(kLowest, kHighest);
    EXPECT_FAILURE(integer("V"), {"getIntValue failed:Sel GetIntegerNodePropertyValue failed"});
}

TEST_F(EvaluatorLimits, AFormulaHasAtMostAMillionCombinations)
{
    const auto variables = [](int count) {
        QString text;
        for (int i = 0; i < count; ++i)
            text += QString("<pVariable Name=\"V%1\">L</pVariable>").arg(i);
        return text;
    };
    const QString nodesText = "<Integer Name=\"L\"><pValue>En</pValue></Integer><Enumeration Name=\"En\"/>"
                              "<IntSwissKnife Name=\"K\">%1<Formula>1</Formula></IntSwissKnife>";
    camera.setEnumeration("En", 0, {0, 1});
    describe(nodesText.arg(variables(21)));
    EXPECT_FAILURE(value("K"), {"getValue  failed:K compute erro,formula:1.msg:too many combinations"});
    EXPECT_EQ(tests::suiteCalls("Compute").size(), 0);
    tests::suiteScript().compute = [](const char*, bool& ok) {
        ok = false;
        return 0.0;
    };
    describe(nodesText.arg(variables(10)));
    EXPECT_FALSE(value("K").ok);
    EXPECT_EQ(tests::suiteCalls("Compute").size(), 1024);
}

// A line each, until they are more than anybody reads; all are computed.
TEST_F(EvaluatorLimits, TheLogOfCombinationsThatFailIsBounded)
{
    limits.told = 200;
    camera.setEnumeration("En", 0, {0, 1});
    describe("<Integer Name=\"L\"><pValue>En</pValue></Integer><Enumeration Name=\"En\"/><IntSwissKnife "
             "Name=\"K\">"
             "<pVariable Name=\"A\">L</pVariable><pVariable Name=\"B\">L</pVariable><pVariable "
             "Name=\"C\">L</pVariable>"
             "<pVariable Name=\"D\">L</pVariable><Formula>1</Formula></IntSwissKnife>");
    tests::suiteScript().compute = [](const char*, bool& ok) {
        ok = false;
        return 0.0;
    };
    EXPECT_FALSE(value("K").ok);
    EXPECT_EQ(tests::suiteCalls("Compute").size(), 16);
    int characters = 0;
    QStringList lines = takeLogs();
    EXPECT_EQ(lines.removeAll("Further combinations that fail are not logged."), 1);
    for (const QString& line : lines)
        characters += line.size();
    EXPECT_GT(lines.size(), 1);
    EXPECT_LE(characters, 200);
    EXPECT_EQ(budget->refusals(), 0u) << "nothing was refused";
}

TEST_F(EvaluatorLimits, LogLinesUpToTheLastCharacterAreWritten)
{
    camera.setEnumeration("En", 0, {0, 1});
    describe("<Integer Name=\"L\"><pValue>En</pValue></Integer><Enumeration Name=\"En\"/>" + knife("K", "L"));
    tests::suiteScript().compute = [](const char*, bool& ok) {
        ok = false;
        return 0.0;
    };
    EXPECT_FALSE(value("K").ok);
    const QStringList all = takeLogs();
    ASSERT_EQ(all.size(), 2);
    limits.told = quint64(all.join("").size());
    startRun();
    EXPECT_FAILURE(value("K"), all);
    --limits.told;
    startRun();
    EXPECT_FAILURE(value("K"), {all[0], "Further combinations that fail are not logged."});
}

// What has become long ends; a short formula needs no look at who waits for the thread.
TEST_F(EvaluatorLimits, AThreadThatIsAskedToEndComputesNoFurther)
{
    describeSelector(1, 1000);
    describe("<Integer Name=\"Sel\"/><IntSwissKnife Name=\"Long\"><pVariable Name=\"A\">V</pVariable>"
             "<pVariable Name=\"B\">V</pVariable><Formula>A+B</Formula></IntSwissKnife>" +
             knife("Short", "Two") + "<Integer Name=\"Two\"><Value>2</Value></Integer>");
    nodes["V"] = valueThatSelects();
    tests::suiteScript().compute = [](const char*, bool& ok) {
        QThread::currentThread()->requestInterruption();
        ok = true;
        return 3.0;
    };
    Outcome shortOne, longOne;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        shortOne = value("Short");
        longOne = value("Long");
    }));
    thread->start();
    thread->wait();
    EXPECT_TRUE(shortOne.ok);
    EXPECT_FALSE(longOne.ok);
    EXPECT_LT(tests::suiteCalls("Compute").size(), 65536);
    EXPECT_TRUE(budget->isInterrupted());
    takeLogs();
}

// Each register lies where the next one says, twice over: 2^20 questions in all.
TEST_F(EvaluatorLimits, AnExportAsksTheCameraASetNumberOfQuestions)
{
    QString text;
    for (int i = 0; i < 20; ++i)
        text +=
            QString(
                "<Integer Name=\"N%1\"><pValue>R%1</pValue></Integer><IntReg "
                "Name=\"R%1\"><pAddress>K%1</pAddress>"
                "<Length>4</Length></IntReg><IntSwissKnife Name=\"K%1\"><pVariable Name=\"A\">N%2</pVariable>"
                "<pVariable Name=\"B\">N%2</pVariable><Formula>0</Formula></IntSwissKnife>")
                .arg(i)
                .arg(i + 1);
    describe(text + "<Integer Name=\"N20\"><pValue>R20</pValue></Integer>"
                    "<IntReg Name=\"R20\"><Address>0</Address><Length>4</Length></IntReg>");
    EXPECT_TRUE(integer("N10").ok); // 2^10
    takeCalls();
    EXPECT_FALSE(integer("N0").ok);
    EXPECT_LE(takeCalls().size(), 65536);
    EXPECT_LE(takeLogs().size(), 200);
    // Nothing is left for others.
    EXPECT_FALSE(integer("N20").ok);
    EXPECT_EQ(takeCalls(), QStringList());
    startRun();
    EXPECT_TRUE(integer("N20").ok);
}

TEST_F(EvaluatorLimits, RangesAndEntriesAreQuestionsToo)
{
    limits.questions = 2;
    describeSelector(0, 1);
    EXPECT_TRUE(integer("V").ok);
    EXPECT_TRUE(integer("V").ok);
    EXPECT_FALSE(integer("V").ok);
    describe("<Integer Name=\"L\"><pValue>En</pValue></Integer><Enumeration Name=\"En\"/>");
    camera.setEnumeration("En", 0, {0, 1});
    EXPECT_TRUE(integer("L").ok);
    EXPECT_TRUE(integer("L").ok);
    EXPECT_FALSE(integer("L").ok);
}

TEST_F(EvaluatorLimits, CirclesBetweenFormulasEnd)
{
    describe(knife("A", "B") + knife("B", "A") + knife("Self", "Self"));
    for (const char* name : {"A", "Self"}) {
        EXPECT_FALSE(value(name).ok);
        const QStringList lines = takeLogs();
        ASSERT_FALSE(lines.isEmpty());
        EXPECT_LE(lines.size(), 2 * limits.depth);
        for (const QString& line : lines)
            EXPECT_TRUE(line.startsWith("getValue getIntValue failed:")) << line.toStdString();
    }
}

TEST_F(EvaluatorLimits, CirclesOfLinksEnd)
{
    describe(
        "<Integer Name=\"To\"><pValue>Fro</pValue></Integer><Integer "
        "Name=\"Fro\"><pValue>To</pValue></Integer>"
        "<IntReg Name=\"R\"><pAddress>L</pAddress></IntReg><Integer Name=\"L\"><pValue>R</pValue></Integer>"
        "<MaskedIntReg Name=\"M\"><Address>0</Address><pLength>P</pLength><Bit>0</Bit></MaskedIntReg>"
        "<Integer Name=\"P\"><pValue>Q</pValue></Integer>" +
        knife("Q", "M"));
    EXPECT_EQ(registerOf("To"), QString("-"));
    EXPECT_FALSE(integer("To").ok);
    EXPECT_FALSE(addresses("R").ok);
    EXPECT_FALSE(integer("M").ok);
    EXPECT_TRUE(takeLogs().size() < 2000);
    EXPECT_EQ(takeCalls(), QStringList());
}

TEST_F(EvaluatorLimits, AStructThatHoldsItselfEnds)
{
    describe(
        "<StructReg Name=\"S\"><Address>0</Address><pLength>K</pLength><StructEntry Name=\"E\"><Bit>0</Bit>"
        "</StructEntry></StructReg>" +
        knife("K", "E"));
    EXPECT_FALSE(integer("E").ok);
}

TEST_F(EvaluatorLimits, DoublingChainsCostABoundedNumberOfSteps)
{
    QString text = "<Integer Name=\"K0\"><Value>1</Value></Integer>";
    for (int i = 1; i <= 60; ++i)
        text += QString("<IntSwissKnife Name=\"K%1\"><pVariable Name=\"A\">K%2</pVariable>"
                        "<pVariable Name=\"B\">K%2</pVariable><Formula>A+B</Formula></IntSwissKnife>")
                    .arg(i)
                    .arg(i - 1);
    describe(text);
    tests::suiteScript().compute = [](const char*, bool& ok) {
        ok = true;
        return 1.0;
    };
    limits.steps = 1000000;
    startRun();
    EXPECT_VALUES(value("K10"), {"1 [K9:1][K9:1] A+B"});
    EXPECT_FALSE(value("K60").ok);
    EXPECT_FALSE(takeLogs().isEmpty());
    EXPECT_LE(quint64(tests::suiteCalls("Compute").size()), limits.steps);
    EXPECT_FALSE(value("K1").ok); // the steps are the whole run's
    startRun();
    EXPECT_VALUES(value("K10"), {"1 [K9:1][K9:1] A+B"});
}

// One variable of one value: the knife, its variable and the combination are three steps.
TEST_F(EvaluatorLimits, TheLastStepIsTakenAndNotOneMore)
{
    limits.steps = 6;
    describe("<Integer Name=\"N\"><Value>1</Value></Integer>" + knife("K", "N"));
    EXPECT_TRUE(value("K").ok);
    EXPECT_TRUE(value("K").ok);
    EXPECT_FAILURE(value("K"), {});
    limits.steps = 5;
    startRun();
    EXPECT_TRUE(value("K").ok);
    EXPECT_FAILURE(value("K"), {"getValue  failed:K compute erro,formula:X.msg:too many combinations"});
    limits.steps = 1;
    startRun();
    EXPECT_FAILURE(value("K"), {"getValue getIntValue failed:N"});
}

TEST_F(EvaluatorLimits, ManyListsOfManyValuesAreRefusedBeforeTheyGrow)
{
    QString variables;
    for (int i = 0; i < 100; ++i)
        variables += QString("<pVariable Name=\"V%1_\">V</pVariable>").arg(i);
    describe("<Integer Name=\"Sel\"/><IntSwissKnife Name=\"K\">" + variables +
             "<Formula>1</Formula></IntSwissKnife>");
    camera.setInteger("Sel", 1, 1, 1048576, 1);
    nodes["V"] = valueThatSelects();
    EXPECT_FAILURE(value("K"), {"getIntValue failed:Sel GetIntegerNodePropertyValue failed",
                                "getValue getIntValue failed:V"});
    const int asked = takeCalls().size();
    EXPECT_GT(asked, 2); // one list alone is allowed
    EXPECT_LT(asked, 10);
    EXPECT_EQ(tests::suiteCalls("Compute").size(), 0);
}

TEST_F(EvaluatorLimits, ValuesAreChargedByFeature)
{
    limits.memory = 1000;
    describeSelector(1, 10);
    EXPECT_TRUE(integer("V").ok);
    EXPECT_TRUE(integer("V").ok);
    EXPECT_FAILURE(integer("V"), {"getIntValue failed:Sel GetIntegerNodePropertyValue failed"});
    budget->beginFeature();
    EXPECT_TRUE(integer("V").ok);
}

TEST_F(EvaluatorLimits, AValueIsChargedByTheLengthOfItsVariablesToo)
{
    limits.memory = 1000;
    const auto places = [this](qint64 characters) {
        ie::ExportBudget fresh(limits);
        int count = 0;
        while (fresh.takeValue(characters))
            ++count;
        return count;
    };
    EXPECT_GT(places(0), places(8));
    EXPECT_GT(places(8), places(100));
    EXPECT_GT(places(100), 0);
}

TEST_F(EvaluatorLimits, ARegistersValueIsChargedBesideItsAddress)
{
    describe("<Integer Name=\"N\"><pValue>R</pValue></Integer>"
             "<IntReg Name=\"R\"><Address>0</Address><Length>4</Length></IntReg>");
    limits.memory = 120; // of two values: the address, and the sum that it is the only term of
    startRun();
    EXPECT_FALSE(integer("N").ok);
    EXPECT_EQ(takeCalls(), QStringList({"ReadMemory 0 4"}));
    limits.memory = 180;
    startRun();
    EXPECT_VALUES(integer("N"), {"0"});
}

TEST_F(EvaluatorLimits, ALengthThatTheBudgetEndedIsNone)
{
    const QString masked = "<MaskedIntReg Name=\"M\"><Address>0</Address><pLength>K</pLength><Bit>0</Bit>"
                           "</MaskedIntReg>";
    const QString length = "<Integer Name=\"K\"><pValue>En</pValue></Integer><Enumeration Name=\"En\"/>";
    camera.setEnumeration("En", 4, {4, 8});
    limits.memory = 60; // of one value
    describe(masked + length);
    EXPECT_FALSE(integer("M").ok);
    EXPECT_EQ(takeCalls(), QStringList({"GetEnumValue En"}));
    EXPECT_EQ(budget->refusals(), 1u);
}

TEST_F(EvaluatorLimits, ManyVariablesFailInsteadOfNesting)
{
    QString variables;
    for (quint64 i = 0; i <= limits.variables; ++i)
        variables += QString("<pVariable Name=\"V%1_\">N</pVariable>").arg(i);
    describe("<Integer Name=\"N\"><Value>1</Value></Integer><IntSwissKnife Name=\"K\">" + variables +
             "<Formula>V0_</Formula></IntSwissKnife>");
    EXPECT_FAILURE(value("K"), {"getValue  failed:K compute erro,formula:V0_.msg:too many combinations"});
}

TEST_F(EvaluatorLimits, TextsThatMultiplyEnd)
{
    QString variables, values;
    for (int i = 1; i <= 8; ++i) {
        variables += QString("<pVariable Name=\"%1\">N%1</pVariable>").arg(i);
        values += QString("<Integer Name=\"N%1\"><Value>%2</Value></Integer>")
                      .arg(QString::number(i), QString(18, QChar('1' + i)));
    }
    describe(values + "<IntSwissKnife Name=\"K\">" + variables + "<Formula>1</Formula></IntSwissKnife>");
    int longest = 0;
    tests::suiteScript().compute = [&longest](const char* text, bool& ok) {
        longest = std::max(longest, int(qstrlen(text)));
        ok = true;
        return 0.0;
    };
    EXPECT_FAILURE(value("K"), {"getValue  failed:K compute erro,formula:1.msg:too many combinations"});
    EXPECT_EQ(longest, 0);
}

TEST_F(EvaluatorLimits, AFormulaTextMayBeAMillionCharactersLong)
{
    tests::suiteScript().compute = [](const char*, bool& ok) {
        ok = true;
        return 0.0;
    };
    const auto formula = [](int length) {
        return QString("<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">N</pVariable><Formula>X%1</Formula>"
                       "</IntSwissKnife><Integer Name=\"N\"><Value>10</Value></Integer>")
            .arg(QString(length - 2, ' ') + "");
    };
    describe(formula(ie::kLongestFormula));
    EXPECT_TRUE(value("K").ok);
    describe(formula(ie::kLongestFormula + 1));
    EXPECT_FALSE(value("K").ok);
}

TEST_F(EvaluatorLimits, TheTextOfAllFormulasIsBounded)
{
    limits.text = 3;
    describe("<Integer Name=\"N\"><Value>1</Value></Integer>" + knife("K", "N"));
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(value("K").ok);
    EXPECT_FAILURE(value("K"), {"getValue  failed:K compute erro,formula:X.msg:too many combinations"});
}

TEST_F(EvaluatorLimits, LengthsThatNobodyHasAreNotAllocated)
{
    for (const QString length : {"0x1000001", "2147483648", "1099511627776", "0x7FFFFFFFFFFFFFFC"}) {
        describe("<MaskedIntReg Name=\"M\"><Address>0</Address><Length>" + length +
                 "</Length><Bit>0</Bit></MaskedIntReg>");
        EXPECT_FALSE(integer("M").ok);
        const QStringList lines = takeLogs();
        ASSERT_EQ(lines.size(), 1);
        EXPECT_TRUE(lines[0].startsWith("malloc size  failed:M size:")) << lines[0].toStdString();
    }
    EXPECT_EQ(takeCalls(), QStringList());
}

TEST_F(EvaluatorLimits, ANegativeLengthFailsWithoutAWord)
{
    describe(
        "<MaskedIntReg Name=\"M\"><Address>0</Address><pLength>K</pLength><Bit>0</Bit></MaskedIntReg>"
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">N</pVariable><Formula>0-X</Formula></IntSwissKnife>"
        "<Integer Name=\"N\"><Value>4</Value></Integer>");
    EXPECT_FAILURE(integer("M"), {});
    EXPECT_EQ(takeCalls(), QStringList());
}
