#include "support/TestHelpers.h"

#include <Velor.Base/KelbSynonyms.h>

#include <gtest/gtest.h>

#include <QtCore/QDebug>
#include <QtCore/QStringEncoder>
#include <QtXml/QDomDocument>

namespace {

using namespace Qt::StringLiterals;

bool loadBytes(KelbSynonyms& synonyms, const std::string& bytes)
{
    const TestFolder folder;
    writeFile(folder.path(u"s.xml"_s), bytes);
    return synonyms.load(folder.path(u"s.xml"_s));
}

const std::string Root = "<KelbSynonyms>";
const std::string Group = "<KelbSynonym values='\xC4\x8D, B'/>";
const std::string End = "</KelbSynonyms>";

TEST(KelbSynonyms, LoadsEveryFormOfXml)
{
    const QString wide = u"<KelbSynonyms>\r\n<KelbSynonym values='\u010D, B'/></KelbSynonyms>"_s;
    const std::pair<const char*, std::string> rows[] = {
        {"carriage returns do not count",
         "\xEF\xBB\xBF" + Root + "<KelbSynonym values='\xC4\x8D,\r B'/>" + End},
        {"UTF-16 without a byte order mark",
         QByteArray(QStringEncoder(QStringEncoder::Utf16LE)(wide)).toStdString()},
        {"only groups with words count, not below others",
         Root + "<KelbSynonym/>t<x>" + Group + "</x><kelbsynonym values='x'/>" + Group + End},
    };
    for (const auto& [rule, bytes] : rows) {
        KelbSynonyms synonyms;
        EXPECT_TRUE(loadBytes(synonyms, bytes)) << rule;
        EXPECT_EQ(QDebug::toString(synonyms), u"KelbSynonyms(KelbSynonym(\"\u010D, b\"))"_s) << rule;
    }
}

TEST(KelbSynonyms, AddsTheGroupsOfWholeFilesAlone)
{
    KelbSynonyms synonyms;
    EXPECT_TRUE(loadBytes(synonyms, Root + "<KelbSynonym values='old'/>" + End));
    EXPECT_FALSE(loadBytes(synonyms, "<kelbsynonyms>" + Group + "</kelbsynonyms>")) << "another root";
    EXPECT_FALSE(loadBytes(synonyms, Root + Group + "</Kelb>")) << "a fault behind a group";
    EXPECT_FALSE(synonyms.load(u"missing.xml"_s));
    EXPECT_TRUE(loadBytes(synonyms, Root + "<KelbSynonym values='new'/>" + End));
    EXPECT_EQ(QDebug::toString(synonyms), u"KelbSynonyms(KelbSynonym(\"old\"), KelbSynonym(\"new\"))"_s);
}

bool areSynonyms(const QString& values, const QString& first, const QString& second)
{
    QDomDocument document;
    QDomElement element = document.createElement(u"any"_s);
    element.setAttribute(u"values"_s, values);
    KelbSynonym group;
    group.readXML(element);
    return group.areSynonyms(first, second);
}

TEST(KelbSynonym, HoldsTheWordsOfItsAttribute)
{
    EXPECT_TRUE(areSynonyms(u"Male, MAN"_s, u"mAn"_s, u"MALE"_s)) << "in any case";
    EXPECT_FALSE(areSynonyms(u"a,b"_s, u"a"_s, u"b"_s)) << "a comma without a blank does not separate";
    EXPECT_TRUE(areSynonyms(u"a,  b"_s, u"a"_s, u" b"_s)) << "a second blank belongs to the word";
    EXPECT_TRUE(areSynonyms(u"a, , b"_s, u"a"_s, u""_s)) << "an empty word is one";
    EXPECT_FALSE(areSynonyms(u"\u03C2, b"_s, u"\u03A3"_s, u"b"_s)) << "words are lowered, not folded";
}

TEST(KelbSynonyms, AsksEachGroupForItself)
{
    KelbSynonyms synonyms;
    ASSERT_TRUE(loadBytes(synonyms, Root + "<KelbSynonym values='a, b'/><KelbSynonym values='b, c'/>" + End));
    EXPECT_TRUE(synonyms.areSynonyms(u"A"_s, u"b"_s) && synonyms.areSynonyms(u"c"_s, u"B"_s));
    EXPECT_FALSE(synonyms.areSynonyms(u"a"_s, u"c"_s) || synonyms.areSynonyms(u"x"_s, u"x"_s));
}

TEST(KelbSynonyms, CopiesOwnTheirGroupsAndMovedFromSetsAreEmpty)
{
    KelbSynonyms copy;
    {
        KelbSynonyms source;
        ASSERT_TRUE(loadBytes(source, Root + "<KelbSynonym values='a, b'/>" + End));
        copy = source;
        EXPECT_EQ(copy, source);
        EXPECT_EQ(qHash(copy), qHash(source));
    }
    const KelbSynonyms moved = std::move(copy);
    EXPECT_TRUE(moved.areSynonyms(u"a"_s, u"b"_s));
    EXPECT_EQ(copy, KelbSynonyms());
}

} // namespace
