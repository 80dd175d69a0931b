// What foreign XML is refused before QDomDocument sees it.
#include "jobs/file/XmlSafety.h"

#include <QDomDocument>

#include <gtest/gtest.h>

namespace
{

QString nested(int levels, const QString& inside = {})
{
    return QString("<a>").repeated(levels) + inside + QString("</a>").repeated(levels);
}

QString withType(const QString& subset, const QString& content)
{
    return "<?xml version=\"1.0\"?><!DOCTYPE a [" + subset + "]>" + content;
}

} // namespace

TEST(XmlSafety, TakesAThousandLevelsAndNotOneMore)
{
    EXPECT_TRUE(ie::isSafeToParse(nested(1000)));
    EXPECT_FALSE(ie::isSafeToParse(nested(1001)));
    EXPECT_TRUE(ie::isSafeToParse(nested(999, "<b/>")));
    EXPECT_FALSE(ie::isSafeToParse(nested(1000, "<b/>")));
    EXPECT_FALSE(ie::isSafeToParse(nested(1000, "<b x='/>'></b>")));
}

TEST(XmlSafety, CountsWhatFollowsAnEndTagAtOnce)
{
    EXPECT_TRUE(ie::isSafeToParse(QString("<a><b></b>").repeated(999)));
    EXPECT_FALSE(ie::isSafeToParse(QString("<a><b></b>").repeated(1000)));
}

TEST(XmlSafety, RefusesWhatWouldOverflowTheStack)
{
    EXPECT_FALSE(ie::isSafeToParse(nested(100000)));
    EXPECT_FALSE(ie::isSafeToParse(QString("<a>").repeated(1000000))); // never closed
}

TEST(XmlSafety, CountsNestingAndNotElements)
{
    EXPECT_TRUE(ie::isSafeToParse("<r>" + QString("<a><b/></a>").repeated(5000) + "</r>"));
    EXPECT_TRUE(ie::isSafeToParse("<r>" + QString("<a/>").repeated(5000) + "</r>"));
    EXPECT_TRUE(ie::isSafeToParse("<r>" + QString("<a x=\"1\" />").repeated(5000) + "</r>"));
}

TEST(XmlSafety, RefusesMoreThanADocumentCanHold)
{
    const auto withAttributes = [](int count) {
        QString attributes;
        for (int i = 0; i < count; ++i)
            attributes += QString(" a%1='\"'").arg(i);
        return "<r" + attributes + "/>";
    };
    EXPECT_TRUE(ie::isSafeToParse(withAttributes(256)));
    EXPECT_FALSE(ie::isSafeToParse(withAttributes(257)));
    EXPECT_TRUE(ie::isSafeToParse("<r>" + QString("<a/>").repeated(1999999) + "</r>"));
    EXPECT_FALSE(ie::isSafeToParse("<r>" + QString("<a/>").repeated(2000000) + "</r>"));
}

TEST(XmlSafety, LooksThroughWhatIsNoElement)
{
    const QString many = QString("<a>").repeated(2000);
    EXPECT_TRUE(ie::isSafeToParse("<r><!-- " + many + " --></r>"));
    EXPECT_TRUE(ie::isSafeToParse("<r><![CDATA[" + many + "]]></r>"));
    EXPECT_TRUE(ie::isSafeToParse("<r><?do " + many + "?></r>"));
    EXPECT_TRUE(ie::isSafeToParse("<r>" + QString("<a x='>' y=\"/>'\"></a>").repeated(2000) + "</r>"));
    EXPECT_TRUE(ie::isSafeToParse(withType("<!-- don't " + many + " --><!ELEMENT a ANY>", "<a/>")));
}

TEST(XmlSafety, FindsNestingBehindWhatIsNoElement)
{
    const QString deep = nested(1001);
    EXPECT_FALSE(ie::isSafeToParse("<!-- > --><?p ?>" + deep));
    EXPECT_FALSE(ie::isSafeToParse("<!-->--->" + deep));
    EXPECT_FALSE(ie::isSafeToParse("<r><![CDATA[ ]] > ]]>" + deep + "</r>"));
    EXPECT_FALSE(ie::isSafeToParse("<!DOCTYPE a>" + deep));
    EXPECT_FALSE(ie::isSafeToParse("<!DOCTYPE a SYSTEM \"x[>\">" + deep));
    EXPECT_FALSE(
        ie::isSafeToParse(withType("<!ELEMENT a ANY><!-- ] --><?x ]>?><!ATTLIST a b CDATA ']'>", deep)));
    EXPECT_FALSE(ie::isSafeToParse(withType("", deep)));
}

TEST(XmlSafety, BrokenTextIsLeftToTheParser)
{
    for (const char* text :
         {"", "no xml", "<", "<a", "<a b='", "</", "</a", "<!", "<!--", "<![CDATA[", "<?", "<!DOCTYPE",
          "<!DOCTYPE a [", "<!DOCTYPE a [<", "<!DOCTYPE a [<!ENTITY", "<!DOCTYPE a [<!--", "<a></a></a></a>"})
        EXPECT_TRUE(ie::isSafeToParse(text)) << text;
}

TEST(XmlEntities, PlainTextIsWelcome)
{
    const QString text = withType("<!ENTITY maker \"Some & co\">", "<a>&maker;</a>");
    EXPECT_FALSE(ie::isSafeToParse(text)); // a reference inside, even a broken one

    const QString plain = withType("<!ENTITY maker \"Some company\">", "<a>&maker;</a>");
    ASSERT_TRUE(ie::isSafeToParse(plain));
    QDomDocument document;
    ASSERT_TRUE(document.setContent(plain));
    EXPECT_EQ(document.documentElement().text(), QString("Some company"));
}

TEST(XmlEntities, ReferencesToWhatWasDeclaredBeforeAreWelcome)
{
    const QString text = withType("<!ENTITY micro \"&#181;\"><!ENTITY unit '&micro;m &amp; more'>",
                                  "<a b='&micro;'>&unit;</a>");
    ASSERT_TRUE(ie::isSafeToParse(text));
    QDomDocument document;
    ASSERT_TRUE(document.setContent(text));
    EXPECT_EQ(document.documentElement().attribute("b"), QString("\u00B5"));
    EXPECT_EQ(document.documentElement().text(), QString("\u00B5m & more"));
}

TEST(XmlEntities, WhatMultipliesIsMeasuredByWhatItGrowsTo)
{
    QString subset = "<!ENTITY e0 \"aaaaaaaaaa\">";
    for (int i = 1; i <= 20; ++i)
        subset += QString("<!ENTITY e%1 \"%2\">").arg(i).arg(QString("&e%1;").arg(i - 1).repeated(10));
    EXPECT_TRUE(ie::isSafeToParse(withType(subset, "<a>&e2;</a>")));
    EXPECT_FALSE(ie::isSafeToParse(withType(subset, "<a>&e7;</a>")));
    EXPECT_FALSE(ie::isSafeToParse(withType(subset, "<a b='&e20;'/>")));
}

TEST(XmlEntities, CirclesAndParametersAreRefused)
{
    EXPECT_FALSE(ie::isSafeToParse(withType("<!ENTITY a '&b;'><!ENTITY b '&a;'>", "<a/>")));
    EXPECT_FALSE(ie::isSafeToParse(withType("<!ENTITY % p \"x\">", "<a/>")));
}

TEST(XmlEntities, WhatEveryTextMaySayDoesNotCount)
{
    const QString subset = "<!ENTITY e \"" + QString(4000, 'x') + "\">";
    EXPECT_TRUE(ie::isSafeToParse(withType(subset, "<a>" + QString("&amp;").repeated(5000) + "</a>")));
}

TEST(XmlEntities, MarkupInEntitiesIsRefused)
{
    EXPECT_FALSE(ie::isSafeToParse(withType("<!ENTITY e '" + nested(1001) + "'>", "<a>&e;</a>")));
    EXPECT_FALSE(ie::isSafeToParse(withType("<!ENTITY e '&#60;b>'>", "<a>&e;</a>")));
}

TEST(XmlEntities, ALongEntityReferencedOverAndOverIsRefused)
{
    const QString subset = "<!ENTITY e \"" + QString(4000, 'x') + "\">";
    EXPECT_TRUE(ie::isSafeToParse(withType(subset, "<a>" + QString("&e;").repeated(4000) + "</a>")));
    EXPECT_FALSE(ie::isSafeToParse(withType(subset, "<a>" + QString("&e;").repeated(5000) + "</a>")));
    EXPECT_FALSE(ie::isSafeToParse(withType(subset, "<a b='" + QString("&e;").repeated(5000) + "'/>")));
}

TEST(XmlEntities, ReferencesWithoutDeclaredEntitiesCostNothing)
{
    EXPECT_TRUE(ie::isSafeToParse("<a>" + QString("&amp;").repeated(1000000) + "</a>"));
}
