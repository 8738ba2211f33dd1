#pragma once

#include "VelorBaseExport.h"

#include <QtCore/QList>
#include <QtCore/QString>

/// Matches the names of files against wildcard patterns: `*` for any characters, `?` for one, `[abc]` and
/// `[!abc]` for one of a set. The pattern must cover the whole name.
///
/// Only the last component of a path counts, never its directories. A slash and a backslash both end a
/// directory, so that one list of patterns gives one answer on every system; a path that ends in either has
/// the empty name. Any thread may call this at any time.
class VELOR_BASE_EXPORT VelorWildcard
{
public:
    /// Whether the file name of `path` matches `pattern`. An empty pattern matches only an empty name, and a
    /// pattern that is no valid wildcard, such as `[a`, matches nothing.
    static bool check(const QString& path, const QString& pattern, Qt::CaseSensitivity sensitivity);

    /// Whether the file name of `path` matches any of `patterns`; false for an empty list.
    static bool check(const QString& path, const QList<QString>& patterns, Qt::CaseSensitivity sensitivity);
};
