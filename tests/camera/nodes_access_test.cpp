// Access modes, circles and lost references; and what failures of the line look like from above.
#include "camera/EveryNodeKind.h"

namespace
{

class NodeAccess : public tests::EveryNodeKind
{
};

class MonitoredNodes : public tests::EveryNodeKind
{
protected:
    MonitoredNodes() : EveryNodeKind(KX_ACCESS_MONITOR) {}
};

TEST_F(NodeAccess, combinesTheNodeWithWhatItLinksTo)
{
    const std::vector<std::pair<const char*, KX_XML_AccessMode>> expected = {
        {"Big4", KX_AM_READ_WRITE},
        {"WriteOnly", KX_AM_WRITE_ONLY},
        {"ReadOnly", KX_AM_READ_ONLY},
        {"NoMode", KX_AM_READ_ONLY},
        {"Width", KX_AM_READ_WRITE},
        {"Literal", KX_AM_READ_WRITE},
        {"LiteralFixed", KX_AM_READ_ONLY},
        {"Start", KX_AM_WRITE_ONLY},
        {"Knife", KX_AM_READ_ONLY},
        {"Doubled", KX_AM_READ_WRITE},
        {"OneWay", KX_AM_READ_ONLY},
        {"Root", KX_AM_READ_ONLY},
        {"NotImplemented", KX_AM_NOT_IMPLEMENTED},
        {"NotAvailable", KX_AM_NOT_AVAILABLE},
        {"BehindNotAvailable", KX_AM_NOT_AVAILABLE},
        {"Locked", KX_AM_READ_ONLY},
        {"BehindLocked", KX_AM_READ_ONLY},
        {"LockedWriteOnly", KX_AM_NOT_AVAILABLE},
        {"ImposedOnReadOnly", KX_AM_READ_ONLY},
        {"ImposedWriteOnly", KX_AM_WRITE_ONLY},
        {"ImposedClash", KX_AM_NOT_AVAILABLE},
        {"InChunk", KX_AM_NOT_AVAILABLE},
        {"InEvent", KX_AM_NOT_IMPLEMENTED},
        {"BrokenLock", KX_AM_UNDEFINED},
        {"WithoutValue", KX_AM_UNDEFINED},
    };
    for (const auto& [name, wanted] : expected)
        EXPECT_EQ(mode(name), wanted) << name;
    KX_XML_AccessMode untouched = KX_AM_READ_WRITE;
    EXPECT_EQ(KX_XML_GetNodeAccessMode(camera.handle, "Nobody", &untouched), KX_E_GC_PROPERTY);
    EXPECT_EQ(untouched, KX_AM_READ_WRITE);
}

// A description with nodes that are not implemented (Nothing), not available (Away), and write-only (Blind).
class MissingNodes : public testing::Test
{
protected:
    static std::string description(const std::string& nodes)
    {
        return "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\"><Port "
               "Name=\"Device\"/>"
               "<Integer Name=\"Zero\"><Value>0</Value></Integer><Integer "
               "Name=\"One\"><Value>1</Value></Integer>"
               "<Integer Name=\"Nothing\"><pIsImplemented>Zero</pIsImplemented><Value>1</Value></Integer>"
               "<Integer Name=\"Away\"><pIsAvailable>Zero</pIsAvailable><Value>1</Value></Integer>"
               "<Integer Name=\"Blind\"><ImposedAccessMode>WO</ImposedAccessMode><Value>1</Value></Integer>"
               "<IntReg Name=\"Reg\"><Address>0x100</Address><Length>4</Length><AccessMode>RW</AccessMode>"
               "<pPort>Device</pPort></IntReg>" +
               nodes + "</RegisterDescription>";
    }

    static KX_XML_AccessMode mode(const std::string& nodes)
    {
        tests::FakeCamera camera(description(nodes));
        KX_XML_AccessMode result = KX_AM_CYCLE_DETECTED;
        EXPECT_EQ(KX_XML_GetNodeAccessMode(camera.handle, "X", &result), KX_OK) << nodes;
        return result;
    }

    // With each of the three for the one that `nodes` calls @.
    static std::vector<KX_XML_AccessMode> modes(const std::string& nodes)
    {
        std::vector<KX_XML_AccessMode> result;
        for (const std::string target : {"Nothing", "Away", "Blind"}) {
            std::string text = nodes;
            text.replace(text.find('@'), 1, target);
            result.push_back(mode(text));
        }
        return result;
    }

    static std::string reg(const std::string& where)
    {
        return "<IntReg Name=\"X\">" + where +
               "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>";
    }
    static std::string integer(const std::string& parts)
    {
        return "<Integer Name=\"X\">" + parts + "</Integer>";
    }
};

TEST_F(MissingNodes, takeAlongWhateverRefersToThem)
{
    const std::vector<KX_XML_AccessMode> itself = {KX_AM_NOT_IMPLEMENTED, KX_AM_NOT_AVAILABLE,
                                                   KX_AM_READ_WRITE};
    for (const std::string& nodes : {
             integer("<pValue>Reg</pValue><pValueCopy>@</pValueCopy>"),
             integer("<pValue>Reg</pValue><pMin>@</pMin>"),
             integer("<pValue>Reg</pValue><pMax>@</pMax>"),
             integer("<pValue>Reg</pValue><pInc>@</pInc>"),
             reg("<pAddress>@</pAddress>"),
             reg("<Address>0x100</Address><pIndex Offset=\"4\">@</pIndex>"),
             reg("<Address>0x100</Address><pIndex pOffset=\"@\">One</pIndex>"),
             reg("<IntSwissKnife Name=\"Part\"><pVariable "
                 "Name=\"A\">@</pVariable><Formula>A</Formula></IntSwissKnife>"),
             std::string("<StringReg Name=\"X\"><Address>0x100</Address><pLength>@</pLength>"
                         "<AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>"),
             std::string(
                 "<Converter Name=\"X\"><pVariable Name=\"A\">@</pVariable><FormulaTo>FROM+A</FormulaTo>"
                 "<FormulaFrom>TO-A</FormulaFrom><pValue>Reg</pValue></Converter>"),
         })
        EXPECT_EQ(modes(nodes), itself) << nodes;
}

TEST_F(MissingNodes, takeAlongConditionsWhichHaveToBeReadableToo)
{
    const std::vector<KX_XML_AccessMode> none = {KX_AM_NOT_IMPLEMENTED, KX_AM_NOT_AVAILABLE,
                                                 KX_AM_NOT_AVAILABLE};
    for (const std::string& nodes : {
             integer("<pIsImplemented>@</pIsImplemented><pValue>Reg</pValue>"),
             integer("<pIsAvailable>@</pIsAvailable><pValue>Reg</pValue>"),
             integer("<pIsLocked>@</pIsLocked><pValue>Reg</pValue>"),
             std::string(
                 "<Command Name=\"X\"><pValue>Reg</pValue><pCommandValue>@</pCommandValue></Command>"),
         })
        EXPECT_EQ(modes(nodes), none) << nodes;
}

TEST_F(MissingNodes, standAtTheEndOfAnyWay)
{
    EXPECT_EQ(
        mode(
            "<IntSwissKnife Name=\"Knife\"><pVariable Name=\"A.Max\">Far</pVariable><Formula>A.Max"
            "</Formula></IntSwissKnife><Integer Name=\"Far\"><Value>1</Value><pMin>Nothing</pMin></Integer>" +
            integer("<pValue>Reg</pValue><pMax>Knife</pMax>")),
        KX_AM_NOT_IMPLEMENTED);
    // The worse of two counts, wherever it stands.
    EXPECT_EQ(mode(integer("<pIsAvailable>Zero</pIsAvailable><pValue>Nothing</pValue>")),
              KX_AM_NOT_IMPLEMENTED);
    EXPECT_EQ(mode(integer("<pValue>Away</pValue><pMin>Nothing</pMin>")), KX_AM_NOT_IMPLEMENTED);
}

TEST_F(MissingNodes, leaveAloneWhatDoesNotAskThemNow)
{
    EXPECT_EQ(modes(integer("<pIndex>One</pIndex><pValueIndexed Index=\"1\">Reg</pValueIndexed>"
                            "<pValueDefault>@</pValueDefault>")),
              (std::vector<KX_XML_AccessMode>(3, KX_AM_READ_WRITE)));
    EXPECT_EQ(modes(integer("<pValue>Reg</pValue><pSelected>@</pSelected>")),
              (std::vector<KX_XML_AccessMode>(3, KX_AM_READ_WRITE)));
}

TEST_F(MissingNodes, areNotReadToFindOutThatTheyAreMissing)
{
    tests::FakeCamera camera(
        description("<IntReg Name=\"Condition\"><pIsImplemented>Zero</pIsImplemented>"
                    "<Address>0x200</Address><Length>4</Length><AccessMode>RO</AccessMode>"
                    "<pPort>Device</pPort></IntReg>" +
                    integer("<pIsAvailable>Condition</pIsAvailable><pValue>Reg</pValue>")));
    camera.device.requests.clear();
    KX_XML_AccessMode result = KX_AM_READ_WRITE;
    EXPECT_EQ(KX_XML_GetNodeAccessMode(camera.handle, "X", &result), KX_OK);
    EXPECT_EQ(result, KX_AM_NOT_IMPLEMENTED);
    EXPECT_TRUE(camera.device.requests.empty());
}

TEST_F(MissingNodes, emptyAnEnumerationOfWhichNoEntryIsThere)
{
    const auto enumeration = [](const std::string& entries) {
        return "<Enumeration Name=\"X\">" + entries + "<pValue>Reg</pValue></Enumeration>";
    };
    const std::string one =
        "<EnumEntry Name=\"One\"><pIsImplemented>@</pIsImplemented><Value>1</Value></EnumEntry>";
    const std::string other = "<EnumEntry Name=\"Other\"><Value>0</Value></EnumEntry>";
    EXPECT_EQ(modes(enumeration(one)), (std::vector<KX_XML_AccessMode>{
                                           KX_AM_NOT_IMPLEMENTED, KX_AM_NOT_AVAILABLE, KX_AM_NOT_AVAILABLE}));
    EXPECT_EQ(modes(enumeration(one + other)), (std::vector<KX_XML_AccessMode>(3, KX_AM_READ_WRITE)));
    const std::string missing =
        "<EnumEntry Name=\"M\"><pIsImplemented>Zero</pIsImplemented><Value>1</Value></EnumEntry>";
    EXPECT_EQ(
        mode("<Integer Name=\"X\"><pValue>Reg</pValue><pMax>E</pMax></Integer><Enumeration Name=\"E\">" +
             missing + "<pValue>Reg</pValue></Enumeration>"),
        KX_AM_NOT_IMPLEMENTED);
}

// Which formats there are hangs on the format.
TEST_F(MissingNodes, anEntryMayHangOnItsOwnEnumeration)
{
    EXPECT_EQ(mode("<Enumeration Name=\"X\"><EnumEntry "
                   "Name=\"One\"><pIsAvailable>Knife</pIsAvailable><Value>1</Value>"
                   "</EnumEntry><EnumEntry Name=\"Two\"><Value>0</Value></EnumEntry><pValue>Reg</pValue>"
                   "</Enumeration><IntSwissKnife Name=\"Knife\"><pVariable Name=\"A\">X</pVariable>"
                   "<Formula>A = 0</Formula></IntSwissKnife>"),
              KX_AM_READ_WRITE);
}

TEST_F(NodeAccess, followsTheCamera)
{
    EXPECT_EQ(mode("AskedOfCamera"), KX_AM_NOT_AVAILABLE);
    device().set32(0x11C, 1);
    EXPECT_EQ(KX_CC_WriteMemory(camera.handle, "", 0xF00, 1), KX_OK); // forget what was read
    EXPECT_EQ(mode("AskedOfCamera"), KX_AM_READ_WRITE);
}

TEST_F(NodeAccess, isCheckedBeforeAnythingIsSent)
{
    EXPECT_EQ(statusOf("WriteOnly"), KX_E_GC_ACCESS);
    EXPECT_EQ(statusOf("NotImplemented"), KX_E_GC_ACCESS);
    EXPECT_EQ(statusOf("InChunk"), KX_E_GC_ACCESS);
    EXPECT_EQ(statusOf("InEvent"), KX_E_GC_ACCESS);
    EXPECT_EQ(setInteger("ReadOnly", 1), KX_E_GC_ACCESS);
    EXPECT_EQ(setInteger("Locked", 1), KX_E_GC_ACCESS);
    EXPECT_EQ(setInteger("ImposedOnReadOnly", 1), KX_E_GC_ACCESS);
    EXPECT_EQ(setInteger("Knife", 1), KX_E_GC_ACCESS);
    EXPECT_EQ(setReal("OneWay", 1), KX_E_GC_ACCESS);
    EXPECT_TRUE(takeRequests().empty());
    EXPECT_EQ(camera.lastError(), "OneWay: it cannot be written now.");
}

TEST_F(MonitoredNodes, tellTheirAccessButAreNotWritten)
{
    device().set32(0x100, 9);
    EXPECT_EQ(value("Big4"), 9);
    EXPECT_EQ(mode("Big4"), KX_AM_READ_WRITE);
    EXPECT_EQ(mode("Start"), KX_AM_WRITE_ONLY);
    EXPECT_EQ(mode("Locked"), KX_AM_READ_ONLY);
    takeRequests();
    EXPECT_EQ(setInteger("Big4", 1), KX_E_GC_ACCESS);
    EXPECT_EQ(KX_CC_ExecuteCommand(camera.handle, "Start"), KX_E_GC_ACCESS);
    EXPECT_EQ(camera.lastError(), "Start: the camera was opened for monitoring.");
    EXPECT_EQ(KX_CC_WriteMemory(camera.handle, "1234", 0x100, 4), KX_E_GC_ACCESS);
    EXPECT_TRUE(takeRequests().empty());
}

TEST_F(NodeAccess, aCircleTakesOnlyWhatHangsOnIt)
{
    for (const char* name :
         {"CircleA", "CircleB", "CircleC", "SelfCircle", "OnCircle", "MinOnCircle", "LockOnCircle",
          "BehindMinOnCircle", "BehindLockOnCircle", "KnifeCircle", "KnifeCircleBack", "AddressCircle"}) {
        EXPECT_EQ(statusOf(name), KX_E_GC_RUNTIME) << name;
        EXPECT_EQ(mode(name), KX_AM_CYCLE_DETECTED) << name;
        EXPECT_EQ(setInteger(name, 1), KX_E_GC_RUNTIME) << name;
    }
    EXPECT_EQ(camera.lastError(), "AddressCircle: it depends on itself.");
    EXPECT_EQ(value("Literal"), 42);
    EXPECT_EQ(mode("Literal"), KX_AM_READ_WRITE);
}

TEST_F(NodeAccess, copiesThatLeadInACircleEnd)
{
    EXPECT_EQ(value("CopyCircleA"), 1);
    EXPECT_EQ(setInteger("CopyCircleA", 2), KX_E_GC_RUNTIME);
    EXPECT_EQ(setInteger("Literal", 2), KX_OK);
}

TEST_F(NodeAccess, aLostReferenceTakesOnlyWhatHangsOnIt)
{
    for (const char* name : {"Dangling", "OnDangling", "DanglingMax", "BehindDanglingMax", "NoPort"}) {
        EXPECT_EQ(statusOf(name), KX_E_GC_RUNTIME) << name;
        EXPECT_EQ(mode(name), KX_AM_UNDEFINED) << name;
    }
    EXPECT_EQ(value("DanglingSelected"), 1); // nothing is evaluated along it
    EXPECT_TRUE(takeRequests().empty());
}

TEST_F(NodeAccess, aChainTooLongForTheStackIsRefused)
{
    std::string xml = "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\">"
                      "<Integer Name=\"N0\"><Value>1</Value></Integer>";
    for (int i = 1; i <= 100000; ++i)
        xml += "<Integer Name=\"N" + std::to_string(i) + "\"><pValue>N" + std::to_string(i - 1) +
               "</pValue></Integer>";
    tests::FakeCamera chained(xml + "</RegisterDescription>");
    ASSERT_EQ(chained.openStatus, KX_OK);
    KX_IntegerValue record{};
    EXPECT_EQ(KX_CC_GetIntValueEx(chained.handle, "N100", &record), KX_OK);
    EXPECT_EQ(record.current, 1);
    EXPECT_EQ(KX_CC_GetIntValueEx(chained.handle, "N100000", &record), KX_E_GC_RUNTIME);
}

TEST_F(NodeAccess, formulasThatShareTheirPartsAreEvaluatedOnce)
{
    std::string xml = "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\">"
                      "<Integer Name=\"N0\"><Value>0</Value></Integer>";
    for (int i = 1; i <= 100; ++i) { // 2^100 ways lead to the first one
        const std::string before = "N" + std::to_string(i - 1);
        xml += "<IntSwissKnife Name=\"N" + std::to_string(i) + "\"><pVariable Name=\"A\">" + before +
               "</pVariable><pVariable Name=\"B\">" + before +
               "</pVariable><Formula>A+B+1-A</Formula></IntSwissKnife>";
    }
    tests::FakeCamera doubled(xml + "</RegisterDescription>");
    KX_IntegerValue record{};
    EXPECT_EQ(KX_CC_GetIntValueEx(doubled.handle, "N100", &record), KX_OK);
    EXPECT_EQ(record.current, 100);
}

TEST_F(NodeAccess, aFailedLineComesOutAsItself)
{
    for (const KX_Status status : {KX_E_NO_ANSWER, KX_E_CONNECTION_LOST, KX_E_CONTROL_REFUSED, KX_E_BUSY,
                                   KX_E_NETWORK, KX_E_MALFORMED_ANSWER, KX_E_DEVICE}) {
        EXPECT_EQ(KX_CC_WriteMemory(camera.handle, "", 0xF00, 1), KX_OK); // forget what was read
        device().failures = {{0x100, status}, {0x104, status}, {0x11C, status}};
        EXPECT_EQ(statusOf("Big4"), status);
        EXPECT_EQ(statusOf("Knife"), status);         // in a formula's variable
        EXPECT_EQ(statusOf("MaxOfWidth"), status);    // in a bound
        EXPECT_EQ(statusOf("AskedOfCamera"), status); // in a condition
        EXPECT_EQ(setInteger("Big4", 1), status);
        KX_EnumValue entries;
        device().failures = {{0x104, status}};
        EXPECT_EQ(KX_CC_GetEnumValue(camera.handle, "Mode", &entries), status); // in an entry's condition
        device().failures = {{0x11C, status}};
        KX_XML_AccessMode unknown = KX_AM_READ_WRITE;
        EXPECT_EQ(KX_XML_GetNodeAccessMode(camera.handle, "AskedOfCamera", &unknown), status);
        EXPECT_EQ(unknown, KX_AM_READ_WRITE);
    }
    EXPECT_EQ(camera.lastError(), "ReadOnly: the fake line says no");
}

TEST_F(NodeAccess, aRefusedRegisterIsAMatterOfAccess)
{
    device().failures = {{0x100, KX_E_GC_ACCESS}, {0x11C, KX_E_GC_ACCESS}, {0x104, KX_E_GC_ACCESS}};
    EXPECT_EQ(statusOf("Big4"), KX_E_GC_ACCESS);
    EXPECT_EQ(statusOf("Guarded"), KX_E_GC_ACCESS);
    EXPECT_EQ(setInteger("Big4", 1), KX_E_GC_ACCESS);
    EXPECT_EQ(statusOf("AskedOfCamera"), KX_E_GC_ACCESS);
    EXPECT_EQ(mode("AskedOfCamera"), KX_AM_NOT_AVAILABLE);
    EXPECT_EQ(mode("Big4"), KX_AM_READ_WRITE);
}

TEST_F(NodeAccess, afterAFailedLineNothingMoreIsAskedInThatCall)
{
    device().failures = {{0x100, KX_E_NO_ANSWER}};
    EXPECT_EQ(statusOf("Knife"), KX_E_NO_ANSWER);
    EXPECT_EQ(takeRequests(), (std::vector<std::string>{"read 100 4"}));
}

} // namespace
