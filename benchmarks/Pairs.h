#pragma once

#include <functional>
#include <initializer_list>
#include <source_location>
#include <string>

/// \file
/// Measures work of this library beside a peer that does the same, in one process and in turn.
///
/// A figure here is the ratio of processor time, the peer's by ours, so that above 1 we are faster. Child
/// processes and the system's part count. Times of two runs are never compared.
namespace bench {

/// One run of what is measured; it should take a microsecond or more.
using Work = std::function<void()>;

/// Measures nine pairs, each made of short turns of both works unless these are long themselves, and prints a
/// row of the table with the median of the nine ratios.
void pair(const char* work, const char* peer, const Work& ours, const Work& theirs);

/// Runs the work that `prepare` makes for each size, and prints a row with the times and their exponent: 1
/// where the time grows as the size does, 2 where it grows as its square.
void growth(const char* work, std::initializer_list<int> sizes, const std::function<Work(int size)>& prepare);

/// Makes the compiler take `value` for used.
template <typename T>
void keep(const T& value)
{
    asm volatile("" : : "m"(value) : "memory");
}

/// Ends the program where a step of a benchmark fails, since its figures would mean nothing.
void demand(bool isDone, std::source_location where = std::source_location::current());

/// A name in the folder of this run's files, which is below the current folder: a disk, and not the memory
/// that /tmp often is. Deleted at the end.
std::string scratch(const std::string& name);

/// What one source file measures. An object of static storage is all that the program needs to know of it.
struct Family
{
    Family(const char* name, void (*pairs)(), void (*growths)() = nullptr);
};

} // namespace bench
