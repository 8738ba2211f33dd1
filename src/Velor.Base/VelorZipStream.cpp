#include "VelorZipStream.h"

#include "PathForms.h"
#include "VelorWildcard.h"
#include "WatchedInput.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QStringView>

#include <Poco/DateTime.h>
#include <Poco/Exception.h>
#include <Poco/MemoryStream.h>
#include <Poco/Path.h>
#include <Poco/Zip/Compress.h>
#include <Poco/Zip/ZipCommon.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <istream>
#include <limits>
#include <system_error>

using Poco::Zip::ZipCommon;

namespace {

/// The zip library reads and writes in small pieces; this many bytes go to the system at once.
constexpr std::streamsize BufferSize = 1 << 20;

/// A zip record counts the bytes of its name in 16 bits. The zip library does not look.
constexpr std::size_t MaxNameBytes = 0xFFFF;

std::filesystem::path diskName(const QString& path)
{
    return streamPath(toLongPath(WideString(path.utf16(), path.utf16() + path.size())));
}

/// A file stream with a large buffer of its own, which must be there before the file is opened and outlive
/// its closing.
template <typename Stream>
class BufferedFile : public Stream
{
public:
    BufferedFile(const QString& path, std::ios::openmode mode)
    {
        this->rdbuf()->pubsetbuf(mBuffer.get(), BufferSize);
        this->open(diskName(path), mode);
    }

    ~BufferedFile() override { this->close(); }

private:
    std::unique_ptr<char[]> mBuffer = std::make_unique_for_overwrite<char[]>(BufferSize);
};

QString withLowerCaseFolder(const QString& name)
{
    const qsizetype backslash = name.lastIndexOf(u'\\');
    const qsizetype separator = backslash >= 0 ? backslash : name.lastIndexOf(u'/');
    return separator <= 0 ? name : name.left(separator).toLower() + name.mid(separator);
}

/// In the style that takes both separators, whatever the system's own is.
Poco::Path zipPath(const std::string& name) { return {name, Poco::Path::PATH_WINDOWS}; }

std::string extensionOf(const QString& name)
{
    return name.mid(name.lastIndexOf(u'.') + 1).toLower().toStdString();
}

QDirIterator::IteratorFlags walkFlags(bool recursive)
{
    return recursive ? QDirIterator::Subdirectories | QDirIterator::FollowSymlinks
                     : QDirIterator::IteratorFlags(QDirIterator::NoIteratorFlags);
}

bool isHidden(const WideString& name) { return name.front() == '.'; }

bool hasFullStop(const WideString& name) { return name.find(WCHAR('.')) != WideString::npos; }

/// Whether `folder` itself has an entry that would be packed, but whose name is not valid UTF-8. QDirIterator
/// skips those, folders with all that they hold.
bool hasUnreadableNames(const QString& folder)
{
    std::error_code error;
    std::error_code ignored;
    std::filesystem::directory_iterator entry(diskName(folder), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const WideString name = wideName(entry->path().filename());
        const bool isLost = !QStringView(name).isValidUtf16() && !isHidden(name);
        if (isLost &&
            (entry->is_directory(ignored) || (entry->is_regular_file(ignored) && hasFullStop(name)))) {
            return true;
        }
    }
    return false;
}

int shareOf(int scale, qsizetype count, qsizetype total)
{
    const float share = static_cast<float>(count) / static_cast<float>(total) * static_cast<float>(scale);
    // The largest scale itself rounds to a float beyond the range.
    constexpr int Largest = std::numeric_limits<int>::max();
    return share < static_cast<float>(Largest) ? static_cast<int>(share) : Largest;
}

} // namespace

VelorPercentListener::VelorPercentListener() = default;
VelorPercentListener::VelorPercentListener(const VelorPercentListener&) = default;
VelorPercentListener& VelorPercentListener::operator=(const VelorPercentListener&) = default;

VelorProgressListener::VelorProgressListener() = default;
VelorProgressListener::VelorProgressListener(const VelorProgressListener&) = default;
VelorProgressListener& VelorProgressListener::operator=(const VelorProgressListener&) = default;

VelorZipStream::VelorZipStream(const QString& path)
    : mPath(path)
    , mOut(std::make_unique<BufferedFile<std::ofstream>>(path, std::ios::out | std::ios::binary))
{
    if (!mOut->is_open()) {
        mOut.reset();
        return;
    }
    mCompress = std::make_unique<Poco::Zip::Compress>(*mOut, true, true);
}

VelorZipStream::~VelorZipStream()
{
    if (mOut == nullptr) {
        return;
    }
    if (isGood()) {
        finish();
    }
    mOut->close(); // A failure of this alone sets the failbit, and leaves the archive.
    if (mOut->bad()) {
        QFile::remove(mPath);
    }
}

bool VelorZipStream::isOpen() const { return mOut != nullptr && mOut->is_open(); }

bool VelorZipStream::addFile(const QString& name, const QString& diskPath)
{
    if (!isGood()) {
        return false;
    }
    return isArchive(diskPath) ? fail() : addOtherFile(name, diskPath);
}

bool VelorZipStream::addFile(const QString& name, const char* data, std::uint64_t size)
{
    Poco::MemoryInputStream input(data, static_cast<std::streamsize>(size));
    return addEntry(name, input);
}

bool VelorZipStream::addFolderEntry(const QString& name)
{
    const QString entry = name.toLower();
    return write(entry.endsWith(u'/') ? entry : entry + u'/',
                 [&](const Poco::Path& path) { mCompress->addDirectory(path, Poco::DateTime()); });
}

bool VelorZipStream::addFolder(const QString& folder, bool recursive, const QList<QString>& excludes,
                               VelorPercentListener* listener, int scale)
{
    if (!isGood()) {
        return false;
    }
    const QDir root(QDir(folder).absolutePath());
    if (!addSubfolders(root, recursive)) {
        return false;
    }
    const QList<QString> files = filesToAdd(root, recursive, excludes);
    for (qsizetype i = 0; i < files.size(); ++i) {
        if (!addOtherFile(root.relativeFilePath(files[i]), files[i])) {
            return false;
        }
        if (listener != nullptr) {
            listener->onPercent(shareOf(scale, i + 1, files.size()));
        }
    }
    return true;
}

void VelorZipStream::addUncompressedExtension(const QString& extension)
{
    mStoreExtensions.insert(extensionOf(extension));
    if (mCompress != nullptr) {
        mCompress->setStoreExtensions(mStoreExtensions);
    }
}

bool VelorZipStream::hasFile(const QString& name) const { return mFiles.contains(name); }

QString VelorZipStream::entryName(const QString& name)
{
    const Poco::Path path = zipPath(withLowerCaseFolder(name).toStdString());
    return QString::fromStdString(path.toString(Poco::Path::PATH_UNIX));
}

bool VelorZipStream::canCompress(const QString& name) const
{
    return !mStoreExtensions.contains(extensionOf(name));
}

bool VelorZipStream::isGood() const { return isOpen() && !mOut->bad(); }

bool VelorZipStream::fail()
{
    mOut->setstate(std::ios::badbit);
    return false;
}

template <typename Call>
bool VelorZipStream::write(const QString& entry, const Call& call)
{
    if (!isGood()) {
        return false;
    }
    const std::string name = entry.toStdString();
    if (name.size() > MaxNameBytes) {
        return fail();
    }
    try {
        call(zipPath(name));
    } catch (const Poco::Exception&) {
        // Raised on a full disk, too, which the result reports. A failed seek shows in the stream's state
        // alone.
        if (!mOut->fail()) {
            throw;
        }
    } catch (...) {
        fail(); // Memory ran out, perhaps in the midst of an entry.
        throw;
    }
    return mOut->fail() ? fail() : true;
}

/// Adds a file that is not this archive.
bool VelorZipStream::addOtherFile(const QString& name, const QString& diskPath)
{
    BufferedFile<std::ifstream> input(diskPath, std::ios::in | std::ios::binary);
    return input.is_open() ? addEntry(name, input) : fail();
}

bool VelorZipStream::addEntry(const QString& name, std::istream& input)
{
    const QString entry = withLowerCaseFolder(name);
    WatchedInput watched(*input.rdbuf());
    const bool isWritten = write(entry, [&](const Poco::Path& path) {
        std::istream stream(&watched);
        try {
            mCompress->addFile(stream, Poco::DateTime(), path, ZipCommon::CM_AUTO, ZipCommon::CL_MAXIMUM);
        } catch (...) {
            // A name is rejected before anything is read; what fails later leaves half an entry.
            if (watched.wasRead()) {
                fail();
            }
            throw;
        }
    });
    if (!isWritten) {
        return false;
    }
    // The zip library takes an input that fails for one that ends there.
    if (!watched.wasReadToEnd()) {
        return fail();
    }
    mFiles.append(entry);
    return true;
}

bool VelorZipStream::addSubfolders(const QDir& root, bool recursive)
{
    if (hasUnreadableNames(root.path())) {
        return fail();
    }
    QDirIterator folders(root.path(), {QStringLiteral("*")}, QDir::Dirs, walkFlags(recursive));
    while (folders.hasNext()) {
        const QString path = folders.next();
        const QString name = folders.fileName();
        // The filter lets links to pipes and devices through.
        if (name == QLatin1String(".") || name == QLatin1String("..") || !folders.fileInfo().isDir()) {
            continue;
        }
        if (recursive && hasUnreadableNames(path)) {
            return fail();
        }
        if (!addFolderEntry(root.relativeFilePath(path))) {
            return false;
        }
    }
    return true;
}

QList<QString> VelorZipStream::filesToAdd(const QDir& root, bool recursive,
                                          const QList<QString>& excludes) const
{
    QList<QString> chosen;
    QDirIterator files(root.path(), {QStringLiteral("*.*")}, QDir::Files, walkFlags(recursive));
    while (files.hasNext()) {
        const QString path = files.next();
        if (files.fileInfo().isFile() && !isArchive(path) &&
            !VelorWildcard::check(root.relativeFilePath(path), excludes, Qt::CaseInsensitive)) {
            chosen.append(path);
        }
    }
    return chosen;
}

bool VelorZipStream::isArchive(const QString& path) const
{
    std::error_code ignored;
    return std::filesystem::equivalent(diskName(path), diskName(mPath), ignored);
}

void VelorZipStream::finish()
{
    try {
        mCompress->close(); // What it could not write may show in the stream alone.
        if (!mOut->flush()) {
            fail();
        }
    } catch (...) {
        fail();
    }
}
