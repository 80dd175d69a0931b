// Descriptions that are no worse than the standard allows and far beyond what anybody makes: what they cost
// stays bounded, and what cannot be done has a status.
#include "KXCameraControl/nodes/NodeTable.h"
#include "camera/FakePort.h"
#include "support/RegisterByRegister.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace
{

std::string around(const std::string& nodes)
{
    return "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\">" + nodes +
           "<Port Name=\"Device\"/></RegisterDescription>";
}

std::string integer(const std::string& number, const std::string& place)
{
    return "<Integer Name=\"Sel" + number + "\"><pValue>Reg" + number +
           "</pValue><Min>0</Min><Max>7</Max></Integer>" + "<IntReg Name=\"Reg" + number + "\">" + place +
           "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>BigEndian</"
           "Endianess>"
           "</IntReg>";
}

// Sel0's register lies where Sel1 says, twice over, whose register lies where Sel2 says, and so on.
std::string chain(int depth)
{
    std::string nodes = "<Category Name=\"Root\"><pFeature>Sel0</pFeature></Category>";
    for (int i = 0; i < depth; ++i) {
        const std::string number = std::to_string(i);
        const std::string next = std::to_string(i + 1);
        nodes += integer(number, "<pAddress>Place" + number + "</pAddress>") + "<IntSwissKnife Name=\"Place" +
                 number + "\"><pVariable Name=\"A\">Sel" + next + "</pVariable><pVariable Name=\"B\">Sel" +
                 next + "</pVariable><Formula>" + std::to_string(256 * i) +
                 "+(A+B)*4</Formula></IntSwissKnife>";
    }
    return around(nodes + integer(std::to_string(depth), "<Address>0x100000</Address>"));
}

KX_Status read(const tests::FakeCamera& camera, const char* name, int64_t& value)
{
    KX_IntegerValue result{};
    const KX_Status status = KX_CC_GetIntValueEx(camera.handle, name, &result);
    value = result.current;
    return status;
}

// Without a memory of what is worked out already these would be 2^20 readings.
TEST(HostileDescription, twentySelectorsBehindOneAnotherCostARequestEach)
{
    tests::FakeCamera camera(chain(20));
    camera.device.set32(0x100000, 3);
    camera.device.set32(256 * 19 + 24, 2);
    camera.device.set32(256 * 18 + 16, 5);
    camera.device.requests.clear();
    int64_t value = 0;
    EXPECT_EQ(read(camera, "Sel18", value), KX_OK) << camera.lastError();
    EXPECT_EQ(value, 5);
    EXPECT_LE(camera.device.requests.size(), 3u);

    camera.device.requests.clear();
    EXPECT_EQ(read(camera, "Sel0", value), KX_OK) << camera.lastError();
    EXPECT_LE(camera.device.requests.size(), 21u);
}

// Alone, and as one of a round; listed or not.
TEST(HostileDescription, aFeatureWhoseValueIsItsOwnValueIsRefused)
{
    tests::FakeCamera camera(
        around("<Category Name=\"Root\"><pFeature>Alone</pFeature><pFeature>One</pFeature>"
               "<pFeature>Behind</pFeature></Category>"
               "<Integer Name=\"Alone\"><pValue>Alone</pValue></Integer>"
               "<Float Name=\"One\"><pValue>Other</pValue></Float>"
               "<Float Name=\"Other\"><pValue>One</pValue></Float>"
               "<Integer Name=\"Behind\"><pValue>Unlisted</pValue></Integer>"
               "<Integer Name=\"Unlisted\"><pValue>Unlisted</pValue></Integer>"));
    int64_t value = 0;
    for (const char* name : {"Alone", "Behind", "Unlisted"})
        EXPECT_EQ(read(camera, name, value), KX_E_GC_RUNTIME) << name << ": " << camera.lastError();
    KX_FloatValue real{};
    EXPECT_EQ(KX_CC_GetFloatValue(camera.handle, "One", &real), KX_E_GC_RUNTIME) << camera.lastError();
    EXPECT_TRUE(camera.device.requests.empty());
}

TEST(HostileDescription, whatTheDescriptionAloneTellsOfThemIsToldToo)
{
    tests::FakeCamera camera(chain(20));
    camera.device.requests.clear();
    bool writable = false;
    EXPECT_EQ(KX_CC_IsEverWritable(camera.handle, "Sel0", &writable), KX_OK);
    EXPECT_TRUE(writable);
    KX_RegisterCoverage coverage{};
    EXPECT_EQ(KX_CC_GetRegisterCoverage(camera.handle, 0, 0x1000, &coverage), KX_OK);
    EXPECT_EQ(coverage.registers + coverage.unplaced, 20u);
    char names[1000];
    uint32_t length = 0;
    EXPECT_EQ(KX_CC_GetRelatedNames(camera.handle, "Sel0", KX_RELATED_PLACE, names, sizeof names, &length),
              KX_OK);
    EXPECT_TRUE(camera.device.requests.empty());
}

TEST(HostileDescription, aChainBeyondAllUseHasAStatusAndCostsNothing)
{
    tests::FakeCamera camera(chain(1000));
    camera.device.requests.clear();
    int64_t value = 0;
    EXPECT_EQ(read(camera, "Sel0", value), KX_E_GC_RUNTIME);
    EXPECT_FALSE(camera.lastError().empty());
    EXPECT_TRUE(camera.device.requests.empty());
    EXPECT_EQ(read(camera, "Sel1000", value), KX_OK);
}

std::string structReg(size_t entries, size_t shared)
{
    std::string text = "<StructReg><Address>0x100</Address><Length>4</Length><pPort>Device</pPort>";
    for (size_t i = 0; i < shared; ++i)
        text += "<pInvalidator>E0</pInvalidator>";
    for (size_t i = 0; i < entries; ++i)
        text += "<StructEntry Name=\"E" + std::to_string(i) + "\"><Bit>1</Bit></StructEntry>";
    return around(text + "</StructReg>");
}

// What each entry takes over would be twenty million properties, of a text of 600 kB.
TEST(HostileDescription, aStructRegThatMultipliesIsRefusedBeforeItGrows)
{
    kx::NodeTable table;
    std::string problem;
    EXPECT_FALSE(table.load(structReg(4500, 4500), problem));
    EXPECT_EQ(problem, "its StructRegs say too much, for too many entries");
    EXPECT_TRUE(table.nodes().empty());
    EXPECT_TRUE(table.load(structReg(900, 900), problem)); // 813,600
}

// Each write would be 2^40 of them.
TEST(HostileDescription, copiesOfCopiesAreWrittenWithinBounds)
{
    const auto copies = [](int depth) {
        std::string nodes;
        for (int i = 0; i < depth; ++i) {
            const std::string next = i + 1 == depth ? "Reg" : "N" + std::to_string(i + 1);
            nodes += "<Integer Name=\"N" + std::to_string(i) + "\"><pValue>" + next +
                     "</pValue><pValueCopy>" + next + "</pValueCopy></Integer>";
        }
        return around(nodes + "<IntReg Name=\"Reg\"><Address>0x100</Address><Length>4</Length><AccessMode>RW"
                              "</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess></IntReg>");
    };
    tests::FakeCamera few(copies(5));
    EXPECT_EQ(KX_CC_SetIntValueEx(few.handle, "N0", 7), KX_OK) << few.lastError();
    EXPECT_EQ(few.device.get32(0x100), 7u);
    tests::FakeCamera many(copies(40));
    many.device.requests.clear();
    EXPECT_EQ(KX_CC_SetIntValueEx(many.handle, "N0", 7), KX_E_GC_RUNTIME);
    EXPECT_NE(many.lastError().find("it has too many copies"), std::string::npos) << many.lastError();
    EXPECT_EQ(many.device.get32(0x100), 0u);
}

// Each points to the next, the last to the first one, which takes as many steps as there are.
TEST(HostileDescription, aCircleOfFiftyThousandDefaultsIsSeenInOneLook)
{
    constexpr int kNodes = 50000;
    std::string nodes = "<Integer Name=\"Index\"><Value>7</Value></Integer>";
    for (int i = 0; i < kNodes; ++i)
        nodes += "<Integer Name=\"N" + std::to_string(i) + "\"><pIndex>Index</pIndex><pValueDefault>N" +
                 std::to_string((i + 1) % kNodes) + "</pValueDefault></Integer>";
    const auto start = std::chrono::steady_clock::now();
    tests::FakeCamera camera(around(nodes));
    int64_t value = 0;
    for (const char* name : {"N0", "N25000", "N49999"})
        EXPECT_EQ(read(camera, name, value), KX_E_GC_RUNTIME) << camera.lastError();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << "minutes, one by one";
}

// Where what lies between does not fit 64 bits with a sign: for who saves a bag, reads ahead or looks for
// registers.
TEST(HostileDescription, rangesThatEndWhereSixtyFourBitsDo)
{
    const auto camera = [](const std::string& minimum, const std::string& maximum, const std::string& step) {
        return around(
            "<Category Name=\"Root\"><pFeature>Index</pFeature><pFeature>Entry</pFeature></Category>"
            "<Integer Name=\"Index\"><Value>" +
            minimum + "</Value><Min>" + minimum + "</Min><Max>" + maximum + "</Max><Inc>" + step +
            "</Inc><pSelected>Entry</pSelected></Integer><Integer Name=\"Entry\"><Streamable>Yes"
            "</Streamable><pValue>Reg</pValue></Integer><IntReg Name=\"Reg\"><Address>0x100</Address>"
            "<IntSwissKnife Name=\"Off\"><pVariable Name=\"I\">Index</pVariable>"
            "<Formula>(I&gt;0)?16:0</Formula></IntSwissKnife><Length>4</Length><AccessMode>RW"
            "</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess></IntReg>");
    };
    const char* lowest = "-9223372036854775808";
    const char* highest = "9223372036854775807";
    const struct
    {
        std::string minimum, maximum, step;
        std::vector<std::string> values;
    } cases[] = {
        {lowest,
         highest,
         "4611686018427387904",
         {lowest, "-4611686018427387904", "0", "4611686018427387904"}},
        {lowest, lowest, highest, {lowest}},
        {lowest, "0", highest, {lowest, "-1"}},
        {lowest, highest, highest, {lowest, "-1", "9223372036854775806"}},
        {highest, highest, highest, {highest}},
    };
    for (const auto& one : cases) {
        tests::FakeCamera fake(camera(one.minimum, one.maximum, one.step));
        char name[] = "/tmp/hostile_XXXXXX";
        ::close(mkstemp(name)); // on Windows nobody replaces a file that is open
        EXPECT_EQ(KX_CC_FeatureSave(fake.handle, name), KX_OK) << fake.lastError();
        std::ifstream bag(name);
        std::vector<std::string> values;
        for (std::string line; std::getline(bag, line);)
            if (line.rfind("Index\t", 0) == 0)
                values.push_back(line.substr(6));
        std::remove(name);
        ASSERT_FALSE(values.empty());
        values.pop_back(); // the one that it had
        EXPECT_EQ(values, one.values) << one.minimum << " to " << one.maximum;
        KX_RegisterCoverage coverage{};
        EXPECT_EQ(KX_CC_GetRegisterCoverage(fake.handle, 0, 0x1000, &coverage), KX_OK);
    }
}

// Named parts that double fourteen times, in each of many formulas; and one of blanks that is met time and
// again.
TEST(HostileDescription, formulasAreReadUpToABoundOfAllTogether)
{
    const auto knife = [](int number, const std::string& first, int doublings) {
        std::string text = "<IntSwissKnife Name=\"K" + std::to_string(number) +
                           "\"><Expression Name=\"A0\">" + first + "</Expression>";
        for (int i = 1; i <= doublings; ++i) {
            const std::string before = "(A" + std::to_string(i - 1) + ")";
            text +=
                "<Expression Name=\"A" + std::to_string(i) + "\">" + before + "+" + before + "</Expression>";
        }
        return text + "<Formula>A" + std::to_string(doublings) + "</Formula></IntSwissKnife>";
    };
    std::string nodes;
    for (int i = 0; i < 200; ++i)
        nodes += knife(i, "1", 14);
    tests::FakeCamera camera(around(nodes));
    int64_t value = 0;
    EXPECT_EQ(read(camera, "K0", value), KX_OK) << camera.lastError();
    EXPECT_EQ(value, 16384);
    EXPECT_EQ(read(camera, "K199", value), KX_E_GC_RUNTIME);
    EXPECT_NE(camera.lastError().find("it and the formulas before it are too long together"),
              std::string::npos)
        << camera.lastError();
    tests::FakeCamera blank(around(knife(0, "1" + std::string(50000, ' ') + "+0", 15) + knife(1, "1", 1)));
    EXPECT_EQ(read(blank, "K0", value), KX_E_GC_RUNTIME);
}

TEST(HostileDescription, fiftyThousandFeaturesAreReadLikeAnyOther)
{
    std::string list = "<Category Name=\"Root\">";
    std::string nodes;
    for (int i = 0; i < 50000; ++i) {
        const std::string number = std::to_string(i);
        list += "<pFeature>Sel" + number + "</pFeature>";
        nodes += integer(number, "<Address>" + std::to_string(4 * i) + "</Address>");
    }
    tests::FakeCamera camera(around(list + "</Category>" + nodes));
    ASSERT_EQ(camera.openStatus, KX_OK);
    camera.device.set32(4 * 49999, 7);
    camera.device.requests.clear();
    int64_t value = 0;
    EXPECT_EQ(read(camera, "Sel49999", value), KX_OK) << camera.lastError();
    EXPECT_EQ(value, 7);
    EXPECT_EQ(camera.device.requests.size(), 1u);
    KX_RegisterCoverage coverage{};
    EXPECT_EQ(KX_CC_GetRegisterCoverage(camera.handle, 4 * 49999, 4, &coverage), KX_OK);
    EXPECT_EQ(coverage.registers, 1u);
}

// A camera whose answers stay fresh for as long as a test takes.
void setUnhurried(tests::FakeDevice& device)
{
    device.registersPerRequest = 128;
    device.keepTime = std::chrono::hours(1);
}

TEST(HostileDescription, aWalkOverFiftyThousandFeaturesTakesARequestForMoreThanAHundredOfThem)
{
    const tests::ReadingAhead on(true);
    std::string list = "<Category Name=\"Root\">";
    std::string nodes;
    std::vector<std::string> names;
    for (int i = 0; i < 50000; ++i) {
        const std::string number = std::to_string(100000 + i); // the order of names is that of numbers
        names.push_back("Sel" + number);
        list += "<pFeature>Sel" + number + "</pFeature>";
        nodes += integer(number, "<Address>" + std::to_string(16 * i) + "</Address>");
    }
    tests::FakeCamera camera(around(list + "</Category>" + nodes), KX_ACCESS_EXCLUSIVE, setUnhurried);
    ASSERT_EQ(camera.openStatus, KX_OK);
    for (uint64_t i = 0; i < 50000; ++i)
        camera.device.set32(16 * i, uint32_t(i % 8));
    camera.device.requests.clear();
    for (size_t i = 0; i < names.size(); ++i) {
        int64_t value = -1;
        ASSERT_EQ(read(camera, names[i].c_str(), value), KX_OK) << camera.lastError();
        ASSERT_EQ(value, int64_t(i % 8)) << names[i];
    }
    EXPECT_LT(camera.device.requests.size(), 50000u / 100);
}

// Every feature's register lies where the last of twenty selectors says, each of which lies where the one
// before it says.
TEST(HostileDescription, aWalkOverFeaturesBehindTwentySelectorsGoesDownTheChainOnce)
{
    const tests::ReadingAhead on(true);
    constexpr int kFeatures = 400;
    std::string list = "<Category Name=\"Root\">";
    std::string nodes;
    std::string before;
    for (int i = 0; i < 20; ++i) {
        const std::string number = std::to_string(10 + i);
        nodes += integer(number, "<Address>" + std::to_string(0x1000 * (i + 1)) + "</Address>" +
                                     (before.empty() ? "" : "<pIndex Offset=\"64\">" + before + "</pIndex>"));
        before = "Sel" + number;
    }
    for (int i = 0; i < kFeatures; ++i) {
        const std::string number = std::to_string(1000 + i);
        list += "<pFeature>Sel" + number + "</pFeature>";
        nodes += integer(number, "<Address>" + std::to_string(0x100000 + 64 * i) +
                                     "</Address><pIndex Offset=\"4\">" + before + "</pIndex>");
    }
    tests::FakeCamera camera(around(list + "</Category>" + nodes), KX_ACCESS_EXCLUSIVE, setUnhurried);
    ASSERT_EQ(camera.openStatus, KX_OK);
    uint32_t selected = 0;
    for (uint64_t i = 0; i < 20; ++i) {
        const uint64_t address = 0x1000 * (i + 1) + 64 * selected;
        selected = uint32_t(i * 3 % 8);
        camera.device.set32(address, selected);
    }
    for (uint64_t i = 0; i < kFeatures; ++i)
        camera.device.set32(0x100000 + 64 * i + 4 * selected, uint32_t(i % 8));
    camera.device.requests.clear();
    for (int i = 0; i < kFeatures; ++i) {
        int64_t value = -1;
        ASSERT_EQ(read(camera, ("Sel" + std::to_string(1000 + i)).c_str(), value), KX_OK)
            << camera.lastError();
        ASSERT_EQ(value, int64_t(i % 8)) << i;
    }
    EXPECT_LE(camera.device.requests.size(), 20u + 10);
}

// Who asks by address cuts to 32 bits what his line has no more of. That is a row of reads as well.
TEST(HostileDescription, whatLiesBehindAPlaceThatTheLineHasNotIsReadByAddressInARow)
{
    const tests::ReadingAhead on(true);
    constexpr uint64_t far = 0xFFFFD0000000;
    constexpr int kFeatures = 40;
    const auto condition = [](const std::string& text) { return "<pIsAvailable>Reg0</pIsAvailable>" + text; };
    std::string nodes = integer("0", "<Address>" + std::to_string(far) + "</Address>");
    std::string list = "<Category Name=\"Root\">";
    for (uint64_t i = 1; i <= kFeatures; ++i) {
        const std::string number = std::to_string(100 + i);
        list += "<pFeature>Sel" + number + "</pFeature>";
        nodes += integer(number, condition("<Address>" + std::to_string(far + 16 * i) + "</Address>"));
    }
    tests::FakeCamera camera(around(list + "</Category>" + nodes), KX_ACCESS_EXCLUSIVE,
                             [&](tests::FakeDevice& device) {
                                 setUnhurried(device);
                                 device.failures = {{far, KX_E_GC_ACCESS}};
                             });
    ASSERT_EQ(camera.openStatus, KX_OK);
    for (uint64_t i = 1; i <= kFeatures; ++i)
        camera.device.set32(0xD0000000 + 16 * i, uint32_t(i));
    camera.device.requests.clear();
    for (uint64_t i = 1; i <= kFeatures; ++i) {
        int64_t value = 0;
        EXPECT_NE(read(camera, ("Sel" + std::to_string(100 + i)).c_str(), value), KX_OK);
        uint8_t bytes[4] = {};
        EXPECT_EQ(KX_CC_ReadMemory(camera.handle, bytes, int64_t(0xD0000000 + 16 * i), 4), KX_OK);
        EXPECT_EQ(bytes[3], i);
    }
    std::vector<std::string>& requests = camera.device.requests;
    const auto isFar = [](const std::string& request) { return request == "read ffffd0000000 4"; };
    requests.erase(std::remove_if(requests.begin(), requests.end(), isFar), requests.end());
    EXPECT_LE(requests.size(), 8u);
}

} // namespace
