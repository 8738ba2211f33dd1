#pragma once

#include "Win32.h"

#include <cstdint>
#include <string>
#include <vector>

/// \file
/// The windows that the platform operations create, and the one error dialog of the process. What each
/// function does is documented at the operation of its name.

/// One field of the error dialog.
struct DialogField
{
    int id;           ///< The control's identifier in the dialog.
    std::string text; ///< What the control shows at first.
};

/// Gets the dialog and what its user typed: the texts of the fields 0, 3 and 1, in that order.
using ErrorDialogCallback = void (*)(HWND dialog, const char* first, const char* second, const char* third);

/// `window`, after a message on standard error with `what` and the system's last error if it is null.
HWND createdOrReported(HWND window, const char* what);

HWND createWindow(const char* title, const char* className, HWND parent, int width, int height);
HWND createErrorWindow(const char* title, const char* className, HWND unused, int width, int height,
                       int acceptId, const std::vector<DialogField>& fields,
                       const ErrorDialogCallback& callback);
HWND createDialog(HWND parent, std::uint16_t resourceId);
void runDialogLoop(HWND dialog);
