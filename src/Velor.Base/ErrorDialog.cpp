#include "ErrorDialog.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

// The error dialog of the process. It has empty fields until the first window for it is made.
std::array<DialogField, 4> errorDialogFields;
int errorDialogAcceptId = -1;
ErrorDialogCallback errorDialogCallback = nullptr;
std::array<char, 16384> errorDialogText; ///< One control's text at a time.

std::string lastErrorText()
{
    const DWORD error = GetLastError();
    if (error == 0) {
        return {};
    }
    constexpr DWORD Flags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
    constexpr DWORD UserLanguage = 1024;
    char* buffer = nullptr;
    const DWORD length =
        FormatMessageA(Flags, nullptr, error, UserLanguage, reinterpret_cast<char*>(&buffer), 0, nullptr);
    std::string text(buffer, length);
    LocalFree(buffer);
    return text;
}

LRESULT CALLBACK errorWindowProc(HWND window, UINT message, WPARAM first, LPARAM second)
{
    switch (message) {
    case WM_PAINT: {
        PAINTSTRUCT paint;
        BeginPaint(window, &paint);
        EndPaint(window, &paint);
        return 0;
    }
    case WM_CLOSE:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcA(window, message, first, second);
    }
}

void fillErrorDialog(HWND dialog)
{
    for (std::size_t i = 0; i < 3; ++i) {
        SetDlgItemTextA(dialog, errorDialogFields[i].id, errorDialogFields[i].text.c_str());
    }
    EnableWindow(GetDlgItem(dialog, errorDialogFields[2].id), FALSE);
}

std::string readErrorDialogField(HWND dialog, std::size_t field)
{
    const int size = static_cast<int>(errorDialogText.size());
    const UINT length = GetDlgItemTextA(dialog, errorDialogFields[field].id, errorDialogText.data(), size);
    return {errorDialogText.data(), length};
}

void acceptErrorDialog(HWND dialog)
{
    const std::string first = readErrorDialogField(dialog, 0);
    const std::string second = readErrorDialogField(dialog, 3);
    const std::string third = readErrorDialogField(dialog, 1);
    if (errorDialogCallback != nullptr) {
        errorDialogCallback(dialog, first.c_str(), second.c_str(), third.c_str());
    }
}

/// The button that accepts may have the identifier that otherwise cancels.
INT_PTR onErrorDialogCommand(HWND dialog, int command)
{
    if (command == errorDialogAcceptId) {
        acceptErrorDialog(dialog);
        return 1;
    }
    if (command == IDCANCEL) {
        SendMessageA(dialog, WM_CLOSE, 0, 0);
        return 1;
    }
    return 0;
}

INT_PTR CALLBACK errorDialogProc(HWND dialog, UINT message, WPARAM first, LPARAM)
{
    switch (message) {
    case WM_DESTROY:
        return 1;
    case WM_CLOSE:
        EndDialog(dialog, 0);
        SendMessageA(GetParent(dialog), WM_CLOSE, 0, 0);
        return 1;
    case WM_INITDIALOG:
        fillErrorDialog(dialog);
        return 1;
    case WM_COMMAND:
        return onErrorDialogCommand(dialog, LOWORD(first));
    default:
        return 0;
    }
}

} // namespace

HWND createdOrReported(HWND window, const char* what)
{
    if (window == nullptr) {
        std::fprintf(stderr, "[ERROR] Creating %s '%s'\n", what, lastErrorText().c_str());
    }
    return window;
}

HWND createWindow(const char* title, const char* className, HWND parent, int width, int height)
{
    const HINSTANCE instance = GetModuleHandleA(nullptr);
    WNDCLASSEXA windowClass = {};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.style = CS_VREDRAW | CS_HREDRAW;
    windowClass.lpfnWndProc = errorWindowProc;
    windowClass.hInstance = instance;
    windowClass.hIcon = LoadIconA(nullptr, MAKEINTRESOURCEA(32512));
    windowClass.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    windowClass.lpszClassName = className;
    RegisterClassExA(&windowClass);
    return createdOrReported(
        CreateWindowExA(0, className, title, 0, 0, 0, width, height, parent, nullptr, instance, nullptr),
        "window");
}

HWND createErrorWindow(const char* title, const char* className, HWND, int width, int height, int acceptId,
                       const std::vector<DialogField>& fields, const ErrorDialogCallback& callback)
{
    if (fields.size() != errorDialogFields.size()) {
        std::fprintf(stderr, "[ERROR] Creating error window: Invalid number of parameters\n");
        return nullptr;
    }
    const HINSTANCE instance = GetModuleHandleA(nullptr);
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = errorWindowProc;
    windowClass.hInstance = instance;
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(std::intptr_t(COLOR_BACKGROUND));
    windowClass.lpszClassName = className;
    if (RegisterClassA(&windowClass) == 0) {
        return nullptr;
    }
    const HWND window = createdOrReported(CreateWindowExA(0, className, title, WS_OVERLAPPEDWINDOW, 0, 0,
                                                          width, height, nullptr, nullptr, instance, nullptr),
                                          "error window");
    if (window != nullptr) {
        std::copy(fields.begin(), fields.end(), errorDialogFields.begin());
        errorDialogAcceptId = acceptId;
        errorDialogCallback = callback;
    }
    return window;
}

HWND createDialog(HWND parent, std::uint16_t resourceId)
{
    return createdOrReported(CreateDialogParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(resourceId),
                                                parent, errorDialogProc, 0),
                             "dialog");
}

void runDialogLoop(HWND dialog)
{
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) != 0) {
        if (!IsDialogMessageA(dialog, &message)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
}
