// Reading ahead: the same answers and the same writes as without, in fewer requests, and nothing read that
// must not be.
#include "camera/FakePort.h"
#include "support/RegisterByRegister.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <random>
#include <thread>

namespace
{

constexpr uint64_t kMode = 0x100, kMaximum = 0x104, kPresent = 0x108, kSelector = 0x10C, kPolled = 0x200,
                   kWriteOnly = 0x204, kCommand = 0x208, kChunk = 0x20C, kHidden = 0x210, kFifo = 0x214,
                   kIndexed = 0x1000, kTexts = 0x3000;

std::string reg(const std::string& name, const std::string& place, const std::string& more = {},
                const std::string& kind = "IntReg")
{
    const std::string access =
        more.find("<AccessMode>") == std::string::npos ? "<AccessMode>RW</AccessMode>" : "";
    const std::string port = more.find("<pPort>") == std::string::npos ? "<pPort>Device</pPort>" : "";
    return "<" + kind + " Name=\"" + name + "\">" + place +
           (place.find("Length") == std::string::npos ? "<Length>4</Length>" : "") + access + port + more +
           "<Endianess>BigEndian</Endianess></" + kind + ">";
}

std::string at(uint64_t address)
{
    return "<Address>" + std::to_string(address) + "</Address>";
}

std::string integer(const std::string& name, const std::string& inside)
{
    return "<Integer Name=\"" + name + "\">" + inside + "</Integer>";
}

// Registers that hang on each other in the ways that GenICam knows; the names make the order of the features.
std::string description(int plain)
{
    std::string nodes = "<Port Name=\"Device\"/><Port Name=\"Chunk\"><ChunkID>1</ChunkID></Port>";
    std::string names;
    const auto feature = [&](const std::string& name, const std::string& text) {
        nodes += text;
        names += "<pFeature>" + name + "</pFeature>";
    };
    nodes += reg("ModeReg", at(kMode)) +
             reg("MaximumReg", at(kMaximum), "<AccessMode>RO</AccessMode><pInvalidator>Mode</pInvalidator>") +
             reg("PresentReg", at(kPresent), "<pInvalidator>Mode</pInvalidator>") +
             reg("SelectorReg", at(kSelector)) + reg("HiddenReg", at(kHidden)) +
             "<IntSwissKnife Name=\"IsSmall\"><pVariable Name=\"M\">ModeReg</pVariable><Formula>M &lt; "
             "2</Formula></IntSwissKnife>" +
             "<IntSwissKnife Name=\"Place\"><pVariable Name=\"S\">SelectorReg</pVariable><Formula>0x2000 + "
             "16 * S</Formula></IntSwissKnife>" +
             "<MaskedIntReg Name=\"Bit0\">" + at(kPresent) +
             "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Bit>31</"
             "Bit><Endianess>BigEndian</Endianess></MaskedIntReg>";
    feature("Mode", integer("Mode", "<pValue>ModeReg</pValue><Min>0</Min><Max>3</Max>"));
    feature("Limited", integer("Limited", "<pValue>LimitedReg</pValue><Min>0</Min><pMax>MaximumReg</pMax>") +
                           reg("LimitedReg", at(0x110)));
    feature("MaybeThere",
            integer("MaybeThere", "<pIsAvailable>Bit0</pIsAvailable><pValue>HiddenReg</pValue>"));
    feature("MaybeImplemented",
            integer("MaybeImplemented", "<pIsImplemented>IsSmall</pIsImplemented><pValue>MaybeReg</pValue>") +
                reg("MaybeReg", at(0x114)));
    feature("Lockable", integer("Lockable", "<pIsLocked>IsSmall</pIsLocked><pValue>LockableReg</pValue>") +
                            reg("LockableReg", at(0x118)));
    feature(
        "Selector",
        "<Enumeration Name=\"Selector\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry><EnumEntry "
        "Name=\"B\"><Value>1</Value></EnumEntry>"
        "<EnumEntry "
        "Name=\"C\"><pIsAvailable>Bit0</pIsAvailable><Value>2</Value></EnumEntry><pValue>SelectorReg</pValue>"
        "<pSelected>Placed</pSelected><pSelected>Indexed</pSelected><pSelected>DataFifo</pSelected></"
        "Enumeration>");
    feature("Placed",
            integer("Placed", "<pValue>PlacedReg</pValue>") + reg("PlacedReg", "<pAddress>Place</pAddress>"));
    feature("Indexed", integer("Indexed", "<pValue>IndexedReg</pValue>") +
                           reg("IndexedReg", at(kIndexed) + "<pIndex Offset=\"8\">SelectorReg</pIndex>"));
    feature(
        "OneOfMany",
        integer("OneOfMany",
                "<pIndex>ModeReg</pIndex><pValueIndexed Index=\"1\">LimitedReg</pValueIndexed><pValueIndexed "
                "Index=\"2\">LockableReg</pValueIndexed><pValueDefault>PlacedReg</pValueDefault>"));
    feature("Copied", integer("Copied", "<pValue>CopyA</pValue><pValueCopy>CopyB</pValueCopy>") +
                          reg("CopyA", at(0x120)) + reg("CopyB", at(0x124)));
    feature("Switch", "<Boolean Name=\"Switch\"><pValue>Bit5</pValue></Boolean><MaskedIntReg Name=\"Bit5\">" +
                          at(0x128) +
                          "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Bit>5</"
                          "Bit><Endianess>BigEndian</Endianess></MaskedIntReg>");
    feature("Real",
            "<Float Name=\"Real\"><pValue>Scaled</pValue></Float><Converter Name=\"Scaled\"><pVariable "
            "Name=\"M\">ModeReg</pVariable><FormulaTo>FROM*(M+1)</FormulaTo><FormulaFrom>TO/(M+1)</"
            "FormulaFrom><pValue>RealReg</pValue></Converter>" +
                reg("RealReg", at(0x12C)));
    feature("Computed", "<IntSwissKnife Name=\"Computed\"><pVariable Name=\"A\">CopyA</pVariable><pVariable "
                        "Name=\"B\">Placed</pVariable><Formula>A+B</Formula></IntSwissKnife>");
    feature("Text", reg("Text", at(kTexts) + "<pLength>ModeText</pLength>", "", "StringReg") +
                        "<IntSwissKnife Name=\"ModeText\"><pVariable "
                        "Name=\"M\">ModeReg</pVariable><Formula>8*(M+1)</Formula></IntSwissKnife>");
    feature("Wide", reg("Wide", at(0x130) + "<Length>8</Length>"));
    feature("PolledCount",
            reg("PolledCount", at(kPolled),
                "<AccessMode>RO</AccessMode><Cachable>NoCache</Cachable><PollingTime>100</PollingTime>"));
    feature("WriteOnly", reg("WriteOnly", at(kWriteOnly), "<AccessMode>WO</AccessMode>"));
    feature("Start",
            "<Command Name=\"Start\"><pValue>StartReg</pValue><CommandValue>1</CommandValue></Command>" +
                reg("StartReg", at(kCommand)));
    feature("Started", integer("Started", "<pValue>StartReg</pValue>"));
    feature("InChunk", reg("InChunk", at(kChunk), "<pPort>Chunk</pPort>"));
    feature("DataFifo",
            reg("DataFifo", at(kFifo), "<AccessMode>RO</AccessMode><Cachable>NoCache</Cachable>"));
    for (int i = 0; i < plain; ++i) {
        const std::string number = std::to_string(1000 + i);
        feature("N" + number, integer("N" + number, "<pValue>NReg" + number + "</pValue>") +
                                  reg("NReg" + number, at(0x4000 + 16 * uint64_t(i))));
    }
    return "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\"><Category Name=\"Root\">" +
           names + "</Category>" + nodes + "</RegisterDescription>";
}

const std::vector<std::string> kNames = {
    "Computed",   "Copied",   "DataFifo",    "InChunk", "Indexed",  "Limited", "Lockable", "MaybeImplemented",
    "MaybeThere", "Mode",     "N1000",       "N1001",   "N1002",    "N1003",   "N1004",    "N1005",
    "OneOfMany",  "Placed",   "PolledCount", "Real",    "Selector", "Started", "Switch",   "Text",
    "Wide",       "WriteOnly"};

class Camera
{
public:
    Camera(bool isOn, size_t registersPerRequest, int plain = 6)
        : m_setting(isOn), camera(description(plain), KX_ACCESS_EXCLUSIVE, [&](tests::FakeDevice& fresh) {
              fresh.registersPerRequest = registersPerRequest;
          })
    {
        EXPECT_EQ(camera.openStatus, KX_OK);
        device().set32(kPresent, 1);
        device().set32(kMaximum, 10);
        for (uint64_t i = 0; i < 64; ++i)
            device().set32(0x1000 + 4 * i, uint32_t(100 + i)),
                device().set32(0x2000 + 4 * i, uint32_t(500 + i));
        // What the camera changes when its mode is set: as its description's pInvalidators say.
        device().wrote = [this](uint64_t address) {
            if (address != kMode)
                return;
            device().set32(kMaximum, 10 * (device().get32(kMode) + 1));
            device().set32(kPresent, device().get32(kMode) == 3 ? 0 : 1);
        };
        device().requests.clear();
        device().wordReads.clear();
    }

    tests::FakeDevice& device() { return camera.device; }
    KX_HANDLE handle() { return camera.handle; }

    // What the getter answers, as a text.
    std::string get(const std::string& name)
    {
        KX_IntegerValue integer{};
        KX_FloatValue real{};
        KX_StringValue text{};
        KX_EnumValue entries{};
        bool flag = false;
        const auto answer = [](KX_Status status, const std::string& value) {
            return status == KX_OK ? value : "status " + std::to_string(status);
        };
        if (name == "Real") {
            const KX_Status status = KX_CC_GetFloatValue(handle(), name.c_str(), &real);
            return answer(status, std::to_string(real.current));
        }
        if (name == "Text") {
            const KX_Status status = KX_CC_GetStringValue(handle(), name.c_str(), &text);
            return answer(status, text.current + std::to_string(text.maximumLength));
        }
        if (name == "Switch") {
            const KX_Status status = KX_CC_GetBoolValue(handle(), name.c_str(), &flag);
            return answer(status, flag ? "1" : "0");
        }
        if (name == "Selector") {
            const KX_Status status = KX_CC_GetEnumValue(handle(), name.c_str(), &entries);
            return answer(status,
                          std::to_string(entries.current) + " of " + std::to_string(entries.supportedCount));
        }
        const KX_Status status = KX_CC_GetIntValueEx(handle(), name.c_str(), &integer);
        return answer(status, std::to_string(integer.current) + " " + std::to_string(integer.minimum) + " " +
                                  std::to_string(integer.maximum) + " " + std::to_string(integer.increment));
    }
    std::string set(const std::string& name, unsigned value)
    {
        KX_Status status = KX_OK;
        if (name == "Real")
            status = KX_CC_SetFloatValue(handle(), name.c_str(), float(value));
        else if (name == "Text")
            status = KX_CC_SetStringValue(handle(), name.c_str(), std::string(value % 9, 'x').c_str());
        else if (name == "Switch")
            status = KX_CC_SetBoolValue(handle(), name.c_str(), value % 2 == 1);
        else if (name == "Selector")
            status = KX_CC_SetEnumValue(handle(), name.c_str(), value % 4);
        else
            status = KX_CC_SetIntValueEx(handle(), name.c_str(), value);
        return std::to_string(status);
    }
    std::string mode(const std::string& name)
    {
        KX_XML_AccessMode mode = KX_AM_UNDEFINED;
        const KX_Status status = KX_XML_GetNodeAccessMode(handle(), name.c_str(), &mode);
        return std::to_string(status) + " " + std::to_string(mode);
    }
    std::string raw(uint64_t address)
    {
        uint8_t bytes[4] = {};
        const KX_Status status = KX_CC_ReadMemory(handle(), bytes, int64_t(address), 4);
        return std::to_string(status) + " " + std::to_string(bytes[2] * 256 + bytes[3]);
    }
    std::vector<std::string> writes()
    {
        std::vector<std::string> found;
        for (const std::string& request : device().requests)
            if (request.rfind("write", 0) == 0)
                found.push_back(request);
        return found;
    }

private:
    tests::ReadingAhead m_setting;

public:
    tests::FakeCamera camera;
};

// One call on both cameras has to come to the same.
template <class Call>
void both(Camera& ahead, Camera& singly, unsigned tick, const std::string& what, Call call)
{
    for (Camera* camera : {&ahead, &singly})
        camera->device().set32(kPolled, tick); // it never stands still
    ASSERT_EQ(call(ahead), call(singly)) << what << " at " << tick;
}

class Model : public testing::TestWithParam<std::tuple<unsigned, size_t>>
{
};

TEST_P(Model, AnswersAndWritesAreTheSameAsWithoutReadingAhead)
{
    const auto [seed, registersPerRequest] = GetParam();
    Camera ahead(true, registersPerRequest);
    Camera singly(false, registersPerRequest);
    std::mt19937 random(seed);
    const auto below = [&](size_t limit) { return size_t(random() % limit); };
    for (unsigned tick = 0; tick < 600; ++tick) {
        const std::string& name = kNames[below(kNames.size())];
        const auto value = unsigned(below(12));
        switch (below(12)) {
        case 0:
        case 1:
            both(ahead, singly, tick, "set " + name, [&](Camera& camera) { return camera.set(name, value); });
            break;
        case 2:
            both(ahead, singly, tick, "set Mode",
                 [&](Camera& camera) { return camera.set("Mode", value % 4); });
            break;
        case 3:
            both(ahead, singly, tick, "set Selector",
                 [&](Camera& camera) { return camera.set("Selector", value % 3); });
            break;
        case 4:
            both(ahead, singly, tick, "mode of " + name, [&](Camera& camera) { return camera.mode(name); });
            break;
        case 5:
            both(ahead, singly, tick, "execute", [&](Camera& camera) {
                return std::to_string(KX_CC_ExecuteCommand(camera.handle(), "Start"));
            });
            break;
        case 6:
            both(ahead, singly, tick, "fault", [&](Camera& camera) {
                camera.device().failures.clear();
                if (value < 6)
                    camera.device().failures = {{0x110 + 4 * (value % 3), KX_E_GC_ACCESS}};
                return std::string();
            });
            // What was read before the fault may still serve; behind a write it does not.
            both(ahead, singly, tick, "write", [&](Camera& camera) { return camera.set("N1000", value); });
            break;
        default: // a row of calls, in which a job asks by address where it has no feature
            for (size_t i = below(kNames.size()); i < kNames.size(); ++i) {
                both(ahead, singly, ++tick, "get " + kNames[i],
                     [&](Camera& camera) { return camera.get(kNames[i]); });
                if (kNames[i] == "Indexed" || kNames[i] == "Placed")
                    for (uint64_t k = 0; k < 3; ++k)
                        both(ahead, singly, ++tick, "raw", [&](Camera& camera) {
                            return camera.raw(kNames[i] == "Indexed" ? kIndexed + 8 * k : 0x2000 + 16 * k);
                        });
                if (kNames[i] == "MaybeThere")
                    both(ahead, singly, ++tick, "raw", [&](Camera& camera) { return camera.raw(kHidden); });
            }
        }
        if (HasFatalFailure())
            return;
    }
    EXPECT_EQ(ahead.writes(), singly.writes());
    EXPECT_EQ(ahead.device().memory, singly.device().memory);
    for (const uint64_t address : {kPolled, kWriteOnly, kCommand, kChunk, kFifo})
        EXPECT_EQ(ahead.device().wordReads[address], singly.device().wordReads[address]) << address;
    EXPECT_LT(ahead.device().requests.size(), singly.device().requests.size());
}

INSTANTIATE_TEST_SUITE_P(Seeds, Model,
                         testing::Combine(testing::Range(1u, 13u), testing::Values(size_t{1}, size_t{128})));

TEST(ReadAhead, oneGetterByItselfAsksForItsOwnRegistersAlone)
{
    for (const std::string& name : kNames) {
        Camera ahead(true, 128);
        Camera singly(false, 128);
        EXPECT_EQ(ahead.get(name), singly.get(name)) << name;
        EXPECT_EQ(ahead.device().requests, singly.device().requests) << name;
    }
}

TEST(ReadAhead, gettersInNoOrderTakeNoMoreRequests)
{
    std::mt19937 random(7);
    std::vector<std::string> names = kNames;
    std::shuffle(names.begin(), names.end(), random);
    Camera ahead(true, 128);
    Camera singly(false, 128);
    for (const std::string& name : names) {
        EXPECT_EQ(ahead.get(name), singly.get(name)) << name;
        EXPECT_LE(ahead.device().requests.size(), singly.device().requests.size()) << name;
    }
}

TEST(ReadAhead, whoJumpsTakesAlongWhatFitsHisRequest)
{
    Camera camera(true, 128, 100);
    camera.get("N1090");
    camera.get("N1050");
    camera.device().requests.clear();
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(camera.get("N" + std::to_string(1000 + i)).substr(0, 2), "0 ");
    EXPECT_TRUE(camera.device().requests.empty());
}

TEST(ReadAhead, whoJumpsTakesNoMoreThanThatHoweverFarARowBeforeReadOn)
{
    Camera camera(true, 16, 300);
    for (int i = 0; i < 300; ++i)
        camera.get("N" + std::to_string(1000 + i));
    std::this_thread::sleep_for(std::chrono::milliseconds(310)); // what was read is old
    camera.get("N1200");
    camera.device().requests.clear();
    camera.get("N1100");
    EXPECT_EQ(camera.device().requests.size(), 1u);
}

TEST(ReadAhead, aRowWithWritesTakesTwoRequestsForEachOfThem)
{
    Camera camera(true, 128, 300);
    for (int i = 0; i < 300; ++i) {
        const std::string name = "N" + std::to_string(1000 + i);
        EXPECT_EQ(camera.get(name).substr(0, 2), "0 ");
        if (i % 15 == 7) {
            EXPECT_EQ(camera.set(name, 1), "0");
        }
    }
    EXPECT_LE(camera.device().requests.size(), 12u + 2 * 20);
}

TEST(ReadAhead, aRowOfGettersTakesAHandfulOfRequests)
{
    Camera camera(true, 128, 300);
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ(camera.get("N" + std::to_string(1000 + i)).substr(0, 2), "0 ");
    EXPECT_LE(camera.device().requests.size(), 12u);
}

// Who asks by address for one place of a selected feature, and for another, has the others with that.
TEST(ReadAhead, placesOfASelectedFeatureAreReadTogether)
{
    Camera camera(true, 128);
    for (const char* name : {"PolledCount", "Selector", "Computed", "Copied", "Indexed"})
        camera.get(name);
    camera.device().requests.clear();
    for (uint64_t k = 0; k < 3; ++k)
        camera.raw(kIndexed + 8 * k);
    EXPECT_EQ(camera.device().requests.size(), 1u);
}

TEST(ReadAhead, whatIsNotAvailableOrNotImplementedIsNotRead)
{
    Camera camera(true, 128);
    camera.device().set32(kPresent, 0);
    camera.device().set32(kMode, 2);
    for (const std::string& name : kNames)
        camera.get(name);
    EXPECT_EQ(camera.device().wordReads.count(kHidden), 0u);
    EXPECT_EQ(camera.device().wordReads.count(0x114), 0u);
    EXPECT_GT(camera.device().wordReads.count(0x4000), 0u);
}

TEST(ReadAhead, aWriteLetsNothingOldBeSeen)
{
    Camera camera(true, 128);
    const auto walk = [&] {
        std::string all;
        for (const std::string& name : kNames)
            all += name + "=" + camera.get(name) + "\n";
        return all;
    };
    walk();
    camera.device().set32(0x4000, 77); // changes by itself, as a consequence that no description tells of
    EXPECT_EQ(camera.set("Lockable", 5), std::to_string(KX_E_GC_ACCESS));
    EXPECT_EQ(camera.set("Mode", 2), "0");
    const std::string all = walk();
    EXPECT_NE(all.find("N1000=77 "), std::string::npos) << all;
    EXPECT_NE(all.find("Limited=0 0 30 "), std::string::npos) << all;
    EXPECT_NE(all.find("MaybeImplemented=status"), std::string::npos) << all;
}

TEST(ReadAhead, nothingIsOlderThanThreeTenthsOfASecond)
{
    Camera camera(true, 128, 300);
    for (int i = 0; i < 5; ++i)
        camera.get("N" + std::to_string(1000 + i));
    camera.device().requests.clear();
    camera.get("N1005");
    EXPECT_TRUE(camera.device().requests.empty()) << "it has been read";
    camera.device().set32(0x4000 + 16 * 6, 9);
    std::this_thread::sleep_for(std::chrono::milliseconds(310)); // the span itself is what is tested
    EXPECT_EQ(camera.get("N1006").substr(0, 2), "9 ");
}

TEST(ReadAhead, aRegisterThatIsNeverAnsweredCostsATimeOutEachTimeItIsAskedForAndOneMore)
{
    Camera camera(true, 128, 100);
    camera.device().failures = {{0x4000 + 16 * 40, KX_E_NO_ANSWER}};
    unsigned asked = 0;
    for (int i = 0; i < 100; ++i) {
        const std::string answer = camera.get("N" + std::to_string(1000 + i));
        asked += i == 40;
        EXPECT_EQ(answer == "status " + std::to_string(KX_E_NO_ANSWER), i == 40) << i;
    }
    EXPECT_LE(camera.device().wordReads[0x4000 + 16 * 40], asked + 1);
}

TEST(ReadAhead, aCallerByAddressSeesWhatIsThereNowWhenHeAsksAgain)
{
    Camera camera(true, 128);
    for (const char* name : {"Indexed", "Limited", "MaybeThere"})
        camera.get(name);
    camera.raw(kIndexed);
    camera.device().set32(kIndexed, 4711);
    EXPECT_EQ(camera.raw(kIndexed), "0 4711");
}

TEST(ReadAhead, registersOfALittleEndianCameraAreNotMixedWithItsMemory)
{
    const tests::ReadingAhead on(true);
    tests::FakeCamera camera(description(20), KX_ACCESS_EXCLUSIVE, [](tests::FakeDevice& device) {
        device.registersPerRequest = 128;
        device.registersAreMemory = false;
    });
    camera.device.requests.clear();
    KX_IntegerValue value{};
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(KX_CC_GetIntValueEx(camera.handle, ("N" + std::to_string(1000 + i)).c_str(), &value),
                  KX_OK);
    for (const std::string& request : camera.device.requests)
        EXPECT_EQ(request.rfind("read ", 0), 0u) << request;
}

} // namespace
