// What the description alone tells: whether anyone ever writes a feature, what it hangs on, and which
// registers lie at an address. Nothing of it asks the camera.
#include "camera/EveryNodeKind.h"

namespace
{

constexpr char head[] =
    "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\"><Port Name=\"Device\"/>";

// A register of four bytes.
std::string reg(const std::string& name, const std::string& place, const std::string& mode = "RW",
                const std::string& more = {})
{
    return "<IntReg Name=\"" + name + "\">" + place + "<Length>4</Length><AccessMode>" + mode +
           "</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess>" + more + "</IntReg>";
}

std::string integer(const std::string& name, const std::string& content)
{
    return "<Integer Name=\"" + name + "\">" + content + "</Integer>";
}

std::string category(const std::vector<std::string>& features)
{
    std::string xml = "<Category Name=\"Root\">";
    for (const std::string& feature : features)
        xml += "<pFeature>" + feature + "</pFeature>";
    return xml + "</Category>";
}

class Described
{
public:
    explicit Described(const std::string& nodes) : camera(head + nodes + "</RegisterDescription>")
    {
        EXPECT_EQ(camera.openStatus, KX_OK);
        EXPECT_EQ(camera.lastError(), "");
    }

    bool isEverWritable(const std::string& name)
    {
        bool writable = false;
        EXPECT_EQ(KX_CC_IsEverWritable(camera.handle, name.c_str(), &writable), KX_OK) << name;
        return writable;
    }
    std::string related(const std::string& name, KX_Relation relation)
    {
        char text[500] = {};
        uint32_t length = 0;
        EXPECT_EQ(KX_CC_GetRelatedNames(camera.handle, name.c_str(), relation, text, sizeof text, &length),
                  KX_OK);
        EXPECT_EQ(length, std::strlen(text));
        return text;
    }
    KX_RegisterCoverage coverage(int64_t address, int64_t length)
    {
        KX_RegisterCoverage result{};
        EXPECT_EQ(KX_CC_GetRegisterCoverage(camera.handle, address, length, &result), KX_OK);
        return result;
    }
    std::string registers(int64_t address, int64_t length)
    {
        char text[500] = {};
        uint32_t size = 0;
        EXPECT_EQ(KX_CC_GetRegisterNames(camera.handle, address, length, text, sizeof text, &size), KX_OK);
        EXPECT_EQ(size, std::strlen(text));
        return text;
    }

    tests::FakeCamera camera;
};

class DescribedNodes : public tests::EveryNodeKind
{
};

class MonitoredNodes : public tests::EveryNodeKind
{
protected:
    MonitoredNodes() : EveryNodeKind(KX_ACCESS_MONITOR) {}
};

// ---- a setting or a state ----

TEST_F(DescribedNodes, areSettingsOrStates)
{
    const std::vector<std::pair<const char*, bool>> expected = {
        {"Big4", true},
        {"WriteOnly", true},
        {"ReadOnly", false},
        {"NoMode", false}, // a register that names no mode is read-only
        {"InChunk", false},
        {"InEvent", false},
        {"EntryLow", true},
        {"EntryHigh", false},
        {"LittleBits", true},
        {"Float4", true},
        {"Text", true},
        {"Raw", true},
        {"Width", true},
        {"Linked", true},
        {"LinkedTwice", true},
        {"LinkedText", true},
        {"Literal", false}, // nothing of it ever comes to the camera
        {"LiteralText", false},
        {"LiteralFlag", false},
        {"ByIndex", true}, // of its values, one stands in a register
        {"Knife", false},
        {"Ratio", false},
        {"OnBroken", false},
        {"Doubled", true},
        {"Scaled", true},
        {"Exposure", true},
        {"OneWay", false},
        {"Flag", true},
        {"Mode", true},
        {"Start", true},
        {"Root", false},
        {"Device", false},
        {"EnumEntry_Mode_Slow", false},
        {"ImposedOnReadOnly", false},
        {"ImposedWriteOnly", true},
        {"ImposedClash", false},
        {"LockedWriteOnly", true}, // another time it may not be locked
        {"BehindNotAvailable", false},
        {"CircleA", false},
        {"Dangling", false},
        {"DanglingMax", false},
        {"BehindMinOnCircle", false},
        {"CopyCircleA", false},
        {"NoPort", false},
        {"AtBroken", true}, // its address cannot be told, but that is no matter of access
        {"WithoutValue", false},
    };
    for (const auto& [name, wanted] : expected) {
        bool writable = !wanted;
        EXPECT_EQ(KX_CC_IsEverWritable(camera.handle, name, &writable), KX_OK) << name;
        EXPECT_EQ(writable, wanted) << name;
    }
    EXPECT_TRUE(takeRequests().empty());
}

TEST(WritabilityTest, whatHoldsForATimeOnlyDoesNotCount)
{
    Described camera(reg("Reg", "<Address>0x100</Address>") + integer("One", "<Value>1</Value>") +
                     integer("Zero", "<Value>0</Value>") +
                     integer("Locked", "<pValue>Reg</pValue><pIsLocked>One</pIsLocked>") +
                     integer("Away", "<pValue>Reg</pValue><pIsAvailable>Zero</pIsAvailable>") +
                     integer("Missing", "<pValue>Reg</pValue><pIsImplemented>Zero</pIsImplemented>") +
                     integer("OnLocked", "<pValue>Locked</pValue>"));
    for (const char* name : {"Locked", "Away", "Missing", "OnLocked"})
        EXPECT_TRUE(camera.isEverWritable(name)) << name;
}

TEST(WritabilityTest, anImposedModeHoldsForAllThatComesThroughIt)
{
    Described camera(
        reg("Reg", "<Address>0x100</Address>") +
        reg("Shown", "<Address>0x104</Address>", "RW", "<ImposedAccessMode>RO</ImposedAccessMode>") +
        integer("Fixed", "<pValue>Reg</pValue><ImposedAccessMode>RO</ImposedAccessMode>") +
        integer("Open", "<pValue>Reg</pValue><ImposedAccessMode>RW</ImposedAccessMode>") +
        integer("OnFixed", "<pValue>Fixed</pValue>") + integer("OnShown", "<pValue>Shown</pValue>"));
    EXPECT_FALSE(camera.isEverWritable("Fixed"));
    EXPECT_FALSE(camera.isEverWritable("OnFixed"));
    EXPECT_FALSE(camera.isEverWritable("Shown"));
    EXPECT_FALSE(camera.isEverWritable("OnShown"));
    EXPECT_TRUE(camera.isEverWritable("Open"));
}

TEST(WritabilityTest, copiesLeadOnWhereTheValueItselfStaysAtHome)
{
    Described camera(reg("Reg", "<Address>0x100</Address>") + reg("Fixed", "<Address>0x104</Address>", "RO") +
                     integer("Told", "<Value>1</Value><pValueCopy>Reg</pValueCopy>") +
                     integer("Untold", "<Value>1</Value><pValueCopy>Fixed</pValueCopy>") +
                     integer("Refused", "<pValue>Fixed</pValue><pValueCopy>Reg</pValueCopy>"));
    EXPECT_TRUE(camera.isEverWritable("Told"));
    EXPECT_FALSE(camera.isEverWritable("Untold"));
    EXPECT_FALSE(camera.isEverWritable("Refused"));
}

TEST(WritabilityTest, longChainsOfCopiesNeedNoStack)
{
    std::string nodes = reg("Reg", "<Address>0x100</Address>") +
                        integer("N0", "<Value>1</Value><pValueCopy>Reg</pValueCopy>");
    for (int i = 1; i <= 100000; ++i)
        nodes += integer("N" + std::to_string(i),
                         "<Value>1</Value><pValueCopy>N" + std::to_string(i - 1) + "</pValueCopy>");
    Described camera(nodes);
    EXPECT_TRUE(camera.isEverWritable("N100000"));
}

TEST_F(MonitoredNodes, areToldAsIfTheyWereControlled)
{
    bool writable = false;
    EXPECT_EQ(KX_CC_IsEverWritable(camera.handle, "Width", &writable), KX_OK);
    EXPECT_TRUE(writable);
}

TEST_F(DescribedNodes, refuseWhatCannotBeAsked)
{
    bool writable = true;
    char text[4] = {'x'};
    uint32_t length = 77;
    KX_RegisterCoverage coverage{};
    const KX_HANDLE handle = camera.handle;
    EXPECT_EQ(KX_CC_IsEverWritable(handle, "Nobody", &writable), KX_E_GC_PROPERTY);
    EXPECT_EQ(KX_CC_IsEverWritable(handle, "", &writable), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_IsEverWritable(handle, "Width", nullptr), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_IsEverWritable(nullptr, "Width", &writable), KX_E_HANDLE);
    EXPECT_EQ(KX_CC_GetRelatedNames(handle, "Nobody", KX_RELATED_LOCKS, text, 4, &length), KX_E_GC_PROPERTY);
    EXPECT_EQ(KX_CC_GetRelatedNames(handle, "Width", 0, text, 4, &length), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetRelatedNames(handle, "Width", 5, text, 4, &length), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetRelatedNames(handle, "Width", KX_RELATED_LOCKS, nullptr, 4, &length), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetRelatedNames(handle, "Width", KX_RELATED_LOCKS, text, 4, nullptr), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetRegisterCoverage(handle, 0x100, 0, &coverage), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetRegisterCoverage(handle, 0x100, 0x1000001, &coverage), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetRegisterCoverage(handle, 0x100, 4, nullptr), KX_E_PARAMETER);
    EXPECT_EQ(KX_CC_GetRegisterNames(handle, 0x100, 4, text, 4, nullptr), KX_E_PARAMETER);
    EXPECT_EQ(length, 77u);
    EXPECT_TRUE(writable);
    EXPECT_EQ(KX_CC_GetRelatedNames(handle, "ByIndex", KX_RELATED_SELECTORS, text, 4, &length),
              KX_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, 8u);
    EXPECT_EQ(text[0], 'x');
    EXPECT_EQ(KX_CC_GetRelatedNames(handle, "ByIndex", KX_RELATED_SELECTORS, nullptr, 0, &length),
              KX_E_BUFFER_TOO_SMALL);
}

TEST_F(DescribedNodes, areToldToTheObserver)
{
    std::vector<uint32_t> told;
    KX_CC_SetCallObserver(
        camera.handle,
        [](void* user, const KX_CallEvent* event) {
            if (event->finished)
                static_cast<std::vector<uint32_t>*>(user)->push_back(event->operation);
            return 0;
        },
        &told);
    bool writable = false;
    char text[100];
    uint32_t length = 0;
    KX_RegisterCoverage coverage{};
    KX_CC_IsEverWritable(camera.handle, "Width", &writable);
    KX_CC_GetRelatedNames(camera.handle, "Width", KX_RELATED_LOCKS, text, sizeof text, &length);
    KX_CC_GetRegisterCoverage(camera.handle, 0x100, 4, &coverage);
    KX_CC_GetRegisterNames(camera.handle, 0x100, 4, text, sizeof text, &length);
    EXPECT_EQ(told, (std::vector<uint32_t>{KX_OP_IS_EVER_WRITABLE, KX_OP_GET_RELATED_NAMES,
                                           KX_OP_GET_REGISTER_COVERAGE, KX_OP_GET_REGISTER_NAMES}));
}

// ---- what a feature hangs on ----

TEST(FeatureLinksTest, namesSelectorsOneStepUp)
{
    Described camera(
        integer("Outer", "<Value>0</Value><pSelected>Inner</pSelected>") +
        integer("Inner", "<Value>0</Value><pSelected>Gain</pSelected>") +
        integer("Other", "<Value>0</Value><pSelected>Gain</pSelected><pSelected>Other</pSelected>") +
        integer("Gain", "<Value>0</Value>"));
    EXPECT_EQ(camera.related("Gain", KX_RELATED_SELECTORS), "Inner\nOther");
    EXPECT_EQ(camera.related("Inner", KX_RELATED_SELECTORS), "Outer");
    EXPECT_EQ(camera.related("Outer", KX_RELATED_SELECTORS), "");
    EXPECT_EQ(camera.related("Other", KX_RELATED_SELECTORS), ""); // never itself
}

// A look-up table behind an index, as cameras have it: the index selects nothing, its register moves the
// window.
std::string lookUpTable()
{
    return category({"LUTIndex", "LUTValue", "LUTReset"}) + reg("IndexReg", "<Address>0x100</Address>") +
           integer("LUTIndex", "<pValue>IndexReg</pValue><Min>0</Min><Max>255</Max>") +
           reg("ValueReg", "<Address>0x1000</Address><pIndex Offset=\"4\">IndexReg</pIndex>", "RW",
               "<pInvalidator>IndexReg</pInvalidator><pInvalidator>LUTReset</pInvalidator>") +
           integer("LUTValue", "<pValue>ValueReg</pValue>") +
           "<Command Name=\"LUTReset\"><pValue>IndexReg</pValue><CommandValue>1</CommandValue></Command>";
}

TEST(FeatureLinksTest, namesWhatMovesAWindowOfData)
{
    Described camera(lookUpTable());
    EXPECT_EQ(camera.related("LUTValue", KX_RELATED_SELECTORS), "");
    EXPECT_EQ(camera.related("LUTValue", KX_RELATED_PLACE), "LUTIndex\nLUTReset");
    EXPECT_EQ(camera.related("LUTValue", KX_RELATED_INVALIDATORS), "LUTIndex\nLUTReset");
    EXPECT_EQ(camera.related("LUTIndex", KX_RELATED_PLACE), "");
}

TEST(FeatureLinksTest, namesTheIndexOfAFeatureWithSeveralValues)
{
    Described camera(category({"Which", "Gain"}) + integer("Which", "<Value>0</Value>") +
                     integer("Gain", "<pIndex>Which</pIndex><ValueIndexed Index=\"0\">1</ValueIndexed>"
                                     "<ValueDefault>2</ValueDefault>"));
    EXPECT_EQ(camera.related("Gain", KX_RELATED_PLACE), "Which");
}

TEST(FeatureLinksTest, namesTheFeaturesBehindALock)
{
    Described camera(
        category({"ExposureAuto", "ExposureTime", "Gain", "TLParamsLocked", "Width", "Height", "Lock"}) +
        reg("AutoReg", "<Address>0x100</Address>") + reg("TimeReg", "<Address>0x104</Address>") +
        reg("StateReg", "<Address>0x108</Address>", "RO") +
        "<Enumeration Name=\"ExposureAuto\"><EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry>"
        "<pValue>AutoReg</pValue></Enumeration>"
        "<IntSwissKnife Name=\"Lock\"><pVariable Name=\"A\">AutoReg</pVariable>"
        "<pVariable Name=\"T\">TLParamsLocked</pVariable><Formula>A || T</Formula></IntSwissKnife>"
        "<Converter "
        "Name=\"Time\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>TimeReg</pValue>"
        "<pIsLocked>Lock</pIsLocked></Converter>"
        "<Float Name=\"ExposureTime\"><pValue>Time</pValue></Float>" +
        integer("TLParamsLocked", "<Value>0</Value>") + integer("Constant", "<Value>1</Value>") +
        integer("Gain", "<pValue>TimeReg</pValue><pIsLocked>StateReg</pIsLocked>") +
        integer("Width", "<pValue>TimeReg</pValue><pIsLocked>Constant</pIsLocked>") +
        integer("Height", "<pValue>TimeReg</pValue><pIsLocked>TimeReg</pIsLocked>"));
    EXPECT_EQ(camera.related("ExposureTime", KX_RELATED_LOCKS), "ExposureAuto\nTLParamsLocked");
    EXPECT_EQ(camera.related("Gain", KX_RELATED_LOCKS), "StateReg");
    EXPECT_EQ(camera.related("Width", KX_RELATED_LOCKS), "");
    // Each feature that shows the register, but not the one that is asked for.
    EXPECT_EQ(camera.related("Height", KX_RELATED_LOCKS), "ExposureTime\nGain\nWidth");
    EXPECT_EQ(camera.related("ExposureAuto", KX_RELATED_LOCKS), "");
}

// A feature is the end of its way, whatever lies under it; a formula is not, even one that a category lists.
TEST(FeatureLinksTest, goesThroughFormulasAndNoOtherFeature)
{
    Described camera(category({"Shown", "Under", "Ratio", "ByFeature", "ByFormula"}) +
                     reg("Reg", "<Address>0x100</Address>") + integer("Under", "<pValue>Reg</pValue>") +
                     integer("Shown", "<pValue>Under</pValue>") +
                     "<SwissKnife Name=\"Ratio\"><pVariable "
                     "Name=\"U\">Under</pVariable><Formula>U</Formula></SwissKnife>" +
                     integer("ByFeature", "<Value>0</Value><pIsLocked>Shown</pIsLocked>") +
                     integer("ByFormula", "<Value>0</Value><pIsLocked>Ratio</pIsLocked>"));
    EXPECT_EQ(camera.related("ByFeature", KX_RELATED_LOCKS), "Shown");
    EXPECT_EQ(camera.related("ByFormula", KX_RELATED_LOCKS), "Under");
}

TEST(FeatureLinksTest, followsFourHundredNodesAtMost)
{
    std::vector<std::string> names;
    std::string knife = "<IntSwissKnife Name=\"Lock\">", nodes;
    for (int i = 0; i < 500; ++i) {
        names.push_back("F" + std::to_string(i));
        nodes += integer(names.back(), "<Value>0</Value>");
        knife += "<pVariable Name=\"" + names.back() + "\">" + names.back() + "</pVariable>";
    }
    Described camera(category(names) + nodes + knife + "<Formula>F0</Formula></IntSwissKnife>" +
                     integer("Held", "<Value>0</Value><pIsLocked>Lock</pIsLocked>"));
    char text[5000] = {};
    uint32_t length = 0;
    EXPECT_EQ(
        KX_CC_GetRelatedNames(camera.camera.handle, "Held", KX_RELATED_LOCKS, text, sizeof text, &length),
        KX_OK);
    EXPECT_EQ(std::count(text, text + length, '\n'), 398); // the formula is one of them
}

TEST_F(DescribedNodes, circlesAmongLocksEnd)
{
    char text[100] = {};
    uint32_t length = 0;
    EXPECT_EQ(
        KX_CC_GetRelatedNames(camera.handle, "LockOnCircle", KX_RELATED_LOCKS, text, sizeof text, &length),
        KX_OK);
    EXPECT_STREQ(text, "");
}

// ---- registers by address ----

TEST_F(DescribedNodes, lieWhereTheirAddressesSay)
{
    const std::vector<std::tuple<int64_t, int64_t, const char*>> expected = {
        {0x100, 4, "Big4"},
        {0x103, 1, "Big4"},
        {0x0FF, 2, "Big4"},
        {0x0FE, 2, ""},
        {0x103, 2, "Big4\nLittle4"},
        {0x11C, 4, "ReadOnly\nNoMode"},
        {0x400, 1, "LittleBits\nLittleBit"},
        {0x420, 4, "EntryLow\nEntryHigh"},
        {0x73F, 1, "LongText\nHugeText\nRaw"},
        {0x740, 4, "LongText\nHugeText"},
        {0x0FF, 1, ""},
        // 0x200 + 0x10 + (4 + 0x20 + 8) * Selector, which goes from 0 to 3
        {0x210, 4, "Composed"},
        {0x23C, 4, "Composed"},
        {0x294, 4, "Composed"},
        {0x2C0, 4, ""},
        {0x30C, 4, "Indexed"},
        {0x310, 4, ""},
        {0x000, 8, ""}, // chunk and event data lie nowhere
    };
    for (const auto& [address, length, wanted] : expected) {
        char text[200] = {};
        uint32_t size = 0;
        EXPECT_EQ(KX_CC_GetRegisterNames(camera.handle, address, length, text, sizeof text, &size), KX_OK);
        EXPECT_STREQ(text, wanted) << std::hex << address;
    }
    EXPECT_TRUE(takeRequests().empty());
}

TEST(RegisterCoverageTest, countsWhatMayBeWritten)
{
    Described camera(reg("Fixed", "<Address>0x100</Address>", "RO") +
                     reg("Free", "<Address>0x102</Address>"));
    KX_RegisterCoverage found = camera.coverage(0x100, 2);
    EXPECT_EQ(found.registers, 1u);
    EXPECT_EQ(found.writable, 0u);
    found = camera.coverage(0x100, 4);
    EXPECT_EQ(found.registers, 2u);
    EXPECT_EQ(found.writable, 1u);
    found = camera.coverage(0x106, 4);
    EXPECT_EQ(found.registers, 0u);
    EXPECT_EQ(found.unplaced, 0u);
    EXPECT_EQ(found.unplacedWritable, 0u);
}

TEST(RegisterCoverageTest, aPlaceThatOnlyTheCameraKnowsIsTold)
{
    Described camera(reg("Base", "<Address>0x100</Address>", "RO") +
                     reg("Moved", "<pAddress>Base</pAddress>") +
                     reg("MovedFixed", "<pAddress>Base</pAddress><Address>8</Address>", "RO"));
    const KX_RegisterCoverage found = camera.coverage(0x500, 4);
    EXPECT_EQ(found.registers, 0u);
    EXPECT_EQ(found.unplaced, 2u);
    EXPECT_EQ(found.unplacedWritable, 1u);
}

TEST(RegisterCoverageTest, aWindowLiesWhereverItCanBeMoved)
{
    Described camera(lookUpTable().replace(0, category({"LUTIndex", "LUTValue", "LUTReset"}).size(),
                                           category({"LUTIndex", "LUTValue"})));
    EXPECT_EQ(camera.registers(0x1000, 4), "ValueReg");
    EXPECT_EQ(camera.registers(0x1000 + 4 * 255, 4), "ValueReg");
    EXPECT_EQ(camera.registers(0x1000 + 4 * 256, 4), "");
    EXPECT_EQ(camera.coverage(0x1000, 4).unplaced, 0u);
}

TEST(RegisterCoverageTest, everyEntryOfASelectorIsAPlace)
{
    Described camera(reg("SelReg", "<Address>0x100</Address>") +
                     "<Enumeration Name=\"Sel\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry>"
                     "<EnumEntry Name=\"B\"><Value>7</Value></EnumEntry><pValue>SelReg</pValue>"
                     "<pSelected>Gain</pSelected></Enumeration>"
                     "<MaskedIntReg Name=\"BitReg\"><Address>0x104</Address><Length>4</Length>"
                     "<AccessMode>RW</AccessMode><pPort>Device</pPort><Bit>3</Bit></MaskedIntReg>"
                     "<Boolean Name=\"Half\"><pValue>BitReg</pValue><pSelected>Gain</pSelected></Boolean>" +
                     reg("GainReg", "<Address>0x200</Address><pIndex Offset=\"16\">Sel</pIndex>"
                                    "<pIndex Offset=\"0x1000\">Half</pIndex>") +
                     integer("Gain", "<pValue>GainReg</pValue>"));
    EXPECT_EQ(camera.coverage(0x100, 4).unplaced, 0u);
    for (const int64_t address : {0x200, 0x270, 0x1200, 0x1270})
        EXPECT_EQ(camera.registers(address, 1), "GainReg") << address;
    EXPECT_EQ(camera.registers(0x204, 0x6C), "");
    EXPECT_EQ(camera.registers(0x1204, 0x6C), "");
}

TEST(RegisterCoverageTest, morePlacesThanAreGoneThroughAreNotGuessed)
{
    const auto unplaced = [](int64_t last) {
        Described camera(
            category({"Index"}) +
            integer("Index", "<Value>0</Value><Min>0</Min><Max>" + std::to_string(last) + "</Max>") +
            reg("Table", "<Address>0x1000</Address><pIndex Offset=\"4\">Index</pIndex>"));
        return camera.coverage(0x1000, 4).unplaced;
    };
    EXPECT_EQ(unplaced(4095), 0u);
    EXPECT_EQ(unplaced(4096), 1u);
}

TEST(RegisterCoverageTest, placesMultiply)
{
    const auto unplaced = [](int64_t last) {
        Described camera(category({"X", "Y"}) + integer("X", "<Value>0</Value><Min>0</Min><Max>63</Max>") +
                         integer("Y", "<Value>0</Value><Min>0</Min><Max>" + std::to_string(last) + "</Max>") +
                         reg("Table", "<Address>0x1000</Address><pIndex Offset=\"4\">X</pIndex>"
                                      "<pIndex Offset=\"0x100\">Y</pIndex>"));
        return camera.coverage(0x1000, 4).unplaced;
    };
    EXPECT_EQ(unplaced(63), 0u);
    EXPECT_EQ(unplaced(64), 1u);
}

// Small enough to try all that it can hold.
TEST(RegisterCoverageTest, aRegisterThatNoFeatureShowsMovesOthersToo)
{
    Described camera(
        "<IntReg Name=\"Page\"><Address>0x100</Address><Length>1</Length><AccessMode>RO</AccessMode>"
        "<pPort>Device</pPort></IntReg>" +
        reg("Table", "<Address>0x1000</Address><pIndex Offset=\"8\">Page</pIndex>"));
    EXPECT_EQ(camera.registers(0x1000 + 8 * 255, 4), "Table");
    EXPECT_EQ(camera.registers(0x1000 + 8 * 255 + 4, 0x100), "");
    EXPECT_EQ(camera.coverage(0, 1).unplaced, 0u);
}

std::string twoWay(const std::string& name, const std::string& source)
{
    return "<Enumeration Name=\"" + name +
           "\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry>"
           "<EnumEntry Name=\"B\"><Value>1</Value></EnumEntry><pValue>" +
           source + "</pValue></Enumeration>";
}

// Of a selector whose own register another selector moves, nobody knows which register will count; the order
// in which registers are placed makes no difference.
TEST(RegisterCoverageTest, aMovedSelectorMovesToNobodyKnowsWhere)
{
    const std::string selectors =
        category({"Outer", "Inner"}) + reg("OuterReg", "<Address>0x100</Address>") +
        twoWay("Outer", "OuterReg") +
        reg("InnerReg", "<Address>0x200</Address><pIndex Offset=\"4\">Outer</pIndex>") +
        twoWay("Inner", "InnerReg");
    const std::string table = reg("Table", "<Address>0x1000</Address><pIndex Offset=\"8\">Inner</pIndex>");
    for (const std::string& nodes : {selectors + table, table + selectors}) {
        Described camera(nodes);
        EXPECT_EQ(camera.registers(0x204, 4), "InnerReg");
        EXPECT_EQ(camera.coverage(0x1000, 4).registers, 0u);
        EXPECT_EQ(camera.coverage(0x1000, 4).unplaced, 1u);
    }
}

TEST(RegisterCoverageTest, aBoundThatMovesItselfIsNotTaken)
{
    Described camera(category({"Size", "Index"}) +
                     integer("Size", "<Value>3</Value><Min>1</Min><Max>9</Max>") +
                     integer("Index", "<Value>0</Value><Min>0</Min><pMax>Size</pMax>") +
                     reg("Table", "<Address>0x1000</Address><pIndex Offset=\"8\">Index</pIndex>"));
    EXPECT_EQ(camera.coverage(0x1000, 4).registers, 0u);
    EXPECT_EQ(camera.coverage(0x1000, 4).unplaced, 1u);
}

TEST(RegisterCoverageTest, rangesAndRegistersAtTheEndOfAllAddressesDoNotWrap)
{
    Described camera(reg("Low", "<Address>0</Address>") +
                     reg("Last", "<Address>0xFFFFFFFFFFFFFFFC</Address>") +
                     reg("Beyond", "<Address>0xFFFFFFFFFFFFFFFE</Address>"));
    EXPECT_EQ(camera.registers(-2, 0x100), "Last\nBeyond");
    EXPECT_EQ(camera.registers(0, 4), "Low");
}

} // namespace
