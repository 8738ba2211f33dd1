#include <gtest/gtest.h>

#include <cstdio>

/// Runs the tests of a program that holds code for x86-64-v3. CTest takes the exit code 77 as skipped.
int main(int argc, char** argv)
{
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("fma") || !__builtin_cpu_supports("avx2") ||
        !__builtin_cpu_supports("bmi2")) {
        std::puts("This processor has no fused multiply-add: nothing to compare.");
        return 77;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
