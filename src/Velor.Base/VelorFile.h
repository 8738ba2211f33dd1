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
    /// found whole under `target` or `backup` whenever the process ends. What was called `backup` before is
    /// then lost; without an old `target` it stays. On success `replacement` and an old target's `backup` are
    /// gone. On failure the old `target` is back in its place, or waits as `backup` where even that fails,
    /// and `replacement` is deleted: the caller has to write it again. Whatever cannot be deleted stays.
    ///
    /// If `replacement` does not exist, or two of the names that would be used are one file, nothing is
    /// touched and the result is false. Links and folders are moved themselves, not what they lead to or
    /// hold. A dangling link under the name `target` counts as no file and makes the replacement fail.
    ///
    /// Names may lie on different disks. Regular files are then copied, with their permissions and
    /// modification time where the disk has a place for them, but not their owner. The copy gets its name
    /// only when all of it is known to be on the disk, and only then is the original deleted. A process that
    /// is killed in the midst of copying leaves the unfinished copy beside its destination, under that name
    /// and a full stop with six letters behind it. Links and folders do not move to another disk: that is a
    /// failure. On one disk nothing is copied, and nothing waits for the disk.
    static bool replaceFile(const QString& target, const QString& replacement, const QString& backup);
};
