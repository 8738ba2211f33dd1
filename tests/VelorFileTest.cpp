#include "TestHelpers.h"

#include <Velor.Base/VelorFile.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <gtest/gtest.h>

namespace {

const char* const Missing = "(missing)";

/// The names are relative to a fresh folder with an empty folder `full/sub` in it.
struct Row
{
    const char* fault;
    const char* target;
    const char* replacement;
    const char* backup;
    const char* files; ///< one letter each, which is name and content of a file
    bool replaced;
    const char* targetAfter;
    const char* replacementAfter;
    const char* backupAfter;
};

const Row Rows[] = {
    {"new file not put in place", "t", "n", "b", "n", true, "n", Missing, Missing},
    {"old file not replaced", "t", "n", "b", "tn", true, "n", Missing, Missing},
    {"stale backup in the way", "t", "n", "b", "tnb", true, "n", Missing, Missing},
    {"stale backup deleted without an old target", "t", "n", "b", "nb", true, "n", Missing, "b"},
    {"old file touched without a new one", "t", "n", "b", "tb", false, "t", Missing, "b"},
    {"no old file and no place for the new one", "no/t", "n", "b", "n", false, Missing, Missing, Missing},
    {"no place for the backup", "t", "n", "no/b", "tn", false, "t", Missing, Missing},
    {"backup is a folder that cannot be removed", "t", "n", "full", "tn", false, "t", Missing, Missing},
    {"new file is the target", "t", "t", "b", "tb", false, "t", "t", "b"},
    {"new file is the target, told otherwise", "t", "full/../t", "b", "t", false, "t", "t", Missing},
    {"backup is the target", "t", "n", "full/../t", "tn", false, "t", "n", "t"},
    {"backup is the new file", "t", "n", "./n", "tn", false, "t", "n", "n"},
    {"new file comes from the backup", "t", "b", "b", "b", true, "b", Missing, Missing},
};

TEST(VelorFile, ReplacesOrKeepsWhatWasThere)
{
    for (const Row& row : Rows) {
        SCOPED_TRACE(row.fault);
        const TestFolder folder;
        ASSERT_TRUE(QDir(folder.path({})).mkpath(QStringLiteral("full/sub")));
        for (const char* name = row.files; *name != 0; ++name) {
            writeFile(folder.path(QString(QLatin1Char(*name))), std::string(1, *name));
        }
        const auto path = [&](const char* name) { return folder.path(QLatin1String(name)); };
        EXPECT_EQ(VelorFile::replaceFile(path(row.target), path(row.replacement), path(row.backup)),
                  row.replaced);
        EXPECT_EQ(fileBytes(path(row.target)), row.targetAfter);
        EXPECT_EQ(fileBytes(path(row.replacement)), row.replacementAfter);
        EXPECT_EQ(fileBytes(path(row.backup)), row.backupAfter);
    }
}

/// The new file lies in the folder that it is to replace: it moves away with the folder.
TEST(VelorFile, RestoresTheOldOneWhenTheNewOneCannotMove)
{
    const TestFolder folder;
    const QString target = folder.path(QStringLiteral("t"));
    const QString backup = folder.path(QStringLiteral("b"));
    ASSERT_TRUE(QDir().mkpath(target));
    writeFile(target + QStringLiteral("/kept"), "old");
    writeFile(target + QStringLiteral("/n"), "new");
    EXPECT_FALSE(VelorFile::replaceFile(target, target + QStringLiteral("/n"), backup));
    EXPECT_EQ(fileBytes(target + QStringLiteral("/kept")), "old");
    EXPECT_EQ(fileBytes(target + QStringLiteral("/n")), Missing) << "a failed replacement is deleted";
    EXPECT_FALSE(QFileInfo::exists(backup));
}

TEST(VelorFile, ALinkIsReplacedAndNotWhatItPointsTo)
{
    const TestFolder folder;
    const QString target = folder.path(QStringLiteral("link"));
    const QString replacement = folder.path(QStringLiteral("n"));
    writeFile(replacement, "new");
    ASSERT_TRUE(QFile::link(replacement, target));
    EXPECT_TRUE(VelorFile::replaceFile(target, replacement, folder.path(QStringLiteral("b"))));
    EXPECT_EQ(fileBytes(target), "new");
    EXPECT_FALSE(QFileInfo(target).isSymLink());
}

} // namespace
