#include <Velor.Base/VelorWildcard.h>

#include <QtCore/QDir>

#include <gtest/gtest.h>

namespace {

/// Where a backslash and a drive are parts of a path, not of a name.
const bool HasDrives = QDir::separator() == u'\\';

bool matches(const char* path, const char* pattern, Qt::CaseSensitivity sensitivity = Qt::CaseSensitive)
{
    return VelorWildcard::check(QString::fromUtf8(path), QString::fromUtf8(pattern), sensitivity);
}

TEST(VelorWildcard, MatchesTheWholeFileNameAlone)
{
    EXPECT_TRUE(matches("dir/file.txt", "file.txt"));
    EXPECT_FALSE(matches("dir.txt/file.zip", "*.txt")) << "a directory does not count";
    EXPECT_FALSE(matches("file.txt", "file"));
    EXPECT_TRUE(matches("dir/", "")) << "the name is empty";
    EXPECT_FALSE(matches("[a", "[a")) << "the pattern is invalid";
    EXPECT_FALSE(matches("a.txt", "*.TXT"));
    EXPECT_TRUE(matches("a.txt", "*.TXT", Qt::CaseInsensitive));
}

TEST(VelorWildcard, ABackslashAndADriveArePartsOfAPathOnWindowsAlone)
{
    EXPECT_EQ(matches("dir\\file.txt", "file.txt"), HasDrives);
    EXPECT_NE(matches("dir\\file.txt", "dir?file.txt"), HasDrives);
    EXPECT_NE(matches("a:b.txt", "a:*"), HasDrives);
}

TEST(VelorWildcard, OneMatchingPatternOfAListIsEnough)
{
    const QString path = QStringLiteral("dir/hero.fbx");
    const QString zip = QStringLiteral("*.zip");
    const QString fbx = QStringLiteral("*.fbx");
    EXPECT_FALSE(VelorWildcard::check(path, QList<QString>{}, Qt::CaseSensitive));
    EXPECT_TRUE(VelorWildcard::check(path, QList<QString>{fbx, zip}, Qt::CaseSensitive));
    EXPECT_TRUE(VelorWildcard::check(path, QList<QString>{zip, fbx}, Qt::CaseSensitive));
}

} // namespace
