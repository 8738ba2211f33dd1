#include <Velor.Base/VelorWildcard.h>

#include <QtCore/QDir>

#include <gtest/gtest.h>

namespace {

/// Where a backslash and a drive are parts of a path, not of a name.
const bool HasDrives = QDir::separator() == u'\\';

struct Row
{
    const char* rule;
    const char* path;
    const char* pattern;
    Qt::CaseSensitivity sensitivity;
    bool matches;
};

const Row Rows[] = {
    {"a directory does not count", "dir.txt/file.zip", "*.txt", Qt::CaseSensitive, false},
    {"a slash ends a directory", "dir/file.txt", "file.txt", Qt::CaseSensitive, true},
    {"a backslash does so on Windows", "dir\\file.txt", "file.txt", Qt::CaseSensitive, HasDrives},
    {"a backslash is a letter elsewhere", "dir\\file.txt", "dir?file.txt", Qt::CaseSensitive, !HasDrives},
    {"a drive is one on Windows alone", "a:b.txt", "a:*", Qt::CaseSensitive, !HasDrives},
    {"the whole name is matched", "file.txt", "file", Qt::CaseSensitive, false},
    {"case counts", "a.txt", "*.TXT", Qt::CaseSensitive, false},
    {"case does not count if so asked", "a.txt", "*.TXT", Qt::CaseInsensitive, true},
    {"letters beyond ASCII have case", "\xC3\x84.txt", "\xC3\xA4.*", Qt::CaseInsensitive, true},
    {"an empty pattern matches no name", "a.txt", "", Qt::CaseSensitive, false},
    {"an empty pattern matches the empty name", "dir/", "", Qt::CaseSensitive, true},
    {"a plus is a plus", "aab", "a+b", Qt::CaseSensitive, false},
    {"a set can be negated", "b.txt", "[!a].txt", Qt::CaseSensitive, true},
    {"an invalid pattern matches nothing", "[a", "[a", Qt::CaseSensitive, false},
};

TEST(VelorWildcard, MatchesTheFileNameAlone)
{
    for (const Row& row : Rows) {
        EXPECT_EQ(VelorWildcard::check(QString::fromUtf8(row.path), QString::fromUtf8(row.pattern),
                                       row.sensitivity),
                  row.matches)
            << row.rule;
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
