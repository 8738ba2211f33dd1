#include "TestHelpers.h"

#include <Velor.Base/VelorFile.h>

#include <gtest/gtest.h>

namespace {

const char* const Missing = "(missing)";

/// The names are relative to a fresh folder with a folder `full/sub` in it.
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
    {"stale backup in the way", "t", "n", "b", "tnb", true, "n", Missing, Missing},
    {"stale backup deleted without an old target", "t", "n", "b", "nb", true, "n", Missing, "b"},
    {"old file touched without a new one", "t", "n", "b", "tb", false, "t", Missing, "b"},
    {"no old file and no place for the new one", "no/t", "n", "b", "n", false, Missing, Missing, Missing},
    {"no place for the backup", "t", "n", "full", "tn", false, "t", Missing, Missing},
    {"new file is the target", "t", "full/../t", "b", "tb", false, "t", "t", "b"},
    {"backup is the target", "t", "n", "full/../t", "tn", false, "t", "n", "t"},
    {"backup is the new file", "t", "n", "./n", "tn", false, "t", "n", "n"},
    {"new file comes from the backup", "t", "b", "b", "b", true, "b", Missing, Missing},
    // The new file moves away with the folder that it is to replace.
    {"second move fails and the old one is not restored", "full", "full/n", "b", "", false, Missing, Missing,
     Missing},
};

TEST(VelorFile, ReplacesOrKeepsWhatWasThere)
{
    for (const Row& row : Rows) {
        SCOPED_TRACE(row.fault);
        const TestFolder folder;
        std::filesystem::create_directories(folder.narrowPath("full/sub"));
        writeFile(folder.narrowPath("full/n"), "new");
        for (const char* name = row.files; *name != 0; ++name) {
            writeFile(folder.narrowPath({*name}), {*name});
        }
        const auto path = [&](const char* name) { return QString::fromStdString(folder.narrowPath(name)); };
        EXPECT_EQ(VelorFile::replaceFile(path(row.target), path(row.replacement), path(row.backup)),
                  row.replaced);
        EXPECT_EQ(fileBytes(path(row.target)), row.targetAfter);
        EXPECT_EQ(fileBytes(path(row.replacement)), row.replacementAfter);
        EXPECT_EQ(fileBytes(path(row.backup)), row.backupAfter);
        EXPECT_TRUE(std::filesystem::exists(folder.narrowPath("full/sub")));
    }
}

} // namespace
