#pragma once

/// \file
/// The operating system's interface, under its Win32 names. On Windows these are the system's own headers.
/// Elsewhere this is a small stand-in with just the functions, constants and structures that the library
/// calls. All that differs between platforms lives here, so that no other source asks which one it is built
/// for.

#if defined(_WIN32)

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

// The toolchain's own header of this function does not compile.
extern "C" HRESULT WINAPI WerRegisterFile(PCWSTR file, int type, DWORD flags);
constexpr int WerRegFileTypeOther = 2;
constexpr DWORD WER_FILE_ANONYMOUS_DATA = 2;

#else

#include <cstdint>
#include <cstdio>

#define WINAPI

using BOOL = int;
using DWORD = std::uint32_t;
using HANDLE = void*;
using HRESULT = std::int32_t;
using LONGLONG = std::int64_t;
using UINT = unsigned int;
using WCHAR = char16_t;

union LARGE_INTEGER {
    LONGLONG QuadPart;
};

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(~std::uintptr_t(0));

constexpr UINT CP_ACP = 0;
constexpr UINT CP_UTF8 = 65001;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD FILE_SHARE_WRITE = 2;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
constexpr DWORD FILE_BEGIN = 0;
constexpr int WerRegFileTypeOther = 2;
constexpr DWORD WER_FILE_ANONYMOUS_DATA = 2;
constexpr HRESULT S_OK = 0;

/// Both code pages are UTF-8 here. A byte that belongs to no valid character becomes the lone surrogate
/// U+DC00 + byte, so that the wide operations below reach any file name that this system can hold.
int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int bytes, WCHAR* wide, int units);

// The wide operations undo the extended path forms: below the prefixes, backslashes are slashes again.
HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, void* security, DWORD disposition,
                   DWORD attributes, HANDLE templateFile);
BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* newPosition, DWORD method);
BOOL SetEndOfFile(HANDLE file);
BOOL CloseHandle(HANDLE handle);

/// Like the system that it stands in for, and unlike `fopen`, this opens no directory.
std::FILE* _wfopen(const WCHAR* path, const WCHAR* mode);
int _fseeki64(std::FILE* stream, std::int64_t offset, int origin);
std::int64_t _ftelli64(std::FILE* stream);

/// There are no crash reports here: nothing is registered.
HRESULT WerRegisterFile(const WCHAR* file, int type, DWORD flags);

#endif

#include <filesystem>
#include <string>

/// The path by which a standard file stream opens the wide name `path`; an empty one, which opens nothing,
/// where no such name can exist.
std::filesystem::path streamPath(const std::basic_string<WCHAR>& path);
