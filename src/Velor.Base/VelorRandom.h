#pragma once

#include "VelorBaseExport.h"

#include <memory>

/// A seeded pseudo-random sequence: the same seed yields the same numbers on every run and every machine, bit
/// for bit.
///
/// The numbers are those of the 32-bit Mersenne Twister MT19937 (Matsumoto and Nishimura, 1998), seeded by
/// its `init_genrand`, from the 38th on: what `std::mt19937` returns after `discard(37)`. They are fit for
/// motion and for tests, not for secrets.
///
/// An object belongs to one thread at a time; separate objects are independent of each other. The destructor
/// is not virtual: delete an object as the type that it was made as, never through a base.
class VELOR_BASE_EXPORT VelorRandom
{
public:
    /// Seeds by the current time in whole seconds, so that two objects made in one second are alike.
    VelorRandom();
    /// Seeds by the 32 bits of `seed`.
    explicit VelorRandom(int seed);
    /// Takes the seed of `other` and starts at the beginning of the sequence, wherever `other` stands. There
    /// is no move of its own: moving copies and leaves the source as it was.
    VelorRandom(const VelorRandom& other);
    /// As the copy constructor; assigning an object to itself starts its sequence over.
    VelorRandom& operator=(const VelorRandom& other);
    ~VelorRandom();

    /// A number from 0 to `n` - 1: one draw, scaled. Nothing is drawn for an `n` of 1, which results in 0,
    /// nor for one of 0 or less, which results in -2147483648. The smallest int counts as 2147483648.
    virtual int nextInt(int n);
    /// A number from 0 up to but not including 1, in steps of 2^-32: one draw.
    virtual double next();

    /// Starts the sequence over.
    void startToSeed();
    /// Starts the sequence of `seed`.
    void startToSeed(int seed);

private:
    struct MersenneTwisterState;

    std::unique_ptr<MersenneTwisterState> mGenerator;
    int mSeed;
};

/// A random sequence that stands still: it draws nothing and always answers in the middle of the range, so
/// that code which takes a `VelorRandom` can be run without chance. `startToSeed` has no effect on its
/// answers.
class VELOR_BASE_EXPORT VelorRandomFixed : public VelorRandom
{
public:
    VelorRandomFixed();

    /// `n` / 2, rounded towards zero, for any `n`.
    int nextInt(int n) override;
    /// 0.5.
    double next() override;
};
