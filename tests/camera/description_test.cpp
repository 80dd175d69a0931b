// Fetching descriptions and judging them, and what a camera is worth whose description is bad.
#include "KXCameraControl/description/Check.h"
#include "KXCameraControl/description/Fetch.h"
#include "KXCameraControl/description/Unzip.h"
#include "camera/FakePort.h"
#include "camera/ZipFiles.h"

#include <gtest/gtest.h>

#include <malloc.h>

namespace
{

using tests::zip;

const std::string plain = "<?xml version=\"1.0\"?>\n<RegisterDescription SchemaMajorVersion=\"1\" "
                          "SchemaMinorVersion=\"1\"><Integer Name=\"A\"><Value>7</Value></Integer>"
                          "</RegisterDescription>\n";

std::string problemOf(const std::string& text)
{
    std::string problem;
    return kx::isParsable(text, problem) ? "none" : problem;
}

struct Fetched
{
    KX_Status status;
    std::string text;
    std::string problem;
};

Fetched fetch(tests::FakeDevice& device)
{
    tests::FakePort port(device);
    Fetched result;
    kx::SharedDescription description;
    result.status = kx::fetchDescription(port, description, result.problem);
    if (description)
        result.text = description->text();
    return result;
}

Fetched fetchFile(const std::string& name, const std::string& content)
{
    tests::FakeDevice device;
    device.offer(content, name);
    return fetch(device);
}

// ---- URLs ----

TEST(DescriptionUrl, namesAPlaceInDeviceMemory)
{
    for (const char* url :
         {"Local:a.xml;10000;2Fa", "local:a.xml;10000;2FA", "LOCAL:///a.xml;10000;2fa",
          "Local:a.xml;0x10000;0x2FA?SchemaVersion=1.1.0", "  Local:a.xml; 10000 ; 2fa \r\n"}) {
        kx::LocalUrl local;
        std::string problem;
        ASSERT_TRUE(kx::parseLocalUrl(url, local, problem)) << url << ": " << problem;
        EXPECT_EQ(local.fileName, "a.xml") << url;
        EXPECT_EQ(local.address, 0x10000u) << url;
        EXPECT_EQ(local.length, 0x2FAu) << url;
        EXPECT_FALSE(local.isZip());
    }
    kx::LocalUrl zipped;
    std::string problem;
    ASSERT_TRUE(kx::parseLocalUrl("Local:A.ZIP;1;2", zipped, problem));
    EXPECT_TRUE(zipped.isZip());
}

TEST(DescriptionUrl, leadsNowhereElse)
{
    for (const char* url :
         {"", "File:C:\\camera.xml", "file:///etc/passwd", "http://maker.example/camera.xml",
          "https://maker.example/camera.zip", "Local:a.xml", "Local:a.xml;10", "Local:a.xml;;",
          "Local:a.xml;10;xyz", "Local:a.xml;10;11111111111111111", "Local:a.xml;-1;10"}) {
        kx::LocalUrl local;
        std::string problem;
        EXPECT_FALSE(kx::parseLocalUrl(url, local, problem)) << url;
        EXPECT_FALSE(problem.empty()) << url;
    }
}

// ---- fetching ----

TEST(DescriptionFetch, handsTheTextOutAsItStandsUpToItsEnd)
{
    EXPECT_EQ(fetchFile("a.xml", plain).text, plain);
    EXPECT_EQ(fetchFile("a.xml", plain + std::string(100, '\0')).text, plain);
    EXPECT_EQ(fetchFile("a.xml", "no XML").text, "no XML");
}

TEST(DescriptionFetch, unpacksArchivesWhateverTheyAreCalled)
{
    const std::string archive = zip({{"readme.txt", "read me"}, {"Camera.XML", plain}});
    EXPECT_EQ(fetchFile("a.zip", archive).text, plain);
    EXPECT_EQ(fetchFile("A.ZIP", archive + std::string(300, '\0')).text, plain);
    EXPECT_EQ(fetchFile("A.ZIP", archive + std::string(100000, '\0')).text, plain);
    EXPECT_EQ(fetchFile("a.xml", archive).text, plain);
    EXPECT_EQ(fetchFile("a.zip", plain).text, plain);
    EXPECT_EQ(fetchFile("a.zip", zip({{"c.xml", plain, 0, true}})).text, plain);
    EXPECT_EQ(fetchFile("a.zip", zip({{"only", plain}})).text, plain);
}

TEST(DescriptionFetch, refusesDamagedArchives)
{
    const std::string archive = zip({{"c.xml", plain}});
    EXPECT_EQ(fetchFile("a.zip", zip({{"c.xml", plain, 0, false, 1}})).status, KX_E_DESCRIPTION);
    EXPECT_EQ(fetchFile("a.zip", zip({{"c.xml", plain, 10}})).status,
              KX_E_DESCRIPTION); // holds more than it claims
    EXPECT_EQ(fetchFile("a.zip", zip({{"c.xml", plain, 100000}})).status, KX_E_DESCRIPTION);
    EXPECT_EQ(fetchFile("a.zip", "PK").status, KX_E_DESCRIPTION);
    EXPECT_EQ(fetchFile("a.zip", zip({})).status, KX_E_DESCRIPTION);
    for (size_t length = 4; length < archive.size(); ++length)
        EXPECT_EQ(fetchFile("a.zip", archive.substr(0, length)).status, KX_E_DESCRIPTION) << length;
    for (size_t place = 0; place < archive.size(); ++place) {
        std::string damaged = archive;
        damaged[place] = static_cast<char>(~damaged[place]);
        const Fetched result = fetchFile("a.zip", damaged);
        EXPECT_TRUE(result.status == KX_E_DESCRIPTION || result.text == plain) << place;
    }
}

#if !defined(_WIN32) // there is nobody to ask how much memory is taken
TEST(DescriptionFetch, takesNoMemoryForAnArchiveThatClaimsGigabytes)
{
    const size_t before = mallinfo2().hblkhd + mallinfo2().uordblks;
    std::string text;
    std::string problem;
    EXPECT_FALSE(kx::unzip(zip({{"c.xml", plain, 0xFFFFFFF0}}), text, problem));
    EXPECT_EQ(problem, "the archive claims 4294967280 bytes");
    EXPECT_FALSE(kx::unzip(zip({{"c.xml", plain, (64u << 20) + 1}}), text, problem));
    EXPECT_EQ(text.capacity(), std::string().capacity());
    EXPECT_LT(mallinfo2().hblkhd + mallinfo2().uordblks, before + 100000);
}
#endif

TEST(DescriptionFetch, takesNoMemoryForAUrlThatClaimsGigabytes)
{
    tests::FakeDevice device;
    device.urls = {"Local:a.xml;1000;FFFFFFFF", "Local:a.xml;1000;FFFFFFFFFFFFFFFF", "Local:a.xml;1000;0"};
    const Fetched result = fetch(device);
    EXPECT_EQ(result.status, KX_E_DESCRIPTION);
    EXPECT_TRUE(device.requests.empty());
    EXPECT_EQ(result.problem, "The description cannot be fetched: its length is 4294967295; its length is "
                              "18446744073709551615; its length is 0.");
}

TEST(DescriptionFetch, triesTheSecondUrlWhenTheFirstYieldsNothing)
{
    for (const char* first : {"http://maker.example/a.xml", "Local:a.zip;20000000;100",
                              "Local:a.xml;30000000;100", "Local:a.xml;20000000;10"}) {
        tests::FakeDevice device;
        device.offer(plain);
        device.urls.insert(device.urls.begin(), first);
        device.failures = {{0x30000000, KX_E_GC_ACCESS}};
        const Fetched result = fetch(device);
        EXPECT_EQ(result.status, KX_OK) << first;
        EXPECT_EQ(result.text, plain) << first;
        EXPECT_EQ(result.problem, "") << first;
    }
}

TEST(DescriptionFetch, endsWithAFailedLine)
{
    tests::FakeDevice device;
    device.offer(plain);
    device.urls.push_back(device.urls.front());
    device.failures = {{tests::FakeDevice::descriptionAddress, KX_E_NO_ANSWER}};
    EXPECT_EQ(fetch(device).status, KX_E_NO_ANSWER);
    device.urlStatus = KX_E_CONNECTION_LOST;
    EXPECT_EQ(fetch(device).status, KX_E_CONNECTION_LOST);
    device.urlStatus = KX_E_GC_ACCESS;
    device.urls.clear();
    EXPECT_EQ(fetch(device).status, KX_E_DESCRIPTION);
    EXPECT_EQ(fetch(device).problem, "The camera names no description.");
}

// ---- checks ----

std::string nested(unsigned depth)
{
    std::string text;
    for (unsigned i = 0; i < depth; ++i)
        text += "<a>";
    for (unsigned i = 0; i < depth; ++i)
        text += "</a>";
    return text;
}

// So many in all.
std::string elements(size_t count)
{
    std::string text = "<r>";
    for (size_t i = 1; i < count; ++i)
        text += "<a/>";
    return text + "</r>";
}

std::string attributes(size_t count)
{
    std::string text = "<r";
    for (size_t i = 0; i < count; ++i)
        text += " a" + std::to_string(i) + "='\"'";
    return text + "/>";
}

TEST(DescriptionCheck, letsWellFormedTextsThrough)
{
    EXPECT_EQ(problemOf(plain), "none");
    EXPECT_EQ(problemOf("\xEF\xBB\xBF" + plain), "none");
    EXPECT_EQ(
        problemOf("<a b='x>y' c=\"</a>\"><!-- <b> --><b/><![CDATA[<c>]]>text<?pi <d>?></a>\n<!-- end -->"),
        "none");
    EXPECT_EQ(problemOf(nested(1000)), "none");
}

TEST(DescriptionCheck, tellsWhatIsWrong)
{
    const std::string start = "The description cannot be used: ";
    EXPECT_EQ(problemOf("hello"), start + "it is no XML.");
    EXPECT_EQ(problemOf(""), start + "it is no XML.");
    EXPECT_EQ(problemOf("<a/>hello"), start + "it is no XML.");
    EXPECT_EQ(problemOf("<a/><b/>"), start + "it is no XML.");
    EXPECT_EQ(problemOf("<a><b></a></b>"), start + "its tags do not match.");
    EXPECT_EQ(problemOf("<a <b/></a>"), start + "its tags do not match.");
    EXPECT_EQ(problemOf("</a>"), start + "its tags do not match.");
    EXPECT_EQ(problemOf(nested(1001)), start + "it is nested too deeply.");
    EXPECT_EQ(problemOf(nested(100000)), start + "it is nested too deeply.");
    EXPECT_EQ(problemOf("<a>" + std::string(20 << 20, ' ') + "</a>"), start + "it is too long.");
    EXPECT_EQ(problemOf(elements(2'000'000)), "none");
    EXPECT_EQ(problemOf(elements(2'000'001)), start + "it has too many elements.");
    EXPECT_EQ(problemOf(attributes(256)), "none");
    EXPECT_EQ(problemOf(attributes(257)), start + "an element has too many attributes.");
    EXPECT_EQ(problemOf("<a><!ENTITY b \"c\"></a>"), start + "it is no XML.");
    EXPECT_EQ(problemOf("<a/><!DOCTYPE a>"), start + "it is no XML.");
    for (size_t length = 1; length < plain.size() - 1; ++length)
        EXPECT_NE(problemOf(plain.substr(0, length)), "none") << length;
}

std::string withType(const std::string& subset, const std::string& content)
{
    return "<?xml version=\"1.0\"?>\n<!DOCTYPE a [" + subset + "]>\n<a>" + content + "</a>";
}

std::string repeated(const std::string& text, size_t times)
{
    std::string all;
    for (size_t i = 0; i < times; ++i)
        all += text;
    return all;
}

TEST(DescriptionEntities, plainTextIsWelcome)
{
    for (const std::string& text : {
             withType("<!ENTITY micro \"&#181;\">", "&micro;m"),
             withType("<!ENTITY micro '&#xB5;'>\n<!-- ]> --><?x ]>?><!ENTITY more \"1 > 0 ] &amp; &micro;\">",
                      "<b c='&more;'/>&micro;"),
             withType("<!ELEMENT a ANY><!NOTATION n SYSTEM \"x>\">", ""),
             std::string("<!DOCTYPE a><a/>"),
             std::string("<!DOCTYPE a SYSTEM \"[>\" ><a>&lt;</a>"),
         })
        EXPECT_EQ(problemOf(text), "none") << text;
}

TEST(DescriptionEntities, whatMayHideSomethingIsRefused)
{
    const std::string start = "The description cannot be used: ";
    const std::vector<std::pair<std::string, std::string>> expected = {
        {withType("<!ENTITY % p \"x\">", ""), "it declares parameter entities."},
        {withType("%p;<!ATTLIST a b CDATA \"x\">", ""), "it declares more than entities."},
        {withType("<!ENTITY e SYSTEM \"file:///etc/passwd\">", "&e;"),
         "it declares an entity that stands elsewhere."},
        {withType("<!ENTITY e \"x\" NDATA n>", ""), "it declares an entity that stands elsewhere."},
        {withType("<!ENTITY e>", ""), "it declares an entity without a value."},
        {withType("<!ENTITY e '<b/>'>", ""), "it declares an entity that holds markup."},
        {withType("<!ENTITY e '%p;'>", ""), "it declares an entity that holds markup."},
        {withType("<!ENTITY e '&#60;b>'>", ""), "it declares an entity that holds markup."},
        {withType("<!ENTITY e '&#x003c;b>'>", ""), "it declares an entity that holds markup."},
        {withType("<!ENTITY e '&#38;f;'>", ""), "it declares an entity that holds markup."},
        {withType("<!ENTITY e '&e;'>", ""), "it refers to an entity that it does not declare before."},
        {withType("<!ENTITY e '&f;'><!ENTITY f 'x'>", ""),
         "it refers to an entity that it does not declare before."},
        {withType("", "&e;"), "it refers to an entity that it does not declare before."},
        {withType("", "<b c=\"&e;\"/>"), "it refers to an entity that it does not declare before."},
        {"<!DOCTYPE a [<!ENTITY e 'x'", "it is cut short."},
        {"<!DOCTYPE a [<!ENTITY e 'x'>]", "it is cut short."},
        {"<!DOCTYPE a", "it is cut short."},
    };
    for (const auto& [text, problem] : expected)
        EXPECT_EQ(problemOf(text), start + problem) << text;
}

TEST(DescriptionEntities, areMeasuredByWhatTheyGrowTo)
{
    const std::string tooLong = "The description cannot be used: its entities make it too long.";
    const std::string thousand = "<!ENTITY k \"" + std::string(1000, 'k') + "\">";
    EXPECT_EQ(problemOf(withType(thousand, repeated("&k;", 16000))), "none");
    EXPECT_EQ(problemOf(withType(thousand, repeated("&k;", 17000))), tooLong);
    EXPECT_EQ(problemOf(withType(thousand, repeated("<b c='&k;'/>", 17000))), tooLong);
    // Nobody puts anything in here, and what every text may say does not grow.
    EXPECT_EQ(problemOf(withType(thousand, "<!--" + repeated("&k;", 17000) + "--><![CDATA[" +
                                               repeated("&k;", 17000) + "]]>")),
              "none");
    EXPECT_EQ(problemOf(withType(thousand, repeated("&amp;&#181;", 500000))), "none");
    // Ten times the one before, twenty times over: sizes beyond all numbers.
    std::string bomb = "<!ENTITY e0 \"aaaaaaaaaa\">";
    for (int i = 1; i <= 20; ++i)
        bomb += "<!ENTITY e" + std::to_string(i) + " \"" + repeated("&e" + std::to_string(i - 1) + ";", 10) +
                "\">";
    EXPECT_EQ(problemOf(withType(bomb, "")), "none");
    EXPECT_EQ(problemOf(withType(bomb, "&e7;")), tooLong);
    EXPECT_EQ(problemOf(withType(bomb, "&e20;")), tooLong);
    // Of two declarations the first one counts.
    EXPECT_EQ(problemOf(withType("<!ENTITY e0 'x'>" + bomb, repeated("&e0;", 2000000))), "none");
}

TEST(DescriptionEntities, comeToTheNodesAsTheirText)
{
    tests::FakeCamera camera(
        "<!DOCTYPE RegisterDescription [<!ENTITY two \"2\"><!ENTITY unit \"4&two;\">]>"
        "<RegisterDescription><Integer Name=\"A&two;\"><Value>1&unit;</Value></Integer>"
        "<String Name=\"B\"><Value>&#181;&two;&lt;</Value></String></RegisterDescription>");
    ASSERT_EQ(camera.openStatus, KX_OK);
    KX_IntegerValue value{};
    EXPECT_EQ(KX_CC_GetIntValueEx(camera.handle, "A2", &value), KX_OK) << camera.lastError();
    EXPECT_EQ(value.current, 142);
    KX_StringValue text{};
    EXPECT_EQ(KX_CC_GetStringValue(camera.handle, "B", &text), KX_OK);
    EXPECT_STREQ(text.current, "\xC2\xB5"
                               "2<");
}

// ---- a camera with a bad description ----

class BadDescription : public testing::TestWithParam<std::pair<const char*, std::string>>
{
};

TEST_P(BadDescription, opensTheCameraKeepsTheTextAndHasNoNodes)
{
    const std::string& text = GetParam().second;
    tests::FakeCamera camera(text);
    ASSERT_EQ(camera.openStatus, KX_OK);
    std::string buffer(text.size() + 100, '?');
    uint32_t length = 0;
    EXPECT_EQ(
        KX_XML_GetGenICamXML(camera.handle, buffer.data(), static_cast<uint32_t>(buffer.size()), &length),
        KX_OK);
    EXPECT_EQ(length, text.size() + 1);
    EXPECT_TRUE(buffer.c_str() == text);
    KX_IntegerValue value{};
    EXPECT_EQ(KX_CC_GetIntValueEx(camera.handle, "A", &value), KX_E_GC_PROPERTY);
    EXPECT_EQ(camera.lastError().substr(0, 31), "The description cannot be used:");
    EXPECT_EQ(KX_CC_SetIntValueEx(camera.handle, "A", 1), KX_E_GC_PROPERTY);
    KX_XML_AccessMode mode;
    EXPECT_EQ(KX_XML_GetNodeAccessMode(camera.handle, "A", &mode), KX_E_GC_PROPERTY);
    uint32_t word = 0;
    EXPECT_EQ(KX_CC_ReadMemory(camera.handle, &word, 0x100, 4), KX_OK);
}

const std::string node = "<Integer Name=\"A\"><Value>7</Value></Integer>";

INSTANTIATE_TEST_SUITE_P(
    All, BadDescription,
    testing::Values(
        std::make_pair("noXml", std::string("This is not XML.")),
        std::make_pair("cutShort", "<RegisterDescription>" + node),
        std::make_pair("twentyMegabytes", "<RegisterDescription>" + node + std::string(20 << 20, ' ') +
                                              "</RegisterDescription>"),
        std::make_pair("entityBomb", "<!DOCTYPE r [<!ENTITY a \"" + std::string(1000000, 'a') +
                                         "\">]><RegisterDescription>" + node + repeated("&a;", 16) +
                                         "</RegisterDescription>"),
        std::make_pair("nested", "<RegisterDescription>" + node + nested(100000) + "</RegisterDescription>"),
        std::make_pair("unknownEntity", "<RegisterDescription>" + node + "&b;</RegisterDescription>"),
        std::make_pair("badCharacters", "<RegisterDescription>" + node + "\xFF\xFE</RegisterDescription>"),
        std::make_pair("otherRoot", "<Other>" + node + "</Other>")),
    [](const auto& parameter) { return parameter.param.first; });

// ---- what counts as a node ----

std::string textOf(const std::string& value)
{
    const tests::FakeCamera camera("<RegisterDescription><String Name=\"S\"><Value>" + value +
                                   "</Value></String></RegisterDescription>");
    KX_StringValue result{};
    EXPECT_EQ(KX_CC_GetStringValue(camera.handle, "S", &result), KX_OK) << camera.lastError();
    return result.current;
}

TEST(DescribedText, keepsItsBlanksUnlessThereIsNothingElse)
{
    EXPECT_EQ(textOf(" a b "), " a b ");
    EXPECT_EQ(textOf("  \r\n\t "), "");
    EXPECT_EQ(textOf(" <!-- c --> "), "");
    EXPECT_EQ(textOf("<![CDATA[  ]]>"), "  ");
    EXPECT_EQ(textOf("a<!-- c -->b<?pi?>c<![CDATA[d]]>e"), "abcde");
    EXPECT_EQ(textOf("a &lt; &#66;"), "a < B");
    EXPECT_EQ(textOf("a<b>c</b>d"), "ad");
}

TEST(DescribedName, isTheOneWithoutAPrefix)
{
    const tests::FakeCamera camera(
        "<g:RegisterDescription xmlns:g='urn:g'>"
        "<g:Integer Name='Declared' g:Name='Other'><g:Value>7</g:Value></g:Integer>"
        "<x:Integer Name='Undeclared'><Value>7</Value></x:Integer>"
        "<Integer g:Name='Prefixed'><Value>7</Value></Integer>"
        "</g:RegisterDescription>");
    KX_IntegerValue value{};
    EXPECT_EQ(KX_CC_GetIntValueEx(camera.handle, "Declared", &value), KX_OK) << camera.lastError();
    for (const char* name : {"Other", "Undeclared", "Prefixed"})
        EXPECT_EQ(KX_CC_GetIntValueEx(camera.handle, name, &value), KX_E_GC_PROPERTY) << name;
}

TEST(CameraWithoutDescription, opensAndSaysSo)
{
    tests::FakeCamera camera;
    ASSERT_EQ(camera.openStatus, KX_OK);
    char buffer[10] = "untouched";
    uint32_t length = 77;
    EXPECT_EQ(KX_XML_GetGenICamXML(camera.handle, buffer, sizeof buffer, &length), KX_E_DESCRIPTION);
    EXPECT_EQ(length, 77u);
    EXPECT_STREQ(buffer, "untouched");
    EXPECT_EQ(camera.lastError(), "The camera names no description.");
    KX_IntegerValue value{};
    EXPECT_EQ(KX_CC_GetIntValueEx(camera.handle, "A", &value), KX_E_GC_PROPERTY);
}

} // namespace
