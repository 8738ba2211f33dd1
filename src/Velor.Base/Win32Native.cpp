#include "Win32.h"

std::size_t remainingStack()
{
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
    GetCurrentThreadStackLimits(&low, &high);
    return stackBelow(reinterpret_cast<std::uintptr_t>(&low), low, high);
}

std::filesystem::path streamPath(const WideString& path) { return path; }

WideString wideName(const std::filesystem::path& path) { return path.native(); }
