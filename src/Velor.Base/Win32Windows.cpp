#include "Win32StandIn.h"

#include <unistd.h>
#include <utility>

using namespace win32;

namespace {

constexpr DWORD ErrorInvalidWindow = 1400;
constexpr DWORD ErrorUnknownClass = 1407;
constexpr DWORD ErrorClassExists = 1410;

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

ATOM registerClass(const char* name, WNDPROC procedure)
{
    if (name == nullptr || *name == '\0' || !desktop().classes.emplace(name, procedure).second) {
        setLastError(ErrorClassExists);
        return 0;
    }
    return static_cast<ATOM>(desktop().classes.size());
}

} // namespace

Desktop& win32::desktop()
{
    static Desktop one;
    return one;
}

Window* win32::find(HWND window)
{
    const auto found = desktop().windows.find(window);
    if (found == desktop().windows.end()) {
        setLastError(ErrorInvalidWindow);
        return nullptr;
    }
    return &found->second;
}

LRESULT win32::callHooks(int code, HWND window)
{
    return callHook(desktop().hooks.size(), code, reinterpret_cast<WPARAM>(window), 0);
}

HWND win32::addWindow(Window window)
{
    const HWND handle = reinterpret_cast<HWND>(++desktop().lastHandle);
    desktop().windows.emplace(handle, std::move(window));
    if (callHooks(HCBT_CREATEWND, handle) != 0) {
        desktop().windows.erase(handle);
        return nullptr;
    }
    return handle;
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
        setLastError(ErrorUnknownClass);
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
    if (desktop().foreground == window) {
        desktop().foreground = nullptr;
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

HWND GetForegroundWindow() { return desktop().foreground; }

BOOL SetForegroundWindow(HWND window)
{
    if (find(window) == nullptr || callHooks(HCBT_ACTIVATE, window) != 0) {
        return FALSE;
    }
    desktop().foreground = window;
    return TRUE;
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

SHORT GetKeyState(int) { return 0; }

BOOL GetCursorPos(POINT* position)
{
    *position = {0, 0};
    return TRUE;
}
