#include <Velor.Base/VelorBaseVersion.h>
#include <Velor.Base/VelorVersion.h>

#include <gtest/gtest.h>

#include <array>

namespace {

using namespace Qt::StringLiterals;

using Parts = std::array<int, 3>;

Parts partsOf(const VelorVersion& version)
{
    return {version.getMajor(), version.getMid(), version.getMinor()};
}

TEST(VelorVersion, ReadsAnyText)
{
    EXPECT_EQ(partsOf(u"6Version .vERSION 1.2"_s), Parts({6, 1, 2})) << "every prefix goes, in any case";
    EXPECT_EQ(partsOf(u"VERSION6.1.2"_s), Parts({0, 1, 2})) << "a prefix has a blank";
    EXPECT_EQ(partsOf(u"6.1v2"_s), Parts({6, 12, 0})) << "a small v goes wherever it stands";
    EXPECT_EQ(partsOf(u"V6.1"_s), Parts({0, 1, 0})) << "a large one stays";
    EXPECT_EQ(partsOf(u"v6.1 beta 4.5.6"_s), Parts({6, 1, 0})) << "a blank ends the version";
    EXPECT_EQ(partsOf(u" 6.1.2"_s), Parts({0, 0, 0})) << "in front, too";
    EXPECT_EQ(partsOf(u"6.1.2.3"_s), Parts({6, 1, 2})) << "a fourth part does not count";
    EXPECT_EQ(partsOf(u".6..2"_s), Parts({6, 2, 0})) << "nor do empty ones";
    EXPECT_EQ(partsOf(u"-6.+1.2147483648"_s), Parts({-6, 1, 0})) << "signs count, and 32 bits";
}

TEST(VelorVersion, WritesDottedAndCodeForms)
{
    const VelorVersion version(u"6.100.12"_s);
    EXPECT_EQ(version.toString(), u"6.100.12"_s);
    EXPECT_EQ(version.toCodeString(0), u"06"_s);
    EXPECT_EQ(version.toCodeString(1), u"06100"_s);
    EXPECT_EQ(version.toCodeString(2), u"0610012"_s);
    EXPECT_EQ(version.toCodeString(-1), u"0610012"_s);
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
}

} // namespace
