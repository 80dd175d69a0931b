// The description that an emulated camera serves: its forms on the wire, and the emulator's own one.
#include "camera/EmulatorFixture.h"
#include "camera_emulator/Bootstrap.h"
#include "camera_emulator/BuiltIn.h"
#include "camera_emulator/Files.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <zlib.h>

#include <cstdio>
#include <memory>
#include <set>

using namespace gvcp;

namespace
{

std::string urlAt(GvcpClient& host, uint32_t address)
{
    const Bytes text = host.fetch(address, 512);
    return reinterpret_cast<const char*>(text.data());
}

uint32_t little(const Bytes& data, size_t at, int size)
{
    uint32_t value = 0;
    for (int i = size - 1; i >= 0; --i)
        value = value << 8 | data.at(at + i);
    return value;
}

struct ZipEntry
{
    std::string name;
    std::string content;
};

// Reads the archive as any reader does: end record, central directory, local header, data.
ZipEntry unzip(const Bytes& zip)
{
    ZipEntry entry;
    const size_t end = zip.size() - 22;
    EXPECT_EQ(little(zip, end, 4), 0x06054B50u);
    EXPECT_EQ(little(zip, end + 8, 2), 1u) << "entries on this disk";
    EXPECT_EQ(little(zip, end + 10, 2), 1u) << "entries";
    const size_t directory = little(zip, end + 16, 4);
    EXPECT_EQ(directory + little(zip, end + 12, 4), end) << "the directory reaches to the end record";
    EXPECT_EQ(little(zip, directory, 4), 0x02014B50u);
    EXPECT_EQ(little(zip, directory + 10, 2), 8u) << "deflate";
    const uint32_t crc = little(zip, directory + 16, 4);
    const uint32_t packed = little(zip, directory + 20, 4);
    const uint32_t plain = little(zip, directory + 24, 4);
    const size_t local = little(zip, directory + 42, 4);
    EXPECT_EQ(little(zip, local, 4), 0x04034B50u);
    EXPECT_EQ(Bytes(zip.begin() + local + 4, zip.begin() + local + 30),
              Bytes(zip.begin() + directory + 6, zip.begin() + directory + 32));
    const size_t nameLength = little(zip, local + 26, 2);
    entry.name.assign(zip.begin() + local + 30, zip.begin() + local + 30 + nameLength);
    const size_t data = local + 30 + nameLength + little(zip, local + 28, 2);
    EXPECT_EQ(data + packed, directory);

    entry.content.resize(plain);
    z_stream stream{};
    EXPECT_EQ(inflateInit2(&stream, -MAX_WBITS), Z_OK);
    stream.next_in = const_cast<Bytef*>(&zip[data]);
    stream.avail_in = packed;
    stream.next_out = reinterpret_cast<Bytef*>(entry.content.data());
    stream.avail_out = plain;
    EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
    EXPECT_EQ(stream.total_out, plain);
    inflateEnd(&stream);
    EXPECT_EQ(crc32(0, reinterpret_cast<const Bytef*>(entry.content.data()), plain), crc);
    return entry;
}

// "Local:NAME;ADDRESS;LENGTH?..." taken apart.
struct Place
{
    std::string name;
    unsigned address = 0;
    unsigned length = 0;
};

Place placeOf(const std::string& url)
{
    char name[64] = "";
    Place place;
    EXPECT_EQ(std::sscanf(url.c_str(), "Local:%63[^;];%X;%X", name, &place.address, &place.length), 3) << url;
    place.name = name;
    return place;
}

} // namespace

TEST(EmulatorUrls, plainFirstAndZippedSecond)
{
    emu::EmulatedCamera camera(freshConfig());
    ASSERT_TRUE(camera.start());
    GvcpClient host(camera.config().address);
    const Place first = placeOf(urlAt(host, RegFirstUrl));
    const Place second = placeOf(urlAt(host, RegSecondUrl));
    EXPECT_EQ(first.name, "camera_emulator.xml");
    EXPECT_EQ(second.name, "camera_emulator.zip");
    const Bytes plain = host.fetch(first.address, first.length);
    EXPECT_EQ(std::string(plain.begin(), plain.end()), camera.description());
    const ZipEntry entry = unzip(host.fetch(second.address, second.length));
    EXPECT_EQ(entry.name, "camera_emulator.xml");
    EXPECT_EQ(entry.content, camera.description());
}

TEST(EmulatorUrls, zippedFirstWhenAskedFor)
{
    emu::CameraConfig config = freshConfig();
    config.description = "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"0\"/>";
    config.zipped = true;
    emu::EmulatedCamera camera(config);
    ASSERT_TRUE(camera.start());
    GvcpClient host(config.address);
    const std::string url = urlAt(host, RegFirstUrl);
    EXPECT_EQ(url.substr(url.find('?')), "?SchemaVersion=1.0.0");
    const Place first = placeOf(url);
    EXPECT_EQ(first.name, "camera_emulator.zip");
    EXPECT_EQ(unzip(host.fetch(first.address, first.length)).content, config.description);
    EXPECT_EQ(placeOf(urlAt(host, RegSecondUrl)).name, "camera_emulator.xml");
}

TEST(EmulatorUrls, otherFormsCanBeServed)
{
    emu::CameraConfig config = freshConfig();
    config.description = "<a/>";
    config.firstUrl = "local:///{name};{address};{length}";
    config.secondUrl = "http://camera/{name}?SchemaVersion={schema}";
    emu::EmulatedCamera camera(config);
    ASSERT_TRUE(camera.start());
    GvcpClient host(config.address);
    EXPECT_EQ(urlAt(host, RegFirstUrl), "local:///camera_emulator.xml;C8000000;4");
    EXPECT_EQ(urlAt(host, RegSecondUrl), "http://camera/camera_emulator.zip?SchemaVersion=1.0.0");
}

TEST(EmulatorUrls, theFileGivesTheName)
{
    const std::string path = testing::TempDir() + "/Model;7.v2.xml";
    ASSERT_TRUE(emu::writeFile(path, "<a/>"));
    emu::CameraConfig config = freshConfig();
    config.descriptionFile = path;
    emu::EmulatedCamera camera(config);
    ASSERT_TRUE(camera.start());
    EXPECT_EQ(camera.description(), "<a/>");
    GvcpClient host(config.address);
    EXPECT_EQ(placeOf(urlAt(host, RegFirstUrl)).name, "Model_7.v2.xml") << "a semicolon would end the name";
    std::remove(path.c_str());
}

TEST(EmulatorUrls, aMissingDescriptionIsSaidSo)
{
    emu::CameraConfig config = freshConfig();
    config.descriptionFile = "/nowhere/camera.xml";
    emu::EmulatedCamera camera(config);
    const auto result = camera.start();
    EXPECT_EQ(result.code, emu::StartCode::BadConfiguration);
    EXPECT_EQ(result.message, "The description /nowhere/camera.xml cannot be read or is empty.");
}

// The emulator's own description.
class BuiltInDescription : public testing::Test
{
protected:
    BuiltInDescription()
    {
        const std::string& text = emu::builtInDescription();
        document.reset(
            xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, XML_PARSE_NONET),
            xmlFreeDoc);
        if (document)
            walk(xmlDocGetRootElement(document.get()));
    }

    void walk(xmlNode* node)
    {
        const std::string tag = reinterpret_cast<const char*>(node->name);
        ++tags[tag];
        xmlChar* name = xmlGetNoNsProp(node, BAD_CAST "Name");
        if (name && tag != "EnumEntry" && tag[0] != 'p')
            ++names[reinterpret_cast<const char*>(name)];
        xmlFree(name);
        if (tag.size() > 1 && tag[0] == 'p' && std::isupper(static_cast<unsigned char>(tag[1]))) {
            xmlChar* text = xmlNodeGetContent(node);
            references.insert(reinterpret_cast<const char*>(text));
            xmlFree(text);
        }
        for (xmlNode* child = node->children; child; child = child->next) {
            if (child->type == XML_ELEMENT_NODE)
                walk(child);
        }
    }

    std::shared_ptr<xmlDoc> document;
    std::map<std::string, int> tags;
    std::map<std::string, int> names;
    std::set<std::string> references;
};

TEST_F(BuiltInDescription, hasEveryKindOfNode)
{
    ASSERT_TRUE(document);
    for (const char* tag : {"Category",
                            "pFeature",
                            "Group",
                            "Integer",
                            "IntReg",
                            "MaskedIntReg",
                            "Float",
                            "FloatReg",
                            "Boolean",
                            "Command",
                            "Enumeration",
                            "EnumEntry",
                            "String",
                            "StringReg",
                            "Register",
                            "StructReg",
                            "StructEntry",
                            "Converter",
                            "IntConverter",
                            "SwissKnife",
                            "IntSwissKnife",
                            "Port",
                            "pValue",
                            "Value",
                            "Address",
                            "pAddress",
                            "Length",
                            "pLength",
                            "Bit",
                            "LSB",
                            "MSB",
                            "pVariable",
                            "Formula",
                            "FormulaTo",
                            "FormulaFrom",
                            "pSelected",
                            "pInvalidator",
                            "pMin",
                            "pMax",
                            "pInc",
                            "Min",
                            "Max",
                            "Inc",
                            "pIsLocked",
                            "pIsImplemented",
                            "pIsAvailable",
                            "Representation",
                            "Sign",
                            "Endianess",
                            "Cachable",
                            "PollingTime",
                            "Streamable",
                            "OnValue",
                            "OffValue",
                            "CommandValue"})
        EXPECT_GT(tags[tag], 0) << tag;
}

TEST_F(BuiltInDescription, namesAreUniqueAndReferencesLeadSomewhere)
{
    for (const auto& [name, count] : names)
        EXPECT_EQ(count, 1) << name;
    for (const std::string& reference : references)
        EXPECT_EQ(names.count(reference), 1u) << reference;
}

TEST_F(BuiltInDescription, firstValuesAreInTheRegisters)
{
    emu::EmulatedCamera camera(freshConfig());
    EXPECT_EQ(camera.seedProblems(), std::vector<std::string>());
    EXPECT_EQ(camera.node("DeviceFirmwareVersion"), emu::NodeValue(std::string("1.2.3")));
    EXPECT_EQ(camera.node("DeviceModelName"), emu::NodeValue(std::string("Model-7")));
    EXPECT_EQ(camera.node("Width"), emu::NodeValue(int64_t(640)));
    EXPECT_EQ(camera.node("ExposureTime"), emu::NodeValue(5000.0));
    EXPECT_EQ(camera.node("EncoderPosition"), emu::NodeValue(int64_t(-1234567890123)));
    EXPECT_EQ(camera.node("Gain"), std::nullopt) << "a formula";
    EXPECT_EQ(camera.setNode("Width", int64_t(320)), "");
    EXPECT_EQ(camera.peekWord(0x11010), 320u);
}

TEST_F(BuiltInDescription, ownSeedsComeOnTop)
{
    emu::CameraConfig config = freshConfig();
    config.seed = R"({"nodes": {"Width": 128, "Gain": 3}, "memory": {"0x20000": "01"}})";
    emu::EmulatedCamera camera(config);
    EXPECT_EQ(camera.node("Width"), emu::NodeValue(int64_t(128)));
    EXPECT_EQ(camera.node("Height"), emu::NodeValue(int64_t(480)));
    EXPECT_EQ(camera.peek(0x20000, 1), Bytes{1});
    EXPECT_EQ(camera.seedProblems(),
              std::vector<std::string>{"Node Gain has no register of its own: GainConverter is a formula."});
}
