// The block of raw registers behind one feature: bytes of the file, reads of the camera, log lines.
#include "EvaluatorFixture.h"

#include "jobs/export/RegisterBlock.h"
#include "jobs/rules/BoundedText.h"
#include "jobs/rules/JobMemory.h"

#include <SuiteTools/SuiteTools.h>

#include <cstdlib>

namespace
{

class RegisterBlockFixture : public EvaluatorFixture
{
protected:
    using EvaluatorFixture::EvaluatorFixture;

    RegisterAttempt attempt(const QString& name)
    {
        const QDomElement feature = nodes.value(name);
        written.clear();
        return appendRegisterBlock(*evaluator, handle, nodes, gige, feature, written);
    }
    // Expects a block of these lines between its first and its last.
    void expectLines(const QString& name, const QStringList& lines)
    {
        EXPECT_EQ(attempt(name), RegisterAttempt::Written);
        QStringList all = written.split("\r\n");
        ASSERT_GE(all.size(), 3);
        EXPECT_EQ(all.takeLast(), QString());
        EXPECT_EQ(all.takeLast(), QString("</ComplexFeature>"));
        all.removeFirst();
        EXPECT_EQ(all, lines);
    }
    void expectFailure(const QString& name, const QStringList& lines)
    {
        EXPECT_EQ(attempt(name), RegisterAttempt::Failed);
        EXPECT_EQ(written, QString());
        EXPECT_EQ(takeLogs(), lines);
    }

    QString written;
};

class RegisterBlock : public RegisterBlockFixture
{
};

class GigERegisterBlock : public RegisterBlockFixture
{
protected:
    GigERegisterBlock() : RegisterBlockFixture(KX_TRANSPORT_GIGE) {}
};

QString intReg(const QString& address = "0x1000", const QString& length = "4")
{
    return "<IntReg Name=\"R\"><Address>" + address + "</Address><Length>" + length + "</Length></IntReg>";
}

// A converter "C" over "R" with variables "NAME=NODE".
QString converter(const QString& formulaFrom, const QStringList& variables, const QString& formulaTo = "FROM")
{
    QString children;
    for (const QString& variable : variables)
        children += QString("<pVariable Name=\"%1\">%2</pVariable>")
                        .arg(variable.section('=', 0, 0), variable.section('=', 1));
    return "<Converter Name=\"C\">" + children + "<FormulaTo>" + formulaTo + "</FormulaTo><FormulaFrom>" +
           formulaFrom.toHtmlEscaped() + "</FormulaFrom><pValue>R</pValue></Converter>";
}

QString constant(const QString& name, const QString& value)
{
    return "<Integer Name=\"" + name + "\"><Value>" + value + "</Value></Integer>";
}

QString line(qint64 address, const QString& content, const QString& variables = {})
{
    return QString("<RegValue address=\"%1\" variables=\"%2\">%3</RegValue>")
        .arg(QString::number(address), variables, content);
}

QString line(qint64 address, const QString& content, const QString& to, const QString& from)
{
    return QString("<RegValue address=\"%1\" variables=\"\" to=\"%2\" from=\"%3\">%4</RegValue>")
        .arg(QString::number(address), to, from, content);
}

QString readFailure(const QString& name, qint64 address, const QString& formula = {},
                    const QString& variables = {})
{
    return QString("Create RegAddress  failed:%1 addr:%2 formula:%3 variables:%4")
        .arg(name, QString::number(address), formula, variables);
}

} // namespace

TEST_F(RegisterBlock, HasNameLengthAndRegister)
{
    describe("<Integer Name=\"F\"><pValue>R</pValue></Integer>" + intReg("0x0A00", "0x5"));
    camera.setMemory(0xA00, QByteArray("\x01\x02\x03\x04\x85\x86", 6));
    EXPECT_EQ(attempt("F"), RegisterAttempt::Written);
    EXPECT_EQ(written, QString("<ComplexFeature name=\"F\" len=\"5\" reg=\"R\">\r\n"
                               "<RegValue address=\"2560\" variables=\"\">67305985,133</RegValue>\r\n"
                               "</ComplexFeature>\r\n"));
    EXPECT_EQ(takeCalls(), QStringList({"ReadMemory 2560 5"}));
    EXPECT_EQ(takeLogs(), QStringList());
}

TEST_F(RegisterBlock, StandsBehindWhatIsThereAlready)
{
    describe(intReg());
    QString text = "before";
    const QDomElement feature = nodes.value("R");
    EXPECT_EQ(appendRegisterBlock(*evaluator, handle, nodes, gige, feature, text), RegisterAttempt::Written);
    EXPECT_TRUE(text.startsWith("before<ComplexFeature "));
    camera.makeUnreadable(0x1000, 4);
    const QString kept = text;
    EXPECT_EQ(appendRegisterBlock(*evaluator, handle, nodes, gige, feature, text), RegisterAttempt::Failed);
    EXPECT_EQ(text, kept);
}

TEST_F(RegisterBlock, NeedsARegister)
{
    describe(constant("F", "1"));
    expectFailure("F", {"Reg is empty failed:F"});
}

TEST_F(RegisterBlock, NeedsALength)
{
    describe(
        "<Integer Name=\"F\"><pValue>R</pValue></Integer><IntReg Name=\"R\"><Address>0</Address></IntReg>");
    expectFailure("F", {"Reg has no value length:F"}); // the feature's name here
    describe("<Integer Name=\"F\"><pValue>R</pValue></Integer>" + intReg("0", ""));
    expectFailure("F", {"Reg has no value length:F"});
    describe("<Integer Name=\"F\"><pValue>R</pValue></Integer>" + intReg("0", "-4"));
    expectFailure("F", {"RegF value length:-4 is erro"});
}

TEST_F(RegisterBlock, ALengthNodeThatFailsIsTold)
{
    const QString feature = "<Integer Name=\"F\"><pValue>R</pValue></Integer>"
                            "<IntReg Name=\"R\"><Address>0</Address><pLength>L</pLength></IntReg>";
    describe(feature);
    expectFailure("F", {"RegF value length:L is erro"});
    describe(feature + "<IntReg Name=\"L\"/>");
    expectFailure("F", {"getValue  failed:L unsupport tagnameIntReg", "RegF value length:L is erro"});
    describe(feature + "<Enumeration Name=\"L\"/>");
    camera.setEnumeration("L", 0, {});
    expectFailure("F", {"RegF value length:L is erro"});
    describe(feature + constant("L", "2"));
    expectLines("F", {line(0, "0")});
}

TEST_F(RegisterBlock, AnEmptyRegisterIsLeftOutWithoutAWord)
{
    describe(intReg("0", "0") + "<IntReg Name=\"X\"><Length>0</Length></IntReg>");
    EXPECT_EQ(attempt("R"), RegisterAttempt::LeftOut);
    EXPECT_EQ(attempt("X"), RegisterAttempt::LeftOut); // its address is not even looked at
    EXPECT_EQ(written, QString());
    EXPECT_EQ(takeLogs(), QStringList());
    EXPECT_EQ(takeCalls(), QStringList());
}

TEST_F(RegisterBlock, NeedsAnAddress)
{
    describe(
        "<Integer Name=\"F\"><pValue>R</pValue></Integer><IntReg Name=\"R\"><Length>4</Length></IntReg>");
    expectFailure("F", {"getIntRegAddress  failed:R", "getIntRegAddress  failed:F"});
    describe("<Integer Name=\"F\"><pValue>R</pValue></Integer><IntReg Name=\"R\"><Length>4</Length>"
             "<Address>0</Address><pAddress>En</pAddress></IntReg><Enumeration Name=\"En\"/>");
    camera.setEnumeration("En", 0, {});
    expectFailure("F", {"getIntRegAddress  failed:F"});
}

TEST_F(RegisterBlock, EachAddressHasALine)
{
    describe(
        "<IntReg Name=\"R\"><Address>0x1000</Address><pAddress>K</pAddress><Length>4</Length></IntReg>"
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">L</pVariable><Formula>X*4</Formula></IntSwissKnife>"
        "<Integer Name=\"L\"><pValue>En</pValue></Integer><Enumeration Name=\"En\"/>");
    camera.setEnumeration("En", 0, {2, 0});
    camera.setWord(0x1000, 10);
    camera.setWord(0x1008, 12);
    expectLines("R", {line(4104, "12", "[L:2]"), line(4096, "10", "[L:0]")});
    camera.makeUnreadable(0x1000, 4);
    expectFailure("R", {readFailure("R", 4096, "", "[L:0]")}); // nothing of the line before it stays
}

TEST_F(RegisterBlock, AFailedReadTellsFormulaAndVariables)
{
    describe("<IntReg Name=\"R\"><pAddress>K</pAddress><Length>4</Length></IntReg>"
             "<IntSwissKnife Name=\"K\"><pVariable "
             "Name=\"X\">N</pVariable><Formula>X*4</Formula></IntSwissKnife>" +
             constant("N", "4"));
    camera.makeUnreadable(16, 4);
    expectFailure("R", {readFailure("R", 16, "X*4", "[N:4]")});
    handle = nullptr;
    expectFailure("R", {readFailure("R", 16, "X*4", "[N:4]")});
}

TEST_F(RegisterBlock, AddressesAreCutTo32BitsForTheCameraAlone)
{
    describe(intReg("0x100001000"));
    camera.setWord(0x1000, 7);
    expectLines("R", {line(0x100001000, "7")});
    EXPECT_EQ(takeCalls(), QStringList({"ReadMemory 4096 4"}));
    describe(intReg("0xFFFFFFFC"));
    EXPECT_EQ(attempt("R"), RegisterAttempt::Written);
    EXPECT_EQ(takeCalls(), QStringList({"ReadMemory 4294967292 4"}));
}

TEST_F(RegisterBlock, LongRegistersAllocate)
{
    static std::size_t asked;
    asked = 0;
    describe("<Register Name=\"R\"><Address>0</Address><Length>256</Length></Register>"
             "<Register Name=\"S\"><Address>0</Address><Length>257</Length></Register>");
    ie::setAllocateHook([](std::size_t bytes) -> void* {
        asked = bytes;
        return nullptr;
    });
    EXPECT_EQ(attempt("R"), RegisterAttempt::Written);
    EXPECT_EQ(asked, 0u);
    expectFailure("S", {"malloc size  failed:S size:260"});
    EXPECT_EQ(asked, 260u);
    ie::setAllocateHook(nullptr);
    EXPECT_EQ(attempt("S"), RegisterAttempt::Written);
    EXPECT_EQ(written.count(','), 64);
}

TEST_F(RegisterBlock, LengthsThatNobodyHasAreNotAllocated)
{
    const std::pair<const char*, const char*> cases[] = {{"0x1000001", "16777220"},
                                                         {"2147483648", "2147483648"},
                                                         {"1099511627776", "1099511627776"},
                                                         {"0x7FFFFFFFFFFFFFFF", "9223372036854775808"}};
    for (const auto& [length, size] : cases) {
        describe(intReg("0", length));
        expectFailure("R", {QString("malloc size  failed:R size:%1").arg(size)});
    }
    EXPECT_EQ(takeCalls(), QStringList());
}

TEST_F(RegisterBlock, WhatOneAddressLeavesStaysForTheNext)
{
    // Read around the second address: only the first word is put together, the other is still the first
    // address's.
    describe("<IntReg Name=\"R\"><Address>0x1000</Address><pAddress>En</pAddress><Length>8</Length></IntReg>"
             "<Enumeration Name=\"En\"/>");
    camera.rejectUnaligned();
    camera.setEnumeration("En", 0, {0, 0x12});
    camera.setMemory(0x1000, QByteArray("\1\0\0\0\2\0\0\0", 8));
    expectLines("R", {line(0x1000, "1,2"), line(0x1012, "0,2")});
}

TEST_F(RegisterBlock, AnUnalignedRegisterIsReadAround)
{
    describe(intReg("0x1002"));
    camera.rejectUnaligned();
    camera.setMemory(0x1000, QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08", 8));
    // bytes 2..5 are 03 04 05 06, halves exchanged: 05 06 03 04
    expectLines("R", {line(0x1002, QString::number(0x04030605))});
    EXPECT_EQ(takeCalls(),
              QStringList({"ReadMemory 4098 4 -> 80000106", "ReadMemory 4096 4", "ReadMemory 4100 4"}));
    EXPECT_EQ(takeLogs(), QStringList({readFailure("R", 0x1002)})); // although it was recovered
}

TEST_F(RegisterBlock, BothReadsAroundAreMadeAndBothMustSucceed)
{
    describe(intReg("0x1002"));
    camera.rejectUnaligned();
    for (const qint64 broken : {0x1000, 0x1004}) {
        camera.clearRules();
        camera.addRule({"ReadMemory", KX_E_GC_ACCESS, std::nullopt, broken});
        takeCalls();
        expectFailure("R", {readFailure("R", 0x1002)});
        const QStringList calls = takeCalls();
        ASSERT_EQ(calls.size(), 3);
        EXPECT_TRUE(calls[1].startsWith("ReadMemory 4096 4"));
        EXPECT_TRUE(calls[2].startsWith("ReadMemory 4100 4"));
    }
}

TEST_F(RegisterBlock, AnOddAddressIsNoMultipleOfFourEither)
{
    describe(intReg("0x1001"));
    camera.addRule({"ReadMemory", KX_E_GC_ACCESS, std::nullopt, 0x1001});
    EXPECT_EQ(attempt("R"), RegisterAttempt::Written);
    EXPECT_EQ(takeCalls().mid(1), QStringList({"ReadMemory 4095 4", "ReadMemory 4099 4"}));
}

// Without a swap nothing is exchanged: what was read around stays exchanged, what was read directly is as it
// is.
TEST_F(RegisterBlock, WithoutASwapPlainWordsAreNotExchangedBack)
{
    describe(intReg("0x1002"));
    camera.setMemory(0x1000, QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08", 8));
    expectLines("R", {line(0x1002, QString::number(0x06050403))});
    camera.rejectUnaligned();
    expectLines("R", {line(0x1002, QString::number(0x04030605))});
}

// With a swap the halves are exchanged by the address alone, also after a read that succeeded directly.
TEST_F(GigERegisterBlock, WithASwapPlainWordsAreExchangedByTheAddressAlone)
{
    describe(intReg("0x1002"));
    camera.setMemory(0x1000, QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08", 8));
    expectLines("R", {line(0x1002, QString::number(0x05060304))});
    camera.rejectUnaligned();
    expectLines("R", {line(0x1002, QString::number(0x03040506))});
}

TEST_F(RegisterBlock, WithoutASwapConvertedWordsAreExchangedByTheAddressAlone)
{
    describe(converter("RAW", {"RAW=R"}) + intReg("0x1002"));
    camera.setMemory(0x1000, QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08", 8));
    expectLines("C", {line(0x1002, "67307013.000000", QString::number(0x04030605), "TO")});
    camera.rejectUnaligned();
    expectLines("C", {line(0x1002, "100992003.000000", QString::number(0x06050403), "TO")});
}

TEST_F(GigERegisterBlock, WithASwapConvertedWordsAreExchangedByTheAddressAlone)
{
    describe(converter("RAW", {"RAW=R"}) + intReg("0x1002"));
    camera.setMemory(0x1000, QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08", 8));
    expectLines("C", {line(0x1002, "84280068.000000", QString::number(0x05060304), "TO")});
    camera.rejectUnaligned();
    expectLines("C", {line(0x1002, "50595078.000000", QString::number(0x03040506), "TO")});
}

TEST_F(GigERegisterBlock, OnlyRegistersOfFourBytesAreSwapped)
{
    camera.setMemory(0x1000, QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08", 8));
    const std::pair<const char*, const char*> cases[] = {
        {"4", "16909060"}, {"2", "513"}, {"8", "67305985,134678021"}};
    for (const auto& [length, words] : cases) {
        describe(intReg("0x1000", length));
        expectLines("R", {line(0x1000, words)});
    }
    describe(converter("RAW", {"RAW=R"}) + intReg("0x1000", "8"));
    expectLines("C", {line(0x1000, "67305985.000000", "67305985", "TO")}); // the first word alone
}

TEST_F(RegisterBlock, AConvertersFeatureIsComputed)
{
    describe(converter("RAW/4 + N", {"RAW=R", "N=Two"}) + intReg() + constant("Two", "2"));
    camera.setWord(0x1000, 3000000001u);
    expectLines("C", {line(0x1000, "750000002.250000", "3000000001", "TO/4 + 2")});
    EXPECT_EQ(tests::suiteCalls("Compute"), QStringList({"Compute(3000000001/4 + 2)"}));
}

TEST_F(RegisterBlock, TheRegisterItselfIsNotEvaluatedAsAVariable)
{
    describe(converter("RAW", {"RAW=R"}) + intReg());
    EXPECT_EQ(attempt("C"), RegisterAttempt::Written);
    EXPECT_EQ(takeCalls(), QStringList({"ReadMemory 4096 4"}));
}

TEST_F(RegisterBlock, AConverterNeedsFormulasAndVariables)
{
    const QString rest = intReg() + constant("N", "1");
    for (const QString& text :
         {converter("RAW", {}), converter("", {"RAW=R"}), converter("RAW", {"RAW=R"}, "")}) {
        describe(text + rest);
        expectFailure("C", {"getValue  failed:C no formula or variables"});
    }
    for (const QString variable : {"=R", "X="}) {
        describe(converter("X", {variable}) + rest);
        expectFailure("C", {"getValue failed:C pVariable noname"});
    }
    describe(converter("X", {"X=Gone"}) + rest);
    expectFailure("C", {"getValue failed:pVariableX Gone no mapdom"});
    describe(converter("X", {"X=Bad"}) + rest + constant("Bad", "-1"));
    expectFailure(
        "C", {"getIntValue failed:Bad valuenode content is unsupport", "getValue getIntValue failed:Bad"});
    describe(converter("X", {"X=L"}) + rest +
             "<Integer Name=\"L\"><pValue>En</pValue></Integer><Enumeration Name=\"En\"/>");
    camera.setEnumeration("En", 0, {});
    expectFailure("C", {"getValue getIntValue failed:L value is empty"});
}

TEST_F(RegisterBlock, ConverterVariablesAreTakenInTheOrderMet)
{
    // "AB" before "A": the longer name goes in whole; the other way round it would not.
    describe(converter("AB+A+REG", {"AB=Five", "A=Two", "REG=R"}) + intReg() + constant("Five", "5") +
             constant("Two", "2"));
    expectLines("C", {line(0x1000, "7.000000", "0", "5+2+TO")});
    describe(converter("AB+A+REG", {"REG=R", "A=Two", "AB=Five"}) + intReg() + constant("Five", "5") +
             constant("Two", "2"));
    EXPECT_EQ(attempt("C"), RegisterAttempt::Failed);
    EXPECT_EQ(tests::suiteCalls("Compute").last(), QString("Compute(2B+2+0)"));
}

TEST_F(RegisterBlock, ValuesGoInWithSixSignificantDigits)
{
    const std::pair<const char*, const char*> cases[] = {{"1234567", "1.23457e+06"},
                                                         {"1000000", "1e+06"},
                                                         {"100000", "100000"},
                                                         {"8879965", "8.87997e+06"},
                                                         {"123456", "123456"}};
    for (const auto& [value, text] : cases) {
        describe(converter("RAW+N", {"RAW=R", "N=Value"}) + intReg() + constant("Value", value));
        EXPECT_EQ(attempt("C"), RegisterAttempt::Written);
        EXPECT_TRUE(written.contains(QString("from=\"TO+%1\"").arg(text))) << written.toStdString();
    }
}

TEST_F(RegisterBlock, ALaterVariableHitsWhatAnEarlierOnePutIn)
{
    describe(converter("N+e+RAW", {"RAW=R", "N=Value", "e=Two"}) + intReg() + constant("Value", "1000000") +
             constant("Two", "2"));
    camera.setWord(0x1000, 7);
    expectLines("C", {line(0x1000, "27.000000", "7", "12+06+2+TO")});
}

TEST_F(RegisterBlock, TheRegistersOwnVariableMayNotGrowTheTextTooFarEither)
{
    const QString formula(ie::kLongestFormula / 2 + 1, 'X');
    describe(converter(formula, {"X=R"}) + intReg());
    expectFailure("C", {"getValue  failed:C compute erro,formula:" + formula + ".msg:too long"});
    EXPECT_EQ(tests::suiteCalls("Compute").size(), 0);
}

TEST_F(RegisterBlock, TextsThatMultiplyEnd)
{
    QStringList variables{"RAW=R"};
    QString values;
    for (int i = 1; i <= 9; ++i) {
        variables.append(QString("%1=Value%1").arg(i));
        values += constant(QString("Value%1").arg(i), QString(6, QChar('0' + i % 9 + 1)));
    }
    int longest = 0;
    tests::suiteScript().compute = [&longest](const char* text, bool& ok) {
        longest = std::max(longest, int(qstrlen(text)));
        ok = true;
        return 0.0;
    };
    describe(converter(QString(400, '1'), variables) + intReg() + values);
    expectFailure("C", {"getValue  failed:C compute erro,formula:" + QString(400, '1') + ".msg:too long"});
    EXPECT_EQ(longest, 0);
}

TEST_F(RegisterBlock, FromIsEscapedBeforeTheRegisterGoesIn)
{
    describe(converter("(RAW>5)&&(RAW<9)", {"RAW=R"}) + intReg());
    camera.setWord(0x1000, 7);
    expectLines("C", {line(0x1000, "1.000000", "7", "(TO&gt;5)&amp;&amp;(TO&lt;9)")});
    EXPECT_EQ(tests::suiteCalls("Compute").last(), QString("Compute((7>5)&&(7<9))"));
}

TEST_F(RegisterBlock, EveryTOIsTheRegister)
{
    describe(converter("ATOM+RAW", {"RAW=R"}) + intReg());
    camera.setWord(0x1000, 7);
    EXPECT_EQ(attempt("C"), RegisterAttempt::Failed);
    EXPECT_EQ(tests::suiteCalls("Compute").last(), QString("Compute(A7M+7)"));
    describe(converter("TO+1", {"X=R"}) + intReg()); // also one that no variable put there
    expectLines("C", {line(0x1000, "8.000000", "7", "TO+1")});
}

TEST_F(RegisterBlock, AFormulaThatFailsIsToldEscaped)
{
    describe(converter("RAW<", {"RAW=R"}) + intReg());
    EXPECT_EQ(attempt("C"), RegisterAttempt::Failed);
    EXPECT_EQ(takeLogs(), QStringList({"getValue  failed:C compute erro,formula:TO&lt;.msg:" +
                                       VELAInterface::GetCalculatorErro()}));
}

TEST_F(RegisterBlock, AFormulaThatFailsNamesTheFeatureNotTheConverter)
{
    describe("<Integer Name=\"F\"><pValue>C</pValue></Integer>" + converter("1/RAW", {"RAW=R"}) + intReg());
    EXPECT_EQ(attempt("F"), RegisterAttempt::Failed);
    const QStringList lines = takeLogs();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].startsWith("getValue  failed:F compute erro,formula:1/TO.msg:"));
}

namespace
{

// "R" at three addresses by the Enumeration "En"; "L" has the values of "Vals".
QString threeAddresses()
{
    return "<IntReg Name=\"R\"><Address>0x1000</Address><pAddress>En</pAddress><Length>4</Length></IntReg>"
           "<Enumeration Name=\"En\"/><Enumeration Name=\"Vals\"/>"
           "<Integer Name=\"L\"><pValue>Vals</pValue></Integer>";
}

} // namespace

TEST_F(RegisterBlock, OneVariableAloneHasItsFirstValueAtEveryAddress)
{
    describe(converter("X", {"X=L"}) + threeAddresses());
    camera.setEnumeration("En", 0, {0, 4, 8});
    camera.setEnumeration("Vals", 0, {5, 6});
    expectLines("C", {line(0x1000, "5.000000", "0", "5"), line(0x1004, "5.000000", "0", "5"),
                      line(0x1008, "5.000000", "0", "5")});
}

TEST_F(RegisterBlock, OneOfSeveralVariablesHasAValuePerAddress)
{
    describe(converter("X+RAW", {"X=L", "RAW=R"}) + threeAddresses());
    camera.setEnumeration("En", 0, {0, 4, 8});
    camera.setEnumeration("Vals", 0, {5, 6, 7, 8});
    expectLines("C", {line(0x1000, "5.000000", "0", "5+TO"), line(0x1004, "6.000000", "0", "6+TO"),
                      line(0x1008, "7.000000", "0", "7+TO")});
    camera.setEnumeration("Vals", 0, {5, 6});
    expectFailure("C", {"getValue  failed:C out of size variables:X"});
}

TEST_F(RegisterBlock, AVariableNamedTwiceCountsOnceAndHasItsLastValues)
{
    describe(converter("X+1", {"X=Two", "X=L"}) + threeAddresses() + constant("Two", "2"));
    camera.setEnumeration("En", 0, {0, 4});
    camera.setEnumeration("Vals", 0, {5, 6});
    expectLines("C", {line(0x1000, "6.000000", "0", "5+1"), line(0x1004, "6.000000", "0", "5+1")});
}

TEST_F(RegisterBlock, TheLastConverterOfAChainConverts)
{
    describe("<IntConverter Name=\"First\"><pVariable Name=\"X\">R</pVariable><FormulaTo>1</FormulaTo>"
             "<FormulaFrom>X*100</FormulaFrom><pValue>C</pValue></IntConverter>" +
             converter("RAW*2", {"RAW=R"}) + intReg());
    camera.setWord(0x1000, 4);
    expectLines("First", {line(0x1000, "8.000000", "4", "TO*2")});
}

TEST_F(RegisterBlock, AConverterIsReadBeforeTheRegister)
{
    describe(converter("X", {"X=Gone"}) + intReg());
    camera.makeUnreadable(0x1000, 4);
    expectFailure("C", {"getValue failed:pVariableX Gone no mapdom"});
    EXPECT_EQ(takeCalls(), QStringList());
}

TEST_F(RegisterBlock, ABudgetThatIsSpentFailsWithALine)
{
    limits.steps = 0;
    describe("<IntReg Name=\"R\"><Address>0x1000</Address><Length>4</Length></IntReg>"
             "<Integer Name=\"I\"><pValue>R</pValue></Integer>");
    expectFailure("I", {"Reg is empty failed:I"});
}

TEST_F(RegisterBlock, ALengthBelowZeroIsAnError)
{
    describe("<IntReg Name=\"R\"><Address>0</Address><pLength>L</pLength></IntReg>"
             "<IntSwissKnife Name=\"L\"><pVariable "
             "Name=\"A\">One</pVariable><Formula>A-5</Formula></IntSwissKnife>" +
             constant("One", "1"));
    expectFailure("R", {"RegR value length:L is erro"});
    EXPECT_EQ(takeCalls(), QStringList());
}

TEST_F(RegisterBlock, TheReadsAroundAreCutTo32BitsToo)
{
    camera.rejectUnaligned();
    describe(intReg("0x100001002"));
    EXPECT_EQ(attempt("R"), RegisterAttempt::Written);
    EXPECT_EQ(takeCalls(),
              QStringList({"ReadMemory 4098 4 -> 80000106", "ReadMemory 4096 4", "ReadMemory 4100 4"}));
    describe(intReg("0xFFFFFFFE"));
    EXPECT_EQ(attempt("R"), RegisterAttempt::Written);
    EXPECT_EQ(takeCalls().mid(1), QStringList({"ReadMemory 4294967292 4", "ReadMemory 0 4"}));
}

TEST_F(RegisterBlock, AddressesThenConverterThenMemory)
{
    ie::setAllocateHook([](std::size_t) -> void* { return nullptr; });
    const QString broken = converter("", {"X=R"});
    describe("<IntReg Name=\"R\"><pAddress>None</pAddress><Length>300</Length></IntReg>" + broken);
    EXPECT_EQ(attempt("C"), RegisterAttempt::Failed);
    EXPECT_EQ(takeLogs().last(), QString("getIntRegAddress  failed:C"));
    describe(intReg("0", "300") + broken);
    EXPECT_EQ(attempt("C"), RegisterAttempt::Failed);
    EXPECT_EQ(takeLogs(), QStringList({"getValue  failed:C no formula or variables"}));
    ie::setAllocateHook(nullptr);
}
