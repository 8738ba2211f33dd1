#include "support/TestHelpers.h"

#include <Velor.Base/KelbDataStream.h>

#include <gtest/gtest.h>

#include <utility>

namespace {

using namespace std::string_literals;

constexpr std::uint16_t Access = KelbBase::IDataStream::AccessRead;
const std::string Long(300, 'x');
const std::string Chunk(126, 'x'); // one byte less than is read at a time

using Read = std::pair<std::string, std::uint64_t>; ///< what was read, and the position behind it

Read readDelimited(const std::string& content, const std::string& delimiters, std::uint64_t maxCount = 999)
{
    MemorySource source(content);
    KelbDataStream stream(&source, Access);
    std::string buffer(maxCount + 1, '~');
    const std::uint64_t length = stream.readDelimited(buffer.data(), maxCount, delimiters);
    EXPECT_EQ(buffer.at(length), '\0');
    return {buffer.substr(0, length), stream.tell()};
}

TEST(KelbDataStream, ReadsUpToADelimiterOrTheMostBytes)
{
    EXPECT_EQ(readDelimited("a\nb;c", ";"), Read("a\nb", 4));
    EXPECT_EQ(readDelimited("ab\0cd"s, ";"), Read("ab", 3)) << "a byte 0 is a delimiter, too";
    EXPECT_EQ(readDelimited(Long + ";y", ";"), Read(Long, 301));
    EXPECT_EQ(readDelimited("abc;d", ";", 3), Read("abc", 3));
    EXPECT_EQ(readDelimited(Long + ";y", ";", 200), Read(Long.substr(0, 200), 200));
}

TEST(KelbDataStream, DropsACarriageReturnInFrontOfADelimiterWhereLinesEnd)
{
    EXPECT_EQ(readDelimited("ab\r;c", ";\n"), Read("ab", 4));
    EXPECT_EQ(readDelimited("ab\r;c", ";"), Read("ab\r", 4));
    EXPECT_EQ(readDelimited("ab\r", "\n"), Read("ab\r", 3));
    EXPECT_EQ(readDelimited("\na", "\n"), Read("", 1));
    EXPECT_EQ(readDelimited(Chunk + "\r\ny", "\n"), Read(Chunk, 128));
}

TEST(KelbDataStream, CountsACarriageReturnWhereNoTextIsWanted)
{
    MemorySource source("ab\r\ncd");
    KelbDataStream stream(&source, Access);
    EXPECT_EQ(stream.readDelimited(nullptr, 99, "\n"), 3u);
    EXPECT_EQ(stream.tell(), 4u);
}

TEST(KelbDataStream, SkipsBehindADelimiter)
{
    MemorySource source(Chunk + ";" + Long + ";ab");
    KelbDataStream stream(&source, Access);
    EXPECT_EQ(stream.skipDelimited(";"), 127u);
    EXPECT_EQ(stream.skipDelimited(";"), 301u);
    EXPECT_EQ(stream.tell(), 428u);
    EXPECT_EQ(stream.skipDelimited(";"), 2u) << "the end is as good as a delimiter";
}

Read readLine(const std::string& content, bool trim = false)
{
    MemorySource source(content);
    KelbDataStream stream(&source, Access);
    const std::string line = stream.readLine(trim);
    return {line, stream.tell()};
}

TEST(KelbDataStream, ReadsALine)
{
    EXPECT_EQ(readLine("ab\r\r\nc"), Read("ab\r", 5));
    EXPECT_EQ(readLine("ab\r"), Read("ab\r", 3));
    EXPECT_EQ(readLine(Chunk + "\r\ny"), Read(Chunk, 128));
    EXPECT_EQ(readLine("ab\0\n"s + Long), Read("ab" + Long.substr(123), 304))
        << "a byte 0 loses the rest of its chunk";
}

TEST(KelbDataStream, TrimsTheWhiteSpaceOfAscii)
{
    EXPECT_EQ(readLine(" \f a b \t\r\nc", true), Read("a b", 10));
    EXPECT_EQ(readLine("\xA0\n", true), Read("\xA0", 2));
}

TEST(KelbDataStream, ReadsAllFromTheStartUntilTheEndOrAFailure)
{
    for (const int good : {1, 9}) {
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
    EXPECT_EQ(copy.IDataStream::write("xy", 2), 0u) << "what a stream does that cannot write";
    EXPECT_EQ(copy.write("xy", 2), 2u);
    stream.close();
    EXPECT_EQ(stream.readLine(false), "c");
}

} // namespace
