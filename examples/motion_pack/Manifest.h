#pragma once

#include "FolderSurvey.h"

#include <cstdint>
#include <optional>

/// The XXH64 digest of the file at `path`; none if it cannot be read to its end.
std::optional<std::uint64_t> digestOfFile(const QString& path);

/// Writes to `path` a line for each of `files`, which lie in `folder`, in the order of their names: 16 hex
/// digits, two blanks, the name.
/// `xxhsum -c` in that folder checks it. A name with a line break stands escaped, as the checksum tools do
/// it: a backslash in front of the digits, `\n` and `\\` in the name; xxhsum reads that from version 0.8.2
/// on. Raises Failure, and leaves no manifest, if a file is not the same as before or `path` cannot be
/// written.
void writeManifest(const QString& path, const QString& folder, QList<FolderSurvey::File> files);
