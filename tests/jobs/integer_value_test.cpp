// Values of integer-like nodes: bit fields, registers, links and constants.
#include "EvaluatorFixture.h"

#include "jobs/rules/JobMemory.h"

#include <cstdlib>

namespace
{

using IntegerValue = EvaluatorFixture;

class GigEIntegerValue : public EvaluatorFixture
{
protected:
    GigEIntegerValue() : EvaluatorFixture(KX_TRANSPORT_GIGE) {}
};

QString maskedRegister(const QString& bits, const QString& length = "<Length>4</Length>")
{
    return "<MaskedIntReg Name=\"M\"><Address>0x100</Address>" + length + bits + "</MaskedIntReg>";
}

std::size_t g_asked = 0;

void* refuse(std::size_t bytes)
{
    g_asked = bytes;
    return nullptr;
}

class AllocationGuard
{
public:
    explicit AllocationGuard(ie::AllocateHook hook)
    {
        g_asked = 0;
        ie::setAllocateHook(hook);
    }
    ~AllocationGuard() { ie::setAllocateHook(nullptr); }
};

} // namespace

TEST_F(IntegerValue, ABitIsCountedFromTheLeastSignificant)
{
    camera.setWord(0x100, 0x80000004u);
    for (const auto& [bit, expected] : {std::pair{0, "0"}, {2, "1"}, {29, "0"}, {31, "1"}}) {
        describe(maskedRegister(QString("<Bit>%1</Bit>").arg(bit)));
        EXPECT_VALUES(integer("M"), {expected});
    }
}

TEST_F(IntegerValue, ABitRangeMayBeNamedInAnyOrder)
{
    camera.setWord(0x100, 0xFFFFA5FFu);
    for (const QString bits : {"<LSB>8</LSB><MSB>15</MSB>", "<LSB>15</LSB><MSB>8</MSB>"}) {
        describe(maskedRegister(bits));
        EXPECT_VALUES(integer("M"), {"165"});
    }
    describe(maskedRegister("<LSB>0</LSB><MSB>31</MSB>"));
    EXPECT_VALUES(integer("M"), {"4294944255"}); // unsigned
    describe(maskedRegister("<LSB>9</LSB><MSB>9</MSB>"));
    EXPECT_VALUES(integer("M"), {"0"});
}

TEST_F(IntegerValue, BitNumbersAreDecimalAndStayInsideAWord)
{
    camera.setWord(0x100, 0x00000001u);
    describe(maskedRegister("<Bit>0x1F</Bit>")); // no decimal number: bit 0
    EXPECT_VALUES(integer("M"), {"1"});
    describe(maskedRegister("<LSB>0x10</LSB><MSB>0x1F</MSB>"));
    EXPECT_VALUES(integer("M"), {"1"});
    camera.setWord(0x100, 0x80000001u);
    for (const char* bit : {"32", "-1", "63", "-2147483648", "2147483647"}) {
        describe(maskedRegister(QString("<Bit>%1</Bit>").arg(bit)));
        const Outcome seen = integer("M");
        EXPECT_TRUE(seen.ok);
        EXPECT_TRUE(seen.values.value(0) == "0" || seen.values.value(0) == "1") << bit;
    }
}

TEST_F(IntegerValue, ABitFieldNeedsItsRange)
{
    for (const QString bits : {"", "<LSB>1</LSB>", "<MSB>1</MSB>"}) {
        describe(maskedRegister(bits));
        EXPECT_FAILURE(integer("M"), {});
    }
    EXPECT_EQ(takeCalls(), QStringList());
}

TEST_F(IntegerValue, TheRangeIsTheNodesOwn)
{
    camera.setWord(0x100, 0xF0u);
    describe("<StructReg Name=\"S\"><Address>0x100</Address><Length>4</Length><Bit>0</Bit>"
             "<StructEntry Name=\"E\"><LSB>4</LSB><MSB>7</MSB></StructEntry>"
             "<StructEntry Name=\"F\"/></StructReg>");
    EXPECT_VALUES(integer("E"), {"15"});
    EXPECT_FAILURE(integer("F"), {});
}

TEST_F(IntegerValue, ABitFieldForgetsItsAddressesVariables)
{
    describe(
        "<MaskedIntReg Name=\"M\"><pAddress>K</pAddress><Length>4</Length><Bit>0</Bit></MaskedIntReg>"
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">N</pVariable><Formula>X</Formula></IntSwissKnife>"
        "<Integer Name=\"N\"><Value>256</Value></Integer>");
    EXPECT_VALUES(integer("M"), {"0"});
}

TEST_F(IntegerValue, ABitFieldWithoutARegisterFailsWithoutAWord)
{
    describe("<Other><StructEntry Name=\"E\"><Bit>0</Bit></StructEntry></Other>");
    nodes["E"] = document.createElement("StructEntry");
    EXPECT_FAILURE(integer("E"), {});
}

TEST_F(IntegerValue, ABitFieldNeedsItsRegistersLength)
{
    describe(
        "<StructReg Name=\"S\"><Address>0x100</Address><StructEntry Name=\"E\"><Bit>0</Bit></StructEntry>"
        "</StructReg>");
    EXPECT_FAILURE(integer("E"), {"Reg has no value length:S"});
    describe(maskedRegister("<Bit>0</Bit>", "<Length></Length><pLength>N</pLength>"));
    EXPECT_FAILURE(integer("M"), {"Reg has no value length:M"});
    describe("<StructReg Name=\"S\"><Length>four</Length><StructEntry Name=\"E\"><Bit>0</Bit></StructEntry>"
             "</StructReg>");
    EXPECT_FAILURE(integer("E"), {"RegS value length:four is erro"});
    describe(maskedRegister("<Bit>0</Bit>", "<Length>-4</Length>"));
    EXPECT_FAILURE(integer("M"), {"RegM value length:-4 is erro"});
}

TEST_F(IntegerValue, ALengthMayComeFromANode)
{
    describe(maskedRegister("<Bit>0</Bit>", "<pLength>N</pLength>") +
             "<Integer Name=\"N\"><Value>8</Value></Integer>");
    EXPECT_VALUES(integer("M"), {"0"});
    EXPECT_EQ(takeCalls(), QStringList({"ReadMemory 256 8"}));
    describe(maskedRegister("<Bit>0</Bit>", "<pLength>0x10</pLength>"));
    EXPECT_TRUE(integer("M").ok);
    EXPECT_EQ(takeCalls(), QStringList({"ReadMemory 256 16"}));
}

TEST_F(IntegerValue, ALengthNodeThatIsUnknownOrFailsIsNotSpokenOf)
{
    describe(maskedRegister("<Bit>0</Bit>", "<pLength>Gone</pLength>"));
    EXPECT_FAILURE(integer("M"), {});
    EXPECT_FALSE(nodes.contains("Gone"));
    describe(maskedRegister("<Bit>0</Bit>", "<pLength>Reg</pLength>") + "<IntReg Name=\"Reg\"/>");
    EXPECT_FAILURE(integer("M"), {"getValue  failed:Reg unsupport tagnameIntReg"});
    describe(maskedRegister("<Bit>0</Bit>", "<pLength>En</pLength>") + "<Enumeration Name=\"En\"/>");
    camera.setEnumeration("En", 0, {});
    EXPECT_FAILURE(integer("M"), {});
}

TEST_F(IntegerValue, ALengthThatFailedButLeftOneValueCounts)
{
    describe(
        maskedRegister("<Bit>0</Bit>", "<pLength>K</pLength>") +
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">L</pVariable><Formula>16/X</Formula></IntSwissKnife>"
        "<Integer Name=\"L\"><pValue>En</pValue></Integer><Enumeration Name=\"En\"/>");
    camera.setEnumeration("En", 0, {0, 2});
    EXPECT_TRUE(integer("M").ok);
    EXPECT_EQ(takeCalls().last(), QString("ReadMemory 256 8"));
    EXPECT_EQ(takeLogs().size(), 1);
    camera.setEnumeration("En", 0, {0, 2, 4}); // two are left: none counts
    EXPECT_FALSE(integer("M").ok);
    takeLogs();
    camera.setEnumeration("En", 0, {2, 4}); // all succeed: the first counts
    EXPECT_VALUES(integer("M"), {"0"});
}

TEST_F(IntegerValue, AnEmptyRegisterFailsWithoutAWord)
{
    describe(maskedRegister("<Bit>0</Bit>", "<Length>0</Length>"));
    EXPECT_FAILURE(integer("M"), {});
    EXPECT_EQ(takeCalls(), QStringList());
}

TEST_F(IntegerValue, AFailedReadEndsABitField)
{
    describe("<MaskedIntReg Name=\"M\"><Address>0x100</Address><pAddress>En</pAddress><Length>4</Length>"
             "<Bit>0</Bit></MaskedIntReg><Enumeration Name=\"En\"/>");
    camera.setEnumeration("En", 0, {0, 16, 32});
    camera.makeUnreadable(0x110, 4);
    const Outcome seen = integer("M");
    EXPECT_FALSE(seen.ok);
    EXPECT_EQ(seen.values, QStringList({"0"}));
    EXPECT_EQ(takeCalls(),
              QStringList({"GetEnumValue En", "ReadMemory 256 4", "ReadMemory 272 4 -> 80000106"}));
    EXPECT_EQ(takeLogs(), QStringList());
    camera.setEnumeration("En", 0, {});
    EXPECT_VALUES(integer("M"), {}); // no address, no failure
}

TEST_F(IntegerValue, AnEnumerationThatItsRecordDoesNotHoldFailsAndLeavesNothingOut)
{
    describe("<MaskedIntReg Name=\"M\"><Address>0x100</Address><pAddress>En</pAddress><Length>4</Length>"
             "<Bit>0</Bit></MaskedIntReg><Enumeration Name=\"En\"/>");
    std::vector<quint32> entries(KX_ENUM_CAPACITY + 1);
    camera.setEnumeration("En", 0, entries);
    EXPECT_FAILURE(integer("M"), {"getValue  GetEnumerationNodePropertyValue failed:En",
                                  "getIntRegAddress getValue failed:En"});
    entries.pop_back();
    camera.setEnumeration("En", 0, entries);
    EXPECT_EQ(integer("M").values.size(), KX_ENUM_CAPACITY);
}

TEST_F(IntegerValue, OnlyLongRegistersAllocate)
{
    const AllocationGuard guard(refuse);
    describe(maskedRegister("<Bit>0</Bit>", "<Length>256</Length>"));
    EXPECT_VALUES(integer("M"), {"0"});
    EXPECT_EQ(g_asked, 0u);
    EXPECT_EQ(takeCalls(), QStringList({"ReadMemory 256 256"}));
    describe(maskedRegister("<Bit>0</Bit>", "<Length>257</Length>"));
    EXPECT_FAILURE(integer("M"), {"malloc size  failed:M size:260"});
    EXPECT_EQ(g_asked, 260u);
    EXPECT_EQ(takeCalls(), QStringList());
}

TEST_F(IntegerValue, ALongRegisterIsReadWhole)
{
    camera.setMemory(0x100, QByteArray(257, '\xFF'));
    const AllocationGuard guard([](std::size_t bytes) {
        void* block = std::calloc(1, bytes);
        tests::guardBuffer(block, bytes);
        return block;
    });
    describe(maskedRegister("<LSB>0</LSB><MSB>31</MSB>", "<Length>257</Length>"));
    EXPECT_EQ(integer("M").values, QStringList({"4294967295"}));
    EXPECT_EQ(takeCalls(), QStringList({"ReadMemory 256 257"}));
}

TEST_F(GigEIntegerValue, BitFieldsAreSwappedAtFourBytesOnly)
{
    camera.setMemory(0x100, QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08", 8));
    const std::pair<const char*, const char*> cases[] = {
        {"4", "16909060"}, {"2", "513"}, {"3", "197121"}, {"8", "67305985"}};
    for (const auto& [length, expected] : cases) {
        describe(maskedRegister("<LSB>0</LSB><MSB>31</MSB>", QString("<Length>%1</Length>").arg(length)));
        EXPECT_VALUES(integer("M"), {expected});
    }
}

TEST_F(IntegerValue, BitFieldsOfOtherTransportsAreNotSwapped)
{
    camera.setMemory(0x100, QByteArray("\x01\x02\x03\x04", 4));
    describe(maskedRegister("<LSB>0</LSB><MSB>31</MSB>"));
    EXPECT_VALUES(integer("M"), {"67305985"});
}

TEST_F(GigEIntegerValue, RegistersAreSwappedAtAnyLength)
{
    camera.setMemory(0x100, QByteArray("\x81\x02\x03\x04", 4));
    for (const QString length : {"4", "2", "8"}) {
        describe("<Integer Name=\"N\"><pValue>R</pValue></Integer>"
                 "<IntReg Name=\"R\"><Address>0x100</Address><Length>" +
                 length + "</Length></IntReg>");
        EXPECT_VALUES(integer("N"), {"2164392708"});               // unsigned
        EXPECT_EQ(takeCalls(), QStringList({"ReadMemory 256 4"})); // always four bytes
    }
}

TEST_F(IntegerValue, ARegisterKeepsItsAddressesFormulaAndVariables)
{
    describe(
        "<IntReg Name=\"R\"><pAddress>K</pAddress></IntReg>"
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">N</pVariable><Formula>X+1</Formula></IntSwissKnife>"
        "<Integer Name=\"N\"><Value>255</Value></Integer>");
    camera.setWord(0x100, 42);
    EXPECT_VALUES(integer("R"), {"42 [N:255] X+1"});
}

TEST_F(IntegerValue, AConverterBeforeARegisterIsNotApplied)
{
    describe("<IntConverter Name=\"C\"><FormulaFrom>TO*2</FormulaFrom><pValue>R</pValue></IntConverter>"
             "<IntReg Name=\"R\"><Address>0x100</Address></IntReg>");
    camera.setWord(0x100, 21);
    EXPECT_VALUES(integer("C"), {"21"});
}

TEST_F(IntegerValue, ARegistersFailuresAreTold)
{
    describe("<IntReg Name=\"R\"><Length>4</Length></IntReg>"
             "<IntReg Name=\"S\"><Address>0x100</Address></IntReg>");
    EXPECT_FAILURE(integer("R"), {"getIntRegAddress  failed:R", "getIntRegAddress failed:R"});
    camera.makeUnreadable(0x100, 1);
    EXPECT_FAILURE(integer("S"), {"getIntRegAddress failed:S GetValueFromReg failed addr256"});
    handle = nullptr;
    EXPECT_FAILURE(integer("S"), {"getIntRegAddress failed:S GetValueFromReg failed addr256"});
}

TEST_F(IntegerValue, AddressesAreHandedOverIn64Bits)
{
    describe("<IntReg Name=\"R\"><Address>0x100001000</Address></IntReg>");
    EXPECT_TRUE(integer("R").ok);
    EXPECT_EQ(takeCalls(), QStringList({"ReadMemory 4294971392 4"}));
}

TEST_F(IntegerValue, AKnifeIsItsValue)
{
    describe(
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">N</pVariable><Formula>X+1</Formula></IntSwissKnife>"
        "<Integer Name=\"N\"><Value>2</Value></Integer>");
    EXPECT_VALUES(integer("K"), {"3 [N:2] X+1"});
}

TEST_F(IntegerValue, ALinkIsANumberOrANode)
{
    describe(
        "<Integer Name=\"A\"><pValue>0x20</pValue></Integer><Integer Name=\"B\"><pValue>En</pValue></Integer>"
        "<Enumeration Name=\"En\"/><Integer Name=\"C\"><pValue>Gone</pValue></Integer>");
    camera.setEnumeration("En", 5, {5, 6});
    EXPECT_VALUES(integer("A"), {"32"});
    EXPECT_VALUES(integer("B"), {"5", "6"});
    EXPECT_FAILURE(integer("C"), {});
    EXPECT_TRUE(nodes.contains("Gone"));
}

TEST_F(IntegerValue, NothingToGoByFails)
{
    describe("<Integer Name=\"A\"/><Integer Name=\"B\"><pValue></pValue></Integer>"
             "<Enumeration Name=\"En\"/>");
    EXPECT_FAILURE(integer("A"), {"getIntReg failed:A"});
    EXPECT_FAILURE(integer("B"), {"getIntReg failed:B"});
    EXPECT_FAILURE(integer("En"), {"getIntReg failed:En"});
}

TEST_F(IntegerValue, AnEnumerationOnARegisterIsTheRegistersWord)
{
    describe("<Enumeration Name=\"En\"><pValue>R</pValue></Enumeration>"
             "<IntReg Name=\"R\"><Address>0x100</Address></IntReg>");
    camera.setEnumeration("En", 5, {5, 6});
    camera.setWord(0x100, 6);
    EXPECT_VALUES(integer("En"), {"6"});
}

TEST_F(IntegerValue, AConstantIsNotAskedOfTheCamera)
{
    describe("<Integer Name=\"N\"><Value>10</Value></Integer><Float Name=\"H\"><Value>0x10</Value></Float>"
             "<Integer Name=\"Bad\"><Value>1.5</Value></Integer><Integer "
             "Name=\"Neg\"><Value>-1</Value></Integer>");
    camera.setInteger("N", 99);
    EXPECT_VALUES(integer("N"), {"10"});
    EXPECT_EQ(takeCalls(), QStringList());
    EXPECT_VALUES(integer("H"), {"16"});
    EXPECT_FAILURE(integer("Bad"), {"getIntValue failed:Bad valuenode content is unsupport"});
    EXPECT_FAILURE(integer("Neg"), {"getIntValue failed:Neg valuenode content is unsupport"});
}

TEST_F(IntegerValue, AConstantNeedsAName)
{
    describe("<Integer><Value>1</Value></Integer>");
    nodes["X"] = document.documentElement().firstChildElement();
    EXPECT_FAILURE(integer("X"), {"getIntValue failed: name isNull"});
}

// The child of the Value element counts, not one of the node.
TEST_F(IntegerValue, AValueThatSelectsIsTheNodesRange)
{
    describe("<Integer Name=\"N\"><Value>7<pSelected>F</pSelected></Value></Integer>"
             "<Integer Name=\"O\"><Value>7</Value><pSelected>F</pSelected></Integer>");
    camera.setInteger("N", 1, 1, 7, 3);
    EXPECT_VALUES(integer("N"), {"1", "4", "7"});
    EXPECT_EQ(takeCalls(), QStringList({"GetIntValueEx N"}));
    EXPECT_VALUES(integer("O"), {"7"});
    camera.setAccessMode("N", KX_AM_NOT_AVAILABLE);
    EXPECT_FAILURE(integer("N"), {"getIntValue failed:N GetIntegerNodePropertyValue failed"});
}

TEST_F(IntegerValue, EndsOfARangeAreDecimal)
{
    camera.setWord(0x100, 0xFFFFA501u);
    describe(maskedRegister("<LSB>0</LSB><MSB>0x1F</MSB>")); // the text is no number: bit 0
    EXPECT_VALUES(integer("M"), {"1"});
}

TEST_F(IntegerValue, ABitStandsBeforeARange)
{
    camera.setWord(0x100, 0x00000400u);
    describe(maskedRegister("<LSB>8</LSB><MSB>15</MSB><Bit>10</Bit>"));
    EXPECT_VALUES(integer("M"), {"1"});
}

TEST_F(IntegerValue, AStructEntrysRegisterIsItsOwnerWhateverItsLinkSays)
{
    camera.setWord(0x100, 0x2);
    camera.setWord(0x200, 0x0);
    describe("<StructReg Name=\"S\"><Address>0x100</Address><Length>4</Length>"
             "<StructEntry Name=\"M\"><pValue>Other</pValue><Bit>1</Bit></StructEntry></StructReg>"
             "<IntReg Name=\"Other\"><Address>0x200</Address><Length>4</Length></IntReg>");
    EXPECT_VALUES(integer("M"), {"1"});
}

TEST_F(IntegerValue, AValueIsTakenOfAnyKindOfNode)
{
    for (const QString tag : {"Float", "Enumeration", "Boolean", "Node", "IntSwissKnife"}) {
        describe("<" + tag + " Name=\"M\"><Value>0x10</Value></" + tag + ">");
        EXPECT_VALUES(integer("M"), {"16"});
    }
}

TEST_F(IntegerValue, WithoutAConnectionNothingIsAsked)
{
    describe("<Integer Name=\"I\"><Value>1</Value><pSelected>F</pSelected></Integer><Integer Name=\"F\"/>"
             "<IntReg Name=\"R\"><Address>0x100</Address><Length>4</Length></IntReg>");
    select("I", "F");
    EXPECT_TRUE(evaluator->isSelectedFeature("F"));
    const KX_HANDLE open = handle;
    handle = nullptr;
    EXPECT_FALSE(integer("I").ok);
    EXPECT_FALSE(integer("R").ok);
    handle = open;
    EXPECT_EQ(takeCalls(), QStringList());
}
