// How a parsed description becomes the worker's indexes. No camera is asked.
#include "QOperateThreadProbe.h"
#include "support/OwnDescription.h"
#include "support/QtPrinting.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace
{

class DescriptionIndex : public ::testing::Test
{
protected:
    void index(const QString& inside)
    {
        ASSERT_TRUE(
            indexed.index.index("<RegisterDescription Name=\"Whole\">" + inside + "</RegisterDescription>"));
    }
    QString tagOf(const QString& name) const { return indexed.nodes.value(name).tagName(); }

    tests::OwnDescription indexed;
};

QString category(const QString& name, const QStringList& features)
{
    QString text = "<Category Name=\"" + name + "\">";
    for (const QString& feature : features)
        text += "<pFeature>" + feature + "</pFeature>";
    return text + "</Category>";
}

} // namespace

TEST_F(DescriptionIndex, IsEmptyOnAFreshWorker)
{
    QOperateThread worker;
    const QOperateThreadProbe probe(worker);
    EXPECT_TRUE(probe.nodes.isEmpty());
    EXPECT_TRUE(probe.featureCategory.isEmpty());
    EXPECT_TRUE(probe.featureNames.isEmpty());
    EXPECT_TRUE(probe.categoryNames.isEmpty());
    EXPECT_TRUE(probe.selectorFeatures.isEmpty());
    EXPECT_TRUE(probe.selectorPairs.isEmpty());
    EXPECT_TRUE(probe.filter.isEmpty());
}

TEST_F(DescriptionIndex, ListsTheFeaturesOfListedCategories)
{
    index(category("Root", {"Image"}) + category("Image", {"Width", "Height"}) +
          "<Integer Name=\"Width\"/><Integer Name=\"Height\"/>");
    EXPECT_EQ(indexed.categoryNames, QStringList({"Image"}));
    EXPECT_EQ(indexed.featureNames, QStringList({"Width", "Height"}));
    EXPECT_EQ(indexed.featureCategory.value("Width"), QString("Image"));
    EXPECT_EQ(indexed.nodes.keys(), QStringList({"Height", "Image", "Root", "Width"}));
}

TEST_F(DescriptionIndex, TakesEveryChildOfRootWhateverItsTag)
{
    index("<Category Name=\"Root\"><ToolTip>All of it</ToolTip><pFeature>A</pFeature><!-- no element -->"
          "<Visibility>Beginner</Visibility><pFeature>A</pFeature></Category>");
    EXPECT_EQ(indexed.categoryNames, QStringList({"All of it", "A", "Beginner", "A"}));
}

TEST_F(DescriptionIndex, LeavesOutWhatRootListsItself)
{
    index(category("Root", {"Image", "Width"}) + category("Image", {"Height"}));
    EXPECT_EQ(indexed.featureNames, QStringList({"Height"}));
}

TEST_F(DescriptionIndex, TakesTheFirstCategoryThatIsNamedRootExactly)
{
    index(category("root", {"No"}) + "<Group>" + category("Root", {"Yes"}) + "</Group>" +
          category("Root", {"Late"}));
    EXPECT_EQ(indexed.categoryNames, QStringList({"Yes"}));
}

TEST_F(DescriptionIndex, WithoutRootListsNothingButKnowsEveryNode)
{
    index(category("Image", {"Width"}) + "<Integer Name=\"Width\"/>");
    EXPECT_TRUE(indexed.categoryNames.isEmpty());
    EXPECT_TRUE(indexed.featureNames.isEmpty());
    EXPECT_TRUE(indexed.featureCategory.isEmpty());
    EXPECT_EQ(indexed.nodes.keys(), QStringList({"Image", "Width"}));
}

TEST_F(DescriptionIndex, TakesInASubCategoryThatIsDeclaredAfterItsParent)
{
    index(category("Root", {"Image"}) + category("Image", {"Width", "Format"}) +
          category("Format", {"PixelFormat"}));
    EXPECT_EQ(indexed.categoryNames, QStringList({"Image", "Format"}));
    EXPECT_EQ(indexed.featureNames, QStringList({"Width", "Format", "PixelFormat"}));
}

TEST_F(DescriptionIndex, LeavesOutASubCategoryThatIsDeclaredBeforeItsParent)
{
    index(category("Root", {"Image"}) + category("Format", {"PixelFormat"}) +
          category("Image", {"Width", "Format"}));
    EXPECT_EQ(indexed.categoryNames, QStringList({"Image"}));
    EXPECT_EQ(indexed.featureNames, QStringList({"Width", "Format"}));
}

TEST_F(DescriptionIndex, AppendsASubCategoryOnce)
{
    index(category("Root", {"A", "B"}) + category("A", {"Sub"}) + category("B", {"Sub"}) +
          category("Sub", {"X"}) + category("Sub", {"Y"}));
    EXPECT_EQ(indexed.categoryNames, QStringList({"A", "B", "Sub"}));
    EXPECT_EQ(indexed.featureNames, QStringList({"Sub", "Sub", "X", "Y"}));
}

TEST_F(DescriptionIndex, KeepsDuplicatesAndTheLastCategoryOfAFeature)
{
    index(category("Root", {"A", "B"}) + category("A", {"Gain"}) + category("B", {"Gain"}));
    EXPECT_EQ(indexed.featureNames, QStringList({"Gain", "Gain"}));
    EXPECT_EQ(indexed.featureCategory.value("Gain"), QString("B"));
}

TEST_F(DescriptionIndex, KeepsBlanksAroundNames)
{
    index(category("Root", {"A", " B "}) + category("A", {" Gain "}) + category("B", {"No"}));
    EXPECT_EQ(indexed.categoryNames, QStringList({"A", " B "}));
    EXPECT_EQ(indexed.featureNames, QStringList({" Gain "}));
}

TEST_F(DescriptionIndex, CountsAListedFeatureOnlyDirectlyInACategory)
{
    index(category("Root", {"A"}) + "<Group Name=\"A\"><pFeature>No</pFeature></Group>" +
          "<Category Name=\"A\"><Extension><pFeature>Neither</pFeature></Extension></Category>");
    EXPECT_TRUE(indexed.featureNames.isEmpty());
}

TEST_F(DescriptionIndex, IndexesEveryNamedElementWhateverItsTag)
{
    index("<Group Name=\"G\"><IntSwissKnife Name=\"Knife\"><pVariable Name=\"SEL\">Sel</pVariable>"
          "<Constant Name=\"C\">4</Constant></IntSwissKnife></Group><Port Name=\"Device\"/>"
          "<StructReg Name=\"Struct\"><StructEntry Name=\"Entry\"/></StructReg>"
          "<Category Name=\"Cat\"><pFeature Name=\"Odd\">X</pFeature></Category><Integer/>");
    EXPECT_EQ(indexed.nodes.keys(),
              QStringList({"C", "Cat", "Device", "Entry", "G", "Knife", "Odd", "SEL", "Struct"}));
    EXPECT_EQ(tagOf("SEL"), QString("pVariable"));
}

TEST_F(DescriptionIndex, DoesNotIndexTheDocumentElement)
{
    index("<Integer Name=\"I\"/>");
    EXPECT_FALSE(indexed.nodes.contains("Whole"));
}

TEST_F(DescriptionIndex, NeitherIndexesNorEntersEntriesOfEnumerations)
{
    index("<Enumeration Name=\"E\"><EnumEntry Name=\"On\"><Integer Name=\"Inside\"/></EnumEntry>"
          "<Integer Name=\"Beside\"/></Enumeration>");
    EXPECT_EQ(indexed.nodes.keys(), QStringList({"Beside", "E"}));
}

TEST_F(DescriptionIndex, TheLaterOfTwoEqualNamesWinsAcrossTags)
{
    const QString node = "<Integer Name=\"SEL\"/>";
    const QString knife = "<IntSwissKnife Name=\"K\"><pVariable Name=\"SEL\">X</pVariable></IntSwissKnife>";
    index(node + knife);
    EXPECT_EQ(tagOf("SEL"), QString("pVariable"));
    index(knife + node);
    EXPECT_EQ(tagOf("SEL"), QString("Integer"));
}

TEST_F(DescriptionIndex, PrefixedTagsAreOtherTags)
{
    index("<x:Category Name=\"Root\" xmlns:x=\"u\"><pFeature>A</pFeature></x:Category>");
    EXPECT_TRUE(indexed.categoryNames.isEmpty());
    EXPECT_EQ(tagOf("Root"), QString("x:Category"));
}

TEST_F(DescriptionIndex, ANewRunReplacesEverything)
{
    index(category("Root", {"A"}) + category("A", {"Sel"}) +
          "<Integer Name=\"Sel\"><pSelected>X</pSelected></Integer>");
    indexed.index.generateSelectorMap();
    index(category("Root", {"B"}) + category("B", {"Other"}));
    EXPECT_EQ(indexed.nodes.keys(), QStringList({"B", "Root"}));
    EXPECT_EQ(indexed.categoryNames, QStringList({"B"}));
    EXPECT_EQ(indexed.featureNames, QStringList({"Other"}));
    EXPECT_EQ(indexed.featureCategory.keys(), QStringList({"Other"}));
    EXPECT_TRUE(indexed.selectorFeatures.isEmpty());
    EXPECT_TRUE(indexed.selectorPairs.isEmpty());
}

TEST_F(DescriptionIndex, FindsNodesByTheirExactName)
{
    index("<Integer Name=\"Gain\"/>");
    QDomElement element;
    EXPECT_TRUE(indexed.index.nodeElement("Gain", element));
    EXPECT_EQ(element.tagName(), QString("Integer"));
    EXPECT_FALSE(indexed.index.nodeElement("gain", element));
    indexed.nodes["Empty"] = QDomElement();
    EXPECT_FALSE(indexed.index.nodeElement("Empty", element));
    EXPECT_TRUE(element.isNull());
}

TEST_F(DescriptionIndex, FindsTheFirstElementOfAList)
{
    index("<Integer Name=\"A\" Which=\"1\"/><Group><Integer Name=\"A\" Which=\"2\"/></Group>");
    const QDomNodeList integers = indexed.document.elementsByTagName("Integer");
    EXPECT_EQ(indexed.index.findElement("A", integers).attribute("Which"), QString("1"));
    EXPECT_TRUE(indexed.index.findElement("a", integers).isNull());
}

namespace
{

QStringList pairTexts(const QList<SelectorPair>& pairs)
{
    QStringList texts;
    for (const SelectorPair& pair : pairs)
        texts.append(
            QString("%1>%2=%3").arg(pair.strSelector, pair.strSelected, QString::number(pair.nValue)));
    return texts;
}

} // namespace

TEST_F(DescriptionIndex, KnowsWhatASelectorSelects)
{
    index(category("Root", {"A"}) + category("A", {"Gain", "GainSelector"}) +
          "<Integer Name=\"GainSelector\"><pSelected>Gain</pSelected><Group><pSelected>No</pSelected></Group>"
          "<pSelected>Black</pSelected></Integer><Integer Name=\"Gain\"/>"
          "<Integer Name=\"Unlisted\"><pSelected>Gain</pSelected></Integer>");
    indexed.index.generateSelectorMap();
    EXPECT_EQ(indexed.selectorFeatures.keys(), QStringList({"GainSelector"}));
    EXPECT_EQ(indexed.selectorFeatures.value("GainSelector"), QStringList({"Gain", "Black"}));
    EXPECT_EQ(pairTexts(indexed.selectorPairs), QStringList({"GainSelector>Gain=0", "GainSelector>Black=0"}));

    indexed.index.generateSelectorMap(); // starts afresh
    EXPECT_EQ(indexed.selectorPairs.size(), 2);
}

TEST_F(DescriptionIndex, DoublesThePairsOfASelectorThatIsListedTwice)
{
    index(category("Root", {"A", "B"}) + category("A", {"S"}) + category("B", {"S"}) +
          "<Integer Name=\"S\"><pSelected>Gain</pSelected></Integer>");
    indexed.index.generateSelectorMap();
    EXPECT_EQ(pairTexts(indexed.selectorPairs), QStringList({"S>Gain=0", "S>Gain=0"}));
    EXPECT_EQ(indexed.selectorFeatures.value("S"), QStringList({"Gain"}));
}

TEST_F(DescriptionIndex, SelectedFeaturesOfAnUnknownNodeAreNone)
{
    indexed.nodes["Empty"] = QDomElement();
    for (const char* name : {"Unknown", "Empty"}) {
        QStringList selected = {"old"};
        indexed.index.selectedFeatures(name, selected);
        EXPECT_TRUE(selected.isEmpty()) << name;
    }
    EXPECT_TRUE(indexed.selectorPairs.isEmpty());
}

TEST_F(DescriptionIndex, CollectsWhatANodeDependsOn)
{
    index("<Integer Name=\"Start\"><pInvalidator>Inv</pInvalidator><pValue>Knife</pValue><pMin>Low</pMin>"
          "<pIsLocked>Lock</pIsLocked><ToolTip>Knife</ToolTip><pSelected>No</pSelected></Integer>"
          "<IntSwissKnife Name=\"Knife\"><pVariable Name=\"V\">Deep</pVariable></IntSwissKnife>"
          "<Integer Name=\"Deep\"><pValue>Gone</pValue></Integer>"
          "<Integer Name=\"Low\"><pValue>LowReg</pValue></Integer>"
          "<IntSwissKnife Name=\"Lock\"><pVariable Name=\"W\">State</pVariable></IntSwissKnife>");
    QStringList references;
    QStringList variables;
    indexed.index.collectReferences("Start", &references, &variables);
    EXPECT_EQ(references, QStringList({"Inv", "Knife", "Deep", "Gone", "LowReg", "State"}));
    EXPECT_EQ(variables, QStringList({"Deep", "State"}));
}

TEST_F(DescriptionIndex, FollowsAllSixKindsOfLimitsWithoutNamingThem)
{
    QString text = "<Integer Name=\"Start\">";
    QStringList leaves;
    for (const char* tag : {"pMin", "pMax", "pInc", "pIsLocked", "pIsImplemented", "pIsAvailable"}) {
        text += QString("<%1>To%1</%1>").arg(tag);
        leaves.append(QString("Leaf%1").arg(tag));
    }
    text += "</Integer>";
    for (const char* tag : {"pMin", "pMax", "pInc", "pIsLocked", "pIsImplemented", "pIsAvailable"})
        text += QString("<Integer Name=\"To%1\"><pValue>Leaf%1</pValue></Integer>").arg(tag);
    index(text);
    QStringList references;
    QStringList variables;
    indexed.index.collectReferences("Start", &references, &variables);
    EXPECT_EQ(references, leaves);
    EXPECT_TRUE(variables.isEmpty());
}

TEST_F(DescriptionIndex, CollectsAStructEntrysInvalidatorsBackwards)
{
    index("<StructReg Name=\"R\"><pInvalidator>First</pInvalidator><Address>0</Address>"
          "<pInvalidator>Second</pInvalidator><StructEntry Name=\"Before\"/>"
          "<StructEntry Name=\"E\"><pInvalidator>Own</pInvalidator></StructEntry>"
          "<pInvalidator>Behind</pInvalidator></StructReg>");
    QStringList references;
    QStringList variables;
    indexed.index.collectReferences("E", &references, &variables);
    EXPECT_EQ(references, QStringList({"Second", "First", "Own"}));
}

TEST_F(DescriptionIndex, CollectsNothingForAnUnknownNode)
{
    QStringList references;
    QStringList variables;
    indexed.index.collectReferences("Unknown", &references, &variables);
    EXPECT_TRUE(references.isEmpty() && variables.isEmpty());
}

TEST_F(DescriptionIndex, OfParentAndChildOfOneNameTheChildStays)
{
    index("<Group Name=\"X\"><Integer Name=\"X\"/></Group>");
    EXPECT_EQ(tagOf("X"), QString("Integer"));
}

TEST_F(DescriptionIndex, IsMadeOnceForWorkersOfOneDescriptionAndTheirMapsAreTheirOwn)
{
    const QString inside = category("Root", {"A"}) + "<Integer Name=\"A\"/>";
    index(inside);
    tests::OwnDescription other;
    ASSERT_TRUE(
        other.index.index("<RegisterDescription Name=\"Whole\">" + inside + "</RegisterDescription>"));
    EXPECT_EQ(other.document, indexed.document);
    EXPECT_EQ(other.nodes, indexed.nodes);

    other.nodes["new"] = QDomElement();
    other.featureNames.append("new");
    EXPECT_FALSE(indexed.nodes.contains("new"));
    EXPECT_FALSE(indexed.featureNames.contains("new"));

    ASSERT_TRUE(other.index.index("<RegisterDescription/>"));
    EXPECT_NE(other.document, indexed.document);
    EXPECT_TRUE(other.nodes.isEmpty());
    EXPECT_EQ(tagOf("A"), "Integer");
}

// Under a thread checker as well as here: workers read one document at the same time.
TEST_F(DescriptionIndex, IsReadByManyThreadsAtOnce)
{
    QString inside = category("Root", {"A"});
    for (int i = 0; i < 2000; ++i)
        inside += QString("<Integer Name=\"N%1\"><pValue>N%2</pValue></Integer>").arg(i).arg(i + 1);
    std::vector<QStringList> found(4);
    std::vector<std::thread> threads;
    for (QStringList& mine : found)
        threads.emplace_back([&mine, &inside] {
            tests::OwnDescription own;
            if (own.index.index("<RegisterDescription>" + inside + "</RegisterDescription>"))
                own.index.collectReferences("N1000", &mine, nullptr);
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const QStringList& mine : found) {
        EXPECT_EQ(mine.size(), 1000);
        EXPECT_EQ(mine, found[0]);
    }
}
