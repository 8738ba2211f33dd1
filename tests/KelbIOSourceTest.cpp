#include "TestHelpers.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <type_traits>

namespace {

static_assert(!std::is_copy_constructible_v<KelbFile> && !std::is_copy_assignable_v<KelbFile>);

/// What every source promises. `source` is empty and can be read and written.
void expectSourceContract(KelbIOSource& source)
{
    EXPECT_EQ(source.size(), 0u);
    EXPECT_EQ(readBytes(source, 1), "");
    EXPECT_TRUE(source.eof());

    source.rewind();
    EXPECT_FALSE(source.eof());
    EXPECT_EQ(source.write("0123456789", 10), 10u);
    EXPECT_EQ(source.tell(), 10u);
    source.skip(-8);
    EXPECT_EQ(source.tell(), 2u);
    EXPECT_EQ(source.size(), 10u);
    EXPECT_EQ(source.tell(), 2u) << "size moved the position";
    EXPECT_EQ(readBytes(source, 3), "234");
    source.skip(2);
    EXPECT_EQ(readBytes(source, 3), "789") << "reading exactly the last byte";
    EXPECT_FALSE(source.eof()) << "the end is met by a short read, not by the position";
    EXPECT_EQ(readBytes(source, 1), "");
    EXPECT_TRUE(source.eof());

    source.seek(8);
    EXPECT_FALSE(source.eof());
    EXPECT_EQ(readBytes(source, 100), "89") << "never more than there is";
    EXPECT_TRUE(source.eof());
    source.seekToEnd();
    EXPECT_FALSE(source.eof());
    EXPECT_EQ(source.tell(), 10u);

    source.seek(4);
    EXPECT_EQ(source.write("xy", 2), 2u);
    EXPECT_EQ(source.size(), 10u) << "writing inside overwrites";
    source.rewind();
    EXPECT_EQ(readBytes(source, 10), "0123xy6789");
    source.seek(12);
    EXPECT_EQ(source.write("z", 1), 1u);
    source.seek(9);
    EXPECT_EQ(readBytes(source, 9), std::string("9\0\0z", 4)) << "the gap behind the end reads as zeros";
    EXPECT_FALSE(source.hasError());
}

TEST(KelbIOSource, MemorySourceKeepsTheContract)
{
    MemorySource source;
    expectSourceContract(source);
}

TEST(KelbIOSource, FileKeepsTheContract)
{
    const TestFolder folder;
    KelbFile file(folder.narrowPath("f").c_str(), KelbFile::ModeReadWrite);
    ASSERT_TRUE(file.isOpen());
    expectSourceContract(file);
}

TEST(KelbIOSource, DeviceKeepsTheContractOverAnySource)
{
    MemorySource source;
    KelbIODevice device(&source);
    KelbIODevice deviceOverDevice(&device);
    expectSourceContract(deviceOverDevice);
}

TEST(KelbIODevice, ReadsAndWritesLittleEndianFloats)
{
    MemorySource source;
    KelbIODevice device(&source);
    const float value = -6.25f;
    EXPECT_TRUE(device.writeFloat(&value));
    EXPECT_EQ(source.bytes, std::string("\x00\x00\xC8\xC0", 4));
    device.rewind();
    EXPECT_EQ(device.readFloat(), value);
    EXPECT_EQ(device.readFloat(), 0.0f);
    EXPECT_EQ(device.readByte(), 0);
}

TEST(KelbIODevice, AFloatCutShortKeepsItsLowBytes)
{
    MemorySource source("\x01\x02\x03");
    EXPECT_EQ(std::bit_cast<std::uint32_t>(KelbIODevice(&source).readFloat()), 0x030201u);
}

TEST(KelbIODevice, TellsThatAFloatWasNotWritten)
{
    MemorySource source;
    FailingSource failing(&source, 0);
    const float value = 1;
    EXPECT_FALSE(KelbIODevice(&failing).writeFloat(&value));
    EXPECT_TRUE(KelbIODevice(&failing).hasError());
}

TEST(KelbIODevice, DoesNotForwardResize)
{
    const TestFolder folder;
    KelbFile file(folder.narrowPath("f").c_str(), KelbFile::ModeReadWrite);
    file.write("abc", 3);
    KelbIODevice device(&file);
    device.resize(1);
    EXPECT_EQ(file.size(), 3u);
}

struct ModeRow
{
    const char* fault;
    std::uint32_t mode;
    const char* before; ///< null for a missing file
    bool opens;
    std::uint64_t written;
    const char* read;
    const char* after;
};

const ModeRow ModeRows[] = {
    {"reading creates a file", KelbFile::ModeRead, nullptr, false, 0, "", "(missing)"},
    {"reading allows a write", KelbFile::ModeRead, "abc", true, 0, "abc", "abc"},
    {"writing keeps old content", KelbFile::ModeWrite, "abc", true, 1, "", "!"},
    {"writing does not create", KelbFile::ModeWrite, nullptr, true, 1, "", "!"},
    {"reading and writing empties", KelbFile::ModeReadWrite, "abc", true, 1, "abc", "abc!"},
    {"reading and writing does not create", KelbFile::ModeReadWrite, nullptr, true, 1, "", "!"},
    {"mode 0 does not read", 0, "abc", true, 0, "abc", "abc"},
    {"mode 7 does not read", 7, "abc", true, 0, "abc", "abc"},
};

TEST(KelbFile, OpensAsItsModeSays)
{
    for (const ModeRow& row : ModeRows) {
        SCOPED_TRACE(row.fault);
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
        EXPECT_EQ(fileBytes(path), row.after);
    }
}

TEST(KelbFile, AClosedFileIsEmptyAndQuiet)
{
    const TestFolder folder;
    const std::string path = folder.narrowPath("f");
    KelbFile file(path.c_str(), KelbFile::ModeReadWrite);
    file.write("abc", 3);
    file.close();
    file.close();
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(readBytes(file, 3), "");
    EXPECT_EQ(file.write("x", 1), 0u);
    file.rewind();
    file.skip(1);
    file.seek(1);
    file.seekToEnd();
    file.resize(1);
    EXPECT_EQ(file.size(), 0u);
    EXPECT_EQ(file.tell(), 0u);
    EXPECT_TRUE(file.eof());
    EXPECT_FALSE(file.hasError());
    EXPECT_EQ(fileBytes(path), "abc");
}

TEST(KelbFile, ReadsAndWritesAlternateWithoutASeek)
{
    const TestFolder folder;
    const std::string path = folder.narrowPath("f");
    writeFile(path, "0123456789");
    KelbFile file(path.c_str(), KelbFile::ModeReadWrite);
    EXPECT_EQ(readBytes(file, 2), "01");
    EXPECT_EQ(file.write("ab", 2), 2u);
    EXPECT_EQ(readBytes(file, 2), "45");
    EXPECT_EQ(file.write("c", 1), 1u);
    EXPECT_EQ(readBytes(file, 9), "789");
    EXPECT_TRUE(file.eof());
    EXPECT_EQ(file.write("end", 3), 3u);
    EXPECT_EQ(readBytes(file, 1), "");
    EXPECT_EQ(file.tell(), 13u);
    file.close();
    EXPECT_EQ(fileBytes(path), "01ab45c789end");
}

TEST(KelbFile, AMoveThatCannotBeLeavesThePosition)
{
    const TestFolder folder;
    KelbFile file(folder.narrowPath("f").c_str(), KelbFile::ModeReadWrite);
    file.write("abc", 3);
    file.skip(-4);
    file.seek(std::uint64_t(1) << 63);
    EXPECT_EQ(file.tell(), 3u);
}

struct ResizeRow
{
    const char* fault;
    std::uint32_t mode;
    std::uint64_t size;
    std::string after;
};

const ResizeRow ResizeRows[] = {
    {"not cut", KelbFile::ModeReadWrite, 2, "01"},
    {"not grown by zeros", KelbFile::ModeReadWrite, 6, {"0123\0\0", 6}},
    {"write mode empties the file as it opens it again", KelbFile::ModeWrite, 3, "012"},
    {"read mode cannot resize", KelbFile::ModeRead, 3, "012"},
    {"a length no file can have cuts the file", KelbFile::ModeReadWrite, ~std::uint64_t(0), "0123"},
    {"a length too large for the disk cuts the file", KelbFile::ModeReadWrite, std::uint64_t(1) << 62,
     "0123"},
};

TEST(KelbFile, ResizeKeepsWhatItDoesNotCut)
{
    for (const ResizeRow& row : ResizeRows) {
        SCOPED_TRACE(row.fault);
        const TestFolder folder;
        const std::string path = folder.narrowPath("f");
        writeFile(path, row.mode == KelbFile::ModeWrite ? "" : "0123");
        KelbFile file(path.c_str(), row.mode);
        if (row.mode == KelbFile::ModeWrite) {
            file.write("0123", 4);
        }
        file.seekToEnd();
        file.resize(row.size);
        EXPECT_TRUE(file.isOpen());
        EXPECT_FALSE(file.hasError());
        EXPECT_EQ(file.tell(), 0u);
        file.close();
        EXPECT_EQ(fileBytes(path), row.after);
    }
}

TEST(KelbFile, ResizeOfAFileThatHasVanishedLeavesItClosed)
{
    const TestFolder folder;
    const std::string path = folder.narrowPath("f");
    KelbFile file(path.c_str(), KelbFile::ModeWrite);
    std::filesystem::remove(path);
    file.resize(1);
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(file.write("x", 1), 0u);
}

TEST(KelbFile, WorksBeyondFourGibibytes)
{
    constexpr std::uint64_t Far = (std::uint64_t(5) << 30) + 3;
    const TestFolder folder;
    KelbFile file(folder.narrowPath("sparse").c_str(), KelbFile::ModeReadWrite);
    file.seek(Far);
    EXPECT_EQ(file.write("abc", 3), 3u);
    EXPECT_EQ(file.size(), Far + 3);
    file.skip(-2);
    EXPECT_EQ(file.tell(), Far + 1);
    EXPECT_EQ(readBytes(file, 9), "bc");
    file.resize(Far + 1);
    file.seekToEnd();
    EXPECT_EQ(file.tell(), Far + 1);
}

TEST(KelbFile, ContentLongerThanTheBufferComesBackWhole)
{
    const TestFolder folder;
    std::string bytes(300'000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 7 % 251);
    }
    KelbFile file(folder.narrowPath("f").c_str(), KelbFile::ModeReadWrite);
    for (std::size_t at = 0; at < bytes.size(); at += 1000) {
        EXPECT_EQ(file.write(bytes.data() + at, 1000), 1000u);
    }
    file.rewind();
    EXPECT_EQ(readBytes(file, bytes.size() + 1), bytes);
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

TEST(KelbFile, OpensNoFolder)
{
    const TestFolder folder;
    for (const std::uint32_t mode : {KelbFile::ModeRead, KelbFile::ModeWrite, KelbFile::ModeReadWrite}) {
        EXPECT_FALSE(KelbFile(folder.narrowPath("").c_str(), mode).isOpen()) << mode;
    }
}

} // namespace
