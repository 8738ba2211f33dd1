#include "Win32.h"

#include <cstdint>

namespace {

/// How far `here` is above the end of its stack, which lies from `low` to `high`.
std::size_t stackBelow(std::uintptr_t here, std::uintptr_t low, std::uintptr_t high)
{
    constexpr std::size_t OfAnUnknownStack = std::size_t(64) * 1024;
    return low < here && here <= high ? here - low : OfAnUnknownStack;
}

} // namespace

#if defined(_WIN32)

std::size_t remainingStack()
{
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
    GetCurrentThreadStackLimits(&low, &high);
    return stackBelow(reinterpret_cast<std::uintptr_t>(&low), low, high);
}

std::filesystem::path streamPath(const std::basic_string<WCHAR>& path) { return path; }

std::basic_string<WCHAR> wideName(const std::filesystem::path& path) { return path.native(); }

#else

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <pthread.h>
#include <spawn.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <utility>

namespace {

using WideString = std::basic_string<WCHAR>;

constexpr WCHAR EscapeBase = 0xDC00;

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

std::string nativePath(const WideString& path)
{
    static const WideString Prefix = u"\\\\?\\";
    static const WideString NetworkPrefix = u"\\\\?\\UNC\\";
    const auto withSlashes = [](WideString text) {
        std::replace(text.begin(), text.end(), u'\\', u'/');
        return encodeUtf8(text);
    };
    if (path.starts_with(NetworkPrefix)) {
        return withSlashes(u"//" + path.substr(NetworkPrefix.size()));
    }
    if (path.starts_with(Prefix)) {
        return withSlashes(path.substr(Prefix.size()));
    }
    return encodeUtf8(path);
}

// A handle is a descriptor of a file, process or snapshot, and one, so that none of them has the null handle.
int fileDescriptor(HANDLE file) { return static_cast<int>(reinterpret_cast<std::intptr_t>(file)) - 1; }

HANDLE handleOf(int descriptor) { return reinterpret_cast<HANDLE>(std::intptr_t(descriptor) + 1); }

bool isDirectory(std::FILE* stream)
{
    struct stat status = {};
    return fstat(fileno(stream), &status) == 0 && S_ISDIR(status.st_mode);
}

constexpr DWORD ErrorFileNotFound = 2;
constexpr DWORD ErrorAccessDenied = 5;
constexpr DWORD ErrorGeneralFailure = 31;
constexpr DWORD ErrorInvalidWindow = 1400;
constexpr DWORD ErrorUnknownClass = 1407;
constexpr DWORD ErrorClassExists = 1410;
constexpr DWORD ErrorNoSuchControl = 1421;
constexpr DWORD ErrorNoSuchResource = 1814;
constexpr int OpenerFoundNoFile = 2;
constexpr std::intptr_t LaunchSucceeded = 33;

thread_local DWORD lastError = 0;

DWORD errorOf(int number)
{
    return number == ENOENT                      ? ErrorFileNotFound
           : number == EACCES || number == EPERM ? ErrorAccessDenied
           : number == EXDEV                     ? ERROR_NOT_SAME_DEVICE
                                                 : ErrorGeneralFailure;
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

bool isRunAs(const char* verb) { return verb != nullptr && std::string_view(verb) == "runas"; }

/// The process that runs `arguments`, or -1 with the last error set.
pid_t spawn(std::vector<const char*> arguments)
{
    arguments.push_back(nullptr);
    pid_t process = -1;
    const int error =
        posix_spawnp(&process, arguments[0], nullptr, nullptr, const_cast<char**>(arguments.data()), environ);
    lastError = error == 0 ? 0 : errorOf(error);
    return error == 0 ? process : -1;
}

bool isNumber(const std::string& text) { return std::all_of(text.begin(), text.end(), isdigit); }

/// What the system puts behind the name of a running program's file that was removed or replaced.
constexpr std::string_view DeletedMark = " (deleted)";

/// The file name of the program that `/proc/ID` runs: of its file, else of its command line, which both may
/// be hidden, else the name that the system keeps, cut to 15 characters. A process that has ended and waits
/// to be collected runs none.
std::string programName(const std::filesystem::path& process)
{
    std::error_code error;
    const auto file = std::filesystem::read_symlink(process / "exe", error);
    if (!error) {
        const std::string name = file.filename();
        return name.substr(0, name.size() - (name.ends_with(DeletedMark) ? DeletedMark.size() : 0));
    }
    if (error == std::errc::no_such_file_or_directory) {
        return {};
    }
    std::string line;
    std::getline(std::ifstream(process / "cmdline"), line, '\0');
    if (line.empty()) {
        std::getline(std::ifstream(process / "comm"), line);
    }
    return std::filesystem::path(line).filename();
}

struct Window
{
    WNDPROC procedure;
    DLGPROC dialogProcedure;
    HWND parentOrOwner;
    DWORD style;
    int id;
    RECT bounds; ///< On the desktop.
    std::string text;
    bool isEnabled = true;
};

/// All that the headless windows have in common.
struct Desktop
{
    HWND root = reinterpret_cast<HWND>(std::uintptr_t(0x10000));
    std::map<HWND, Window> windows = {
        {root, {nullptr, nullptr, nullptr, WS_VISIBLE, 0, {0, 0, 1280, 1024}, {}}}};
    std::uintptr_t lastHandle = 0x10000; ///< No handle is used twice, so that a dead one stays dead.
    std::map<std::string, WNDPROC> classes;
    std::map<std::uintptr_t, std::vector<DialogControl>> templates;
    std::deque<MSG> messages;
    bool isQuitting = false;
    std::vector<HOOKPROC> hooks; ///< The last one is called first.
    std::size_t currentHook = 0;
    HWND foreground = nullptr;
    HWND focus = nullptr;
    POINT cursor = {0, 0};
    std::array<BYTE, 256> keys = {};
};

Desktop& desktop()
{
    static Desktop one;
    return one;
}

Window* find(HWND window)
{
    const auto found = desktop().windows.find(window);
    if (found == desktop().windows.end()) {
        lastError = ErrorInvalidWindow;
        return nullptr;
    }
    return &found->second;
}

/// Calls the newest of the `count` oldest hooks, which passes on by `CallNextHookEx`.
LRESULT callHook(std::size_t count, int code, WPARAM first, LPARAM second)
{
    if (count == 0) {
        return 0;
    }
    const std::size_t outer = desktop().currentHook;
    desktop().currentHook = count - 1;
    const LRESULT result = desktop().hooks[count - 1](code, first, second);
    desktop().currentHook = outer;
    return result;
}

LRESULT callHooks(int code, HWND window)
{
    return callHook(desktop().hooks.size(), code, reinterpret_cast<WPARAM>(window), 0);
}

/// A new window, or null if a hook forbids it.
HWND addWindow(Window window)
{
    const HWND handle = reinterpret_cast<HWND>(++desktop().lastHandle);
    desktop().windows.emplace(handle, std::move(window));
    if (callHooks(HCBT_CREATEWND, handle) != 0) {
        desktop().windows.erase(handle);
        return nullptr;
    }
    return handle;
}

HWND addControl(HWND dialog, int id, const RECT& bounds, const std::string& text = {})
{
    const RECT& outer = find(dialog)->bounds;
    const RECT onDesktop = {outer.left + bounds.left, outer.top + bounds.top, outer.left + bounds.right,
                            outer.top + bounds.bottom};
    return addWindow({DefWindowProcA, nullptr, dialog, WS_CHILD | WS_VISIBLE, id, onDesktop, text});
}

LRESULT dialogWindowProc(HWND window, UINT message, WPARAM first, LPARAM second)
{
    const DLGPROC procedure = find(window)->dialogProcedure;
    if (procedure != nullptr) {
        procedure(window, message, first, second);
    }
    return 0;
}

ATOM registerClass(const char* name, WNDPROC procedure)
{
    if (name == nullptr || *name == '\0' || !desktop().classes.emplace(name, procedure).second) {
        lastError = ErrorClassExists;
        return 0;
    }
    return static_cast<ATOM>(desktop().classes.size());
}

std::string textOrEmpty(const char* text) { return text != nullptr ? text : ""; }

bool isInside(HWND window, HWND outer)
{
    while (window != nullptr && window != outer) {
        window = GetParent(window);
    }
    return window == outer;
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
    lastError = isMoved ? 0 : errorOf(errno);
    return isMoved;
}

std::FILE* _wfopen(const WCHAR* path, const WCHAR* mode)
{
    std::FILE* stream = std::fopen(nativePath(path).c_str(), encodeUtf8(mode).c_str());
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

HRESULT WerRegisterFile(const WCHAR*, int, DWORD) { return S_OK; }

int _mkdir(const char* path) { return mkdir(path, 0777); }

int _putenv(const char* assignment)
{
    const std::string name(assignment, std::strcspn(assignment, "="));
    const char* value = assignment + name.size() + 1;
    return *value == '\0' ? unsetenv(name.c_str()) : setenv(name.c_str(), value, 1);
}

DWORD GetCurrentThreadId() { return static_cast<DWORD>(gettid()); }

HINSTANCE GetModuleHandleA(const char*) { return reinterpret_cast<HINSTANCE>(std::uintptr_t(1)); }

DWORD GetModuleFileNameA(HINSTANCE, char* path, DWORD size)
{
    const ssize_t length = readlink("/proc/self/exe", path, size - 1);
    path[std::max<ssize_t>(length, 0)] = '\0';
    return static_cast<DWORD>(std::max<ssize_t>(length, 0));
}

BOOL ShellExecuteExA(SHELLEXECUTEINFOA* info)
{
    const bool isElevated = isRunAs(info->lpVerb);
    const pid_t process = isElevated ? spawn({"pkexec", info->lpFile}) : spawn({info->lpFile});
    if (process < 0) {
        return FALSE;
    }
    const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
    info->hProcess = descriptor < 0 ? nullptr : handleOf(descriptor);
    return TRUE;
}

HINSTANCE ShellExecuteA(HWND, const char* verb, const char* file, const char*, const char*, int)
{
    const pid_t process = isRunAs(verb) ? spawn({"pkexec", "xdg-open", file}) : spawn({"xdg-open", file});
    int status = 0;
    std::intptr_t result = LaunchSucceeded;
    if (process < 0) {
        result = lastError;
    } else if (waitpid(process, &status, 0) < 0 || status != 0) {
        const bool isMissing = WIFEXITED(status) && WEXITSTATUS(status) == OpenerFoundNoFile;
        result = isMissing ? ErrorFileNotFound : ErrorGeneralFailure;
    }
    return reinterpret_cast<HINSTANCE>(result);
}

DWORD WaitForSingleObject(HANDLE process, DWORD)
{
    siginfo_t info = {};
    while (waitid(P_PIDFD, static_cast<id_t>(fileDescriptor(process)), &info, WEXITED) != 0 &&
           errno == EINTR) {
    }
    return 0;
}

HANDLE CreateToolhelp32Snapshot(DWORD, DWORD)
{
    const int descriptor = memfd_create("processes", MFD_CLOEXEC);
    if (descriptor < 0) {
        return INVALID_HANDLE_VALUE;
    }
    std::error_code error;
    for (std::filesystem::directory_iterator at("/proc", error), end; !error && at != end;
         at.increment(error)) {
        PROCESSENTRY32 entry = {};
        if (isNumber(at->path().filename())) {
            programName(at->path()).copy(entry.szExeFile, sizeof(entry.szExeFile) - 1);
            std::ignore = write(descriptor, &entry, sizeof(entry));
        }
    }
    return handleOf(descriptor);
}

BOOL Process32First(HANDLE snapshot, PROCESSENTRY32* entry)
{
    lseek(fileDescriptor(snapshot), 0, SEEK_SET);
    return Process32Next(snapshot, entry);
}

BOOL Process32Next(HANDLE snapshot, PROCESSENTRY32* entry)
{
    return read(fileDescriptor(snapshot), entry, sizeof(*entry)) == sizeof(*entry);
}

DWORD GetLastError() { return lastError; }

DWORD FormatMessageA(DWORD, const void*, DWORD error, DWORD, char* buffer, DWORD, std::va_list*)
{
    const std::string text = "Error " + std::to_string(error) + ".\r\n";
    *reinterpret_cast<char**>(buffer) = strdup(text.c_str());
    return static_cast<DWORD>(text.size());
}

void* LocalFree(void* memory)
{
    std::free(memory);
    return nullptr;
}

ATOM RegisterClassA(const WNDCLASSA* windowClass)
{
    return registerClass(windowClass->lpszClassName, windowClass->lpfnWndProc);
}

ATOM RegisterClassExA(const WNDCLASSEXA* windowClass)
{
    return registerClass(windowClass->lpszClassName, windowClass->lpfnWndProc);
}

HWND CreateWindowExA(DWORD, const char* className, const char* title, DWORD style, int x, int y, int width,
                     int height, HWND parent, HMENU, HINSTANCE, void*)
{
    if (parent != nullptr && find(parent) == nullptr) {
        return nullptr;
    }
    const auto procedure = desktop().classes.find(textOrEmpty(className));
    if (procedure == desktop().classes.end()) {
        lastError = ErrorUnknownClass;
        return nullptr;
    }
    return addWindow(
        {procedure->second, nullptr, parent, style, 0, {x, y, x + width, y + height}, textOrEmpty(title)});
}

BOOL DestroyWindow(HWND window)
{
    if (find(window) == nullptr) {
        return FALSE;
    }
    SendMessageA(window, WM_DESTROY, 0, 0);
    const auto windows = desktop().windows;
    for (const auto& [other, state] : windows) {
        if (state.parentOrOwner == window) {
            DestroyWindow(other);
        }
    }
    desktop().windows.erase(window);
    for (HWND* const holder : {&desktop().foreground, &desktop().focus}) {
        *holder = *holder == window ? nullptr : *holder;
    }
    return TRUE;
}

HWND GetDesktopWindow() { return desktop().root; }

HWND GetParent(HWND window)
{
    const Window* found = find(window);
    return found != nullptr && (found->style & (WS_CHILD | WS_POPUP)) != 0 ? found->parentOrOwner : nullptr;
}

BOOL GetWindowRect(HWND window, RECT* bounds)
{
    const Window* found = find(window);
    if (found == nullptr) {
        return FALSE;
    }
    *bounds = found->bounds;
    return TRUE;
}

BOOL GetClientRect(HWND window, RECT* bounds)
{
    if (!GetWindowRect(window, bounds)) {
        return FALSE;
    }
    *bounds = {0, 0, bounds->right - bounds->left, bounds->bottom - bounds->top};
    return TRUE;
}

int MapWindowPoints(HWND from, HWND to, POINT* points, UINT count)
{
    RECT source = {};
    RECT target = {};
    GetWindowRect(from, &source);
    GetWindowRect(to, &target);
    for (UINT i = 0; i < count; ++i) {
        points[i].x += source.left - target.left;
        points[i].y += source.top - target.top;
    }
    return 0;
}

HMONITOR MonitorFromWindow(HWND window, DWORD)
{
    return find(window) != nullptr ? reinterpret_cast<HMONITOR>(desktop().root) : nullptr;
}

BOOL GetMonitorInfoA(HMONITOR, MONITORINFO* info)
{
    info->rcMonitor = info->rcWork = find(desktop().root)->bounds;
    return TRUE;
}

BOOL IsWindowVisible(HWND window)
{
    const Window* found = find(window);
    return found != nullptr && (found->style & WS_VISIBLE) != 0;
}

BOOL EnableWindow(HWND window, BOOL isEnabled)
{
    Window* found = find(window);
    if (found == nullptr) {
        return FALSE;
    }
    const bool wasEnabled = std::exchange(found->isEnabled, isEnabled != 0);
    return !wasEnabled;
}

HRESULT DwmSetWindowAttribute(HWND window, DWORD, const void*, DWORD)
{
    return find(window) != nullptr ? S_OK : -1;
}

HICON LoadIconA(HINSTANCE, const char*) { return nullptr; }

HCURSOR LoadCursorA(HINSTANCE, const char*) { return nullptr; }

HGDIOBJ GetStockObject(int) { return nullptr; }

HDC BeginPaint(HWND, PAINTSTRUCT*) { return nullptr; }

BOOL EndPaint(HWND, const PAINTSTRUCT*) { return TRUE; }

LRESULT DefWindowProcA(HWND window, UINT message, WPARAM, LPARAM)
{
    if (message == WM_CLOSE) {
        DestroyWindow(window);
    }
    return 0;
}

LRESULT SendMessageA(HWND window, UINT message, WPARAM first, LPARAM second)
{
    const Window* found = find(window);
    const WNDPROC procedure = found != nullptr ? found->procedure : nullptr;
    return procedure != nullptr ? procedure(window, message, first, second) : 0;
}

LRESULT SendMessageTimeoutA(HWND, UINT message, WPARAM first, LPARAM second, UINT, UINT, ULONG_PTR*)
{
    const auto windows = desktop().windows;
    for (const auto& [window, state] : windows) {
        if ((state.style & WS_CHILD) == 0) {
            SendMessageA(window, message, first, second);
        }
    }
    return TRUE;
}

BOOL PostMessageA(HWND window, UINT message, WPARAM first, LPARAM second)
{
    desktop().messages.push_back({window, message, first, second});
    return TRUE;
}

void PostQuitMessage(int) { desktop().isQuitting = true; }

BOOL GetMessageA(MSG* message, HWND, UINT, UINT)
{
    auto& messages = desktop().messages;
    while (messages.empty() && !desktop().isQuitting) {
        pause();
    }
    if (messages.empty()) {
        desktop().isQuitting = false;
        return FALSE;
    }
    *message = messages.front();
    messages.pop_front();
    return TRUE;
}

BOOL TranslateMessage(const MSG*) { return FALSE; }

LRESULT DispatchMessageA(const MSG* message)
{
    return SendMessageA(message->hwnd, message->message, message->wParam, message->lParam);
}

int MessageBoxA(HWND, const char* text, const char* caption, UINT)
{
    constexpr int TextId = 0xFFFF;
    const HWND box =
        addWindow({dialogWindowProc, nullptr, nullptr, WS_POPUP | WS_VISIBLE, 0, {}, textOrEmpty(caption)});
    if (box == nullptr) {
        return 0;
    }
    addControl(box, TextId, {}, textOrEmpty(text));
    callHooks(HCBT_ACTIVATE, box);
    DestroyWindow(box);
    return IDOK;
}

const char* MAKEINTRESOURCEA(WORD id) { return reinterpret_cast<const char*>(std::uintptr_t(id)); }

WORD LOWORD(WPARAM value) { return static_cast<WORD>(value); }

HWND CreateDialogParamA(HINSTANCE, const char* resource, HWND parent, DLGPROC procedure, LPARAM parameter)
{
    const auto found = desktop().templates.find(reinterpret_cast<std::uintptr_t>(resource));
    if (found == desktop().templates.end()) {
        lastError = ErrorNoSuchResource;
        return nullptr;
    }
    const HWND dialog = addWindow({dialogWindowProc, procedure, parent, WS_POPUP | WS_VISIBLE, 0, {}, {}});
    if (dialog != nullptr) {
        for (const DialogControl& control : found->second) {
            addControl(dialog, control.id, control.bounds);
        }
        SendMessageA(dialog, WM_INITDIALOG, 0, parameter);
    }
    return dialog;
}

BOOL EndDialog(HWND dialog, INT_PTR)
{
    Window* found = find(dialog);
    if (found == nullptr || found->procedure != dialogWindowProc) {
        return FALSE;
    }
    found->style &= ~WS_VISIBLE;
    return TRUE;
}

BOOL IsDialogMessageA(HWND dialog, MSG* message)
{
    if (!isInside(message->hwnd, dialog)) {
        return FALSE;
    }
    DispatchMessageA(message);
    return TRUE;
}

HWND GetDlgItem(HWND dialog, int id)
{
    for (const auto& [window, state] : desktop().windows) {
        if (state.parentOrOwner == dialog && (state.style & WS_CHILD) != 0 && state.id == id) {
            return window;
        }
    }
    lastError = ErrorNoSuchControl;
    return nullptr;
}

BOOL SetDlgItemTextA(HWND dialog, int id, const char* text)
{
    const HWND control = GetDlgItem(dialog, id);
    if (control == nullptr) {
        return FALSE;
    }
    find(control)->text = textOrEmpty(text);
    return TRUE;
}

UINT GetDlgItemTextA(HWND dialog, int id, char* text, int size)
{
    const HWND control = GetDlgItem(dialog, id);
    const std::string shown = control != nullptr ? find(control)->text : std::string();
    if (size <= 0) {
        return 0;
    }
    const std::size_t length = shown.copy(text, static_cast<std::size_t>(size) - 1);
    text[length] = '\0';
    return static_cast<UINT>(length);
}

HWND GetForegroundWindow() { return desktop().foreground; }

BOOL SetForegroundWindow(HWND window)
{
    if (find(window) == nullptr || callHooks(HCBT_ACTIVATE, window) != 0) {
        return FALSE;
    }
    desktop().foreground = window;
    return TRUE;
}

HWND SetFocus(HWND window)
{
    if (find(window) == nullptr || callHooks(HCBT_SETFOCUS, window) != 0) {
        return nullptr;
    }
    return std::exchange(desktop().focus, window);
}

HHOOK SetWindowsHookExA(int, HOOKPROC hook, HINSTANCE, DWORD)
{
    desktop().hooks.push_back(hook);
    return reinterpret_cast<HHOOK>(desktop().hooks.size());
}

LRESULT CallNextHookEx(HHOOK, int code, WPARAM first, LPARAM second)
{
    return callHook(desktop().currentHook, code, first, second);
}

SHORT GetKeyState(int key) { return static_cast<signed char>(desktop().keys[static_cast<BYTE>(key)]); }

BOOL SetKeyboardState(BYTE* keys)
{
    std::copy_n(keys, desktop().keys.size(), desktop().keys.begin());
    return TRUE;
}

BOOL GetCursorPos(POINT* position)
{
    *position = desktop().cursor;
    return TRUE;
}

BOOL SetCursorPos(int x, int y)
{
    desktop().cursor = {x, y};
    return TRUE;
}

void addDialogTemplate(WORD id, std::vector<DialogControl> controls)
{
    desktop().templates[id] = std::move(controls);
}

std::filesystem::path streamPath(const std::basic_string<WCHAR>& path) { return nativePath(path); }

std::basic_string<WCHAR> wideName(const std::filesystem::path& path)
{
    const std::string& name = path.native();
    return decodeUtf8(name.data(), static_cast<int>(name.size()));
}

std::size_t remainingStack()
{
    pthread_attr_t attributes;
    void* lowest = nullptr;
    std::size_t size = 0;
    if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
        pthread_attr_getstack(&attributes, &lowest, &size);
        pthread_attr_destroy(&attributes);
    }
    // The address sanitizer keeps local variables elsewhere, but not the frames.
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    const auto low = reinterpret_cast<std::uintptr_t>(lowest);
    return stackBelow(here, low, low + size);
}

#endif
