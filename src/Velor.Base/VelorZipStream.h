#pragma once

#include "VelorBaseExport.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <cstdint>
#include <fstream>
#include <memory>
#include <set>
#include <string>

class QDir;

namespace Poco::Zip {
class Compress;
}

/// Receives the progress of the packing of a folder. The caller owns it and keeps it alive during the call.
class VELOR_BASE_EXPORT VelorPercentListener
{
public:
    VelorPercentListener();
    /// There is no state to copy.
    /// @{
    VelorPercentListener(const VelorPercentListener&);
    VelorPercentListener& operator=(const VelorPercentListener&);
    /// @}

    /// Called after each file, on the thread that packs. `percent` is a share of the scale that was asked
    /// for.
    virtual void onPercent(int percent) = 0;

protected:
    ~VelorPercentListener() = default;
};

/// Receives how much of some work is done, in units that both sides agree on. This library calls none; it is
/// the common form for the application's own long tasks.
class VELOR_BASE_EXPORT VelorProgressListener
{
public:
    VelorProgressListener();
    /// There is no state to copy.
    /// @{
    VelorProgressListener(const VelorProgressListener&);
    VelorProgressListener& operator=(const VelorProgressListener&);
    /// @}

    /// `done` of `total` units are done.
    virtual void onProgress(std::uint64_t done, std::uint64_t total) = 0;

protected:
    ~VelorProgressListener() = default;
};

/// Writes one new zip archive from files, memory and whole folders. The archive is finished when the object
/// is destroyed; there is no other way to finish it.
///
/// Failure is sticky: once an input cannot be read or the disk is full, the archive is bad, every add
/// operation does nothing and returns false, and the destructor deletes the file. An entry name that the zip
/// library rejects (`a:b`, a leading separator, `..`, a first folder `~`) raises its `Poco::Exception`
/// instead and leaves the archive good.
///
/// The names of entries separate their folders by `/` and by `\` alike on every system. They are stored in
/// UTF-8, with the moment of adding as their time. ZIP64 records are written, so that neither the number of
/// entries nor their size has a limit that a disk would not reach first. A name that is added twice stands in
/// the archive once, with the content that was added first.
///
/// One thread at a time. The input is streamed: memory does not grow with the size of the files.
class VELOR_BASE_EXPORT VelorZipStream
{
public:
    /// Creates the file at `path`, replacing one that is there. If that fails, nothing on disk changes,
    /// `isOpen` is false and all else does nothing.
    explicit VelorZipStream(const QString& path);

    /// Finishes the archive, or deletes it if it is bad or cannot be finished: look for the file to know.
    /// Raises nothing.
    ~VelorZipStream();

    // Two objects cannot both finish one archive.
    VelorZipStream(const VelorZipStream&) = delete;
    VelorZipStream& operator=(const VelorZipStream&) = delete;

    /// Whether the archive file could be created. Stays true when the archive turns bad.
    bool isOpen() const;

    /// Adds the file at `diskPath` as the entry `name`, whose folders are put in lower case: the part before
    /// the last backslash, or before the last slash if there is no backslash. A file that cannot be read to
    /// its end, one that delivers less than its size at opening, and the archive itself make the archive bad:
    /// a caller that wants to go on without a missing file must look before adding it. A pipe or a device is
    /// read until it ends, however long that takes.
    bool addFile(const QString& name, const QString& diskPath);

    /// Adds `size` bytes at `data`, which may be null for none.
    bool addFile(const QString& name, const char* data, std::uint64_t size);

    /// Adds an empty folder; its whole name is put in lower case. Adding it again does nothing.
    bool addFolderEntry(const QString& name);

    /// Adds what lies in `folder` under names relative to it: first an entry for each folder, then each file
    /// whose name holds a full stop and matches none of the wildcards `excludes` (see `VelorWildcard`; case
    /// does not count). Hidden files and folders stay out, and so do this archive and whatever is no regular
    /// file or folder once links are followed: pipes, sockets, devices, dangling links and loops. With
    /// `recursive`, subfolders are entered, through links too, each of them once. A folder that does not
    /// exist or cannot be read is like an empty one. Returns at the first entry that fails.
    ///
    /// Where names on disk are bytes, one that is not UTF-8 makes the archive bad if its folder or file would
    /// be packed, so that nothing is lost silently. No wildcard can exclude such a file.
    ///
    /// `listener`, if there is one, is called with `scale` times the share of files added after each file,
    /// reckoned in 32-bit floats and cut to a whole number.
    bool addFolder(const QString& folder, bool recursive, const QList<QString>& excludes = {},
                   VelorPercentListener* listener = nullptr, int scale = 100);

    /// Files with this extension (`png`, `.PNG` and `a.png` all name one) that are added from now on go in
    /// uncompressed. The first call replaces the zip library's own set: gif, jpeg, jpg and png.
    void addUncompressedExtension(const QString& extension);

    /// Whether a file was added under exactly this name, with its folders in lower case and its separators
    /// as they were passed. Folders do not count.
    bool hasFile(const QString& name) const;

    /// The name in the archive of a file that is added as `name`: its folders are in lower case and separated
    /// by `/`. Of two files with one such name, the archive keeps the first. Raises `Poco::Exception` for
    /// some of the names that the zip library rejects.
    static QString entryName(const QString& name);

protected:
    /// Whether the extension of `name` was not passed to `addUncompressedExtension`.
    bool canCompress(const QString& name) const;

private:
    bool isGood() const;
    bool fail();
    template <typename Call>
    bool write(const QString& entry, const Call& call);
    bool addOtherFile(const QString& name, const QString& diskPath);
    bool addEntry(const QString& name, std::istream& input);
    bool addSubfolders(const QDir& root, bool recursive);
    QList<QString> filesToAdd(const QDir& root, bool recursive, const QList<QString>& excludes) const;
    bool isArchive(const QString& path) const;
    void finish();

    QString mPath;
    QList<QString> mFiles;
    std::set<std::string> mStoreExtensions;
    std::unique_ptr<std::ofstream> mOut;
    std::unique_ptr<Poco::Zip::Compress> mCompress;
};
