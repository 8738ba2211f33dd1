#include <Velor.Base/KelbSynonyms.h>

#include <gtest/gtest.h>

#include <QtCore/QStringEncoder>
#include <QtCore/QTemporaryFile>
#include <QtXml/QDomDocument>

namespace {

using namespace Qt::StringLiterals;

bool loadBytes(KelbSynonyms& synonyms, const QByteArray& bytes)
{
    QTemporaryFile file;
    EXPECT_TRUE(file.open() && file.write(bytes) == bytes.size() && file.flush());
    return synonyms.load(file.fileName());
}

QByteArray utf16(const QString& text)
{
    return QStringEncoder(QStringEncoder::Utf16LE, QStringConverter::Flag::WriteBom)(text);
}

struct FileRow
{
    const char* fault;
    QByteArray bytes;
    bool loads;
    bool holds; ///< Whether the file makes ä and b synonyms.
};

const FileRow FileRows[] = {
    {"plain file", "<KelbSynonyms><KelbSynonym values='\xC3\xA4, b'/></KelbSynonyms>", true, true},
    {"declared encoding ignored",
     "<?xml version='1.0' encoding='ISO-8859-1'?><KelbSynonyms><KelbSynonym values='\xE4, "
     "b'/></KelbSynonyms>",
     true, true},
    {"wide characters torn",
     utf16(u"<KelbSynonyms>\r\n<KelbSynonym values='\u010D, \u00C4, b'/></KelbSynonyms>"_s), true, true},
    {"byte order mark", "\xEF\xBB\xBF<KelbSynonyms><KelbSynonym values='\xC3\xA4, b'/></KelbSynonyms>", true,
     true},
    {"element of another name stops the walk",
     "<KelbSynonyms>t<x/><!-- c --><KelbSynonym values='\xC3\xA4, b'><y/></KelbSynonym></KelbSynonyms>", true,
     true},
    {"case of the element ignored", "<KelbSynonyms><kelbsynonym values='\xC3\xA4, b'/></KelbSynonyms>", true,
     false},
    {"deeper group read", "<KelbSynonyms><x><KelbSynonym values='\xC3\xA4, b'/></x></KelbSynonyms>", true,
     false},
    {"groups joined",
     "<KelbSynonyms><KelbSynonym values='\xC3\xA4, c'/><KelbSynonym values='c, b'/></KelbSynonyms>", true,
     false},
    {"no children", "<KelbSynonyms/>", true, false},
    {"no values", "<KelbSynonyms><KelbSynonym/><KelbSynonym values=''/></KelbSynonyms>", true, false},
    {"case of the root ignored", "<kelbsynonyms><KelbSynonym values='\xC3\xA4, b'/></kelbsynonyms>", false,
     false},
    {"groups before the fault kept", "<KelbSynonyms><KelbSynonym values='\xC3\xA4, b'/></Kelb>", false,
     false},
    {"text behind the root", "<KelbSynonyms><KelbSynonym values='\xC3\xA4, b'/></KelbSynonyms><a/>", false,
     false},
    {"empty file", "", false, false},
};

TEST(KelbSynonyms, LoadsAWholeFileOrNothing)
{
    for (const FileRow& row : FileRows) {
        KelbSynonyms synonyms;
        ASSERT_TRUE(loadBytes(synonyms, "<KelbSynonyms><KelbSynonym values='old'/></KelbSynonyms>"));
        const KelbSynonyms before = synonyms;
        EXPECT_EQ(loadBytes(synonyms, row.bytes), row.loads) << row.fault;
        EXPECT_EQ(synonyms.areSynonyms(u"\u00C4"_s, u"B"_s), row.holds) << row.fault;
        EXPECT_TRUE(synonyms.areSynonyms(u"old"_s, u"OLD"_s)) << row.fault;
        EXPECT_TRUE(row.loads || synonyms == before) << row.fault;
    }
    KelbSynonyms synonyms;
    EXPECT_FALSE(synonyms.load(u"missing.xml"_s));
    EXPECT_FALSE(synonyms.load(u"."_s));
}

struct WordRow
{
    const char* fault;
    QString values, first, second;
    bool expected;
};

const WordRow WordRows[] = {
    {"case", u"Male, MAN"_s, u"mAn"_s, u"MALE"_s, true},
    {"word of the group no synonym of itself", u"Male, MAN"_s, u"man"_s, u"man"_s, true},
    {"word of no group a synonym of itself", u"Male, MAN"_s, u"guy"_s, u"guy"_s, false},
    {"comma without blank separates", u"a,b"_s, u"a"_s, u"b"_s, false},
    {"second blank trimmed", u"a,  b"_s, u"a"_s, u"b"_s, false},
    {"second blank lost", u"a,  b"_s, u"a"_s, u" b"_s, true},
    {"empty word dropped", u"a, , b"_s, u"a"_s, u""_s, true},
    {"folded, not lower-cased", u"\u00DF, b"_s, u"SS"_s, u"b"_s, false},
    {"final sigma folded", u"\u03C2, b"_s, u"\u03A3"_s, u"b"_s, false},
    {"no words", u""_s, u""_s, u""_s, false},
};

TEST(KelbSynonym, HoldsTheWordsOfItsAttribute)
{
    for (const WordRow& row : WordRows) {
        QDomDocument document;
        QDomElement element = document.createElement(u"any"_s);
        element.setAttribute(u"values"_s, row.values);
        KelbSynonym group;
        group.readXML(element);
        EXPECT_EQ(group.areSynonyms(row.first, row.second), row.expected) << row.fault;
        EXPECT_EQ(group.areSynonyms(row.second, row.first), row.expected) << row.fault;
        EXPECT_EQ(group.isEmpty(), row.values.isEmpty()) << row.fault;
    }
}

TEST(KelbSynonyms, CopiesStandAloneAndMovedFromSetsAreEmpty)
{
    KelbSynonyms target;
    ASSERT_TRUE(loadBytes(target, "<KelbSynonyms><KelbSynonym values='old'/></KelbSynonyms>"));
    {
        KelbSynonyms source;
        ASSERT_TRUE(loadBytes(source, "<KelbSynonyms><KelbSynonym values='a, b'/></KelbSynonyms>"));
        target = source;
        EXPECT_TRUE(target == source && qHash(target) == qHash(source));
        ASSERT_TRUE(loadBytes(source, "<KelbSynonyms><KelbSynonym values='c'/></KelbSynonyms>"));
    }
    const KelbSynonyms& self = target;
    target = self;
    QString text;
    QDebug(&text) << target;
    EXPECT_EQ(text, u"KelbSynonyms(KelbSynonym(\"a, b\")) "_s);
    const KelbSynonyms moved = std::move(target);
    EXPECT_TRUE(moved.areSynonyms(u"a"_s, u"b"_s));
    EXPECT_EQ(target, KelbSynonyms());
}

} // namespace
