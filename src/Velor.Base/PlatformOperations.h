#pragma once

#include "ErrorDialog.h"

/// \file
/// The library's access to the operating system's window, dialog, shell, process and crash-report services.
/// The library itself calls `registerCrashFile` alone.

/// A table of operations, with no data beside them.
///
/// Texts are zero-terminated and in the system's ANSI code page. Out-arguments may be null. Where nothing
/// else is documented, an operation is the call of the system that bears its name, and returns its result.
/// A failure is reported on standard error only where that is documented; nothing throws but an allocation.
///
/// `registerCrashFile` may run on any thread. A window, its dialog and its hook belong to one thread, and the
/// error dialog exists once in the process.
struct PlatformOperations
{
    int (*destroyWindow)(HWND window);

    /// A hidden window without a style, whose closing ends `runDialogLoop`. It need not have a parent. The
    /// class is registered if it does not exist. Null, with a message, if the window cannot be made.
    HWND (*createWindow)(const char* title, const char* className, HWND parent, int width, int height);

    /// The hidden window above an error dialog, and that dialog's content. There must be four `fields`:
    /// 0 and 1 are shown and can be edited, 2 is shown and disabled, 3 can be edited. The button `acceptId`
    /// calls `callback`, if it is not null, and leaves the dialog open; `IDCANCEL` closes it. Null, and the
    /// content of an earlier dialog stays, if there are not four fields or the window cannot be made, both
    /// with a message, or if the class exists already.
    HWND(*createErrorWindow)
    (const char* title, const char* className, HWND unused, int width, int height, int acceptId,
     const std::vector<DialogField>& fields, const ErrorDialogCallback& callback);

    /// The error dialog, from a template in the resources of the program. `parent` is made by
    /// `createErrorWindow`. Null, with a message, if the dialog cannot be made.
    HWND (*createDialog)(HWND parent, std::uint16_t resourceId);

    /// Works through the thread's messages until one asks to quit.
    void (*runDialogLoop)(HWND dialog);

    int (*setDialogItemText)(HWND dialog, int id, const char* text);

    /// The number of characters read, which is below `size`.
    unsigned int (*getDialogItemText)(HWND dialog, int id, char* buffer, int size);

    /// Waits for the one button, OK.
    int (*showMessageBox)(HWND unused, const char* caption, const char* text);

    /// Null, with a message, if there is no such control.
    HWND (*getDialogItem)(HWND dialog, int id);

    void (*getWindowBounds)(HWND window, int* x, int* y, int* width, int* height);
    void (*getDesktopBounds)(int* x, int* y, int* width, int* height);

    /// The inside of `window`, in its parent's coordinates.
    void (*getClientBounds)(HWND window, int* x, int* y, int* width, int* height);

    /// The whole monitor nearest to `window`. False, and nothing is written, if there is none.
    bool (*getMonitorBounds)(HWND window, int* x, int* y, int* width, int* height);

    bool (*isWindowVisible)(HWND window);
    int (*enableWindow)(HWND window, bool isEnabled);
    HWND (*getParentWindow)(HWND window);

    /// Ends with the result 0.
    int (*endDialog)(HWND dialog);

    /// Sends `WM_CLOSE`.
    LRESULT (*closeWindow)(HWND window);

    HWND (*getForegroundWindow)();
    int (*setForegroundWindow)(HWND window);
    void (*getCursorPosition)(int* x, int* y);

    /// Reports on standard error when it cannot be done, which is always so if `isWindows11OrLater` is false.
    void (*setDarkTitleBar)(HWND window, bool isWindows11OrLater);

    /// Selector 0 is Escape and 1 is Return; no other selector has a key.
    bool (*isKeyDown)(int selector);

    /// The result is inverted: true if the directory could not be made.
    bool (*makeDirectory)(const char* path);

    /// From now on, `target` comes to the foreground when `watch` gets the focus. The hook cannot be removed,
    /// and a later call changes the two windows of all hooks.
    HHOOK (*installFocusHook)(HWND watch, HWND target);

    /// The path of the program's file, cut to what 260 bytes with a terminator hold.
    std::string (*getExecutablePath)();

    /// What the environment variable TEMP holds, or `C:\Temp` if it is not set.
    std::string (*getTempDirectory)();

    /// Runs the program file `command`, with an administrator's rights if `isElevated`, and waits for its
    /// end. A failure is reported on standard error.
    void (*runCommand)(HWND owner, const char* command, bool isElevated);

    /// Opens `path` as the desktop does. If the rights do not suffice, it tries once more as an
    /// administrator, which `isElevated` does from the start. The value is above 32 on success.
    HINSTANCE (*shellOpen)(const char* path, bool isElevated);

    /// Sends `WM_SETTINGCHANGE` to all windows, and waits up to `timeoutMs` milliseconds for each.
    LRESULT (*broadcastSettingChange)(LPARAM parameter, unsigned int timeoutMs);

    /// Whether any process runs a program of exactly that file name. A failure to list them results in false,
    /// with a message if there is not even one.
    bool (*isProcessRunning)(const char* executableName);

    /// Lets the file at `path` go along with a crash report, where the system makes such reports. False if
    /// `path` is empty or cannot be converted; true also for a path that the system then refuses.
    bool (*registerCrashFile)(const char* path);

    /// A null handle is skipped.
    void (*closeHandle)(HANDLE handle);
};

/// The one table of the process. Any thread may ask for it; it never changes.
const PlatformOperations& platformOperations();
