#include <Velor.Base/KelbSynonyms.h>
#include <Velor.Base/KelbTags.h>

#include <gtest/gtest.h>

#include <QtCore/QTemporaryFile>
#include <QtXml/QDomDocument>

#include <algorithm>

namespace {

using namespace Qt::StringLiterals;

KelbSynonyms synonymsOf(const QStringList& groups)
{
    QTemporaryFile file;
    EXPECT_TRUE(file.open());
    file.write("<KelbSynonyms>");
    for (const QString& group : groups) {
        file.write("<KelbSynonym values='" + group.toUtf8() + "'/>");
    }
    file.write("</KelbSynonyms>");
    file.close();
    KelbSynonyms synonyms;
    EXPECT_TRUE(synonyms.load(file.fileName()));
    return synonyms;
}

struct TextRow
{
    const char* fault;
    QString text;
    QStringList tags;
};

const TextRow TextRows[] = {
    {"not sorted, case first", u"b, A,a"_s, {u"A"_s, u"b"_s}},
    {"later spelling wins", u"foo,Foo,FOO"_s, {u"foo"_s}},
    {"blank behind a tag trimmed", u"a , b"_s, {u"a "_s, u"b"_s}},
    {"blank inside a tag dropped", u"  a b"_s, {u"a b"_s}},
    {"other space trimmed", u"\tb,\u00A0a,\nc"_s, {u"\tb"_s, u"\nc"_s, u"\u00A0a"_s}},
    {"empty entries kept", u",, a, ,b,"_s, {u"a"_s, u"b"_s}},
    {"default word taken out", u"x,Default"_s, {u"Default"_s, u"x"_s}},
    {"empty text", u""_s, {u"Default"_s}},
    {"blanks and commas", u" , ,,"_s, {u"Default"_s}},
};

TEST(KelbTags, ReadsAnyTextForItemsAndCategories)
{
    for (const TextRow& row : TextRows) {
        EXPECT_EQ(KelbTags(row.text).getTags(), row.tags) << row.fault;
        EXPECT_EQ(VelorCategoryTags(row.text).getTags(), row.tags) << row.fault;
        VelorCategoryTags category;
        category.fromString(row.text);
        const bool isDefault = row.tags == QStringList{KelbTags::DefaultTag};
        EXPECT_EQ(category.getTags(), isDefault ? QStringList{} : row.tags) << row.fault;
    }
    EXPECT_TRUE(KelbTags().isEmpty() && VelorCategoryTags().isEmpty());
}

TEST(KelbTags, TakesCharactersForOneTagExactlyWhereQtDoes)
{
    QStringList characters;
    for (char32_t code = u'-'; code < 0x20000; ++code) {
        characters.append(QStringView(QChar::fromUcs4(code)).toString());
    }
    const KelbTags tags(characters.join(u','));
    characters.sort(Qt::CaseInsensitive);
    const auto isSame = [](const QString& a, const QString& b) {
        return a.compare(b, Qt::CaseInsensitive) == 0;
    };
    const auto end = std::unique(characters.begin(), characters.end(), isSame);
    EXPECT_TRUE(std::equal(tags.getTags().begin(), tags.getTags().end(), characters.begin(), end, isSame));
    EXPECT_EQ(KelbTags(u"stra\u00DFe, strasse, STRASSE, \U00010400x, \U00010428X"_s).getSize(), 3);
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
    for (const QString& tag : tags.toStringList()) {
        tags.removeTag(tag);
    }
    EXPECT_EQ(tags.getTags(), QStringList());
}

TEST(KelbTags, ComparesFromTheLeft)
{
    const KelbTags twice(QStringList{u"b"_s, u"a"_s, u"a"_s});
    EXPECT_EQ(twice.toString(), u"a, a, b"_s);
    const KelbTags three(u"A,b,c"_s);
    EXPECT_TRUE(twice == three && !(twice != three));
    EXPECT_TRUE(three != twice && !(three == twice));
    EXPECT_TRUE(KelbTags(QStringList{u"a"_s}) != three);
    KelbTags emptied(three);
    emptied.fromStringList({});
    EXPECT_TRUE(emptied == KelbTags());
}

struct MatchRow
{
    const char* fault;
    QString ours, theirs;
    bool asksSynonyms, ignoresGender;
    QString matches;
};

const MatchRow MatchRows[] = {
    {"scan stops at the first match", u"Guy"_s, u"DUDE,guy"_s, true, false, u"Guy, Guy"_s},
    {"order or spelling of the other set", u"Z, a"_s, u"A, z"_s, true, false, u"a, Z"_s},
    {"no equality beside synonyms", u"x"_s, u"X"_s, true, false, u"x"_s},
    {"synonyms asked without a set", u"Guy"_s, u"DUDE,guy"_s, false, false, u"Guy"_s},
    {"gender ignored without a set", u"male"_s, u"Male"_s, false, true, u"male"_s},
    {"gender kept", u"male, x"_s, u"MAN, x"_s, true, true, u"x"_s},
    {"female gender kept", u"woman, x"_s, u"woman, x"_s, true, true, u"x"_s},
    {"gender dropped unasked", u"male, x"_s, u"MAN, x"_s, true, false, u"male, x"_s},
    {"empty set matches", u"y"_s, u"x"_s, true, true, u""_s},
};

TEST(KelbTags, MatchesBySynonymsAndGender)
{
    const KelbSynonyms synonyms = synonymsOf({u"guy, dude"_s, u"male, man"_s, u"Female, Woman"_s});
    for (const MatchRow& row : MatchRows) {
        const QStringList matches = KelbTags(row.ours).compareTags(
            KelbTags(row.theirs), row.asksSynonyms ? &synonyms : nullptr, row.ignoresGender);
        EXPECT_EQ(matches.join(u", "_s), row.matches) << row.fault;
    }
    EXPECT_TRUE(KelbTags().compareTags(KelbTags(u"x"_s), &synonyms, false).isEmpty());
}

TEST(KelbTags, TellsGenderByTheGroupsAlone)
{
    const KelbSynonyms none;
    const KelbSynonyms synonyms = synonymsOf({u"male, man"_s, u"female, woman"_s});
    const KelbTags man(u"x, MAN"_s);
    EXPECT_TRUE(man.hasMaleTag(&synonyms) && !man.hasFemaleTag(&synonyms) && !man.hasNoGenderTags(&synonyms));
    const KelbTags woman(u"x, woman"_s);
    EXPECT_TRUE(woman.hasFemaleTag(&synonyms) && !woman.hasMaleTag(&synonyms) &&
                !woman.hasNoGenderTags(&synonyms));
    EXPECT_TRUE(KelbTags(u"man, woman"_s).hasNoGenderTags(&synonyms));
    EXPECT_TRUE(KelbTags(u"x"_s).hasNoGenderTags(&synonyms));
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
    EXPECT_TRUE(category.isEmpty());
    category.writeXML(element);
    EXPECT_TRUE(element.hasAttribute(u"categoryTags"_s) && element.attribute(u"categoryTags"_s).isEmpty());
}

TEST(KelbTags, MovedFromSetsAreEmpty)
{
    KelbTags source(u"a"_s);
    KelbTags target(std::move(source));
    EXPECT_TRUE(source.isEmpty());
    source.addTag(u"b"_s);
    target = std::move(source);
    EXPECT_TRUE(source.isEmpty());
    QString text;
    QDebug(&text) << target;
    EXPECT_EQ(text, u"KelbTags(\"b\") "_s);
}

} // namespace
