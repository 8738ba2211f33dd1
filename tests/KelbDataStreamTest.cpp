#include "TestHelpers.h"

#include <Velor.Base/KelbDataStream.h>

#include <gtest/gtest.h>

#include <tuple>

namespace {

using namespace std::string_literals;

constexpr std::uint16_t Access = KelbBase::IDataStream::AccessRead;
const std::string Long(300, 'x');
const std::string Chunk(126, 'x'); // one byte less than is read at a time

struct DelimitedRow
{
    const char* fault;
    std::string content;
    std::string delimiters;
    std::uint64_t maxCount;
    std::string text;
    std::uint64_t countOnly; ///< what a null buffer gives
    std::uint64_t position;
    std::uint64_t skipped; ///< what skipDelimited gives
};

const DelimitedRow DelimitedRows[] = {
    {"carriage return kept", "ab\r\ncd", "\n", 99, "ab", 3, 4, 4},
    {"carriage return dropped though lines do not matter", "ab\r;c", ";", 99, "ab\r", 3, 4, 4},
    {"carriage return kept at another delimiter", "ab\r;c", ";\n", 99, "ab", 3, 4, 4},
    {"carriage return dropped at the end of the data", "ab\r", "\n", 99, "ab\r", 3, 3, 3},
    {"carriage return looked for in an empty text", "\nab", "\n", 99, "", 0, 1, 1},
    {"empty set ends the text", "a\nb", "", 99, "a\nb", 3, 3, 3},
    {"a byte 0 does not end the text", "ab\0cd"s, ";", 99, "ab", 2, 3, 3},
    {"what follows a 0 in the set hides the line feed", "ab\r\0;"s, ";\0\n"s, 99, "ab", 3, 4, 4},
    {"reads in spite of no room", "abc", ";", 0, "", 0, 0, 3},
    {"delimiter consumed behind the most", "abc;d", ";", 3, "abc", 3, 3, 4},
    {"the most lies beyond a chunk", Long + ";y", ";", 200, Long.substr(0, 200), 200, 200, 301},
    {"delimiter is the last of a chunk", Chunk + ";y", ";", 999, Chunk, 126, 127, 127},
    {"carriage return and line feed in two chunks", Chunk + "\r\ny", "\n", 999, Chunk, 127, 128, 128},
};

TEST(KelbDataStream, ReadsAndSkipsUpToADelimiter)
{
    for (const DelimitedRow& row : DelimitedRows) {
        SCOPED_TRACE(row.fault);
        MemorySource source(row.content);
        KelbDataStream stream(&source, Access);
        std::string buffer(row.maxCount + 1, '~');
        const std::uint64_t length = stream.readDelimited(buffer.data(), row.maxCount, row.delimiters);
        EXPECT_EQ(buffer.substr(0, length + 1), row.text + '\0');
        EXPECT_EQ(stream.tell(), row.position);
        stream.seek(0);
        EXPECT_EQ(stream.readDelimited(nullptr, row.maxCount, row.delimiters), row.countOnly);
        EXPECT_EQ(stream.tell(), row.position);
        stream.seek(0);
        EXPECT_EQ(stream.skipDelimited(row.delimiters), row.skipped);
        EXPECT_EQ(stream.tell(), row.skipped);
    }
}

TEST(KelbDataStream, ReadsALine)
{
    const std::tuple<const char*, std::string, bool, std::string, std::uint64_t> rows[] = {
        {"two carriage returns dropped", "ab\r\r\nc", false, "ab\r", 5},
        {"carriage return dropped without a line feed", "ab\r", false, "ab\r", 3},
        {"not trimmed, or trimmed inside", "  a b \t\r\nc", true, "a b", 9},
        {"white space alone not empty", " \t\v\f\r\nc", true, "", 6},
        {"a blank beyond ASCII trimmed", "\xA0\n", true, "\xA0", 2},
        {"carriage return and line feed in two chunks", Chunk + "\r\ny", false, Chunk, 128},
        {"text behind a byte 0 comes back", "ab\0cd\nef"s, false, "ab", 8},
        {"a byte 0 ends more than its chunk", "ab\0"s + Long, false, "ab" + Long.substr(124), 303},
    };
    for (const auto& [fault, content, trim, line, position] : rows) {
        SCOPED_TRACE(fault);
        MemorySource source(content);
        KelbDataStream stream(&source, Access);
        EXPECT_EQ(stream.readLine(trim), line);
        EXPECT_EQ(stream.tell(), position);
    }
}

TEST(KelbDataStream, ReadsAllFromTheStartUntilTheEndOrAFailure)
{
    for (const int good : {0, 1, 9}) {
        MemorySource source(Long + "\0\n"s + std::string(8000, 'y'));
        FailingSource failing(&source, good);
        KelbDataStream stream(&failing, Access);
        stream.skip(100);
        stream.skip(-50);
        EXPECT_EQ(stream.tell(), 50u);
        EXPECT_EQ(stream.readAll(), source.bytes.substr(0, 4096 * static_cast<std::size_t>(good)));
    }
}

TEST(KelbDataStream, FlagsAreInformationAndCopiesShareTheSource)
{
    MemorySource source("abc");
    KelbDataStream stream(&source, Access | 4);
    KelbDataStream copy(stream);
    EXPECT_TRUE(copy.canRead() && !copy.canWrite());
    EXPECT_FALSE(KelbDataStream(&source, KelbDataStream::AccessWrite).canRead());
    EXPECT_EQ(copy.write("xy", 2), 2u);
    stream.close();
    EXPECT_EQ(stream.readLine(false), "c");
}

} // namespace
