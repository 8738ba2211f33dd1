#include "support/TestHelpers.h"

#include <Velor.Base/VelorFile.h>

#include <gtest/gtest.h>

#include <chrono>
#if __has_include(<sys/resource.h>)
#include <sys/stat.h>
#endif

namespace fs = std::filesystem;

namespace {

/// The names are relative to a fresh folder with a folder `full/sub` in it.
struct Row
{
    const char* rule;
    const char* target = "t";
    const char* replacement = "n";
    const char* backup = "b";
    const char* files = ""; ///< one letter each, which is name and content of a file
    const char* after;      ///< what is reported, then the contents of target, replacement and backup
};

const Row Rows[] = {
    {.rule = "a new file stands in its place", .files = "n", .after = "true n - -"},
    {.rule = "a stale backup makes room", .files = "tnb", .after = "true n - -"},
    {.rule = "a stale backup stays without an old target", .files = "nb", .after = "true n - b"},
    {.rule = "without a new file nothing is touched", .files = "tb", .after = "false t - b"},
    {.rule = "a new file without a place goes", .target = "no/t", .files = "n", .after = "false - - -"},
    {.rule = "an old one stays if not backed up", .backup = "full", .files = "tn", .after = "false t - -"},
    {.rule = "no target as new file", .replacement = "full/../t", .files = "tb", .after = "false t t b"},
    {.rule = "no target as backup", .backup = "full/../t", .files = "tn", .after = "false t n t"},
    {.rule = "no new file as backup", .backup = "./n", .files = "tn", .after = "false t n n"},
    {.rule = "a backup can be restored", .replacement = "b", .files = "b", .after = "true b - -"},
    // The new file moves away with the folder that it is to replace.
    {.rule = "an old one is back", .target = "full", .replacement = "full/n", .after = "false - - -"},
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
        fs::create_directories(folder.narrowPath("full/sub"));
        writeFile(folder.narrowPath("full/n"), "new");
        for (const char* name = row.files; *name != 0; ++name) {
            writeFile(folder.narrowPath({*name}), {*name});
        }
        const std::string paths[] = {folder.narrowPath(row.target), folder.narrowPath(row.replacement),
                                     folder.narrowPath(row.backup)};
        std::string after = replaceFile(paths[0], paths[1], paths[2]) ? "true" : "false";
        for (const std::string& path : paths) {
            after += ' ' + (fs::is_regular_file(filePath(path)) ? fileBytes(path) : "-");
        }
        EXPECT_EQ(after, row.after);
        EXPECT_TRUE(fs::exists(folder.narrowPath("full/sub")));
    }
}

// Where a second disk is known to be, and a process can limit the size of its files.
#if __has_include(<sys/resource.h>)

struct VelorFileOnTwoDisks : testing::Test
{
    const TestFolder disk;
    const TestFolder otherDisk{fs::exists("/dev/shm") ? "/dev/shm" : "."};
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

    /// Removes them all.
    int filesLeft() const
    {
        int files = 0;
        for (const auto* folder : {&disk, &otherDisk}) {
            for (const auto& entry : fs::directory_iterator(folder->narrowPath(""))) {
                files += static_cast<int>(fs::remove_all(entry));
            }
        }
        return files;
    }
};

TEST_F(VelorFileOnTwoDisks, TheNewFileStandsWholeWithItsPermissionsAndTimeOrTheOldOneStays)
{
    const auto time = fs::file_time_type::clock::now() - std::chrono::hours(50);
    for (const std::size_t limit :
         {std::size_t(0), oldContent.size() - 1, newContent.size() - 1, newContent.size()}) {
        for (int places = 0; places < 8; ++places) {
            SCOPED_TRACE(testing::Message() << limit << " bytes, " << places);
            place(places);
            fs::permissions(replacement, fs::perms(0640));
            fs::last_write_time(replacement, time);
            const bool isReplaced = (FileSizeLimit(limit), replaceFile(target, replacement, backup));
            const bool isNewCopied = ((places >> 1) & 1) != (places & 1);
            const bool isOldCopied = ((places >> 2) & 1) != (places & 1);
            EXPECT_EQ(isReplaced, (!isNewCopied || limit >= newContent.size()) &&
                                      (!isOldCopied || limit >= oldContent.size()));
            EXPECT_TRUE(fileBytes(target) == (isReplaced ? newContent : oldContent));
            if (isReplaced) {
                EXPECT_EQ(fs::status(target).permissions(), fs::perms(0640));
                EXPECT_LT(std::chrono::abs(fs::last_write_time(target) - time), std::chrono::seconds(1));
            }
            EXPECT_EQ(filesLeft(), 1);
        }
    }
}

TEST_F(VelorFileOnTwoDisks, ALinkDoesNotMoveToAnotherDisk)
{
    place(4);
    fs::rename(target, disk.narrowPath("content"));
    fs::create_symlink("content", target);
    EXPECT_FALSE(replaceFile(target, replacement, backup));
    EXPECT_EQ(fs::read_symlink(target), "content");
    EXPECT_TRUE(fileBytes(target) == oldContent);
    EXPECT_EQ(filesLeft(), 2);
}

TEST(VelorFile, ALinkIsMovedItselfAndIsBackIfTheNewOneLeadsNowhere)
{
    const TestFolder folder;
    const auto path = [&](const char* name) { return folder.narrowPath(name); };
    fs::create_directory(path("sub"));
    writeFile(path("content"), "content");
    writeFile(path("sub/new"), "new");
    fs::create_symlink("content", path("t"));
    fs::create_symlink("new", path("sub/n"));
    EXPECT_FALSE(replaceFile(path("t"), path("sub/n"), path("b")));
    EXPECT_EQ(fs::read_symlink(path("t")), "content");
    EXPECT_TRUE(replaceFile(path("t"), path("sub/new"), path("b")));
    EXPECT_EQ(fileBytes(path("content")), "content");
    fs::create_symlink("content", path("link"));
    EXPECT_TRUE(replaceFile(path("link"), path("content"), path("b")))
        << "a link is not the file that it leads to";
    EXPECT_FALSE(fs::is_symlink(path("link")));
    EXPECT_EQ(fileBytes(path("link")), "content");
}

TEST(VelorFile, OneFileUnderTwoNamesStaysAsItIs)
{
    const TestFolder folder;
    writeFile(folder.narrowPath("t"), "t");
    fs::create_directory_symlink(".", folder.narrowPath("alias"));
    EXPECT_FALSE(replaceFile(folder.narrowPath("t"), folder.narrowPath("alias/t"), folder.narrowPath("b")));
    EXPECT_EQ(fileBytes(folder.narrowPath("t")), "t");
}

#endif

} // namespace
