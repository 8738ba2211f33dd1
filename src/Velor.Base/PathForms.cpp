#include "PathForms.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr WCHAR Slash = '/';
constexpr WCHAR Backslash = '\\';

bool isAsciiLetter(WCHAR unit) { return (unit >= 'A' && unit <= 'Z') || (unit >= 'a' && unit <= 'z'); }

bool hasDrive(const WideString& path) { return isAsciiLetter(path[0]) && path[1] == ':'; }

bool hasNetworkHead(const WideString& path)
{
    return (path[0] == Slash || path[0] == Backslash) && path[1] == path[0] && path[2] != '.';
}

WideString ascii(const char* text)
{
    const std::string narrow(text);
    return {narrow.begin(), narrow.end()};
}

WideString withBackslashes(WideString path)
{
    std::replace(path.begin(), path.end(), Slash, Backslash);
    return path;
}

} // namespace

WideString utf8ToWide(std::string text)
{
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        return {};
    }
    const int bytes = static_cast<int>(text.size());
    const int units = MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, nullptr, 0);
    if (units <= 0) {
        return {};
    }
    WideString wide(static_cast<std::size_t>(units), WCHAR(0));
    MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, wide.data(), units);
    return wide;
}

WideString toLongPath(WideString path)
{
    if (path.size() < 3) {
        return path;
    }
    if (hasDrive(path)) {
        return withBackslashes(ascii("//?/") + path);
    }
    if (hasNetworkHead(path)) {
        return withBackslashes(ascii("//?/UNC/") + path.substr(2));
    }
    return path;
}

WideString toWidePath(std::string path) { return toLongPath(utf8ToWide(std::move(path))); }
