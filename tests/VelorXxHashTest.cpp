#include "TestHelpers.h"

#include <Velor.Base/VelorXxHash.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace {

int sAllocations = 0;

} // namespace

void* operator new(std::size_t size)
{
    ++sAllocations;
    if (void* memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

constexpr std::uint64_t EmptyDigest = 0xef46db3751d8e999;

std::string pattern(std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>(i * 7 + 3);
    }
    return bytes;
}

struct Row
{
    std::size_t size;
    std::uint64_t digest; ///< as xxh64sum gives it for the first bytes of the pattern
};

const Row Rows[] = {
    {0, EmptyDigest},           {1, 0x1f25c8d0bc1f4bb6},
    {31, 0xa2aa5f33cc4a6119},   {32, 0x23c3c17ef790fd97},
    {33, 0x50a7cfc7ba588784},   {100, 0xa61f8d4c170fe531},
    {4095, 0x2517d5eee2c14c64}, {4096, 0x796398cd432797cc},
    {4097, 0xda8d184207b32a00}, {10000, 0xb195585f9792dbca},
};

TEST(VelorXxHash, GivesThePublishedDigestHoweverTheBytesCome)
{
    for (const Row& row : Rows) {
        SCOPED_TRACE(row.size);
        const std::string bytes = pattern(row.size);
        EXPECT_EQ(VelorXxHash::fromBytes(bytes.data(), bytes.size()), row.digest);
        MemorySource source(bytes);
        EXPECT_EQ(VelorXxHash::fromSource(&source), row.digest);
        for (const std::size_t piece : {std::size_t(1), std::size_t(33), std::size_t(5000)}) {
            VelorXxHash hash;
            for (std::size_t at = 0; at < bytes.size(); at += piece) {
                hash.addBytes(bytes.data() + at, std::min(piece, bytes.size() - at));
            }
            EXPECT_EQ(hash.hash(), row.digest) << "pieces of " << piece;
        }
    }
}

TEST(VelorXxHash, TakesNullForNoBytes)
{
    EXPECT_EQ(VelorXxHash::fromBytes(nullptr, 5), EmptyDigest);
    VelorXxHash hash;
    hash.addBytes(nullptr, 5);
    hash.addBytes("abc", 0);
    EXPECT_EQ(hash.hash(), EmptyDigest);
}

TEST(VelorXxHash, GoesOnAfterADigestWasTaken)
{
    VelorXxHash hash;
    hash.addBytes(pattern(33).data(), 20);
    hash.hash();
    EXPECT_EQ(hash.hash(), hash.hash());
    hash.addBytes(pattern(33).data() + 20, 13);
    EXPECT_EQ(hash.hash(), Rows[4].digest);
}

TEST(VelorXxHash, CopiesGoOnApart)
{
    const std::string bytes = pattern(100);
    VelorXxHash original;
    original.addBytes(bytes.data(), 32);
    VelorXxHash copy(original);
    VelorXxHash assigned;
    assigned.addBytes("other", 5);
    assigned = original;
    assigned = *&assigned;
    original.addBytes("other", 5);
    copy.addBytes(bytes.data() + 32, 1);
    assigned.addBytes(bytes.data() + 32, 68);
    EXPECT_EQ(copy.hash(), Rows[4].digest);
    EXPECT_EQ(assigned.hash(), Rows[5].digest);
}

TEST(VelorXxHash, OneShotFormsAllocateNothing)
{
    const std::string bytes = pattern(10000);
    MemorySource source(bytes);
    const int before = sAllocations;
    VelorXxHash::fromBytes(bytes.data(), bytes.size());
    VelorXxHash::fromSource(&source);
    EXPECT_EQ(sAllocations, before);
    const VelorXxHash counted;
    EXPECT_GT(sAllocations, before) << "allocations are not seen";
}

TEST(VelorXxHash, HashesAFileFromItsPositionInBlocks)
{
    const TestFolder folder;
    const QString path = folder.path(QStringLiteral("f"));
    writeFile(path, pattern(10000));
    KelbFile file(path.toUtf8(), KelbFile::ModeRead);
    EXPECT_EQ(VelorXxHash::fromSource(&file), Rows[9].digest);
    EXPECT_TRUE(file.eof());
    EXPECT_EQ(VelorXxHash::fromSource(&file), EmptyDigest) << "a source at its end is not moved back";
    file.seek(100);
    EXPECT_EQ(VelorXxHash::fromSource(&file), 0xc33a918d76a90b48u);
    file.close();
    EXPECT_EQ(VelorXxHash::fromSource(&file), EmptyDigest);

    MemorySource exact(pattern(4096));
    VelorXxHash::fromSource(&exact);
    EXPECT_EQ(exact.reads, 2);
}

TEST(VelorXxHash, AFailingSourceGivesTheDigestOfWhatCameBefore)
{
    const std::uint64_t digests[] = {EmptyDigest, Rows[7].digest};
    for (int good = 0; good < 2; ++good) {
        MemorySource source(pattern(10000));
        FailingSource failing(&source, good);
        EXPECT_EQ(VelorXxHash::fromSource(&failing), digests[good]);
        EXPECT_TRUE(failing.hasError());
    }
    KelbFile writeOnly("/dev/null", KelbFile::ModeWrite);
    EXPECT_EQ(VelorXxHash::fromSource(&writeOnly), EmptyDigest);
}

} // namespace
