#include "support/SourceContract.h"

namespace {

TEST(KelbIOSource, EverySourceKeepsTheContract)
{
    const TestFolder folder;
    KelbFile file(folder.narrowPath("f").c_str(), KelbFile::ModeReadWrite);
    expectSourceContract(file);
    MemorySource below;
    KelbIODevice device(&below);
    KelbIODevice deviceOverDevice(&device);
    expectSourceContract(deviceOverDevice);

    KelbIODevice(&file).resize(1);
    EXPECT_EQ(file.size(), 13u) << "a device resized its source";
}

struct ModeRow
{
    const char* rule;
    std::uint32_t mode;
    const char* before = nullptr; ///< null for a missing file
    bool opens = true;
    std::uint64_t written = 1;
    const char* read = "";
    const char* after;
};

// Line ends stay as they are on every system.
const ModeRow ModeRows[] = {
    {.rule = "reading creates no file", .mode = 1, .opens = false, .written = 0, .after = "(missing)"},
    {.rule = "reading allows no write",
     .mode = 1,
     .before = "a\r\n",
     .written = 0,
     .read = "a\r\n",
     .after = "a\r\n"},
    {.rule = "writing empties the file", .mode = 2, .before = "abc", .after = "!"},
    {.rule = "both keep the content", .mode = 3, .before = "a\r\n", .read = "a\r\n", .after = "a\r\n!"},
    {.rule = "both create the file", .mode = 3, .after = "!"},
    {.rule = "an unknown mode reads", .mode = 7, .before = "a", .written = 0, .read = "a", .after = "a"},
};
static_assert(KelbFile::ModeRead == 1 && KelbFile::ModeWrite == 2 && KelbFile::ModeReadWrite == 3);

TEST(KelbFile, OpensAsItsModeSaysAndIsQuietOnceClosed)
{
    for (const ModeRow& row : ModeRows) {
        SCOPED_TRACE(row.rule);
        const TestFolder folder;
        const std::string path = folder.narrowPath("f");
        if (row.before != nullptr) {
            writeFile(path, row.before);
        }
        KelbFile file(path.c_str(), row.mode);
        EXPECT_EQ(file.isOpen(), row.opens);
        EXPECT_FALSE(file.hasError());
        EXPECT_EQ(readBytes(file, 9), row.read);
        EXPECT_EQ(file.write("!", 1), row.written);
        file.close();
        file.close();
        file.resize(1);
        file.skip(1);
        EXPECT_EQ(readBytes(file, 3), "");
        EXPECT_EQ(file.write("x", 1) + file.size() + file.tell(), 0u);
        EXPECT_TRUE(file.eof());
        EXPECT_FALSE(file.isOpen());
        EXPECT_EQ(fileBytes(path), row.after);
        EXPECT_FALSE(KelbFile(folder.narrowPath("").c_str(), row.mode).isOpen()) << "a folder";
    }
}

TEST(KelbFile, AWriteBehindTheEndLeavesEof)
{
    const TestFolder folder;
    KelbFile file(folder.narrowPath("f").c_str(), KelbFile::ModeReadWrite);
    EXPECT_EQ(readBytes(file, 1), "");
    file.write("x", 1);
    EXPECT_TRUE(file.eof());
    EXPECT_EQ(file.size(), 1u);
    EXPECT_FALSE(file.eof());
}

TEST(KelbFile, ResizeKeepsWhatItDoesNotCut)
{
    const TestFolder folder;
    const std::string path = folder.narrowPath("f");
    const auto resized = [&](std::uint32_t mode, std::uint64_t size) {
        writeFile(path, "0123");
        KelbFile file(path.c_str(), mode);
        file.write("0123", mode == KelbFile::ModeWrite ? 4 : 0);
        file.seekToEnd();
        file.resize(size);
        EXPECT_TRUE(file.isOpen());
        EXPECT_EQ(file.tell(), 0u);
        file.close();
        EXPECT_FALSE(file.hasError());
        return fileBytes(path);
    };
    EXPECT_EQ(resized(KelbFile::ModeReadWrite, 2), "01");
    EXPECT_EQ(resized(KelbFile::ModeReadWrite, 6), std::string("0123\0\0", 6));
    EXPECT_EQ(resized(KelbFile::ModeWrite, 3), "012") << "emptied as it was opened again";
    EXPECT_EQ(resized(KelbFile::ModeRead, 3), "012") << "read mode cannot resize";
    EXPECT_EQ(resized(KelbFile::ModeReadWrite, ~std::uint64_t(0)), "0123") << "no file can have this length";
    EXPECT_EQ(resized(KelbFile::ModeReadWrite, std::uint64_t(1) << 62), "0123") << "too large for the disk";
}

TEST(KelbFile, ResizeKeepsWhatIsStillBufferedAndTheModeThatWrites)
{
    const TestFolder folder;
    const std::string path = folder.narrowPath("f");
    {
        KelbFile file(path.c_str(), KelbFile::ModeWrite);
        file.write("01234", 5);
        file.resize(4);
        EXPECT_EQ(file.write("\n", 1), 1u);
    }
    EXPECT_EQ(fileBytes(path), "\n123");
}

TEST(KelbFile, ResizeCreatesAVanishedFileInTheModeThatKeepsOrCreates)
{
    for (const std::uint32_t mode : {KelbFile::ModeRead, KelbFile::ModeWrite, KelbFile::ModeReadWrite}) {
        SCOPED_TRACE(mode);
        const TestFolder folder;
        const std::string path = folder.narrowPath("f");
        writeFile(path, "0123");
        KelbFile file(path.c_str(), mode);
        std::error_code error;
        if (!std::filesystem::remove(filePath(path), error)) {
            GTEST_SKIP() << "this system deletes no open file";
        }
        file.resize(2);
        EXPECT_EQ(file.isOpen(), mode == KelbFile::ModeReadWrite);
        file.write("!", 1);
        file.close();
        EXPECT_EQ(fileBytes(path), mode == KelbFile::ModeReadWrite ? "!" : "(missing)");
    }
}

TEST(KelbFile, WorksBeyondFourGibibytes)
{
    constexpr std::uint64_t Far = (std::uint64_t(5) << 30) + 3;
    const TestFolder folder;
    KelbFile file(folder.narrowPath("sparse").c_str(), KelbFile::ModeReadWrite);
    file.seek(Far);
    file.write("abc", 3);
    EXPECT_EQ(file.size(), Far + 3);
    file.skip(-2);
    EXPECT_EQ(readBytes(file, 9), "bc");
    file.seek(std::uint64_t(1) << 63);
    EXPECT_EQ(file.tell(), Far + 3) << "a move that cannot be leaves the position";
    file.resize(Far + 1);
    file.seekToEnd();
    EXPECT_EQ(file.tell(), Far + 1);
}

TEST(KelbFile, TellsAboutAFullDiskAtTheWriteAndAtTheClosing)
{
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "no device here is always full";
    }
    const std::string large(1'000'000, 'x');
    KelbFile direct("/dev/full", KelbFile::ModeWrite);
    EXPECT_LT(direct.write(large.data(), large.size()), large.size());
    EXPECT_TRUE(direct.hasError());
    KelbFile buffered("/dev/full", KelbFile::ModeWrite);
    EXPECT_EQ(buffered.write("x", 1), 1u);
    EXPECT_FALSE(buffered.hasError());
    buffered.close();
    EXPECT_TRUE(buffered.hasError()) << "the bytes were lost as the stream was closed";
}

} // namespace
