#include "Output.h"

#include "Failure.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <filesystem>

namespace fs = std::filesystem;
using namespace Qt::StringLiterals;

namespace {

// In the temporary folder.
constexpr QLatin1String NewArchive("new.zip");
constexpr QLatin1String NewManifest("new.xxh64");
constexpr QLatin1String OldArchive("old.zip"); // Of the run before.
constexpr QLatin1String OldManifest("old.xxh64");
constexpr QLatin1String Probe("probe");

struct Move
{
    QString from;
    QString to;
    bool mayBeMissing;
};

fs::path pathOf(const QString& name) { return QFileInfo(name).filesystemFilePath(); }

void move(const QString& from, const QString& to, bool mayBeMissing)
{
    std::error_code error;
    fs::rename(pathOf(from), pathOf(to), error);
    if (error && !(mayBeMissing && error == std::errc::no_such_file_or_directory)) {
        const QString reason = QString::fromStdString(error.message());
        throw Failure{u"'%1' cannot be moved to '%2': %3"_s.arg(from, to, reason)};
    }
}

} // namespace

Output::Output(const QString& archive)
    : mArchive(archive)
    , mManifest(manifestOf(archive))
    , mFolder(archive + u".XXXXXX"_s)
{
    if (!mFolder.isValid()) {
        throw Failure{u"'%1' cannot be created: %2"_s.arg(archive, mFolder.errorString())};
    }
    for (const QString& name : {mArchive, mManifest}) {
        if (QFileInfo::exists(name) && !QFileInfo(name).isFile()) {
            throw Failure{u"'%1' cannot be replaced: it is no file"_s.arg(name)};
        }
    }
    mZip.emplace(mFolder.filePath(NewArchive));
    if (!mZip->isOpen()) {
        failToWrite();
    }
    // Only for failToWrite, which does without where a file cannot have two names.
    std::error_code ignored;
    fs::create_hard_link(pathOf(mFolder.filePath(NewArchive)), pathOf(mFolder.filePath(Probe)), ignored);
}

void Output::finish(const QByteArray& manifest)
{
    mZip.reset();
    if (!QFileInfo::exists(mFolder.filePath(NewArchive))) {
        failToWrite();
    }
    QFile file(mFolder.filePath(NewManifest));
    if (!file.open(QIODevice::WriteOnly) || file.write(manifest) != manifest.size() || !file.flush()) {
        throw Failure{u"'%1' cannot be written: %2"_s.arg(mManifest, file.errorString())};
    }
    file.close();
    putInPlace();
}

/// The library does not report the reason, but another write to the file does. Its second name keeps the disk
/// full when the library has deleted the archive.
void Output::failToWrite() const
{
    QFile probe(mFolder.filePath(Probe));
    const QByteArray block(1 << 20, '\0'); // No less than the library holds back in memory.
    if (probe.open(QIODevice::Append | QIODevice::Unbuffered) && probe.write(block) > 0) {
        probe.write(block); // The first may have been cut.
    }
    throw Failure{u"'%1' cannot be written: %2"_s.arg(mArchive, probe.errorString())};
}

/// The old manifest goes first and the new one comes last, so that none stands beside the wrong archive.
void Output::putInPlace()
{
    const Move moves[] = {{mManifest, mFolder.filePath(OldManifest), true},
                          {mArchive, mFolder.filePath(OldArchive), true},
                          {mFolder.filePath(NewArchive), mArchive, false},
                          {mFolder.filePath(NewManifest), mManifest, false}};
    std::size_t done = 0;
    try {
        for (; done < std::size(moves); ++done) {
            move(moves[done].from, moves[done].to, moves[done].mayBeMissing);
        }
    } catch (const Failure&) {
        mFolder.setAutoRemove(false); // If this fails as well, the error names what is there.
        while (done-- > 0) {
            move(moves[done].to, moves[done].from, moves[done].mayBeMissing);
        }
        mFolder.setAutoRemove(true);
        throw;
    }
}
