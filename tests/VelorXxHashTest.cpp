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

// As xxh64sum has them for the first bytes of the pattern.
constexpr std::uint64_t DigestOfNothing = 0xef46db3751d8e999;
constexpr std::uint64_t DigestOf4096 = 0x796398cd432797cc;
constexpr std::uint64_t DigestOf10000 = 0xb195585f9792dbca;

TEST(VelorXxHash, GivesThePublishedDigestHoweverTheBytesCome)
{
    const std::string bytes = pattern(10000);
    EXPECT_EQ(VelorXxHash::fromBytes(bytes.data(), bytes.size()), DigestOf10000);
    EXPECT_EQ(VelorXxHash::fromBytes(nullptr, 5), DigestOfNothing);
    VelorXxHash hash;
    hash.addBytes(nullptr, 5);
    for (const char& byte : bytes) {
        hash.addBytes(&byte, 1);
        hash.hash();
    }
    EXPECT_EQ(hash.hash(), DigestOf10000);
}

TEST(VelorXxHash, CopiesGoOnByThemselves)
{
    VelorXxHash hash, assigned;
    hash.addBytes("ab", 2);
    VelorXxHash copy(hash);
    assigned = hash;
    hash.addBytes("other", 5);
    for (VelorXxHash* other : {&copy, &assigned}) {
        other->addBytes("c", 1);
        EXPECT_EQ(other->hash(), 0x44bc2cf5ad770999u) << "the published digest of abc";
    }
}

TEST(VelorXxHash, HashesASourceFromItsPositionToItsEndOrFailure)
{
    MemorySource source(pattern(10000));
    FailingSource failing(&source, 1);
    EXPECT_EQ(VelorXxHash::fromSource(&failing), DigestOf4096);
    source.seek(100);
    EXPECT_EQ(VelorXxHash::fromSource(&source), 0xc33a918d76a90b48u);
    EXPECT_EQ(VelorXxHash::fromSource(&source), DigestOfNothing) << "a source at its end is moved back";
}

} // namespace
