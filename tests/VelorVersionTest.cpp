#include <Velor.Base/VelorBaseVersion.h>
#include <Velor.Base/VelorVersion.h>

#include <gtest/gtest.h>

#include <QtCore/QStringList>

#include <tuple>

namespace {

using namespace Qt::StringLiterals;

TEST(VelorVersion, ReadsAnyText)
{
    const std::tuple<const char*, QString, int, int, int> rows[] = {
        {"prefix without its blank", u"VERSION6.1.2"_s, 0, 1, 2},
        {"one prefix of two removed", u"6Version .vERSION 1.2"_s, 6, 1, 2},
        {"v inside a number", u"6.1v2"_s, 6, 12, 0},
        {"capital V removed", u"V6.1"_s, 0, 1, 0},
        {"rest behind a blank read", u"v6.1 beta 4.5.6"_s, 6, 1, 0},
        {"leading blank trimmed", u" 6.1.2"_s, 0, 0, 0},
        {"fourth part read", u"6.1.2.3"_s, 6, 1, 2},
        {"empty parts counted", u".6..2"_s, 6, 2, 0},
        {"signs", u"-6.+1.-2"_s, -6, 1, -2},
        {"edges of 32 bits", u"2147483647.-2147483648.2147483648"_s, 2147483647, -2147483647 - 1, 0},
        {"digits that are not ASCII", u"\u0666.\uFF16.6"_s, 0, 0, 6},
        {"tab taken for a blank", u"\t6.1\t.2"_s, 6, 1, 2},
        {"other base", u"0x10.010.1e1"_s, 0, 10, 0},
    };
    for (const auto& [fault, text, major, mid, minor] : rows) {
        const VelorVersion version(text);
        EXPECT_EQ(version.getMajor(), major) << fault;
        EXPECT_EQ(version.getMid(), mid) << fault;
        EXPECT_EQ(version.getMinor(), minor) << fault;
    }
}

TEST(VelorVersion, WritesDottedAndCodeForms)
{
    const QStringList rows[] = {
        {u"6.0.1"_s, u"06"_s, u"0600"_s, u"060001"_s},
        {u"100.0.12"_s, u"100"_s, u"10000"_s, u"1000012"_s},
        {u"-6.-10.0"_s, u"-6"_s, u"-6-10"_s, u"-6-1000"_s},
    };
    for (const QStringList& row : rows) {
        const VelorVersion version(row[0]);
        EXPECT_EQ(QStringList({version.toString(), version.toCodeString(0), version.toCodeString(1),
                               version.toCodeString(-1)}),
                  row);
        EXPECT_EQ(version.toCodeString(2), row[3]);
    }
    const VelorVersion null(u"0.5.1"_s);
    EXPECT_TRUE(null.isNull() && null.toString().isEmpty() && null.toCodeString(2).isEmpty());
    EXPECT_EQ(VelorVersion::current().toCodeString(2), u"060000"_s);
    EXPECT_EQ(VELOR_BASE_VERSION, 0x060000);
}

TEST(VelorVersion, ComparesPartByPartAsSignedNumbers)
{
    const VelorVersion ascending[] = {u"-1.9"_s, {},     u"0.0.1"_s, u"0.5"_s,
                                      u"6.-1"_s, u"6"_s, u"6.9"_s,   u"6.10"_s};
    for (const VelorVersion& a : ascending) {
        for (const VelorVersion& b : ascending) {
            EXPECT_EQ(a < b, &a < &b);
            EXPECT_EQ(a == b, &a == &b);
        }
    }
    static_assert(VelorVersion() <= VelorVersion());
}

} // namespace
