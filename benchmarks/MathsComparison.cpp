#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <thread>
#include <vector>

/// \file
/// Compares x * x and x * x * x, which the Bernstein weights of VelorMath have where their formula has `pow`,
/// with `pow` for every float there is, and exits with 1 on a difference. Cubes must be equal as floats, as
/// which they are used; squares as doubles, in which further factors follow. Takes some minutes of each
/// processor.

namespace {

constexpr std::uint64_t FloatPatterns = std::uint64_t(1) << 32;

/// Out of the compiler's sight, which would multiply by itself.
double (*volatile powOfLibrary)(double, double) = static_cast<double (*)(double, double)>(std::pow);

struct Differences
{
    std::uint64_t square = 0;
    std::uint64_t cubeAsDouble = 0;
    std::uint64_t cubeAsFloat = 0;
    std::uint64_t cubeWithinUnit = 0;
};

template <typename Float>
bool same(Float a, Float b)
{
    return (a == b && std::signbit(a) == std::signbit(b)) || (std::isnan(a) && std::isnan(b));
}

Differences compare(std::uint64_t first, std::uint64_t last)
{
    Differences found;
    for (std::uint64_t pattern = first; pattern < last; ++pattern) {
        const double x = std::bit_cast<float>(static_cast<std::uint32_t>(pattern));
        const double square = x * x;
        const double cube = square * x;
        const double cubeByPow = powOfLibrary(x, 3.0);
        const bool floatsDiffer = !same(float(cube), float(cubeByPow));
        found.square += !same(square, powOfLibrary(x, 2.0));
        found.cubeAsDouble += !same(cube, cubeByPow);
        found.cubeAsFloat += floatsDiffer;
        found.cubeWithinUnit += floatsDiffer && x >= 0 && x <= 1;
    }
    return found;
}

Differences compareAll()
{
    const std::size_t parts = std::max(1U, std::thread::hardware_concurrency());
    std::vector<Differences> results(parts);
    std::vector<std::thread> workers;
    for (std::size_t i = 0; i < parts; ++i) {
        workers.emplace_back([&results, parts, i] {
            results[i] = compare(FloatPatterns * i / parts, FloatPatterns * (i + 1) / parts);
        });
    }
    Differences sum;
    for (std::size_t i = 0; i < parts; ++i) {
        workers[i].join();
        sum.square += results[i].square;
        sum.cubeAsDouble += results[i].cubeAsDouble;
        sum.cubeAsFloat += results[i].cubeAsFloat;
        sum.cubeWithinUnit += results[i].cubeWithinUnit;
    }
    return sum;
}

} // namespace

int main()
{
    const Differences found = compareAll();
    std::printf("floats compared                     %llu\n"
                "x * x differs from pow(x, 2)        %llu\n"
                "x * x * x differs from pow(x, 3)    %llu as double, %llu as float, %llu of these in 0..1\n",
                static_cast<unsigned long long>(FloatPatterns), static_cast<unsigned long long>(found.square),
                static_cast<unsigned long long>(found.cubeAsDouble),
                static_cast<unsigned long long>(found.cubeAsFloat),
                static_cast<unsigned long long>(found.cubeWithinUnit));
    return found.square == 0 && found.cubeAsFloat == 0 ? 0 : 1;
}
