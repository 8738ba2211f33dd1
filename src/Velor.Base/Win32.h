#pragma once

/// \file
/// The operating system's interface, under its Win32 names. On Windows these are the system's own headers.
/// Elsewhere this is a small stand-in with just the functions, constants and structures that the library
/// calls. All that differs between platforms lives here, so that no other source asks which one it is built
/// for.

#if defined(_WIN32)

#define WIN32_LEAN_AND_MEAN
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#include <direct.h>
#include <dwmapi.h>
#include <io.h>
#include <shellapi.h>
#include <tlhelp32.h>

// Other headers' wish for wide names must not reach the narrow ones, which have no name of their own.
#undef PROCESSENTRY32
#undef Process32First
#undef Process32Next

// The toolchain's own header of this function does not compile.
extern "C" HRESULT WINAPI WerRegisterFile(PCWSTR file, int type, DWORD flags);
constexpr int WerRegFileTypeOther = 2;
constexpr DWORD WER_FILE_ANONYMOUS_DATA = 2;

#else

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <vector>

#define CALLBACK
#define WINAPI

using ATOM = std::uint16_t;
using BOOL = int;
using DWORD = std::uint32_t;
using HANDLE = void*;
using HGDIOBJ = void*;
using HRESULT = std::int32_t;
using INT_PTR = std::intptr_t;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using SHORT = std::int16_t;
using UINT = unsigned int;
using ULONG_PTR = std::uintptr_t;
using WCHAR = char16_t;
using WORD = std::uint16_t;
using WPARAM = std::uintptr_t;

using HBRUSH = struct HBRUSH__*;
using HHOOK = struct HHOOK__*;
using HDC = struct HDC__*;
using HICON = struct HICON__*;
using HCURSOR = HICON;
using HINSTANCE = struct HINSTANCE__*;
using HMENU = struct HMENU__*;
using HMONITOR = struct HMONITOR__*;
using HWND = struct HWND__*;

using DLGPROC = INT_PTR (*)(HWND, UINT, WPARAM, LPARAM);
using HOOKPROC = LRESULT (*)(int, WPARAM, LPARAM);
using WNDPROC = LRESULT (*)(HWND, UINT, WPARAM, LPARAM);

union LARGE_INTEGER {
    LONGLONG QuadPart;
};

struct POINT
{
    LONG x, y;
};

struct RECT
{
    LONG left, top, right, bottom;
};

struct PAINTSTRUCT
{
    RECT rcPaint;
};

struct MSG
{
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
};

struct MONITORINFO
{
    DWORD cbSize;
    RECT rcMonitor, rcWork;
    DWORD dwFlags;
};

struct WNDCLASSA
{
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra, cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    const char *lpszMenuName, *lpszClassName;
};

struct WNDCLASSEXA
{
    UINT cbSize, style;
    WNDPROC lpfnWndProc;
    int cbClsExtra, cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    const char *lpszMenuName, *lpszClassName;
    HICON hIconSm;
};

struct SHELLEXECUTEINFOA
{
    DWORD cbSize, fMask;
    HWND hwnd;
    const char *lpVerb, *lpFile, *lpParameters, *lpDirectory;
    int nShow;
    HINSTANCE hInstApp;
    void* lpIDList;
    const char* lpClass;
    HANDLE hkeyClass;
    DWORD dwHotKey;
    HANDLE hIcon, hProcess;
};

struct PROCESSENTRY32
{
    DWORD dwSize, cntUsage, th32ProcessID;
    ULONG_PTR th32DefaultHeapID;
    DWORD th32ModuleID, cntThreads, th32ParentProcessID;
    LONG pcPriClassBase;
    DWORD dwFlags;
    char szExeFile[260];
};

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(~std::uintptr_t(0));

inline const HWND HWND_BROADCAST = reinterpret_cast<HWND>(std::uintptr_t(0xFFFF));

constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;
constexpr UINT CP_ACP = 0;
constexpr UINT CP_UTF8 = 65001;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD FILE_SHARE_WRITE = 2;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
constexpr DWORD FILE_BEGIN = 0;
constexpr DWORD ERROR_NOT_SAME_DEVICE = 17;
constexpr DWORD INFINITE = 0xFFFFFFFF;
constexpr DWORD TH32CS_SNAPPROCESS = 2;
constexpr DWORD FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x100;
constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x200;
constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;
constexpr DWORD SEE_MASK_NOCLOSEPROCESS = 0x40;
constexpr int SE_ERR_ACCESSDENIED = 5;
constexpr int SW_SHOWNORMAL = 1;
constexpr int SW_SHOW = 5;
constexpr UINT WM_DESTROY = 2;
constexpr UINT WM_PAINT = 15;
constexpr UINT WM_CLOSE = 16;
constexpr UINT WM_SETTINGCHANGE = 26;
constexpr UINT WM_INITDIALOG = 272;
constexpr UINT WM_COMMAND = 273;
constexpr UINT SMTO_ABORTIFHUNG = 2;
constexpr int WH_CBT = 5;
constexpr int HCBT_CREATEWND = 3;
constexpr int HCBT_ACTIVATE = 5;
constexpr int HCBT_SETFOCUS = 9;
constexpr int IDOK = 1;
constexpr int IDCANCEL = 2;
constexpr int VK_RETURN = 13;
constexpr int VK_ESCAPE = 27;
constexpr UINT CS_VREDRAW = 1;
constexpr UINT CS_HREDRAW = 2;
constexpr DWORD WS_POPUP = 0x80000000;
constexpr DWORD WS_CHILD = 0x40000000;
constexpr DWORD WS_VISIBLE = 0x10000000;
constexpr DWORD WS_OVERLAPPEDWINDOW = 0xCF0000;
constexpr int COLOR_BACKGROUND = 1;
constexpr int WHITE_BRUSH = 0;
constexpr DWORD MONITOR_DEFAULTTONEAREST = 2;
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

/// Fails where `to` exists, if only as a dangling link, and across disks. Moves a link itself, and takes no
/// flags.
BOOL MoveFileExW(const WCHAR* from, const WCHAR* to, DWORD flags);

/// Like the system that it stands in for, and unlike `fopen`, this opens no directory.
std::FILE* _wfopen(const WCHAR* path, const WCHAR* mode);
int _fseeki64(std::FILE* stream, std::int64_t offset, int origin);
std::int64_t _ftelli64(std::FILE* stream);
int _commit(int descriptor);

/// There are no crash reports here: nothing is registered.
HRESULT WerRegisterFile(const WCHAR* file, int type, DWORD flags);

// The real environment, directories and processes. A program's path is looked for as by the shell; as an
// administrator it runs under `pkexec`. Opening a path is left to `xdg-open`, which returns once it has
// handed the path on.
int _mkdir(const char* path);
int _putenv(const char* assignment);
DWORD GetCurrentThreadId();
HINSTANCE GetModuleHandleA(const char* module);
DWORD GetModuleFileNameA(HINSTANCE module, char* path, DWORD size);
BOOL ShellExecuteExA(SHELLEXECUTEINFOA* info);
HINSTANCE ShellExecuteA(HWND owner, const char* verb, const char* file, const char* parameters,
                        const char* directory, int show);
DWORD WaitForSingleObject(HANDLE process, DWORD milliseconds);
HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD process);
BOOL Process32First(HANDLE snapshot, PROCESSENTRY32* entry);
BOOL Process32Next(HANDLE snapshot, PROCESSENTRY32* entry);

// Only moved files, processes and windows report their last error.
DWORD GetLastError();
DWORD FormatMessageA(DWORD flags, const void* source, DWORD error, DWORD language, char* buffer, DWORD size,
                     std::va_list* inserts);
void* LocalFree(void* memory);

// Windows live inside the process and are never shown. They have no frame, and there is one monitor. They
// belong to one thread, whoever it is: nothing here is locked.
ATOM RegisterClassA(const WNDCLASSA* windowClass);
ATOM RegisterClassExA(const WNDCLASSEXA* windowClass);
HWND CreateWindowExA(DWORD extendedStyle, const char* className, const char* title, DWORD style, int x, int y,
                     int width, int height, HWND parent, HMENU menu, HINSTANCE instance, void* parameter);
BOOL DestroyWindow(HWND window);
HWND GetDesktopWindow();
HWND GetParent(HWND window);
BOOL GetWindowRect(HWND window, RECT* bounds);
BOOL GetClientRect(HWND window, RECT* bounds);
int MapWindowPoints(HWND from, HWND to, POINT* points, UINT count);
HMONITOR MonitorFromWindow(HWND window, DWORD flags);
BOOL GetMonitorInfoA(HMONITOR monitor, MONITORINFO* info);
BOOL IsWindowVisible(HWND window);
BOOL EnableWindow(HWND window, BOOL isEnabled);
HRESULT DwmSetWindowAttribute(HWND window, DWORD attribute, const void* value, DWORD size);
HICON LoadIconA(HINSTANCE instance, const char* name);
HCURSOR LoadCursorA(HINSTANCE instance, const char* name);
HGDIOBJ GetStockObject(int index);
HDC BeginPaint(HWND window, PAINTSTRUCT* paint);
BOOL EndPaint(HWND window, const PAINTSTRUCT* paint);

// Messages. Nobody else sends one, so `GetMessageA` on an empty queue that nobody ended waits for ever, and a
// message box is answered at once.
LRESULT DefWindowProcA(HWND window, UINT message, WPARAM first, LPARAM second);
LRESULT SendMessageA(HWND window, UINT message, WPARAM first, LPARAM second);
LRESULT SendMessageTimeoutA(HWND window, UINT message, WPARAM first, LPARAM second, UINT flags,
                            UINT milliseconds, ULONG_PTR* result);
BOOL PostMessageA(HWND window, UINT message, WPARAM first, LPARAM second);
void PostQuitMessage(int exitCode);
BOOL GetMessageA(MSG* message, HWND window, UINT lowest, UINT highest);
BOOL TranslateMessage(const MSG* message);
LRESULT DispatchMessageA(const MSG* message);
int MessageBoxA(HWND owner, const char* text, const char* caption, UINT style);

// Dialogs, from templates that `addDialogTemplate` takes in place of a resource file.
const char* MAKEINTRESOURCEA(WORD id);
WORD LOWORD(WPARAM value);
HWND CreateDialogParamA(HINSTANCE instance, const char* resource, HWND parent, DLGPROC procedure,
                        LPARAM parameter);
BOOL EndDialog(HWND dialog, INT_PTR result);
BOOL IsDialogMessageA(HWND dialog, MSG* message);
HWND GetDlgItem(HWND dialog, int id);
BOOL SetDlgItemTextA(HWND dialog, int id, const char* text);
UINT GetDlgItemTextA(HWND dialog, int id, char* text, int size);

// The foreground is the window that was put there. None gets the focus, no key is down, and the cursor does
// not move.
HWND GetForegroundWindow();
BOOL SetForegroundWindow(HWND window);
HHOOK SetWindowsHookExA(int type, HOOKPROC hook, HINSTANCE module, DWORD thread);
LRESULT CallNextHookEx(HHOOK hook, int code, WPARAM first, LPARAM second);
SHORT GetKeyState(int key);
BOOL GetCursorPos(POINT* position);

/// A control of a dialog template: its identifier, and its place in the dialog.
struct DialogControl
{
    int id;
    RECT bounds;
};

void addDialogTemplate(WORD id, std::vector<DialogControl> controls);

#endif

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

/// A counted string of UTF-16 code units.
using WideString = std::basic_string<WCHAR>;

/// How many bytes are left of the calling thread's stack. On a stack that the program has made itself, which
/// the system does not know, this is 64 KiB.
std::size_t remainingStack();

/// How far `here` is above the end of its stack, which lies from `low` to `high`.
inline std::size_t stackBelow(std::uintptr_t here, std::uintptr_t low, std::uintptr_t high)
{
    constexpr std::size_t OfAnUnknownStack = std::size_t(64) * 1024;
    return low < here && here <= high ? here - low : OfAnUnknownStack;
}

/// The path by which a standard file stream opens the wide name `path`; an empty one, which opens nothing,
/// where no such name can exist.
std::filesystem::path streamPath(const WideString& path);

/// The wide name of `path`, which `streamPath` turns back. Where names are bytes, those that are no text have
/// the lone surrogates of `MultiByteToWideChar`.
WideString wideName(const std::filesystem::path& path);
