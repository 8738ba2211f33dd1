#include "FolderSurvey.h"

#include "Failure.h"

#include <Velor.Base/VelorWildcard.h>

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QHash>
#include <QtCore/QSet>

#include <algorithm>
#include <filesystem>

namespace {

constexpr auto Walk = QDirIterator::Subdirectories | QDirIterator::FollowSymlinks;

bool isExcluded(const QString& name, const QList<QString>& excludes)
{
    return VelorWildcard::check(name, excludes, Qt::CaseInsensitive);
}

QList<QString> foldersIn(const QDir& root)
{
    QList<QString> names;
    QDirIterator found(root.path(), QDir::Dirs | QDir::NoDotAndDotDot, Walk);
    while (found.hasNext()) {
        names.append(root.relativeFilePath(found.next()));
    }
    return names;
}

bool isAnyOf(const QList<QString>& names, const QFileInfo& file)
{
    return std::any_of(names.begin(), names.end(),
                       [&](const QString& name) { return QFileInfo(name) == file; });
}

QList<FolderSurvey::File> filesIn(const QDir& root, const QList<QString>& excludes,
                                  const QList<QString>& ownFiles)
{
    QList<FolderSurvey::File> files;
    QDirIterator found(root.path(), {QStringLiteral("*.*")}, QDir::Files, Walk);
    while (found.hasNext()) {
        const QString name = root.relativeFilePath(found.next());
        const QFileInfo info = found.fileInfo();
        if (!isExcluded(name, excludes) && !isAnyOf(ownFiles, info)) {
            files.append({name, info.size(), info.lastModified()});
        }
    }
    return files;
}

/// Why packing leaves out this entry of a folder; null if it does not.
const char* reasonToLeaveOut(const QFileInfo& entry)
{
    if (entry.isHidden()) {
        return "hidden";
    }
    if (entry.isDir()) {
        return nullptr;
    }
    if (!entry.isFile()) {
        return entry.isSymLink() ? "a dangling link" : "no regular file";
    }
    return entry.fileName().contains(u'.') ? nullptr : "no full stop in its name";
}

void requireReadable(const QFileInfo& folder)
{
    if (!folder.isReadable() || !folder.isExecutable()) {
        throw Failure(QStringLiteral("the folder %1 cannot be read").arg(quoted(folder.filePath())));
    }
}

/// Names that are no valid text are invisible to Qt, and so to the packing.
qsizetype invisibleEntries(const QDir& folder, qsizetype visible)
{
    std::error_code ignored;
    const std::filesystem::directory_iterator entries(folder.path().toStdU16String(), ignored);
    return std::distance(entries, {}) - visible;
}

class LeftOutWalk
{
public:
    LeftOutWalk(const QDir& root, const QList<QString>& excludes)
        : mRoot(root)
        , mExcludes(excludes)
    {
        visit(QFileInfo(root.path()));
    }

    QList<FolderSurvey::LeftOut> leftOut;

private:
    void visit(const QFileInfo& folder)
    {
        requireReadable(folder);
        if (mSeen.contains(folder.canonicalFilePath())) {
            return;
        }
        mSeen.insert(folder.canonicalFilePath());
        const QDir dir(folder.filePath());
        const auto entries =
            dir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        if (invisibleEntries(dir, entries.size()) > 0) {
            leftOut.append({nameOf(folder) + QStringLiteral("/..."), "a name that is no valid UTF-8"});
        }
        for (const QFileInfo& entry : entries) {
            look(entry);
        }
    }

    void look(const QFileInfo& entry)
    {
        const char* const reason = reasonToLeaveOut(entry);
        if (reason != nullptr) {
            leftOut.append({nameOf(entry), reason});
        } else if (entry.isFile() && isExcluded(entry.fileName(), mExcludes)) {
            leftOut.append({nameOf(entry), "excluded", true});
        } else if (entry.isDir()) {
            visit(entry);
        }
    }

    QString nameOf(const QFileInfo& entry) const { return mRoot.relativeFilePath(entry.filePath()); }

    QDir mRoot;
    QList<QString> mExcludes;
    QSet<QString> mSeen; ///< links may lead in circles
};

/// The archive takes both separators alike and puts folders in lower case.
QString nameInArchive(const QString& name)
{
    const qsizetype backslash = name.lastIndexOf(u'\\');
    const qsizetype end = std::max<qsizetype>(backslash >= 0 ? backslash : name.lastIndexOf(u'/'), 0);
    QString entry = name.left(end).toLower() + name.mid(end);
    return entry.replace(u'\\', u'/');
}

void requireDistinctNames(const QList<FolderSurvey::File>& files)
{
    QHash<QString, QString> seen;
    for (const FolderSurvey::File& file : files) {
        QString& first = seen[nameInArchive(file.name)];
        if (!first.isEmpty()) {
            throw Failure(QStringLiteral("%1 and %2 would have one name in the archive")
                              .arg(quoted(first), quoted(file.name)));
        }
        first = file.name;
    }
}

} // namespace

FolderSurvey FolderSurvey::of(const QString& folder, const QList<QString>& excludes,
                              const QList<QString>& ownFiles)
{
    const QDir root(QDir(folder).absolutePath());
    FolderSurvey survey;
    survey.leftOut = LeftOutWalk(root, excludes).leftOut;
    survey.folders = foldersIn(root);
    survey.files = filesIn(root, excludes, ownFiles);
    requireDistinctNames(survey.files);
    return survey;
}

qint64 FolderSurvey::bytes() const
{
    qint64 sum = 0;
    for (const File& file : files) {
        sum += file.size;
    }
    return sum;
}
