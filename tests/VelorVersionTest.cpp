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
    EXPECT_EQ(partsOf(u"VERSION6.1.2"_s), Parts({0, 1, 2})) << "a prefix has a blank, and a large V stays";
    EXPECT_EQ(partsOf(u"6.1v2 beta 4.5.6"_s), Parts({6, 12, 0})) << "a small v goes, and all from a blank on";
    EXPECT_EQ(partsOf(u" 6.1.2"_s), Parts({0, 0, 0})) << "even where it is in front";
    EXPECT_EQ(partsOf(u".6..2"_s), Parts({6, 2, 0})) << "empty parts do not count";
    EXPECT_EQ(partsOf(u"-6.+1.2147483648"_s), Parts({-6, 1, 0})) << "signs count, and 32 bits";
}

TEST(VelorVersion, WritesDottedAndCodeForms)
{
    const VelorVersion version(u"6.100.12"_s);
    EXPECT_EQ(version.toString(), u"6.100.12"_s);
    EXPECT_EQ(version.toCodeString(0), u"06"_s);
    EXPECT_EQ(version.toCodeString(1), u"06100"_s);
    EXPECT_EQ(version.toCodeString(-1), u"0610012"_s);
    const VelorVersion null(u"0.5.1"_s);
    EXPECT_TRUE(null.isNull() && null.toString().isEmpty() && null.toCodeString(2).isEmpty());
    EXPECT_EQ(VelorVersion::current().toCodeString(2), u"060000"_s);
    EXPECT_EQ(VELOR_BASE_VERSION, 0x060000);
}

TEST(VelorVersion, ComparesPartByPartAsSignedNumbers)
{
    EXPECT_LT(VelorVersion(u"-1.9"_s), VelorVersion());
    EXPECT_LT(VelorVersion(u"5.9.10"_s), VelorVersion(u"6"_s));
    EXPECT_LT(VelorVersion(u"6.9.1"_s), VelorVersion(u"6.10"_s));
}

} // namespace
