#include "TestHelpers.h"

#include <Velor.Base/KelbDataStream.h>

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

/// A stream at the start of `content`.
struct TextStream
{
    explicit TextStream(std::string content)
        : source(std::move(content))
    {}

    MemorySource source;
    KelbDataStream stream{&source, KelbBase::IDataStream::AccessRead};
};

const std::string Long(300, 'x');
const std::string FullChunk(126, 'x');

struct DelimitedRow
{
    const char* fault;
    std::string content;
    std::string delimiters;
    std::uint64_t maxCount;
    std::string text;
    std::uint64_t countOnly; ///< what a null buffer gives
    std::uint64_t position;
};

const DelimitedRow DelimitedRows[] = {
    {"carriage return kept", "ab\r\ncd", "\n", 99, "ab", 3, 4},
    {"carriage return dropped though lines do not matter", "ab\r;c", ";", 99, "ab\r", 3, 4},
    {"carriage return kept at another delimiter", "ab\r;c", ";\n", 99, "ab", 3, 4},
    {"carriage return dropped at the end of the data", "ab\r", "\n", 99, "ab\r", 3, 3},
    {"carriage return in front of an empty text", "\nab", "\n", 99, "", 0, 1},
    {"one delimiter of the set missed", "a,b;c", ";,", 99, "a", 1, 2},
    {"no end without a delimiter", "abc", ";", 99, "abc", 3, 3},
    {"empty set ends the text", "a\nb", "", 99, "a\nb", 3, 3},
    {"a byte 0 does not end the text", "ab\0cd"s, ";", 99, "ab", 2, 3},
    {"what follows a 0 in the set counts", "ab;c", "\0;"s, 99, "ab;c", 4, 4},
    {"what follows a 0 in the set hides the line feed", "ab\r;c", ";\0\n"s, 99, "ab", 3, 4},
    {"reads in spite of no room", "abc", ";", 0, "", 0, 0},
    {"delimiter consumed behind the most", "abc;d", ";", 3, "abc", 3, 3},
    {"carriage return cut at the most", "ab\r\n", "\n", 3, "ab\r", 3, 3},
    {"cut at the chunk", Long + ";y", ";", 999, Long, 300, 301},
    {"the most lies beyond a chunk", Long, ";", 200, Long.substr(0, 200), 200, 200},
    {"delimiter is the last of a chunk", FullChunk + ";y", ";", 999, FullChunk, 126, 127},
    {"carriage return and line feed in two chunks", FullChunk + "\r\ny", "\n", 999, FullChunk, 127, 128},
};

TEST(KelbDataStream, ReadsUpToADelimiter)
{
    for (const DelimitedRow& row : DelimitedRows) {
        SCOPED_TRACE(row.fault);
        TextStream text(row.content);
        std::string buffer(row.maxCount + 1, '~');
        const std::uint64_t length = text.stream.readDelimited(buffer.data(), row.maxCount, row.delimiters);
        EXPECT_EQ(buffer.substr(0, length + 1), row.text + '\0');
        EXPECT_EQ(text.stream.tell(), row.position);

        text.stream.seek(0);
        EXPECT_EQ(text.stream.readDelimited(nullptr, row.maxCount, row.delimiters), row.countOnly);
        EXPECT_EQ(text.stream.tell(), row.position);
    }
}

struct LineRow
{
    const char* fault;
    std::string content;
    bool trim;
    std::string line;
    std::uint64_t position;
};

const LineRow LineRows[] = {
    {"line feed kept", "ab\ncd", false, "ab", 3},
    {"carriage return kept", "ab\r\ncd", false, "ab", 4},
    {"two carriage returns dropped", "ab\r\r\n", false, "ab\r", 5},
    {"carriage return dropped without a line feed", "ab\r", false, "ab\r", 3},
    {"untrimmed at the end of the data", "ab\r", true, "ab", 3},
    {"not trimmed, or trimmed inside", "  a b \t\r\nc", true, "a b", 9},
    {"white space alone not empty", " \t\v\f\r\nc", true, "", 6},
    {"a blank beyond ASCII trimmed",
     "\xA0"
     "a\n",
     true,
     "\xA0"
     "a",
     3},
    {"empty line", "\nab", false, "", 1},
    {"end of the data", "", false, "", 0},
    {"cut at the chunk", Long + "\ny", false, Long, 301},
    {"line feed is the last of a chunk", FullChunk + "\ny", false, FullChunk, 127},
    {"carriage return and line feed in two chunks", FullChunk + "\r\ny", false, FullChunk, 128},
    {"text behind a byte 0 comes back", "ab\0cd\nef"s, false, "ab", 8},
    {"a byte 0 ends the line as well as the chunk", "ab\0"s + Long, false, "ab" + Long.substr(124), 303},
};

TEST(KelbDataStream, ReadsALine)
{
    for (const LineRow& row : LineRows) {
        SCOPED_TRACE(row.fault);
        TextStream text(row.content);
        EXPECT_EQ(text.stream.readLine(row.trim), row.line);
        EXPECT_EQ(text.stream.tell(), row.position);
    }
}

TEST(KelbDataStream, AnEmptyLineAndTheEndDifferByEof)
{
    TextStream text("\n");
    EXPECT_EQ(text.stream.readLine(false), "");
    EXPECT_FALSE(text.stream.eof());
    EXPECT_EQ(text.stream.readLine(false), "");
    EXPECT_TRUE(text.stream.eof());
}

struct SkipRow
{
    const char* fault;
    std::string content;
    std::uint64_t skipped;
};

const SkipRow SkipRows[] = {
    {"delimiter not counted", "ab;c", 3},
    {"no delimiter", "abc", 3},
    {"end of the data", "", 0},
    {"delimiter in a later chunk", Long + ";y", 301},
    {"a byte 0 passed over", "ab\0c;"s, 3},
    {"delimiter is the last of a chunk", FullChunk + ";y", 127},
};

TEST(KelbDataStream, SkipsBehindADelimiter)
{
    for (const SkipRow& row : SkipRows) {
        SCOPED_TRACE(row.fault);
        TextStream text(row.content);
        EXPECT_EQ(text.stream.skipDelimited(";"), row.skipped);
        EXPECT_EQ(text.stream.tell(), row.skipped);
    }
}

TEST(KelbDataStream, ReadsAllFromTheStartInChunksOf4096)
{
    const std::string content = Long + "\0\n"s + std::string(8000, 'y');
    TextStream text(content);
    text.stream.skip(100);
    text.stream.skip(-50);
    EXPECT_EQ(text.stream.tell(), 50u);
    EXPECT_EQ(text.stream.readAll(), content);
    EXPECT_EQ(text.source.reads, 3);
    EXPECT_EQ(text.stream.tell(), content.size());
}

TEST(KelbDataStream, AFailingSourceEndsEveryOperationWithWhatCameBefore)
{
    for (int good = 0; good < 4; ++good) {
        SCOPED_TRACE(good);
        MemorySource source(std::string(10'000, 'x'));
        const auto failing = [&] {
            source.rewind();
            return FailingSource(&source, good);
        };
        const auto chunks = static_cast<std::size_t>(good);
        FailingSource forAll = failing();
        EXPECT_EQ(KelbDataStream(&forAll, 1).readAll().size(), std::min<std::size_t>(10'000, chunks * 4096));
        FailingSource forLine = failing();
        EXPECT_EQ(KelbDataStream(&forLine, 1).readLine(true).size(), chunks * 127);
        FailingSource forSkip = failing();
        EXPECT_EQ(KelbDataStream(&forSkip, 1).skipDelimited(";"), chunks * 127);
        FailingSource forText = failing();
        EXPECT_EQ(KelbDataStream(&forText, 1).readDelimited(nullptr, 9999, ";"), chunks * 127);
    }
}

TEST(KelbDataStream, AFileThatCannotBeReadGivesNothing)
{
    const TestFolder folder;
    KelbFile file(folder.narrowPath("f").c_str(), KelbFile::ModeWrite);
    KelbDataStream stream(&file, KelbBase::IDataStream::AccessWrite);
    EXPECT_EQ(stream.write("abc", 3), 3u);
    EXPECT_EQ(stream.readAll(), "");
}

TEST(KelbDataStream, FlagsAreInformationAndCopiesShareTheSource)
{
    MemorySource source("abc");
    KelbDataStream stream(&source, KelbBase::IDataStream::AccessRead);
    KelbDataStream copy(stream);
    EXPECT_TRUE(copy.canRead());
    EXPECT_FALSE(copy.canWrite());
    EXPECT_EQ(copy.write("xy", 2), 2u);
    stream.close();
    char letter = 0;
    EXPECT_EQ(stream.read(&letter, 1), 1u);
    EXPECT_EQ(letter, 'c');
    stream = KelbDataStream(&source, KelbBase::IDataStream::AccessWrite | 4);
    EXPECT_FALSE(stream.canRead());
    EXPECT_TRUE(stream.canWrite());
}

} // namespace
