#pragma once

#include "Win32.h"

#include <string>

/// \file
/// The forms in which a path goes to the operating system's wide file operations. All are pure functions of
/// their text; none looks at a disk.

/// The UTF-16 form of UTF-8 `text`. Text that the system cannot convert, and text of 2 GiB
/// or more, results in an empty string.
WideString utf8ToWide(std::string text);

/// The extended form of `path`: a path with a drive letter gets the prefix `\\?\`, a network
/// path the prefix `\\?\UNC\` in place of its two separators, and all slashes of both become backslashes.
/// Every other path is returned as it is. The length plays no part, and `.`, `..` and repeated separators
/// stay, though the system takes an extended path literally. Not idempotent: do not apply it twice.
WideString toLongPath(WideString path);

/// `utf8ToWide`, then `toLongPath`.
WideString toWidePath(std::string path);
