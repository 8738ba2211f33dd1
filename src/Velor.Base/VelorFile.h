#pragma once

#include "VelorBaseExport.h"

class QString;

/// Operations on whole files. Any thread may call them, on files that nobody else changes meanwhile.
class VELOR_BASE_EXPORT VelorFile
{
public:
    /// Puts the finished file `replacement` in the place of `target`, and returns whether it stands there.
    ///
    /// An old `target` waits as `backup` until the new one stands, so that its content or the new one is
    /// found under `target` or `backup` whenever the process ends. What was called `backup` before is then
    /// lost; without an old `target` it stays. On success `replacement` and an old target's `backup` are
    /// gone. On failure the old `target` is back in its place and `replacement` is deleted: the caller has
    /// to write it again. Whatever cannot be deleted stays.
    ///
    /// If `replacement` does not exist, or two of the names that would be used are one file, nothing is
    /// touched and the result is false. Names on different disks are copied, which takes its time.
    static bool replaceFile(const QString& target, const QString& replacement, const QString& backup);
};
