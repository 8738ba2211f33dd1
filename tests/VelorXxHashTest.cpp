#include "support/TestHelpers.h"

#include <Velor.Base/VelorXxHash.h>

#include <gtest/gtest.h>

namespace {

std::string pattern(std::size_t size)
{
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [i = 0]() mutable { return static_cast<char>(i++ * 7 + 3); });
    return bytes;
}

struct Row
{
    std::size_t size;
    std::uint64_t digest; ///< as xxh64sum gives it for the first bytes of the pattern
};

const Row Rows[] = {{0, 0xef46db3751d8e999},
                    {100, 0xa61f8d4c170fe531},
                    {4096, 0x796398cd432797cc},
                    {10000, 0xb195585f9792dbca}};

TEST(VelorXxHash, GivesThePublishedDigestHoweverTheBytesCome)
{
    for (const Row& row : Rows) {
        SCOPED_TRACE(row.size);
        const std::string bytes = pattern(row.size);
        MemorySource source(bytes);
        EXPECT_EQ(VelorXxHash::fromBytes(bytes.data(), bytes.size()), row.digest);
        EXPECT_EQ(VelorXxHash::fromSource(&source), row.digest);
        VelorXxHash hash;
        hash.addBytes(nullptr, 5);
        for (const char& byte : bytes) {
            hash.addBytes(&byte, 1);
            hash.hash();
        }
        EXPECT_EQ(hash.hash(), row.digest);
    }
    EXPECT_EQ(VelorXxHash::fromBytes(nullptr, 5), Rows[0].digest);
}

TEST(VelorXxHash, CopiesGoOnByThemselves)
{
    VelorXxHash hash;
    hash.addBytes("ab", 2);
    VelorXxHash copy(hash);
    VelorXxHash assigned;
    assigned = hash;
    hash.addBytes("other", 5);
    copy.addBytes("c", 1);
    assigned.addBytes("c", 1);
    EXPECT_EQ(copy.hash(), 0x44bc2cf5ad770999u) << "the published digest of abc";
    EXPECT_EQ(assigned.hash(), copy.hash());
}

TEST(VelorXxHash, HashesASourceFromItsPositionToItsEndOrFailure)
{
    MemorySource source(pattern(10000));
    source.seek(100);
    EXPECT_EQ(VelorXxHash::fromSource(&source), 0xc33a918d76a90b48u);
    EXPECT_EQ(VelorXxHash::fromSource(&source), Rows[0].digest) << "a source at its end is moved back";
    source.rewind();
    FailingSource failing(&source, 1);
    EXPECT_EQ(VelorXxHash::fromSource(&failing), Rows[2].digest);
}

} // namespace
