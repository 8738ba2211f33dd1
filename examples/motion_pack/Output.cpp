#include "Output.h"

#include "Failure.h"

#include <Velor.Base/VelorFile.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

/// No less than is held back in memory before it is written.
constexpr qsizetype ProbeSize = 1 << 20;

// In the temporary folder. The old ones are of the run before.
constexpr const char* NewArchive = "new.zip";
constexpr const char* NewManifest = "new.xxh64";
constexpr const char* OldArchive = "old.zip";
constexpr const char* OldManifest = "old.xxh64";
constexpr const char* Backup = "backup";
constexpr const char* Probe = "probe";

fs::path pathOf(const QString& name) { return QFileInfo(name).filesystemFilePath(); }

/// Moves a file, if it is there.
void move(const QString& name, const QString& newName)
{
    std::error_code error;
    fs::rename(pathOf(name), pathOf(newName), error);
    if (error && error != std::errc::no_such_file_or_directory) {
        const QString reason = QString::fromStdString(error.message());
        throw Failure(QStringLiteral("'%1' cannot be moved to '%2': %3").arg(name, newName, reason));
    }
}

} // namespace

Output::Output(const QString& archive)
    : mArchive(archive)
    , mManifest(manifestOf(archive))
    , mFolder(archive + QStringLiteral(".XXXXXX"))
{
    if (!mFolder.isValid()) {
        throw Failure(QStringLiteral("'%1' cannot be created: %2").arg(archive, mFolder.errorString()));
    }
    for (const QString& name : {mArchive, mManifest}) {
        if (QFileInfo::exists(name) && !QFileInfo(name).isFile()) {
            throw Failure(QStringLiteral("'%1' cannot be replaced: it is no file").arg(name));
        }
    }
    mZip.emplace(temporary(NewArchive));
    if (!mZip->isOpen()) {
        failToWrite();
    }
    // Only for failToWrite, which does without where a file cannot have two names.
    std::error_code ignored;
    fs::create_hard_link(pathOf(temporary(NewArchive)), pathOf(temporary(Probe)), ignored);
}

void Output::finish(const QByteArray& manifest)
{
    mZip.reset();
    if (!QFileInfo::exists(temporary(NewArchive))) {
        failToWrite();
    }
    QFile file(temporary(NewManifest));
    if (!file.open(QIODevice::WriteOnly) || file.write(manifest) != manifest.size() || !file.flush()) {
        throw Failure(QStringLiteral("'%1' cannot be written: %2").arg(mManifest, file.errorString()));
    }
    file.close();
    try {
        putInPlace();
    } catch (const Failure&) {
        putBackOldPair();
        throw;
    }
}

/// The library does not report the reason, but another write to the file does. Its second name keeps the disk
/// full when the library has deleted the archive.
void Output::failToWrite() const
{
    QFile probe(temporary(Probe));
    const QByteArray block(ProbeSize, '\0');
    if (probe.open(QIODevice::Append | QIODevice::Unbuffered) && probe.write(block) > 0) {
        probe.write(block); // The first may have been cut.
    }
    throw Failure(QStringLiteral("'%1' cannot be written: %2").arg(mArchive, probe.errorString()));
}

/// The old manifest goes first and the new one comes last, so that none stands beside the wrong archive.
void Output::putInPlace() const
{
    move(mManifest, temporary(OldManifest));
    move(mArchive, temporary(OldArchive));
    if (!VelorFile::replaceFile(mArchive, temporary(NewArchive), temporary(Backup)) ||
        !VelorFile::replaceFile(mManifest, temporary(NewManifest), temporary(Backup))) {
        throw Failure(QStringLiteral("'%1' cannot be put in place with its manifest").arg(mArchive));
    }
}

void Output::putBackOldPair()
{
    mFolder.setAutoRemove(false); // If this fails as well, the error names what is there.
    if (!QFileInfo::exists(temporary(NewArchive))) {
        QFile::remove(mArchive); // The new one.
    }
    move(temporary(OldArchive), mArchive);
    move(temporary(OldManifest), mManifest);
    mFolder.setAutoRemove(true);
}
