#include "Win32StandIn.h"

#include <utility>

using namespace win32;

namespace {

constexpr DWORD ErrorNoSuchControl = 1421;
constexpr DWORD ErrorNoSuchResource = 1814;

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

bool isInside(HWND window, HWND outer)
{
    while (window != nullptr && window != outer) {
        window = GetParent(window);
    }
    return window == outer;
}

} // namespace

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
        setLastError(ErrorNoSuchResource);
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
    setLastError(ErrorNoSuchControl);
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

void addDialogTemplate(WORD id, std::vector<DialogControl> controls)
{
    desktop().templates[id] = std::move(controls);
}
