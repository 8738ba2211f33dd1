#include "TestHelpers.h"

#include <Velor.Base/VelorFile.h>

#include <QtCore/QFile>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#if __has_include(<sys/resource.h>)
#include <sys/resource.h>
#include <sys/stat.h>
#endif

namespace {

const char* const Missing = "(missing)";

/// The names are relative to a fresh folder with a folder `full/sub` in it.
struct Row
{
    const char* rule;
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
    {"a new file stands in its place", "t", "n", "b", "n", true, "n", Missing, Missing},
    {"a stale backup makes room", "t", "n", "b", "tnb", true, "n", Missing, Missing},
    {"a stale backup stays without an old target", "t", "n", "b", "nb", true, "n", Missing, "b"},
    {"without a new file nothing is touched", "t", "n", "b", "tb", false, "t", Missing, "b"},
    {"a new file without a place is deleted", "no/t", "n", "b", "n", false, Missing, Missing, Missing},
    {"without a place for the backup the old file stays", "t", "n", "full", "tn", false, "t", Missing,
     Missing},
    {"the target itself as new file is refused", "t", "full/../t", "b", "tb", false, "t", "t", "b"},
    {"the target as backup is refused", "t", "n", "full/../t", "tn", false, "t", "n", "t"},
    {"the new file as backup is refused", "t", "n", "./n", "tn", false, "t", "n", "n"},
    {"a backup can be restored as new file", "t", "b", "b", "b", true, "b", Missing, Missing},
    // The new file moves away with the folder that it is to replace.
    {"the old one is restored if the second move fails", "full", "full/n", "b", "", false, Missing, Missing,
     Missing},
};

bool replaceFile(const std::string& target, const std::string& replacement, const std::string& backup)
{
    return VelorFile::replaceFile(QString::fromStdString(target), QString::fromStdString(replacement),
                                  QString::fromStdString(backup));
}

TEST(VelorFile, ReplacesOrKeepsWhatWasThere)
{
    for (const Row& row : Rows) {
        SCOPED_TRACE(row.rule);
        const TestFolder folder;
        std::filesystem::create_directories(folder.narrowPath("full/sub"));
        writeFile(folder.narrowPath("full/n"), "new");
        for (const char* name = row.files; *name != 0; ++name) {
            writeFile(folder.narrowPath({*name}), {*name});
        }
        const std::string target = folder.narrowPath(row.target);
        const std::string replacement = folder.narrowPath(row.replacement);
        const std::string backup = folder.narrowPath(row.backup);
        EXPECT_EQ(replaceFile(target, replacement, backup), row.replaced);
        EXPECT_EQ(fileBytes(target), row.targetAfter);
        EXPECT_EQ(fileBytes(replacement), row.replacementAfter);
        EXPECT_EQ(fileBytes(backup), row.backupAfter);
        EXPECT_TRUE(std::filesystem::exists(folder.narrowPath("full/sub")));
    }
}

TEST(VelorFile, OneFileUnderTwoNamesStaysAsItIs)
{
    const TestFolder folder;
    writeFile(folder.narrowPath("t"), "t");
    std::error_code error;
    std::filesystem::create_directory_symlink(filePath(folder.narrowPath("")),
                                              filePath(folder.narrowPath("alias")), error);
    if (error) {
        GTEST_SKIP() << "no right to make links here";
    }
    EXPECT_FALSE(replaceFile(folder.narrowPath("t"), folder.narrowPath("alias/t"), folder.narrowPath("b")));
    EXPECT_EQ(fileBytes(folder.narrowPath("t")), "t");
}

// Where a second disk is known to be, and a process can limit the size of its files.
#if __has_include(<sys/resource.h>)

struct VelorFileOnTwoDisks : testing::Test
{
    const TestFolder disk;
    const TestFolder otherDisk{std::filesystem::exists("/dev/shm") ? "/dev/shm" : "."};
    const std::string oldContent = std::string(300'000, 'o');
    const std::string newContent = std::string(600'000, 'n');
    std::string target, replacement, backup;

    void SetUp() override
    {
        struct stat one = {};
        struct stat other = {};
        stat(disk.narrowPath("").c_str(), &one);
        stat(otherDisk.narrowPath("").c_str(), &other);
        if (one.st_dev == other.st_dev) {
            GTEST_SKIP() << "no second disk: /dev/shm and the folder for temporary files are on one";
        }
    }

    /// Each bit of `places` puts one of the names on the other disk.
    void place(int places)
    {
        const auto path = [&](int bit, const char* name) {
            return (places & bit ? otherDisk : disk).narrowPath(name);
        };
        target = path(1, "t");
        replacement = path(2, "n");
        backup = path(4, "b");
        writeFile(target, oldContent);
        writeFile(replacement, newContent);
        writeFile(backup, "stale");
    }

    bool replace() const { return replaceFile(target, replacement, backup); }

    /// Removes them all.
    int filesLeft() const
    {
        int files = 0;
        for (const auto* folder : {&disk, &otherDisk}) {
            for (const auto& entry : std::filesystem::directory_iterator(folder->narrowPath(""))) {
                files += static_cast<int>(std::filesystem::remove_all(entry));
            }
        }
        return files;
    }
};

TEST_F(VelorFileOnTwoDisks, TheNewFileStandsWithItsPermissionsAndTime)
{
    const auto time = std::filesystem::file_time_type::clock::now() - std::chrono::hours(50);
    for (int places = 0; places < 8; ++places) {
        SCOPED_TRACE(places);
        place(places);
        std::filesystem::permissions(replacement, std::filesystem::perms(0640));
        std::filesystem::last_write_time(replacement, time);
        EXPECT_TRUE(replace());
        EXPECT_TRUE(fileBytes(target) == newContent);
        EXPECT_EQ(std::filesystem::status(target).permissions(), std::filesystem::perms(0640));
        EXPECT_LT(std::chrono::abs(std::filesystem::last_write_time(target) - time), std::chrono::seconds(1));
        EXPECT_EQ(filesLeft(), 1);
    }
}

TEST_F(VelorFileOnTwoDisks, ACopyThatIsCutIsNeverTakenForTheFile)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit former = {};
    getrlimit(RLIMIT_FSIZE, &former);
    for (const std::size_t limit : {std::size_t(0), oldContent.size() - 1, newContent.size() - 1}) {
        for (int places = 0; places < 8; ++places) {
            SCOPED_TRACE(testing::Message() << limit << " bytes, " << places);
            place(places);
            const rlimit limited = {limit, former.rlim_max};
            setrlimit(RLIMIT_FSIZE, &limited);
            const bool isReplaced = replace();
            setrlimit(RLIMIT_FSIZE, &former);
            const bool isNewCopied = ((places >> 1) & 1) != (places & 1);
            const bool isOldCopied = ((places >> 2) & 1) != (places & 1);
            EXPECT_EQ(isReplaced, !isNewCopied && (!isOldCopied || limit >= oldContent.size()));
            EXPECT_TRUE(fileBytes(target) == (isReplaced ? newContent : oldContent));
            EXPECT_EQ(filesLeft(), 1);
        }
    }
}

TEST_F(VelorFileOnTwoDisks, LinksAndFoldersStayWhereTheyAre)
{
    place(4);
    std::filesystem::rename(target, disk.narrowPath("content"));
    std::filesystem::create_symlink("content", target);
    EXPECT_FALSE(replace());
    EXPECT_EQ(std::filesystem::read_symlink(target), "content");
    EXPECT_TRUE(fileBytes(target) == oldContent);
    EXPECT_EQ(filesLeft(), 2);

    place(4);
    std::filesystem::remove(target);
    std::filesystem::create_directories(target + "/sub");
    EXPECT_FALSE(replace());
    EXPECT_TRUE(std::filesystem::is_directory(target + "/sub"));
    EXPECT_EQ(filesLeft(), 2);
}

TEST(VelorFile, ALinkIsMovedItselfAndIsBackIfTheNewOneLeadsNowhere)
{
    const TestFolder folder;
    const auto path = [&](const char* name) { return folder.narrowPath(name); };
    std::filesystem::create_directory(path("sub"));
    writeFile(path("content"), "old");
    writeFile(path("sub/new"), "new");
    std::filesystem::create_symlink("content", path("t"));
    std::filesystem::create_symlink("new", path("sub/n"));
    EXPECT_FALSE(replaceFile(path("t"), path("sub/n"), path("b")));
    EXPECT_EQ(std::filesystem::read_symlink(path("t")), "content");
    EXPECT_TRUE(replaceFile(path("t"), path("sub/new"), path("b")));
    EXPECT_EQ(fileBytes(path("t")), "new");
    EXPECT_EQ(fileBytes(path("content")), "old");
    EXPECT_FALSE(std::filesystem::is_symlink(path("b")));
}

#endif

} // namespace
