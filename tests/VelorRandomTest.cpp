#include <Velor.Base/VelorRandom.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <limits>
#include <random>
#include <utility>

namespace {

constexpr int Smallest = std::numeric_limits<int>::min();
constexpr int Largest = std::numeric_limits<int>::max();

/// The 32 bits that `next` draws.
std::uint32_t draw(VelorRandom& random) { return static_cast<std::uint32_t>(random.next() * 4294967296.0); }

bool startsAt(VelorRandom& random, int seed)
{
    VelorRandom fresh(seed);
    return draw(random) == draw(fresh) && draw(random) == draw(fresh);
}

TEST(VelorRandom, FollowsTheStandardGeneratorThroughSeveralStates)
{
    for (const int seed : {0, 1, -1, 5489, Smallest, Largest}) {
        VelorRandom ours(seed);
        std::mt19937 standard(static_cast<std::uint32_t>(seed));
        standard.discard(37);
        for (int i = 0; i < 3000; ++i) {
            ASSERT_EQ(ours.next(), static_cast<double>(standard()) * 0x1p-32) << seed << ", draw " << i;
        }
    }
}

TEST(VelorRandom, ScalesOneDrawToTheRange)
{
    VelorRandom ours(7), bits(7);
    for (int i = 0; i < 2000; ++i) {
        for (const int n : {2, 3, Largest, Smallest}) {
            const std::uint64_t scaled = std::uint64_t(draw(bits)) * static_cast<std::uint32_t>(n) >> 32;
            ASSERT_EQ(static_cast<std::uint64_t>(ours.nextInt(n)), scaled) << "range " << n;
        }
    }
}

TEST(VelorRandom, DrawsNothingForAnEmptyRange)
{
    VelorRandom random(3);
    EXPECT_EQ(random.nextInt(1), 0);
    EXPECT_EQ(random.nextInt(0), Smallest);
    EXPECT_EQ(random.nextInt(-1), Smallest);
    EXPECT_TRUE(startsAt(random, 3));
}

TEST(VelorRandom, ACopyHasTheSeedAndStartsOver)
{
    VelorRandom source(11), assigned(1);
    source.next();
    VelorRandom copy(source);
    assigned = source;
    for (VelorRandom* random : {&copy, &assigned}) {
        EXPECT_TRUE(startsAt(*random, 11));
        random->startToSeed();
        EXPECT_TRUE(startsAt(*random, 11)) << "the seed belongs to it";
    }
    copy.startToSeed(2);
    EXPECT_TRUE(startsAt(copy, 2));
    copy.startToSeed();
    EXPECT_TRUE(startsAt(copy, 2)) << "a new seed is kept";
    VelorRandom moved(std::move(source));
    EXPECT_FALSE(startsAt(source, 11)) << "the source keeps its place";
    source = std::as_const(source);
    EXPECT_TRUE(startsAt(source, 11)) << "assigned to itself";
}

TEST(VelorRandom, SeedsByTheSecondsOfTheClock)
{
    const auto before = static_cast<int>(std::time(nullptr));
    VelorRandom random;
    const auto after = static_cast<int>(std::time(nullptr));
    EXPECT_TRUE(startsAt(random, before) || (random.startToSeed(), startsAt(random, after)));
}

TEST(VelorRandomFixed, StandsInTheMiddle)
{
    VelorRandomFixed fixed;
    VelorRandom& random = fixed;
    random.startToSeed(5);
    EXPECT_EQ(random.next(), 0.5);
    EXPECT_EQ(random.nextInt(7), 3);
    EXPECT_EQ(random.nextInt(-7), -3);
}

} // namespace
