#pragma once

#include "Win32.h"

#include <deque>
#include <map>
#include <string>
#include <vector>

/// \file
/// What the sources of the stand-in for Win32 share. Nothing of it is compiled where the system is Windows.

namespace win32 {

// A handle is a descriptor of a file, process or snapshot, and one, so that none of them has the null handle.
inline int fileDescriptor(HANDLE file) { return static_cast<int>(reinterpret_cast<std::intptr_t>(file)) - 1; }
inline HANDLE handleOf(int descriptor) { return reinterpret_cast<HANDLE>(std::intptr_t(descriptor) + 1); }

void setLastError(DWORD error);
/// Sets the last error to the one that a value of `errno` stands for; 0 for 0.
void setLastErrorOf(int number);

/// A headless window.
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
};

Desktop& desktop();

/// The window of this handle. Null, with the last error set, if there is none.
Window* find(HWND window);

/// A new window, or null if a hook forbids it.
HWND addWindow(Window window);

/// Calls the newest hook, which calls the older ones by `CallNextHookEx`. Its result; 0 without a hook.
LRESULT callHooks(int code, HWND window);

inline std::string textOrEmpty(const char* text) { return text != nullptr ? text : ""; }

} // namespace win32
