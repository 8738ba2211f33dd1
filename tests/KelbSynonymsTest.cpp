#include "TestHelpers.h"

#include <Velor.Base/KelbSynonyms.h>

#include <gtest/gtest.h>

#include <QtCore/QDebug>
#include <QtCore/QStringEncoder>
#include <QtXml/QDomDocument>

#include <tuple>

namespace {

using namespace Qt::StringLiterals;

bool loadBytes(KelbSynonyms& synonyms, const std::string& bytes)
{
    const TestFolder folder;
    writeFile(folder.path(u"s.xml"_s), bytes);
    return synonyms.load(folder.path(u"s.xml"_s));
}

TEST(KelbSynonyms, LoadsAWholeFileOrNothing)
{
    const std::string root = "<KelbSynonyms>";
    const std::string group = "<KelbSynonym values='\xC4\x8D, B'/>";
    const std::string end = "</KelbSynonyms>";
    const QString wide = u"<KelbSynonyms>\r\n<KelbSynonym values='\u010D, B'/></KelbSynonyms>"_s;
    const QByteArray wideBytes =
        QStringEncoder(QStringEncoder::Utf16LE, QStringConverter::Flag::WriteBom)(wide);
    const QString none;
    const QString added = u", KelbSynonym(\"\u010D, b\")"_s;
    const QString latin = u", KelbSynonym(\"\u00E9\")"_s;
    const std::tuple<const char*, std::string, bool, QString> rows[] = {
        {"byte order mark", "\xEF\xBB\xBF" + root + group + end, true, added},
        {"encoding",
         "<?xml version='1.0' encoding='ISO-8859-1'?>" + root + "<KelbSynonym values='\xE9'/>" + end, true,
         latin},
        {"not in text mode", root + "<KelbSynonym values='\xC4\x8D,\r B'/>" + end, true, added},
        {"wide characters torn", wideBytes.toStdString(), true, added},
        {"wide characters without a byte order mark", wideBytes.mid(2).toStdString(), true, added},
        {"other elements read", root + "t<x>" + group + "</x>" + group + "<kelbsynonym values='x'/>" + end,
         true, added},
        {"group without words kept", root + "<KelbSynonym/><KelbSynonym values=''/>" + end, true, none},
        {"case of the root ignored", "<kelbsynonyms>" + group + "</kelbsynonyms>", false, none},
        {"groups before the fault kept", root + group + "</Kelb>", false, none},
        {"empty file", "", false, none},
    };
    for (const auto& [fault, bytes, loads, groups] : rows) {
        KelbSynonyms synonyms;
        ASSERT_TRUE(loadBytes(synonyms, root + "<KelbSynonym values='old'/>" + end));
        EXPECT_EQ(loadBytes(synonyms, bytes), loads) << fault;
        EXPECT_EQ(QDebug::toString(synonyms), u"KelbSynonyms(KelbSynonym(\"old\")"_s + groups + u')')
            << fault;
    }
    EXPECT_FALSE(KelbSynonyms().load(u"missing.xml"_s) || KelbSynonyms().load(u"."_s));
}

TEST(KelbSynonym, HoldsTheWordsOfItsAttribute)
{
    const std::tuple<const char*, QString, QString, QString, bool> rows[] = {
        {"case", u"Male, MAN"_s, u"mAn"_s, u"MALE"_s, true},
        {"word of the group no synonym of itself", u"Male, MAN"_s, u"man"_s, u"man"_s, true},
        {"comma without blank separates", u"a,b"_s, u"a"_s, u"b"_s, false},
        {"second blank lost", u"a,  b"_s, u"a"_s, u" b"_s, true},
        {"empty word dropped", u"a, , b"_s, u"a"_s, u""_s, true},
        {"folded, not lowered", u"\u03C2, b"_s, u"\u03A3"_s, u"b"_s, false},
    };
    for (const auto& [fault, values, first, second, expected] : rows) {
        QDomDocument document;
        QDomElement element = document.createElement(u"any"_s);
        element.setAttribute(u"values"_s, values);
        KelbSynonym group;
        group.readXML(element);
        EXPECT_EQ(group.areSynonyms(first, second), expected) << fault;
        EXPECT_EQ(group.areSynonyms(second, first), expected) << fault;
    }
}

TEST(KelbSynonyms, CopiesStandAloneAndMovedFromSetsAreEmpty)
{
    const std::string bytes =
        "<KelbSynonyms><KelbSynonym values='a, b'/><KelbSynonym values='b, c'/></KelbSynonyms>";
    KelbSynonyms target;
    ASSERT_TRUE(loadBytes(target, "<KelbSynonyms><KelbSynonym values='x'/></KelbSynonyms>"));
    {
        KelbSynonyms source;
        ASSERT_TRUE(loadBytes(source, bytes));
        target = source;
        EXPECT_EQ(qHash(target), qHash(source));
        ASSERT_TRUE(loadBytes(source, bytes) && source != target);
    }
    const KelbSynonyms& self = target;
    target = self;
    const KelbSynonyms moved = std::move(target);
    EXPECT_TRUE(moved.areSynonyms(u"A"_s, u"b"_s) && moved.areSynonyms(u"c"_s, u"B"_s));
    EXPECT_FALSE(moved.areSynonyms(u"a"_s, u"c"_s) || moved.areSynonyms(u"x"_s, u"x"_s));
    EXPECT_EQ(target, KelbSynonyms());
}

} // namespace
