#include "TestHelpers.h"

#include <Velor.Base/KelbSynonyms.h>
#include <Velor.Base/KelbTags.h>

#include <gtest/gtest.h>

#include <QtCore/QDebug>
#include <QtXml/QDomDocument>

#include <algorithm>
#include <iterator>
#include <random>
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

TEST(KelbTags, ReadsAnyTextForItemsAndCategories)
{
    const std::tuple<const char*, QString, QStringList> rows[] = {
        {"not sorted, case first", u"b, A,a"_s, {u"A"_s, u"b"_s}},
        {"later spelling wins", u"foo,Foo,FOO"_s, {u"foo"_s}},
        {"blank behind or inside a tag dropped", u"  a , b c"_s, {u"a "_s, u"b c"_s}},
        {"other space trimmed", u"\tb,\u00A0a,\nc"_s, {u"\tb"_s, u"\nc"_s, u"\u00A0a"_s}},
        {"default word taken out", u"x,Default"_s, {u"Default"_s, u"x"_s}},
        {"one capital for two letters, or none beyond 16 bits",
         u"stra\u00DFe, STRASSE, \U00010400, \U00010428"_s,
         {u"STRASSE"_s, u"stra\u00DFe"_s, u"\U00010400"_s}},
        {"empty entries kept", u" , ,,"_s, {u"Default"_s}},
    };
    for (const auto& [fault, text, tags] : rows) {
        EXPECT_EQ(KelbTags(text).getTags(), tags) << fault;
        EXPECT_EQ(VelorCategoryTags(text).getTags(), tags) << fault;
        VelorCategoryTags category;
        category.fromString(text);
        EXPECT_EQ(category.getTags(), tags == QStringList{u"Default"_s} ? QStringList{} : tags) << fault;
    }
}

/// Letters that several others fold to, halves of surrogate pairs, and what separates tags.
QString hardText(std::mt19937& random)
{
    static const std::u16string Units = u"sS\u017FkK\u212AiI\u0130\u0131\u00DF\u1E9E\u03C2\u03C3\u03A3zZ"
                                        u"\xD801\xD801\xD83A\xDC00\xDC28\xDD00\xDD22,,,,,  ";
    QString text;
    for (int i = 0; i < 60; ++i) {
        text += QChar(Units[random() % Units.size()]);
    }
    return text;
}

TEST(KelbTags, ReadsEveryTextAsAddingTagByTagDoes)
{
    std::mt19937 random(1);
    for (int i = 0; i < 5000; ++i) {
        const QString text = i == 0 ? u"\u017F\xD801Z,s\xD801z"_s : hardText(random);
        KelbTags added;
        for (const QString& part : text.split(u',')) {
            const auto first = std::find_if(part.begin(), part.end(), [](QChar c) { return c != u' '; });
            if (first != part.end()) {
                added.addTag(QString(first, std::distance(first, part.end())));
            }
        }
        ASSERT_EQ(KelbTags(text).getTags(), KelbTags(added.getTags()).getTags()) << i;
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
    EXPECT_EQ(QDebug::toString(KelbTags(u"a"_s)), u"KelbTags(\"a\")"_s);
    for (const QString& tag : tags.toStringList()) {
        tags.removeTag(tag);
    }
    EXPECT_EQ(tags.getTags(), QStringList());
}

TEST(KelbTags, ComparesFromTheLeft)
{
    const KelbTags twice(QStringList{u"b"_s, u"a"_s, u"a"_s});
    const KelbTags three(u"A,b,c"_s);
    EXPECT_EQ(twice.toString(), u"a, a, b"_s);
    EXPECT_TRUE(twice == three && !(twice != three));
    EXPECT_TRUE(three != twice && !(three == twice));
    EXPECT_TRUE(KelbTags(QStringList{u"a"_s}) != three && KelbTags() == KelbTags(QStringList{}));
}

TEST(KelbTags, MatchesBySynonymsAndGender)
{
    const std::tuple<const char*, QString, QString, bool, bool, QString> rows[] = {
        {"scan stops at the first match", u"Guy"_s, u"DUDE,guy"_s, true, false, u"Guy, Guy"_s},
        {"order or spelling of the other set", u"Z, a"_s, u"A, z"_s, true, false, u"a, Z"_s},
        {"synonyms asked without a set", u"Guy"_s, u"DUDE,guy"_s, false, false, u"Guy"_s},
        {"gender ignored without a set", u"male"_s, u"Male"_s, false, true, u"male"_s},
        {"gender of this set kept", u"man, woman, x"_s, u"chap, x"_s, true, true, u"x"_s},
        {"gender of the other set kept", u"chap, x"_s, u"MAN, woman, x"_s, true, true, u"x"_s},
        {"gender dropped unasked", u"male, x"_s, u"MAN, x"_s, true, false, u"male, x"_s},
    };
    const KelbSynonyms synonyms = sampleSynonyms();
    for (const auto& [fault, ours, theirs, asksSynonyms, ignoresGender, expected] : rows) {
        const QStringList matches =
            KelbTags(ours).compareTags(KelbTags(theirs), asksSynonyms ? &synonyms : nullptr, ignoresGender);
        EXPECT_EQ(matches.join(u", "_s), expected) << fault;
    }
}

TEST(KelbTags, TellsGenderByTheGroupsAlone)
{
    const KelbSynonyms none;
    const KelbSynonyms synonyms = sampleSynonyms();
    const KelbTags man(u"x, MAN"_s);
    const KelbTags woman(u"x, woman"_s);
    EXPECT_TRUE(man.hasMaleTag(&synonyms) && !man.hasFemaleTag(&synonyms) && !man.hasNoGenderTags(&synonyms));
    EXPECT_TRUE(woman.hasFemaleTag(&synonyms) && !woman.hasMaleTag(&synonyms) &&
                !woman.hasNoGenderTags(&synonyms));
    EXPECT_TRUE(KelbTags(u"man, woman"_s).hasNoGenderTags(&synonyms));
    EXPECT_TRUE(KelbTags(u"male"_s).hasNoGenderTags(&none) && !KelbTags(u"male"_s).hasMaleTag(&none));
}

TEST(KelbTags, LivesInAnAttributeOfTheCallersElement)
{
    QDomDocument document;
    QDomElement element = document.createElement(u"item"_s);
    KelbTags tags(u"b,a"_s);
    VelorCategoryTags category(u"c"_s);
    tags.writeXML(element);
    category.writeXML(element);
    EXPECT_EQ(element.attribute(u"tags"_s), u"a, b"_s);
    EXPECT_EQ(element.attribute(u"categoryTags"_s), u"c"_s);
    tags.readXML(document.createElement(u"item"_s));
    category.readXML(document.createElement(u"item"_s));
    EXPECT_EQ(tags.toString(), u"Default"_s);
    category.writeXML(element);
    EXPECT_EQ(element.attribute(u"categoryTags"_s, u"(missing)"_s), u""_s);
}

} // namespace
