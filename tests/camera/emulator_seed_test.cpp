// First contents of the registers, and what a description tells of them.
#include "camera_emulator/Description.h"
#include "camera_emulator/Seed.h"

#include <gtest/gtest.h>

using emu::Bytes;
using emu::Description;
using emu::Memory;
using emu::NodeValue;

namespace
{

std::string description(const std::string& nodes)
{
    return "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"0\" "
           "SchemaSubMinorVersion=\"3\">" +
           nodes +
           "<Port Name=\"Device\"/><Port Name=\"Chunk\"><ChunkID>1</ChunkID></Port></RegisterDescription>";
}

std::string reg(const std::string& tag, const std::string& name, const std::string& rest)
{
    return "<" + tag + " Name=\"" + name + "\">" + rest + "<pPort>Device</pPort></" + tag + ">";
}

// The problems and remarks of a seed of nodes, in one text.
std::string seedNodes(const std::string& nodes, const Description& description, Memory& memory)
{
    std::string all;
    const emu::SeedResult result = emu::applySeed("{\"nodes\": {" + nodes + "}}", description, memory);
    for (const auto* sentences : {&result.problems, &result.remarks})
        for (const std::string& sentence : *sentences)
            all += sentence;
    return all;
}

const char kBig[] = "<Endianess>BigEndian</Endianess>";

} // namespace

TEST(EmulatorSeed, integersFollowTheRegistersByteOrderAndLength)
{
    const Description nodes(
        description(reg("IntReg", "Big", "<Address>0x100</Address><Length>4</Length>" + std::string(kBig)) +
                    reg("IntReg", "Little", "<Address>0x104</Address><Length>4</Length>") +
                    reg("IntReg", "Short", "<Address>266</Address><Length>2</Length>" + std::string(kBig)) +
                    reg("IntReg", "Long", "<Address>0x110</Address><Length>8</Length>" + std::string(kBig))));
    Memory memory;
    EXPECT_EQ(
        seedNodes("\"Big\": 640, \"Little\": 640, \"Short\": -2, \"Long\": -1234567890123", nodes, memory),
        "");
    EXPECT_EQ(memory.read(0x100, 4), (Bytes{0, 0, 2, 0x80}));
    EXPECT_EQ(memory.read(0x104, 4), (Bytes{0x80, 2, 0, 0}));
    EXPECT_EQ(memory.read(0x10A, 2), (Bytes{0xFF, 0xFE}));
    EXPECT_EQ(memory.read(0x110, 8), (Bytes{0xFF, 0xFF, 0xFE, 0xE0, 0x8E, 0x04, 0xFB, 0x35}));
}

TEST(EmulatorSeed, bitFieldsLeaveTheirNeighbours)
{
    const std::string place = "<Address>0x100</Address><Length>4</Length>";
    const Description nodes(
        description(reg("MaskedIntReg", "BigLow", place + "<LSB>31</LSB><MSB>24</MSB>" + kBig) +
                    reg("MaskedIntReg", "BigTop", place + "<Bit>0</Bit>" + kBig) +
                    reg("MaskedIntReg", "LittleLow",
                        "<Address>0x104</Address><Length>4</Length><LSB>0</LSB><MSB>7</MSB>") +
                    "<StructReg Comment=\"c\">" + place + "<pPort>Device</pPort>" + kBig +
                    "<StructEntry Name=\"Entry\"><LSB>23</LSB><MSB>16</MSB></StructEntry></StructReg>"));
    Memory memory;
    EXPECT_EQ(seedNodes("\"BigLow\": 171, \"BigTop\": 1, \"LittleLow\": 18, \"Entry\": 5", nodes, memory),
              "");
    EXPECT_EQ(memory.read(0x100, 8), (Bytes{0x80, 0, 5, 0xAB, 0x12, 0, 0, 0}));
}

TEST(EmulatorSeed, floatsAndTexts)
{
    const Description nodes(description(
        reg("FloatReg", "Single", "<Address>0x100</Address><Length>4</Length>" + std::string(kBig)) +
        reg("FloatReg", "Double", "<Address>0x108</Address><Length>8</Length>") +
        reg("StringReg", "Text", "<Address>0x200</Address><Length>8</Length>")));
    Memory memory;
    memory.write(0x200, Bytes(9, 'x'));
    EXPECT_EQ(seedNodes("\"Single\": 1.5, \"Double\": 25, \"Text\": \"1.2.3\"", nodes, memory), "");
    EXPECT_EQ(memory.read(0x100, 4), (Bytes{0x3F, 0xC0, 0, 0}));
    EXPECT_EQ(memory.read(0x108, 8), (Bytes{0, 0, 0, 0, 0, 0, 0x39, 0x40}));
    EXPECT_EQ(memory.read(0x200, 9), (Bytes{'1', '.', '2', '.', '3', 0, 0, 0, 'x'}));
}

TEST(EmulatorSeed, featuresLeadToTheirRegisters)
{
    const Description nodes(description(
        "<Integer Name=\"Width\"><pValue>Step</pValue></Integer><Integer "
        "Name=\"Step\"><pValue>WidthReg</pValue></Integer>"
        "<Integer Name=\"Offset\"><Value>0x40</Value></Integer>"
        "<Boolean Name=\"Flip\"><pValue>FlipReg</pValue><OnValue>5</OnValue><OffValue>2</OffValue></Boolean>"
        "<Enumeration Name=\"Mode\"><EnumEntry Name=\"A\"><Value>1</Value></EnumEntry>"
        "<EnumEntry Name=\"B\"><Value>0x11</Value></EnumEntry><pValue>ModeReg</pValue></Enumeration>" +
        reg("IntReg", "WidthReg",
            "<Address>0x100</Address><pAddress>Offset</pAddress><Length>4</Length>" + std::string(kBig)) +
        reg("IntReg", "FlipReg", "<Address>0x200</Address><Length>4</Length>" + std::string(kBig)) +
        reg("IntReg", "ModeReg", "<Address>0x204</Address><Length>4</Length>" + std::string(kBig))));
    Memory memory;
    EXPECT_EQ(seedNodes("\"Width\": 640, \"Flip\": true, \"Mode\": \"B\"", nodes, memory), "");
    EXPECT_EQ(memory.readWord(0x140), 640u);
    EXPECT_EQ(memory.readWord(0x200), 5u);
    EXPECT_EQ(memory.readWord(0x204), 0x11u);
    EXPECT_EQ(seedNodes("\"Flip\": false, \"Mode\": 1", nodes, memory), "");
    EXPECT_EQ(memory.readWord(0x200), 2u);
    EXPECT_EQ(memory.readWord(0x204), 1u);
}

TEST(EmulatorSeed, whatCannotBeSeededIsNamedWithItsReason)
{
    const std::string place = "<Address>0x100</Address><Length>4</Length>";
    const Description nodes(description(
        "<Float Name=\"Gain\"><pValue>GainFormula</pValue></Float><Converter "
        "Name=\"GainFormula\"><pValue>R</pValue></Converter>"
        "<Integer Name=\"Fixed\"><Value>3</Value></Integer>"
        "<Integer Name=\"Lost\"><pValue>Nobody</pValue></Integer>"
        "<Integer Name=\"Round\"><pValue>Round2</pValue></Integer><Integer "
        "Name=\"Round2\"><pValue>Round</pValue></Integer>"
        "<IntSwissKnife Name=\"Knife\"><Formula>1</Formula></IntSwissKnife>"
        "<IntReg Name=\"InChunk\">" +
        place + "<pPort>Chunk</pPort></IntReg>" +
        reg("IntReg", "Moving", "<Address>0x100</Address><pAddress>Knife</pAddress><Length>4</Length>") +
        reg("IntReg", "Indexed", place + "<pIndex Offset=\"4\">Fixed</pIndex>") +
        reg("IntReg", "Wide", "<Address>0x100</Address><Length>16</Length>") +
        reg("IntReg", "Far", "<Address>0x100000000</Address><Length>4</Length>") + reg("IntReg", "R", place) +
        reg("MaskedIntReg", "Bits", place + "<LSB>0</LSB><MSB>2</MSB>") + reg("StringReg", "Text", place)));
    const std::pair<const char*, const char*> cases[] = {
        {"\"Nope\": 1", "Node Nope is no node of the description."},
        {"\"Gain\": 1.5", "Node Gain has no register of its own: GainFormula is a formula."},
        {"\"Fixed\": 1", "Node Fixed has no register: Integer Fixed refers to none."},
        {"\"Lost\": 1", "Node Lost has no register: Nobody is no node of the description."},
        {"\"Round\": 1", "Node Round has no register: its references form a circle."},
        {"\"InChunk\": 1",
         "Node InChunk lies outside the camera's registers: InChunk belongs to port Chunk."},
        {"\"Moving\": 1", "Node Moving has no constant address: Moving adds Knife."},
        {"\"Indexed\": 1", "Node Indexed has no constant address: Indexed is indexed."},
        {"\"Wide\": 1", "Node Wide has a register without a usable length: Wide."},
        {"\"Far\": 1", "Node Far has no usable address: Far."},
        {"\"Bits\": 8", "Node Bits takes 3 bits, too few for 8."},
        {"\"R\": 1.5", "Node R is an integer, not 1.500000."},
        {"\"R\": \"x\"", "Node R is a number, not \"x\"."},
        {"\"Text\": 5", "Node Text is a text, not a number."},
        {"\"Text\": \"12345\"", "Node Text takes 4 bytes, too few for \"12345\"."},
        {"\"R\": [1]", "Node R cannot hold a list, an object or nothing."},
    };
    for (const auto& [seed, problem] : cases) {
        Memory memory;
        EXPECT_EQ(seedNodes(seed, nodes, memory), problem);
        EXPECT_EQ(memory.read(0x100, 16), Bytes(16));
    }
}

TEST(EmulatorSeed, aTextOfUnknownLengthIsWrittenAndTold)
{
    const Description nodes(
        description(reg("StringReg", "Text", "<Address>0x100</Address><pLength>Words</pLength>") +
                    reg("StringReg", "Fixed", "<Address>0x200</Address><pLength>Eight</pLength>") +
                    "<IntSwissKnife Name=\"Words\"><Formula>8</Formula></IntSwissKnife><Integer "
                    "Name=\"Eight\"><Value>8</Value></Integer>"));
    Memory memory;
    EXPECT_EQ(seedNodes("\"Text\": \"abc\"", nodes, memory),
              "Node Text is written, but is as long as Words says: seed that as well.");
    EXPECT_EQ(memory.read(0x100, 4), (Bytes{'a', 'b', 'c', 0}));
    EXPECT_EQ(seedNodes("\"Fixed\": \"12345678\"", nodes, memory), "");
    EXPECT_EQ(seedNodes("\"Fixed\": \"123456789\"", nodes, memory),
              "Node Fixed takes 8 bytes, too few for \"123456789\".");
}

TEST(EmulatorSeed, memoryIsGivenInHexadecimal)
{
    const Description nodes(description(""));
    Memory memory;
    EXPECT_TRUE(emu::applySeed(R"({"memory": {"0x1001": "00 0a0B ff", "32": "80"}})", nodes, memory)
                    .problems.empty());
    EXPECT_EQ(memory.read(0x1000, 6), (Bytes{0, 0, 0x0A, 0x0B, 0xFF, 0}));
    EXPECT_EQ(memory.read(32, 1), Bytes{0x80});
    for (const char* wrong :
         {R"({"memory": {"0x1001": "123"}})", R"({"memory": {"0x1001": "zz"}})",
          R"({"memory": {"there": "00"}})", R"({"memory": {"0x100000000": "00"}})", R"({"memory": {"0": 5}})",
          R"({"memory": []})", R"({"registers": {}})", "[]", "{", ""})
        EXPECT_EQ(emu::applySeed(wrong, nodes, memory).problems.size(), 1u) << wrong;
}

TEST(EmulatorDescription, valuesAreReadBack)
{
    const Description nodes(description(
        reg("IntReg", "Signed",
            "<Address>0</Address><Length>4</Length><Sign>Signed</Sign>" + std::string(kBig)) +
        reg("MaskedIntReg", "Bits",
            "<Address>4</Address><Length>4</Length><LSB>31</LSB><MSB>28</MSB>" + std::string(kBig)) +
        reg("FloatReg", "Float", "<Address>8</Address><Length>4</Length>") +
        reg("StringReg", "Text", "<Address>16</Address><Length>8</Length>")));
    Memory memory;
    const std::pair<const char*, NodeValue> values[] = {
        {"Signed", int64_t(-7)}, {"Bits", int64_t(9)}, {"Float", -0.25}, {"Text", std::string("ab")}};
    for (const auto& [name, value] : values) {
        EXPECT_EQ(emu::writeNode(nodes, name, value, memory), "");
        EXPECT_EQ(emu::decode(std::get<emu::RegisterField>(nodes.field(name)), memory), value) << name;
    }
}

TEST(EmulatorDescription, readOnlyRegistersAreThoseThatNobodyMayWrite)
{
    const Description nodes(description(
        reg("IntReg", "Closed", "<Address>0x100</Address><Length>4</Length><AccessMode>RO</AccessMode>") +
        reg("IntReg", "Open", "<Address>0x104</Address><Length>4</Length><AccessMode>RW</AccessMode>") +
        reg("MaskedIntReg", "Half",
            "<Address>0x108</Address><Length>4</Length><AccessMode>RO</AccessMode><Bit>0</Bit>") +
        reg("MaskedIntReg", "OtherHalf",
            "<Address>0x108</Address><Length>4</Length><AccessMode>RW</AccessMode><Bit>1</Bit>") +
        reg("StringReg", "Text", "<Address>0x10C</Address><Length>8</Length><AccessMode>RO</AccessMode>") +
        "<StructReg "
        "Comment=\"c\"><Address>0x114</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</"
        "pPort>"
        "<StructEntry Name=\"E\"><AccessMode>RW</AccessMode><Bit>1</Bit></StructEntry></StructReg>"
        "<IntReg "
        "Name=\"C\"><Address>0x118</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Chunk</"
        "pPort></IntReg>"));
    const emu::AddressRanges ranges = nodes.readOnlyRegisters();
    EXPECT_TRUE(ranges.overlaps(0x100, 4));
    EXPECT_TRUE(ranges.overlaps(0xFC, 5));
    EXPECT_FALSE(ranges.overlaps(0xFC, 4));
    EXPECT_FALSE(ranges.overlaps(0x104, 8));
    EXPECT_TRUE(ranges.overlaps(0x110, 4));
    EXPECT_FALSE(ranges.overlaps(0x114, 8));
}

TEST(EmulatorDescription, hostileTextsGiveNoNodesAndNoHarm)
{
    std::string deep;
    for (int i = 0; i < 100000; ++i)
        deep += "<a>";
    std::string bomb = "<!DOCTYPE a [<!ENTITY e0 \"xxxxxxxxxx\">";
    for (int i = 1; i < 20; ++i) {
        bomb += "<!ENTITY e" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k)
            bomb += "&e" + std::to_string(i - 1) + ";";
        bomb += "\">";
    }
    bomb += "]><a><IntReg Name=\"R\"><Address>&e19;</Address><Length>4</Length></IntReg></a>";
    for (const std::string& text : {std::string(), std::string("no xml"),
                                    description("<IntReg Name=\"R\">").substr(0, 100), deep, bomb}) {
        const Description nodes(text);
        Memory memory;
        EXPECT_NE(seedNodes("\"R\": 1", nodes, memory), "");
        EXPECT_FALSE(nodes.readOnlyRegisters().overlaps(0, 0xFFFFFFFF));
    }
}

TEST(EmulatorMemory, isSparseAndEndsWithTheAddressSpace)
{
    Memory memory;
    memory.write(0xFFE, {1, 2, 3, 4});
    EXPECT_EQ(memory.read(0xFFC, 8), (Bytes{0, 0, 1, 2, 3, 4, 0, 0}));
    memory.write(0xFFFFFFFE, {5, 6, 7, 8});
    EXPECT_EQ(memory.read(0xFFFFFFFF, 3), (Bytes{6, 7, 8})) << "addresses have 64 bits";
    const uint64_t last = ~uint64_t(0) - 2;
    memory.write(last, {5, 6, 7, 8});
    EXPECT_EQ(memory.read(last, 4), (Bytes{5, 6, 0, 0}));
    EXPECT_EQ(memory.read(0, 2), Bytes(2)) << "nothing wraps";
}

TEST(EmulatorMemory, rangesMelt)
{
    emu::AddressRanges ranges;
    ranges.add(0x10, 4);
    ranges.add(0x20, 4);
    ranges.add(0x14, 12);
    ranges.add(0x12, 0);
    EXPECT_TRUE(ranges.overlaps(0x1F, 1));
    EXPECT_FALSE(ranges.overlaps(0x0C, 4));
    EXPECT_FALSE(ranges.overlaps(0x24, 4));
    ranges.add(0xFFFFFFFC, 4);
    EXPECT_TRUE(ranges.overlaps(0xFFFFFFFF, 1));
    ranges.add(0x14, 4); // inside what is there
    EXPECT_TRUE(ranges.overlaps(0x18, 4));
}
