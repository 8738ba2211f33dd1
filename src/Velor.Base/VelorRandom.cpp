#include "VelorRandom.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>

namespace {

constexpr std::size_t StateSize = 624;
constexpr std::size_t MiddleDistance = 397;
constexpr int DroppedOutputs = 37;
constexpr double TwoToMinus32 = 2.3283064365386963e-10;

int secondsSince1970() { return static_cast<int>(std::time(nullptr)); }

/// The new word for the place of `word`, but for the word that lies the middle distance ahead. Without a
/// branch on the lowest bit, which is as good as random, so that several words go through at once.
constexpr std::uint32_t mix(std::uint32_t word, std::uint32_t following)
{
    constexpr std::uint32_t TopBit = 0x80000000;
    constexpr std::uint32_t Matrix = 0x9908B0DF;
    const std::uint32_t joined = (word & TopBit) | (following & ~TopBit);
    return (joined >> 1) ^ ((0U - (following & 1U)) & Matrix);
}

constexpr std::uint32_t temper(std::uint32_t y)
{
    y ^= y >> 11;
    y ^= (y << 7) & 0x9D2C5680;
    y ^= (y << 15) & 0xEFC60000;
    return y ^ (y >> 18);
}

} // namespace

struct VelorRandom::MersenneTwisterState
{
    explicit MersenneTwisterState(int seed) { start(seed); }

    void start(int seed)
    {
        constexpr std::uint32_t Multiplier = 1812433253;
        state[0] = static_cast<std::uint32_t>(seed);
        for (std::uint32_t i = 1; i < StateSize; ++i) {
            state[i] = (state[i - 1] ^ (state[i - 1] >> 30)) * Multiplier + i;
        }
        regenerate();
        index = DroppedOutputs;
    }

    void regenerate()
    {
        constexpr std::size_t Wrap = StateSize - MiddleDistance;
        for (std::size_t k = 0; k < Wrap; ++k) {
            state[k] = mix(state[k], state[k + 1]) ^ state[k + MiddleDistance];
        }
        for (std::size_t k = Wrap; k < StateSize - 1; ++k) {
            state[k] = mix(state[k], state[k + 1]) ^ state[k - Wrap];
        }
        state[StateSize - 1] = mix(state[StateSize - 1], state[0]) ^ state[MiddleDistance - 1];
        for (std::size_t k = 0; k < StateSize; ++k) {
            numbers[k] = temper(state[k]);
        }
    }

    std::uint32_t draw()
    {
        if (index >= static_cast<int>(StateSize)) {
            regenerate();
            index = 0;
        }
        return numbers[static_cast<std::size_t>(index++)];
    }

    std::array<std::uint32_t, StateSize> state;
    /// `state`, tempered as a whole, since the compiler puts several words through the steps at once.
    std::array<std::uint32_t, StateSize> numbers;
    /// The next number to hand out.
    int index;
};

VelorRandom::VelorRandom()
    : VelorRandom(secondsSince1970())
{}

VelorRandom::VelorRandom(int seed)
    : mGenerator(std::make_unique<MersenneTwisterState>(seed))
    , mSeed(seed)
{}

VelorRandom::VelorRandom(const VelorRandom& other)
    : VelorRandom(other.mSeed)
{}

VelorRandom& VelorRandom::operator=(const VelorRandom& other)
{
    startToSeed(other.mSeed);
    return *this;
}

VelorRandom::~VelorRandom() = default;

int VelorRandom::nextInt(int n)
{
    // In wrapping arithmetic, as the smallest int is a range of 2^31 here and not a negative one.
    const std::uint32_t range = static_cast<std::uint32_t>(n);
    const int last = static_cast<int>(range - 1);
    if (last == 0) {
        return 0;
    }
    if (last < 0) {
        return std::numeric_limits<int>::min();
    }
    return std::min(static_cast<int>(mGenerator->draw() * TwoToMinus32 * range), last);
}

double VelorRandom::next() { return mGenerator->draw() * TwoToMinus32; }

void VelorRandom::startToSeed() { mGenerator->start(mSeed); }

void VelorRandom::startToSeed(int seed)
{
    mSeed = seed;
    startToSeed();
}

VelorRandomFixed::VelorRandomFixed()
    : VelorRandom(0)
{}

int VelorRandomFixed::nextInt(int n) { return n / 2; }

double VelorRandomFixed::next() { return 0.5; }
