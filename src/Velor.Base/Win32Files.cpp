#include "Win32StandIn.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

using namespace win32;

namespace {

constexpr char32_t EscapeBase = 0xDC00;

/// How many bytes the valid UTF-8 sequence at `text` has, and its code point; 0 for an invalid one.
int decodeSequence(const unsigned char* text, int available, char32_t& codePoint)
{
    const unsigned char lead = text[0];
    const int length = lead < 0x80                   ? 1
                       : lead >= 0xC2 && lead < 0xE0 ? 2
                       : lead >= 0xE0 && lead < 0xF0 ? 3
                       : lead >= 0xF0 && lead < 0xF5 ? 4
                                                     : 0;
    if (length == 0 || length > available) {
        return 0;
    }
    codePoint = length == 1 ? lead : lead & (0x7Fu >> length);
    for (int i = 1; i < length; ++i) {
        if ((text[i] & 0xC0) != 0x80) {
            return 0;
        }
        codePoint = (codePoint << 6) | (text[i] & 0x3Fu);
    }
    constexpr char32_t Smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = codePoint >= 0xD800 && codePoint < 0xE000;
    return codePoint < Smallest[length] || codePoint > 0x10FFFF || isSurrogate ? 0 : length;
}

WideString decodeUtf8(const char* text, int bytes)
{
    WideString wide;
    const auto* at = reinterpret_cast<const unsigned char*>(text);
    for (int i = 0; i < bytes;) {
        char32_t codePoint = 0;
        const int length = decodeSequence(at + i, bytes - i, codePoint);
        if (length == 0) {
            wide += static_cast<WCHAR>(EscapeBase + at[i]);
        } else if (codePoint < 0x10000) {
            wide += static_cast<WCHAR>(codePoint);
        } else {
            wide += static_cast<WCHAR>(0xD7C0 + (codePoint >> 10));
            wide += static_cast<WCHAR>(0xDC00 + (codePoint & 0x3FF));
        }
        i += std::max(length, 1);
    }
    return wide;
}

void appendUtf8(std::string& text, char32_t codePoint)
{
    const auto tail = [&](int shift) { text += static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F)); };
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        text += static_cast<char>(0xC0 | (codePoint >> 6));
        tail(0);
    } else if (codePoint < 0x10000) {
        text += static_cast<char>(0xE0 | (codePoint >> 12));
        tail(6);
        tail(0);
    } else {
        text += static_cast<char>(0xF0 | (codePoint >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

/// The bytes of a wide name; empty if it holds a 0 or a surrogate that is neither paired nor an escaped byte.
std::string encodeUtf8(const WideString& wide)
{
    std::string text;
    for (std::size_t i = 0; i < wide.size(); ++i) {
        const char32_t unit = wide[i];
        const bool isHigh = unit >= 0xD800 && unit < 0xDC00;
        const bool isLow = unit >= 0xDC00 && unit < 0xE000;
        if (isHigh && i + 1 < wide.size() && wide[i + 1] >= 0xDC00 && wide[i + 1] < 0xE000) {
            appendUtf8(text, 0x10000 + ((unit - 0xD800) << 10) + (wide[++i] - 0xDC00u));
        } else if (isLow && unit >= EscapeBase + 0x80 && unit <= EscapeBase + 0xFF) {
            text += static_cast<char>(unit - EscapeBase);
        } else if (isHigh || isLow || unit == 0) {
            return {};
        } else {
            appendUtf8(text, unit);
        }
    }
    return text;
}

/// Undoes the forms of `toLongPath`.
std::string nativePath(WideString path)
{
    constexpr std::u16string_view Prefix = u"\\\\?\\";
    constexpr std::u16string_view NetworkPrefix = u"\\\\?\\UNC\\";
    if (!path.starts_with(Prefix)) {
        return encodeUtf8(path);
    }
    if (path.starts_with(NetworkPrefix)) {
        path.replace(0, NetworkPrefix.size(), u"//");
    } else {
        path.erase(0, Prefix.size());
    }
    std::replace(path.begin(), path.end(), u'\\', u'/');
    return encodeUtf8(path);
}

bool isDirectory(std::FILE* stream)
{
    struct stat status = {};
    return fstat(fileno(stream), &status) == 0 && S_ISDIR(status.st_mode);
}

/// Not every file system can refuse a name that exists; there, nobody else may make it in between.
bool moveToFreeName(const char* from, const char* to)
{
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    struct stat status = {};
    if (lstat(to, &status) == 0) {
        errno = EEXIST;
        return false;
    }
    return errno == ENOENT && std::rename(from, to) == 0;
}

} // namespace

int MultiByteToWideChar(UINT, DWORD, const char* text, int bytes, WCHAR* wide, int units)
{
    const WideString converted = decodeUtf8(text, bytes);
    const int count = static_cast<int>(converted.size());
    if (units == 0) {
        return count;
    }
    if (count > units) {
        return 0;
    }
    std::copy(converted.begin(), converted.end(), wide);
    return count;
}

HANDLE CreateFileW(const WCHAR* path, DWORD, DWORD, void*, DWORD, DWORD, HANDLE)
{
    const int descriptor = open(nativePath(path).c_str(), O_WRONLY | O_CLOEXEC);
    return descriptor < 0 ? INVALID_HANDLE_VALUE : handleOf(descriptor);
}

BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER*, DWORD)
{
    return lseek(fileDescriptor(file), distance.QuadPart, SEEK_SET) >= 0;
}

BOOL SetEndOfFile(HANDLE file)
{
    const off_t position = lseek(fileDescriptor(file), 0, SEEK_CUR);
    return position >= 0 && ftruncate(fileDescriptor(file), position) == 0;
}

BOOL CloseHandle(HANDLE handle) { return close(fileDescriptor(handle)) == 0; }

BOOL MoveFileExW(const WCHAR* from, const WCHAR* to, DWORD)
{
    const bool isMoved = moveToFreeName(nativePath(from).c_str(), nativePath(to).c_str());
    setLastErrorOf(isMoved ? 0 : errno);
    return isMoved;
}

std::FILE* _wfopen(const WCHAR* path, const WCHAR* mode)
{
    const std::u16string_view asciiMode(mode);
    const std::string nativeMode(asciiMode.begin(), asciiMode.end());
    std::FILE* stream = std::fopen(nativePath(path).c_str(), nativeMode.c_str());
    if (stream != nullptr && isDirectory(stream)) {
        std::fclose(stream);
        errno = EISDIR;
        return nullptr;
    }
    return stream;
}

int _fseeki64(std::FILE* stream, std::int64_t offset, int origin) { return fseeko(stream, offset, origin); }

std::int64_t _ftelli64(std::FILE* stream) { return ftello(stream); }

int _commit(int descriptor) { return fsync(descriptor); }

std::filesystem::path streamPath(const WideString& path) { return nativePath(path); }

WideString wideName(const std::filesystem::path& path)
{
    const std::string& name = path.native();
    return decodeUtf8(name.data(), static_cast<int>(name.size()));
}
