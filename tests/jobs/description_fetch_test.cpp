// Fetching and parsing the description: buffers, lengths, what is refused, what stays of the last run.
#include "JobFixture.h"

#include "jobs/rules/JobMemory.h"

#include <QTextCodec>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace
{

constexpr std::size_t kFirstSize = 0x300000;

constexpr std::size_t kMostBacked = 0x1000000;

// Allocations that the jobs asked for; those of at least `g_failFrom` bytes fail.
std::vector<std::size_t> g_sizes;
std::size_t g_failFrom = SIZE_MAX;
const char* g_lastBlock = nullptr;

void* countedAllocation(std::size_t bytes)
{
    g_sizes.push_back(bytes);
    if (bytes >= g_failFrom)
        return nullptr;
    bytes = std::min(bytes, kMostBacked); // nobody touches the rest
    // Behind its end stands what no reader may take in.
    char* const block = static_cast<char*>(std::calloc(1, bytes + sizeof "<junk"));
    std::memcpy(block + bytes, "<junk", sizeof "<junk");
    g_lastBlock = block;
    return block;
}

class DescriptionFetch : public JobFixture
{
protected:
    void SetUp() override
    {
        JobFixture::SetUp();
        g_sizes.clear();
        g_failFrom = SIZE_MAX;
        ie::setAllocateHook(countedAllocation);
        worker.SetXmlExportJob(device, folder.path());
        ASSERT_TRUE(probe.open());
        takeTrace();
    }
    void TearDown() override
    {
        probe.close();
        ie::setAllocateHook(nullptr);
    }

    // From now on each fetch notes whether its buffer holds nothing but zeros.
    void watchBuffers()
    {
        tests::setCallHook([this](const QByteArray&, const tests::TraceEntry& call) {
            if (call.operation == "GetGenICamXML")
                zeroed.append(
                    std::all_of(g_lastBlock, g_lastBlock + g_sizes.back(), [](char c) { return c == 0; }));
        });
    }

    // One fetch and index run on this thread; its trace.
    QStringList generate()
    {
        probe.generateFeatureMap();
        return takeTrace();
    }

    QList<bool> zeroed;
};

const QByteArray kOneFeature =
    "<RegisterDescription><Category Name=\"Root\"><pFeature>A</pFeature></Category>"
    "<Category Name=\"A\"><pFeature>Gain</pFeature></Category>"
    "<Float Name=\"Gain\"/></RegisterDescription>";
const QStringList kOneFeatureNodes = {"A", "Gain", "Root"};
const QString kLoadFailed = "log Load xml failed.";

} // namespace

TEST_F(DescriptionFetch, TakesOrdinaryDescriptionsInOneCall)
{
    watchBuffers();
    camera->setDescription(kOneFeature);
    EXPECT_EQ(generate(), QStringList({kFirstFetch}));
    EXPECT_EQ(zeroed, QList<bool>({true}));
    EXPECT_EQ(g_sizes, std::vector<std::size_t>({kFirstSize}));
    EXPECT_EQ(probe.nodes.keys(), kOneFeatureNodes);
}

TEST_F(DescriptionFetch, FetchesLargeDescriptionsAgainWithTheirLength)
{
    watchBuffers();
    // The reported length counts the zero behind the text.
    QByteArray text = kOneFeature;
    text.append(QByteArray(int(kFirstSize) - 2 - text.size(), ' '));
    camera->setDescription(text);
    EXPECT_EQ(generate().size(), 1) << "one byte less than the buffer";

    text.append(' ');
    camera->setDescription(text);
    g_sizes.clear();
    EXPECT_EQ(generate(), QStringList({kFirstFetch, "GetGenICamXML 3145728"}));
    EXPECT_EQ(g_sizes, std::vector<std::size_t>({kFirstSize, kFirstSize}));
    EXPECT_EQ(zeroed, QList<bool>({true, true, true}));
    EXPECT_EQ(probe.nodes.keys(), kOneFeatureNodes);

    text.append(QByteArray(5000, ' '));
    camera->setDescription(text);
    EXPECT_EQ(generate(), QStringList({kFirstFetch + " -> 80000002", "GetGenICamXML 3150728"}));
    EXPECT_EQ(probe.nodes.keys(), kOneFeatureNodes);
}

TEST_F(DescriptionFetch, DoesNotTryAThirdTime)
{
    camera->setDescriptionAnswers({{"", 3146728}, {"", 3147728}}); // never satisfied
    EXPECT_EQ(generate(), QStringList({kFirstFetch, "GetGenICamXML 3146728", kLoadFailed}));
}

TEST_F(DescriptionFetch, AnUntouchedLengthAsksForFourGigabytes)
{
    camera->setDescriptionAnswers({{"", std::nullopt, KX_E_DESCRIPTION}});
    g_failFrom = 0xFFFFFFFF;
    EXPECT_EQ(generate(), QStringList({kFirstFetch + " -> 80000302", kLoadFailed}));
    EXPECT_EQ(g_sizes, std::vector<std::size_t>({kFirstSize, 0xFFFFFFFF}));
}

TEST_F(DescriptionFetch, DoesNotLookAtTheStatus)
{
    camera->setDescriptionAnswers({{kOneFeature, kOneFeature.size() + 1, KX_E_CONNECTION_LOST}});
    EXPECT_EQ(generate().size(), 1);
    EXPECT_EQ(probe.nodes.keys(), kOneFeatureNodes);
}

TEST_F(DescriptionFetch, ATextWithoutAZeroEndsWithItsBuffer)
{
    const QByteArray text = kOneFeature + QByteArray(int(kFirstSize) - kOneFeature.size(), ' ');
    camera->setDescriptionAnswers({{text, 100}});
    EXPECT_EQ(generate(), QStringList({kFirstFetch}));
    EXPECT_EQ(probe.nodes.keys(), kOneFeatureNodes);
}

TEST_F(DescriptionFetch, PrefixesAreNotResolved)
{
    camera->setDescription("<R xmlns:x=\"u\"><x:Category Name=\"Root\"><pFeature>No</pFeature></x:Category>"
                           "<Category Name=\"Root\"><pFeature>Yes</pFeature></Category></R>");
    generate();
    EXPECT_EQ(probe.categoryNames, QStringList({"Yes"}));
}

TEST_F(DescriptionFetch, TheTextEndsAtItsZeroAndIsUtf8)
{
    QByteArray text = "<R><Integer Name=\"Gr\xC3\xB6\xC3\x9F"
                      "e\"/></R>";
    text.append('\0').append("<junk");
    camera->setDescriptionAnswers({{text, text.size()}});
    EXPECT_EQ(generate().size(), 1);
    EXPECT_EQ(probe.nodes.keys(), QStringList({QString::fromUtf8("Gr\xC3\xB6\xC3\x9F"
                                                                 "e")}));
}

TEST_F(DescriptionFetch, AFailureKeepsTheModelOfTheLastRun)
{
    camera->setDescription(kOneFeature);
    generate();
    probe.generateSelectorMap();
    const QList<QByteArray> broken = {"",
                                      "no xml",
                                      kOneFeature.left(kOneFeature.size() / 2),
                                      "<a><b></a></b>",
                                      "<a>&</a>",
                                      QByteArray("<a>").repeated(1001) + QByteArray("</a>").repeated(1001),
                                      QByteArray("<a>").repeated(100000) +
                                          QByteArray("</a>").repeated(100000),
                                      "<!DOCTYPE a [<!ENTITY e \"" + QByteArray(100000, 'x') + "\">]><a>" +
                                          QByteArray("&e;").repeated(100000) + "</a>"};
    for (const QByteArray& text : broken) {
        camera->setDescription(text);
        EXPECT_EQ(generate(), QStringList({kFirstFetch, kLoadFailed})) << text.left(60).constData();
        EXPECT_NE(probe.handle, nullptr);
        EXPECT_EQ(probe.nodes.keys(), kOneFeatureNodes);
        EXPECT_EQ(probe.featureNames, QStringList({"Gain"}));
        EXPECT_EQ(probe.categoryNames, QStringList({"A"}));
        EXPECT_EQ(probe.nodes.value("Gain").parentNode().toElement().tagName(),
                  QString("RegisterDescription"));
    }
}

TEST_F(DescriptionFetch, WithoutABufferTheConnectionIsClosedAndAnEndReported)
{
    g_failFrom = 0;
    EXPECT_EQ(generate(), QStringList({"log CAMEAR_CREAT_BUF_FAILED", "CloseDevice", "DestroyHandle",
                                       "end 7 3 " + target()}));
    EXPECT_EQ(probe.handle, nullptr);
    EXPECT_FALSE(probe.running);
}

TEST_F(DescriptionFetch, AnExportWithoutABufferEndsTwice)
{
    probe.close();
    takeTrace();
    camera->setDescription(kOneFeature);
    camera->setString("DeviceFirmwareVersion", "V1");
    g_failFrom = 0;
    runExport();
    EXPECT_EQ(trace(), QStringList({"begin 7 3", "CreateHandle S1", "OpenDevice 1 0",
                                    "log CAMEAR_CREAT_BUF_FAILED", "CloseDevice", "DestroyHandle",
                                    "end 7 3 " + target(), "log \"Get XML_NODE_FIRMWARE failed.\"",
                                    "info 7 failed Failed to save feature.", "end 7 3 " + target()}));
    EXPECT_FALSE(QFile::exists(target()));
}

TEST_F(DescriptionFetch, AnUntouchedLengthIsTheSecondFetchsSize)
{
    camera->setDescriptionAnswers(
        {{"", std::nullopt, KX_E_DESCRIPTION}, {kOneFeature, kOneFeature.size() + 1}});
    EXPECT_EQ(generate(), QStringList({kFirstFetch + " -> 80000302", "GetGenICamXML 4294967295"}));
    EXPECT_EQ(probe.nodes.keys(), kOneFeatureNodes);
}

TEST_F(DescriptionFetch, TheTextIsUtf8WhateverTheLocale)
{
    QTextCodec* const codec = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    camera->setDescription("<R><Integer Name=\"Gr\xC3\xB6n\"/></R>");
    generate();
    QTextCodec::setCodecForLocale(codec);
    EXPECT_EQ(probe.nodes.keys(), QStringList({QString::fromUtf8("Gr\xC3\xB6n")}));
}
