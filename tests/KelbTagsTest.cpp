#include "support/TestHelpers.h"

#include <Velor.Base/KelbSynonyms.h>
#include <Velor.Base/KelbTags.h>

#include <gtest/gtest.h>

#include <QtXml/QDomDocument>

#include <tuple>

namespace {

using namespace Qt::StringLiterals;

KelbSynonyms sampleSynonyms()
{
    const TestFolder folder;
    writeFile(folder.path(u"s.xml"_s),
              "<KelbSynonyms><KelbSynonym values='guy, dude'/><KelbSynonym values='male, man'/>"
              "<KelbSynonym values='female, woman'/><KelbSynonym values='man, chap'/></KelbSynonyms>");
    KelbSynonyms synonyms;
    EXPECT_TRUE(synonyms.load(folder.path(u"s.xml"_s)));
    return synonyms;
}

TEST(KelbTags, ReadsAnyText)
{
    const std::tuple<const char*, QString, QStringList> rows[] = {
        {"sorted, and the first spelling stays", u"b, A,a"_s, {u"A"_s, u"b"_s}},
        {"letters that fold to one are one", u"\u017F,s,S"_s, {u"\u017F"_s}},
        {"letters behind half a surrogate pair fold as well",
         u"\u017F\xD801Z,s\xD801z"_s,
         {u"\u017F\xD801Z"_s}},
        {"blanks go in front alone", u"  a , b c,\tb"_s, {u"\tb"_s, u"a "_s, u"b c"_s}},
        {"a text without tags yields the default word", u" , ,,"_s, {u"Default"_s}},
    };
    for (const auto& [rule, text, tags] : rows) {
        EXPECT_EQ(KelbTags(text).getTags(), tags) << rule;
    }
}

TEST(KelbTags, KeepsTheCaseRulesApart)
{
    KelbTags tags(u"a,Foo"_s);
    tags.addTag(u"foo"_s);
    tags.removeTag(u"foo"_s);
    tags.addTag(u""_s);
    tags.learnFromTags(KelbTags(u"c,A,b"_s));
    EXPECT_TRUE(tags.hasTag(u"fOO"_s));
    EXPECT_EQ(tags.toString(), u"a, Foo, , b, c"_s);
    KelbTags last(u"a"_s);
    last.removeTag(u"a"_s);
    EXPECT_TRUE(last.isEmpty());
}

TEST(KelbTags, ComparesFromTheLeft)
{
    const KelbTags twice(QStringList{u"B"_s, u"a"_s, u"a"_s});
    const KelbTags three(u"A,b,c"_s);
    EXPECT_EQ(twice.toString(), u"a, a, B"_s);
    EXPECT_TRUE(twice == three && three != twice);
    EXPECT_NE(KelbTags(u"a"_s), three);
}

TEST(KelbTags, MatchesEachPairOfEqualTagsOrSynonyms)
{
    const KelbSynonyms synonyms = sampleSynonyms();
    const auto matches = [&](const QString& ours, const QString& theirs, bool ignoresGender = false) {
        return KelbTags(ours).compareTags(KelbTags(theirs), &synonyms, ignoresGender).join(u", "_s);
    };
    EXPECT_EQ(matches(u"Guy"_s, u"DUDE,guy"_s), u"Guy, Guy"_s);
    EXPECT_EQ(matches(u"Z, a"_s, u"A, z"_s), u"a, Z"_s) << "in the order and spelling of the first";
    EXPECT_EQ(matches(u"male, x"_s, u"MAN, x"_s), u"male, x"_s);
    EXPECT_EQ(matches(u"man, woman, x"_s, u"chap, x"_s, true), u"x"_s) << "gender of the first is ignored";
    EXPECT_EQ(matches(u"chap, x"_s, u"MAN, woman, x"_s, true), u"x"_s) << "gender of the second is ignored";
    EXPECT_EQ(KelbTags(u"Guy, male"_s).compareTags(KelbTags(u"DUDE, guy, MALE"_s), nullptr, true),
              (QStringList{u"Guy"_s, u"male"_s}))
        << "without synonyms, equal tags alone match, of any gender";
}

TEST(KelbTags, HaveAGenderByTheGroupsAlone)
{
    const KelbSynonyms none;
    const KelbSynonyms synonyms = sampleSynonyms();
    const KelbTags man(u"x, MAN"_s);
    const KelbTags woman(u"x, woman"_s);
    EXPECT_TRUE(man.hasMaleTag(&synonyms) && !man.hasFemaleTag(&synonyms) && !man.hasNoGenderTags(&synonyms));
    EXPECT_TRUE(woman.hasFemaleTag(&synonyms) && !woman.hasMaleTag(&synonyms));
    EXPECT_TRUE(KelbTags(u"man, woman"_s).hasNoGenderTags(&synonyms));
    EXPECT_FALSE(KelbTags(u"male"_s).hasMaleTag(&none));
}

TEST(KelbTags, LiveInAnAttributeWithoutWhichItemsAloneHaveTheDefaultWord)
{
    QDomDocument document;
    QDomElement element = document.createElement(u"item"_s);
    KelbTags tags(u"b,a"_s);
    VelorCategoryTags category(u""_s);
    tags.writeXML(element);
    category.writeXML(element);
    EXPECT_EQ(element.attribute(u"tags"_s), u"a, b"_s);
    EXPECT_EQ(element.attribute(u"categoryTags"_s), u"Default"_s)
        << "a constructor gives it to categories, too";
    const QDomElement empty = document.createElement(u"item"_s);
    tags.readXML(empty);
    category.readXML(empty);
    EXPECT_EQ(tags.toString(), u"Default"_s);
    EXPECT_TRUE(category.isEmpty());
    category.writeXML(element);
    EXPECT_EQ(element.attribute(u"categoryTags"_s, u"(missing)"_s), u""_s);
}

} // namespace
