#include "Manifest.h"

#include "Failure.h"
#include "Interruption.h"

#include <Velor.Base/VelorXxHash.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QSaveFile>

#include <algorithm>
#include <utility>

namespace {

constexpr qint64 BlockSize = 1 << 20;

QByteArray manifestLine(std::uint64_t digest, const QString& name)
{
    const QByteArray digits = QByteArray::number(qulonglong(digest), 16).rightJustified(16, '0');
    QByteArray text = QFile::encodeName(name);
    if (!text.contains('\n')) {
        return digits + "  " + text + '\n';
    }
    return '\\' + digits + "  " + text.replace('\\', "\\\\").replace('\n', "\\n") + '\n';
}

void requireUnchanged(const QString& path, const FolderSurvey::File& file)
{
    const QFileInfo now(path);
    if (now.size() != file.size || now.lastModified() != file.modified) {
        throw Failure(QStringLiteral("the file %1 changed while it was packed").arg(quoted(file.name)));
    }
}

} // namespace

std::optional<std::uint64_t> digestOfFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return {};
    }
    VelorXxHash hash;
    QByteArray block(BlockSize, Qt::Uninitialized);
    qint64 count = 0;
    while ((count = file.read(block.data(), block.size())) > 0) {
        hash.addBytes(block.constData(), static_cast<std::uint64_t>(count));
    }
    return count == 0 ? std::optional(hash.hash()) : std::nullopt;
}

void writeManifest(const QString& path, const QString& folder, QList<FolderSurvey::File> files)
{
    std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    const QDir root(folder);
    QSaveFile manifest(path);
    bool isWritten = manifest.open(QIODevice::WriteOnly);
    for (const FolderSurvey::File& file : std::as_const(files)) {
        endIfInterrupted();
        const auto digest = digestOfFile(root.filePath(file.name));
        if (!digest) {
            throw Failure(QStringLiteral("the file %1 cannot be read any more").arg(quoted(file.name)));
        }
        requireUnchanged(root.filePath(file.name), file);
        const QByteArray line = manifestLine(*digest, file.name);
        isWritten = isWritten && manifest.write(line) == line.size();
    }
    if (!isWritten || !manifest.commit()) {
        throw Failure(QStringLiteral("the manifest %1 cannot be written: %2")
                          .arg(quoted(path), manifest.errorString()));
    }
}
