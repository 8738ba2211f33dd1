#include <Velor.Base/VelorVersion.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

namespace {

using namespace Qt::StringLiterals;

struct TextRow
{
    const char* fault;
    QString text;
    int major, mid, minor;
};

const TextRow TextRows[] = {
    {"plain text", u"6.1.2"_s, 6, 1, 2},
    {"small v kept", u"v6.1.2"_s, 6, 1, 2},
    {"prefix kept", u"Version 6.1.2"_s, 6, 1, 2},
    {"case of the prefix", u"vERSION 6.1.2"_s, 6, 1, 2},
    {"prefix without its blank", u"VERSION6.1.2"_s, 0, 1, 2},
    {"one prefix of two removed", u"6Version .version 1.2"_s, 6, 1, 2},
    {"v inside a number", u"6.1v2"_s, 6, 12, 0},
    {"capital V removed", u"V6.1"_s, 0, 1, 0},
    {"rest behind a blank read", u"6.1.2 beta 4.5"_s, 6, 1, 2},
    {"leading blank trimmed", u" 6.1.2"_s, 0, 0, 0},
    {"parts missing", u"6"_s, 6, 0, 0},
    {"fourth part read", u"6.1.2.3"_s, 6, 1, 2},
    {"empty parts counted", u".6..2"_s, 6, 2, 0},
    {"no number", u"1.x.3"_s, 1, 0, 3},
    {"signs", u"-6.+1.-2"_s, -6, 1, -2},
    {"edges of 32 bits", u"2147483647.-2147483648.2147483648"_s, 2147483647, -2147483647 - 1, 0},
    {"digits that are not ASCII", u"\u0666.\uFF16.6"_s, 0, 0, 6},
    {"tab taken for a blank", u"\t6.1\t.2"_s, 6, 1, 2},
    {"other base", u"0x10.010.1e1"_s, 0, 10, 0},
    {"empty text", u""_s, 0, 0, 0},
};

TEST(VelorVersion, ReadsAnyText)
{
    for (const TextRow& row : TextRows) {
        const VelorVersion version(row.text);
        EXPECT_EQ(std::tuple(version.getMajor(), version.getMid(), version.getMinor()),
                  std::tuple(row.major, row.mid, row.minor))
            << row.fault;
    }
}

struct FormRow
{
    const char* fault;
    QString text, dotted, one, two, three;
};

const FormRow FormRows[] = {
    {"no padding", u"6.0.1"_s, u"6.0.1"_s, u"06"_s, u"0600"_s, u"060001"_s},
    {"width taken for a maximum", u"100.0.12"_s, u"100.0.12"_s, u"100"_s, u"10000"_s, u"1000012"_s},
    {"sign", u"-6.-10.0"_s, u"-6.-10.0"_s, u"-6"_s, u"-6-10"_s, u"-6-1000"_s},
    {"null by its first part", u"0.5.1"_s, {}, {}, {}, {}},
};

TEST(VelorVersion, WritesDottedAndCodeForms)
{
    for (const FormRow& row : FormRows) {
        const VelorVersion version(row.text);
        EXPECT_EQ(version.isNull(), row.dotted.isEmpty()) << row.fault;
        EXPECT_EQ(version.toString(), row.dotted) << row.fault;
        EXPECT_EQ(version.toCodeString(0), row.one) << row.fault;
        EXPECT_EQ(version.toCodeString(1), row.two) << row.fault;
        for (const int parts : {2, 3, -1}) {
            EXPECT_EQ(version.toCodeString(parts), row.three) << row.fault << ' ' << parts;
        }
    }
}

TEST(VelorVersion, ComparesPartByPartAsSignedNumbers)
{
    const VelorVersion ascending[] = {u"-1.9.9"_s, {},     u"0.0.1"_s,  u"0.5"_s,
                                      u"6.-1"_s,   u"6"_s, u"6.9.10"_s, u"6.10"_s};
    for (const VelorVersion& a : ascending) {
        for (const VelorVersion& b : ascending) {
            EXPECT_EQ(a < b, &a < &b);
            EXPECT_EQ(a >= b, &a >= &b);
            EXPECT_EQ(a == b, &a == &b);
        }
    }
    EXPECT_EQ(qHash(VelorVersion(u"v6.1"_s), 7), qHash(VelorVersion(u"6.1.0"_s), 7));
    static_assert(VelorVersion().isNull() && VelorVersion() <= VelorVersion());
}

TEST(VelorVersion, TheLibraryTellsItsOwn) { EXPECT_EQ(VelorVersion::current().toString(), u"6.0.0"_s); }

} // namespace
