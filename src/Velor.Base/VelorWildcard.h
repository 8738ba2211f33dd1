#pragma once

#include "VelorBaseExport.h"

#include <QtCore/QList>
#include <QtCore/QString>

/// Matches the names of files against wildcard patterns: `*` for any characters, `?` for one, `[abc]` and
/// `[!abc]` for one of a set. The pattern must cover the whole name.
///
/// Only the file name of a path counts, as `QFileInfo::fileName` returns it, never its directories. A path
/// that ends in a separator has the empty name. What separates is up to the system: a backslash, and a drive
/// such as `c:`, end a directory on Windows alone. Any thread may call this at any time.
class VELOR_BASE_EXPORT VelorWildcard
{
public:
    /// Whether the file name of `path` matches `pattern`. An empty pattern matches only an empty name, and a
    /// pattern that is no valid wildcard, such as `[a`, matches nothing.
    static bool check(const QString& path, const QString& pattern, Qt::CaseSensitivity sensitivity);

    /// Whether the file name of `path` matches any of `patterns`; false for an empty list.
    static bool check(const QString& path, const QList<QString>& patterns, Qt::CaseSensitivity sensitivity);
};
