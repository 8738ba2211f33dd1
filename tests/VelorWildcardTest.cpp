#include <Velor.Base/VelorWildcard.h>

#include <gtest/gtest.h>

namespace {

struct Row
{
    const char* fault;
    const char* path;
    const char* pattern;
    Qt::CaseSensitivity sensitivity;
    bool matches;
};

const Row Rows[] = {
    {"directory counted", "dir.txt/file.zip", "*.txt", Qt::CaseSensitive, false},
    {"name not taken from a path", "dir/file.txt", "*.txt", Qt::CaseSensitive, true},
    {"backslash no separator", "dir\\file.txt", "file.txt", Qt::CaseSensitive, true},
    {"drive cut off the name", "a:b.txt", "a:*", Qt::CaseSensitive, true},
    {"part of the name matched", "file.txt", "file", Qt::CaseSensitive, false},
    {"case ignored", "a.txt", "*.TXT", Qt::CaseSensitive, false},
    {"case not ignored", "a.txt", "*.TXT", Qt::CaseInsensitive, true},
    {"case of letters beyond ASCII", "\xC3\x84.txt", "\xC3\xA4.*", Qt::CaseInsensitive, true},
    {"empty pattern matches a name", "a.txt", "", Qt::CaseSensitive, false},
    {"empty pattern misses the empty name", "dir/", "", Qt::CaseSensitive, true},
    {"regular expression taken for a wildcard", "aab", "a+b", Qt::CaseSensitive, false},
    {"negated set", "b.txt", "[!a].txt", Qt::CaseSensitive, true},
    {"invalid pattern matches", "[a", "[a", Qt::CaseSensitive, false},
};

TEST(VelorWildcard, MatchesTheFileNameAlone)
{
    for (const Row& row : Rows) {
        EXPECT_EQ(VelorWildcard::check(QString::fromUtf8(row.path), QString::fromUtf8(row.pattern),
                                       row.sensitivity),
                  row.matches)
            << row.fault;
    }
}

TEST(VelorWildcard, OneMatchingPatternOfAListIsEnough)
{
    const QString path = QStringLiteral("dir/hero.fbx");
    const QString zip = QStringLiteral("*.zip");
    const QString fbx = QStringLiteral("*.fbx");
    EXPECT_FALSE(VelorWildcard::check(path, QList<QString>{}, Qt::CaseSensitive));
    EXPECT_FALSE(VelorWildcard::check(path, QList<QString>{zip, zip}, Qt::CaseSensitive));
    EXPECT_TRUE(VelorWildcard::check(path, QList<QString>{fbx, zip}, Qt::CaseSensitive));
    EXPECT_TRUE(VelorWildcard::check(path, QList<QString>{zip, fbx}, Qt::CaseSensitive));
}

} // namespace
