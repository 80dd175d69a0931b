// A description's document is the one that Qt's own parser makes of the text, whichever way it came about.
#include "jobs/description/DescriptionDom.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <random>

namespace
{

// What a node is, those below it included.
QString told(const QDomNode& node, const QString& indent = "\n")
{
    QStringList attributes;
    const QDomNamedNodeMap map = node.attributes();
    for (int i = 0; i < map.count(); ++i)
        attributes += map.item(i).nodeName() + "='" + map.item(i).nodeValue() + "' " + map.item(i).prefix() +
                      '|' + map.item(i).localName() + '|' + QString::number(map.item(i).toAttr().specified());
    attributes.sort(); // their order is not the text's, and differs from document to document
    QString text = indent + QString::number(node.nodeType()) + ' ' + node.nodeName() + " [" +
                   node.nodeValue() + "] " + node.prefix() + '|' + node.localName() + '|' +
                   node.namespaceURI() + ' ' + attributes.join(", ");
    for (QDomNode child = node.firstChild(); !child.isNull(); child = child.nextSibling())
        text += told(child, indent + ' ');
    return text;
}

std::string shown(const QString& text)
{
    return text.left(2000).toStdString();
}

bool isAsQtReadsIt(const QString& text)
{
    QDomDocument expected;
    QDomDocument document;
    const bool isGood = expected.setContent(text);
    EXPECT_EQ(ie::parseDescription(text, document), isGood) << shown(text);
    if (!isGood)
        return false;
    EXPECT_TRUE(told(document) == told(expected)) << shown(text) << shown(told(document));
    return true;
}

// The quick way shares the strings of equal names.
bool isReadQuickly(const QString& text)
{
    QDomDocument document;
    EXPECT_TRUE(ie::parseDescription(text, document));
    const QDomNodeList features = document.elementsByTagName("pFeature");
    return features.count() > 1 && features.at(0).toElement().tagName().constData() ==
                                       features.at(1).toElement().tagName().constData();
}

QString around(const QString& content)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- maker -->\n<R a='1' b = \"&lt;2\">\n"
           "<Integer Name=\"A\"/>" +
           content + "<Integer Name='B'><Value>0x10</Value></Integer>\n</R>\n<!-- end -->\n";
}

TEST(DescriptionDom, isQtsForWhatDescriptionsHold)
{
    for (const char* content : {"",
                                " ",
                                "text",
                                "  text\r\n in lines\t",
                                "<p>X</p>",
                                "<p>  X  </p>",
                                "<p> \r\n\t </p>",
                                "<p a='x' b=\"y\"/>",
                                "<p a = 'x'\n b= \"y\" >z</p>",
                                "<p a='it&apos;s'/>",
                                "<p a='\r\n\t'/>",
                                "<p a='>'/>",
                                "<p>&lt;&gt;&amp;&quot;&apos;</p>",
                                "<p>&#65;&#x42;&#39;</p>",
                                "<p>&#32;</p>",
                                "<p> &#160; </p>",
                                "<p>&#13;x</p>",
                                "<p>a]b]]c</p>",
                                "<p>a>b</p>",
                                "<!-- comment -->",
                                "<!---->",
                                "<!-- <p> & ]]> -->",
                                "<p>a<!-- b -->c</p>",
                                "<p>a<b/>  c  <b/></p>",
                                "<p><![CDATA[ <x> & ]]></p>",
                                "<p> <![CDATA[]]> </p>",
                                "<p>a<![CDATA[b]]>c</p>",
                                "<p-1._x/>",
                                "<p>\xC3\xA9\xE2\x82\xAC</p>",
                                "<p>\xC2\xA0</p>",
                                "<p a='\xC3\xA9'/>",
                                "<p></p>",
                                "<p></p >",
                                "<p/ >",
                                "<Group><Group><Group/></Group></Group>"}) {
        const QString text = around(QString::fromUtf8(content));
        if (isAsQtReadsIt(text))
            isAsQtReadsIt(text.mid(text.indexOf("<R")));
    }
}

TEST(DescriptionDom, isQtsForWhatIsUnusual)
{
    for (const char* content : {"<a:p xmlns:a='u' a:b='c'/>",
                                "<?pi data?>",
                                "<p>&unknown;</p>",
                                "<p>&#0;</p>",
                                "<p>&#xD800;</p>",
                                "<p>&#65536;</p>",
                                "<p>&#99999;</p>",
                                "<p>&#x1F600;</p>",
                                "<p>&#;</p>",
                                "<p>&amp</p>",
                                "<p>& </p>",
                                "<p a='1' a='2'/>",
                                "<p a=1/>",
                                "<p a/>",
                                "<p a='<'/>",
                                "<p>a]]>b</p>",
                                "<p>",
                                "</p>",
                                "<p></q>",
                                "<1p/>",
                                "< p/>",
                                "<p",
                                "<!-- -- -->",
                                "<!-- x",
                                "<![CDATA[x",
                                "<p>\x01</p>",
                                "</R><R>",
                                "<!ELEMENT p ANY>",
                                "<\xC3\xA9/>",
                                "<p \xC3\xA9='1'/>",
                                "<p a='1'b='2'/>",
                                "<p>\xF0\x9F\x98\x80</p>"})
        isAsQtReadsIt(around(QString::fromUtf8(content)));
    for (const char* text : {"",
                             " ",
                             "text",
                             "<R/>",
                             "<R></R>",
                             "<R>",
                             "<R a='1'/>",
                             "<R></R><R></R>",
                             "<R></R>text",
                             "<R></R><!-- </R> -->",
                             "<R><p></R></p>",
                             "<!DOCTYPE R><R><p/></R>",
                             "<!DOCTYPE R [<!ENTITY e 'x'>]><R><p>&e;</p></R>",
                             "<?xml version='1.0'?>",
                             "<?xml version='1.0'?><R><p>x</p></R>",
                             "<R b='</R>'><p/></R>",
                             "<R><!-- </R> --></R>",
                             "<R></Rest></R>",
                             "<R><p/></R x>",
                             "\xEF\xBB\xBF<R><p/></R>",
                             "  <R><p/></R>  "})
        isAsQtReadsIt(QString::fromUtf8(text));
}

TEST(DescriptionDom, equalStringsAreShared)
{
    EXPECT_TRUE(isReadQuickly(around("<p> &lt; <![CDATA[x]]></p><!-- c --><pFeature/><pFeature/>")));
    EXPECT_FALSE(isReadQuickly(around("<?pi data?><pFeature/><pFeature/>")));
}

// Damaged in a few places, so that many are still well-formed.
TEST(DescriptionDom, isQtsForDamagedTexts)
{
    const QString description =
        around("<Category Name=\"Root\">\r\n <pFeature>A</pFeature><pFeature>B</pFeature>\n</Category>"
               "<IntSwissKnife Name=\"K\"><!-- why --><pVariable Name=\"V\">A</pVariable>"
               "<Formula><![CDATA[V<1]]></Formula><Formula>V &amp;&amp; 1</Formula></IntSwissKnife>");
    const char* const pieces[] = {
        "<",        "</",   ">",    "/>",          "&",     "&amp;",   "&#65;",    "&x;",   "\"",
        "'",        "\r",   "\t",   " ",           "]]>",   "]",       "--",       "=",     ":",
        "\x01",     "<a>",  "</a>", "<a/>",        "a='b'", " b=\"\"", "<!--c-->", "<?p?>", "<![CDATA[x]]>",
        "\xC2\xA0", "</R>", "<R>",  "<!DOCTYPE a>"};
    std::mt19937 random(1);
    const auto any = [&](int end) { return int(random() % unsigned(end)); };
    int good = 0;
    for (int run = 0; run < 20000 && !HasFailure(); ++run) {
        QString text = description;
        for (int edits = 1 + any(3); edits > 0; --edits) {
            const int at = any(text.size());
            const QString piece = QString::fromUtf8(pieces[any(sizeof pieces / sizeof *pieces)]);
            text.replace(at, any(3), any(4) == 0 ? QString() : piece);
        }
        good += isAsQtReadsIt(text);
    }
    EXPECT_GT(good, 1000);
}

TEST(DescriptionDom, isQtsForRealDescriptions)
{
    QFile ours(QString(IE_TEST_DATA) + "/every_node_kind.xml");
    ASSERT_TRUE(ours.open(QIODevice::ReadOnly));
    EXPECT_TRUE(isAsQtReadsIt(QString::fromUtf8(ours.readAll())));
    if (!qEnvironmentVariableIsSet("KX_DESCRIPTIONS"))
        GTEST_SKIP() << "SKIPPED: KX_DESCRIPTIONS names no folder";
    const QFileInfoList files =
        QDir(qEnvironmentVariable("KX_DESCRIPTIONS")).entryInfoList({"*.xml"}, QDir::Files);
    for (const QFileInfo& info : files) {
        QFile file(info.filePath());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll());
        EXPECT_TRUE(isAsQtReadsIt(text)) << shown(info.fileName());
        EXPECT_TRUE(isReadQuickly(text)) << shown(info.fileName());
    }
}

} // namespace
