#pragma once

/// \file
/// The library's access to the operating system's window, shell, process and crash-report services.

/// A table of operations, with no data beside them. Texts are zero-terminated and in the system's ANSI code
/// page.
struct PlatformOperations
{
    /// Lets the file at `path` go along with a crash report, where the system makes such reports. False if
    /// `path` is empty or cannot be converted; true also for a path that the system then refuses.
    bool (*registerCrashFile)(const char* path);
};

/// The one table of the process. Any thread may ask for it; it never changes.
const PlatformOperations& platformOperations();
