#include "Output.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <filesystem>

namespace fs = std::filesystem;
using namespace Qt::StringLiterals;

namespace {

fs::path pathOf(const QString& name) { return QFileInfo(name).filesystemFilePath(); }

/// Neither the library nor a write that was cut short reports the reason, but the next write to `probe` does.
[[noreturn]] void failToWriteTo(const QString& probe, const QString& name)
{
    QFile file(probe);
    const QByteArray block(1 << 20, '\0'); // No less than the library holds back in memory.
    if (file.open(QIODevice::Append | QIODevice::Unbuffered) && file.write(block) > 0) {
        file.write(block); // The first may have been cut.
    }
    throw Failure{u"'%1' cannot be written: %2"_s.arg(name, file.errorString())};
}

} // namespace

Output::Output(const QString& archive)
    : mArchive(archive)
    , mFolder(archive + u".XXXXXX"_s)
{
    if (!mFolder.isValid()) {
        throw Failure{u"'%1' cannot be created: %2"_s.arg(archive, mFolder.errorString())};
    }
    for (const QFileInfo& older : {QFileInfo(archive), QFileInfo(manifestOf(archive))}) {
        if (older.exists() && !older.isFile()) {
            throw Failure{u"'%1' cannot be replaced: it is no file"_s.arg(older.filePath())};
        }
    }
    mZip.emplace(mNewArchive);
    if (!mZip->isOpen()) {
        failToWrite();
    }
    // A second name keeps the disk full when the library has deleted the archive. Where there are none, the
    // reason of a failure may be missing.
    std::error_code ignored;
    fs::create_hard_link(pathOf(mNewArchive), pathOf(mProbe), ignored);
}

void Output::failToWrite() const { failToWriteTo(mProbe, mArchive); }

void Output::finish(const QByteArray& manifest)
{
    mZip.reset();
    if (!QFileInfo::exists(mNewArchive)) {
        failToWrite();
    }
    QFile file(mNewManifest);
    if (!file.open(QIODevice::WriteOnly) || file.write(manifest) != manifest.size() || !file.flush()) {
        failToWriteTo(mNewManifest, manifestOf(mArchive));
    }
    file.close();
    putInPlace();
}

/// The old manifest goes first and the new one comes last, so that none stands beside the wrong archive.
void Output::putInPlace()
{
    const fs::path archive = pathOf(mArchive);
    const fs::path manifest = pathOf(manifestOf(mArchive));
    const fs::path folder = pathOf(mFolder.path());
    QList<std::pair<fs::path, fs::path>> moves;
    std::error_code ignored; // What cannot be queried may be there: its move has the reason.
    if (fs::symlink_status(manifest, ignored).type() != fs::file_type::not_found) {
        moves.append({manifest, folder / "old.xxh64"});
    }
    if (fs::symlink_status(archive, ignored).type() != fs::file_type::not_found) {
        moves.append({archive, folder / "old.zip"});
    }
    moves << std::pair(pathOf(mNewArchive), archive) << std::pair(pathOf(mNewManifest), manifest);
    qsizetype done = 0;
    try {
        for (; done < moves.size(); ++done) {
            fs::rename(moves[done].first, moves[done].second);
        }
    } catch (const fs::filesystem_error& error) {
        std::error_code lost;
        while (done-- > 0 && !lost) {
            fs::rename(moves[done].second, moves[done].first, lost);
        }
        mFolder.setAutoRemove(!lost);
        const QString from = QFileInfo(error.path1()).filePath();
        const QString to = QFileInfo(error.path2()).filePath();
        const QString reason = QString::fromStdString(error.code().message());
        const QString rest = lost ? u"; what is missing is in '%1'"_s.arg(mFolder.path()) : QString();
        throw Failure{u"'%1' cannot be moved to '%2': %3%4"_s.arg(from, to, reason, rest)};
    }
}
