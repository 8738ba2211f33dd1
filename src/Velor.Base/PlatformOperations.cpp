#include "PlatformOperations.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>

static_assert(sizeof(WNDCLASSEXA) == 80);
static_assert(sizeof(MONITORINFO) == 40);
static_assert(sizeof(SHELLEXECUTEINFOA) == 112);
static_assert(sizeof(PROCESSENTRY32) == 304);
static_assert(sizeof(PlatformOperations) == 33 * sizeof(void (*)()));

namespace {

constexpr DWORD DarkTitleBarAttribute = 20;
constexpr std::size_t ExecutablePathBytes = 260;

HWND focusWatchWindow = nullptr;
HWND focusTargetWindow = nullptr;

void assignIfNotNull(int* out, LONG value)
{
    if (out != nullptr) {
        *out = static_cast<int>(value);
    }
}

void assignBounds(const RECT& bounds, int* x, int* y, int* width, int* height)
{
    assignIfNotNull(x, bounds.left);
    assignIfNotNull(y, bounds.top);
    assignIfNotNull(width, bounds.right - bounds.left);
    assignIfNotNull(height, bounds.bottom - bounds.top);
}

LRESULT CALLBACK focusHookProc(int code, WPARAM first, LPARAM second)
{
    const bool isWatched = reinterpret_cast<HWND>(first) == focusWatchWindow;
    if (code == HCBT_SETFOCUS && isWatched && focusTargetWindow != nullptr) {
        SetForegroundWindow(focusTargetWindow);
    }
    return CallNextHookEx(nullptr, code, first, second);
}

int destroyWindow(HWND window) { return DestroyWindow(window); }

int setDialogItemText(HWND dialog, int id, const char* text) { return SetDlgItemTextA(dialog, id, text); }

unsigned int getDialogItemText(HWND dialog, int id, char* buffer, int size)
{
    return GetDlgItemTextA(dialog, id, buffer, size);
}

int showMessageBox(HWND, const char* caption, const char* text)
{
    return MessageBoxA(nullptr, text, caption, 0);
}

HWND getDialogItem(HWND dialog, int id) { return createdOrReported(GetDlgItem(dialog, id), "dialog"); }

void getWindowBounds(HWND window, int* x, int* y, int* width, int* height)
{
    RECT bounds = {};
    GetWindowRect(window, &bounds);
    assignBounds(bounds, x, y, width, height);
}

void getDesktopBounds(int* x, int* y, int* width, int* height)
{
    getWindowBounds(GetDesktopWindow(), x, y, width, height);
}

void getClientBounds(HWND window, int* x, int* y, int* width, int* height)
{
    RECT bounds = {};
    GetClientRect(window, &bounds);
    POINT corners[] = {{bounds.left, bounds.top}, {bounds.right, bounds.bottom}};
    MapWindowPoints(window, GetParent(window), corners, 2);
    assignBounds({corners[0].x, corners[0].y, corners[1].x, corners[1].y}, x, y, width, height);
}

bool getMonitorBounds(HWND window, int* x, int* y, int* width, int* height)
{
    const HMONITOR monitor = MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST);
    MONITORINFO info = {};
    info.cbSize = sizeof(info);
    if (monitor == nullptr || !GetMonitorInfoA(monitor, &info)) {
        return false;
    }
    assignBounds(info.rcMonitor, x, y, width, height);
    return true;
}

bool isWindowVisible(HWND window) { return IsWindowVisible(window) != 0; }

int enableWindow(HWND window, bool isEnabled) { return EnableWindow(window, isEnabled); }

HWND getParentWindow(HWND window) { return GetParent(window); }

int endDialog(HWND dialog) { return EndDialog(dialog, 0); }

LRESULT closeWindow(HWND window) { return SendMessageA(window, WM_CLOSE, 0, 0); }

HWND getForegroundWindow() { return GetForegroundWindow(); }

int setForegroundWindow(HWND window) { return SetForegroundWindow(window); }

void getCursorPosition(int* x, int* y)
{
    POINT position = {};
    GetCursorPos(&position);
    assignIfNotNull(x, position.x);
    assignIfNotNull(y, position.y);
}

void setDarkTitleBar(HWND window, bool isWindows11OrLater)
{
    if (!isWindows11OrLater) {
        std::fprintf(stderr, "Windows version is less than 11. Dark mode title bar not applied.\n");
        return;
    }
    const BOOL isDark = 1;
    if (DwmSetWindowAttribute(window, DarkTitleBarAttribute, &isDark, sizeof(isDark)) < 0) {
        std::fprintf(stderr, "Failed to set dark mode title bar.\n");
    }
}

bool isKeyDown(int selector)
{
    const int key = selector == 0 ? VK_ESCAPE : selector == 1 ? VK_RETURN : 0;
    return (GetKeyState(key) & 0x80) != 0;
}

bool makeDirectory(const char* path) { return _mkdir(path) != 0; }

HHOOK installFocusHook(HWND watch, HWND target)
{
    focusWatchWindow = watch;
    focusTargetWindow = target;
    return SetWindowsHookExA(WH_CBT, focusHookProc, nullptr, GetCurrentThreadId());
}

std::string getExecutablePath()
{
    std::array<char, ExecutablePathBytes> path = {};
    GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return {path.begin(), std::find(path.begin(), path.end(), '\0')};
}

std::string getTempDirectory()
{
    const char* directory = std::getenv("TEMP");
    return directory != nullptr ? directory : "C:\\Temp";
}

void runCommand(HWND owner, const char* command, bool isElevated)
{
    SHELLEXECUTEINFOA info = {};
    info.cbSize = sizeof(info);
    info.fMask = SEE_MASK_NOCLOSEPROCESS;
    info.hwnd = owner;
    info.lpVerb = isElevated ? "runas" : nullptr;
    info.lpFile = command;
    info.lpParameters = "";
    info.nShow = SW_SHOW;
    if (!ShellExecuteExA(&info)) {
        const DWORD error = GetLastError();
        std::cerr << "Error: " << error << " executing command: " << command << std::endl;
        return;
    }
    if (info.hProcess != nullptr) {
        WaitForSingleObject(info.hProcess, INFINITE);
        CloseHandle(info.hProcess);
    }
}

HINSTANCE shellExecute(const char* verb, const char* path)
{
    return ShellExecuteA(nullptr, verb, path, "", nullptr, SW_SHOWNORMAL);
}

HINSTANCE shellOpen(const char* path, bool isElevated)
{
    if (isElevated) {
        return shellExecute("runas", path);
    }
    const HINSTANCE result = shellExecute("open", path);
    const bool isDenied = reinterpret_cast<std::intptr_t>(result) == SE_ERR_ACCESSDENIED;
    return isDenied ? shellExecute("runas", path) : result;
}

LRESULT broadcastSettingChange(LPARAM parameter, unsigned int timeoutMs)
{
    return SendMessageTimeoutA(HWND_BROADCAST, WM_SETTINGCHANGE, 0, parameter, SMTO_ABORTIFHUNG, timeoutMs,
                               nullptr);
}

bool isInSnapshot(HANDLE snapshot, const char* executableName)
{
    PROCESSENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    if (!Process32First(snapshot, &entry)) {
        std::fprintf(stderr, "Error creating the first process %d\n", static_cast<int>(GetLastError()));
        return false;
    }
    do {
        if (std::strcmp(entry.szExeFile, executableName) == 0) {
            return true;
        }
    } while (Process32Next(snapshot, &entry));
    return false;
}

bool isProcessRunning(const char* executableName)
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool isRunning = isInSnapshot(snapshot, executableName);
    CloseHandle(snapshot);
    return isRunning;
}

bool registerCrashFile(const char* path)
{
    const int bytes = static_cast<int>(std::strlen(path));
    const int units = MultiByteToWideChar(CP_ACP, 0, path, bytes, nullptr, 0);
    if (units < 1) {
        return false;
    }
    WideString wide(static_cast<std::size_t>(units), WCHAR(0));
    if (MultiByteToWideChar(CP_ACP, 0, path, bytes, wide.data(), units) == 0) {
        return false;
    }
    WerRegisterFile(wide.c_str(), WerRegFileTypeOther, WER_FILE_ANONYMOUS_DATA);
    return true;
}

void closeHandle(HANDLE handle)
{
    if (handle != nullptr) {
        CloseHandle(handle);
    }
}

} // namespace

const PlatformOperations& platformOperations()
{
    static constexpr PlatformOperations Table = {
        .destroyWindow = destroyWindow,
        .createWindow = createWindow,
        .createErrorWindow = createErrorWindow,
        .createDialog = createDialog,
        .runDialogLoop = runDialogLoop,
        .setDialogItemText = setDialogItemText,
        .getDialogItemText = getDialogItemText,
        .showMessageBox = showMessageBox,
        .getDialogItem = getDialogItem,
        .getWindowBounds = getWindowBounds,
        .getDesktopBounds = getDesktopBounds,
        .getClientBounds = getClientBounds,
        .getMonitorBounds = getMonitorBounds,
        .isWindowVisible = isWindowVisible,
        .enableWindow = enableWindow,
        .getParentWindow = getParentWindow,
        .endDialog = endDialog,
        .closeWindow = closeWindow,
        .getForegroundWindow = getForegroundWindow,
        .setForegroundWindow = setForegroundWindow,
        .getCursorPosition = getCursorPosition,
        .setDarkTitleBar = setDarkTitleBar,
        .isKeyDown = isKeyDown,
        .makeDirectory = makeDirectory,
        .installFocusHook = installFocusHook,
        .getExecutablePath = getExecutablePath,
        .getTempDirectory = getTempDirectory,
        .runCommand = runCommand,
        .shellOpen = shellOpen,
        .broadcastSettingChange = broadcastSettingChange,
        .isProcessRunning = isProcessRunning,
        .registerCrashFile = registerCrashFile,
        .closeHandle = closeHandle,
    };
    return Table;
}
