#include <Velor.Base/Win32.h>

namespace {

/// What PlatformOperationsTest.rc holds, for a system without resource files.
const bool isAdded = [] {
    addDialogTemplate(
        101,
        {{201, {10, 10, 90, 22}}, {202, {10, 30, 90, 42}}, {203, {10, 50, 90, 62}}, {204, {30, 80, 90, 92}}});
    return true;
}();

} // namespace
