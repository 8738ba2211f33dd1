#include "VelorFile.h"

#include "PathForms.h"
#include "Win32.h"

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>

namespace {

constexpr qsizetype CopyBlockSize = 1 << 18;

bool isNameTaken(const QString& path)
{
    const QFileInfo file(path);
    return file.exists() || file.isSymLink();
}

/// Two symbolic links to one file are two files here, since a link itself is what is moved and deleted.
bool isSameFile(const QString& path, const QString& otherPath)
{
    const QFileInfo file(path);
    const QFileInfo other(otherPath);
    const bool hasLink = file.isSymLink() || other.isSymLink();
    return file.absoluteFilePath() == other.absoluteFilePath() ||
           (file.exists() && !hasLink && file == other);
}

/// The name by which the system knows `path`, without `..`, which an extended name must not have. Empty where
/// its folder does not exist.
WideString systemName(const QString& path)
{
    const QFileInfo file(path);
    const QString folder = QFileInfo(file.path()).canonicalFilePath();
    if (folder.isEmpty()) {
        return {};
    }
    const QString name = QDir(folder).filePath(file.fileName());
    return toLongPath(WideString(name.utf16(), name.utf16() + name.size()));
}

bool copyContent(QFile& from, QSaveFile& to)
{
    QByteArray block(CopyBlockSize, Qt::Uninitialized);
    qint64 bytes = 0;
    while ((bytes = from.read(block.data(), block.size())) > 0) {
        if (to.write(block.constData(), bytes) != bytes) {
            return false;
        }
    }
    return bytes == 0;
}

/// Makes the file `to` in one step, once its whole content is known to be on the disk. Of the system's calls
/// to flush and to close a file, Qt does not report each failure: here they are asked for and looked at.
bool copyFile(const QString& from, const QString& to)
{
    QFile source(from);
    QSaveFile copy(to);
    if (!source.open(QIODevice::ReadOnly) || !copy.open(QIODevice::WriteOnly)) {
        return false;
    }
    copy.setPermissions(QFile::ReadOwner | QFile::WriteOwner); // Until all is there, for nobody else.
    if (!copyContent(source, copy) || !copy.flush() || copy.size() != source.size()) {
        return false;
    }
    // A disk may have no place for these.
    copy.setPermissions(source.permissions());
    copy.setFileTime(source.fileTime(QFile::FileModificationTime), QFile::FileModificationTime);
    return _commit(copy.handle()) == 0 && copy.commit();
}

/// Only regular files: what a link or a folder means may depend on where it lies.
bool moveToOtherDisk(const QString& from, const QString& to)
{
    const QFileInfo source(from);
    if (source.isSymLink() || !source.isFile() || isNameTaken(to) || !copyFile(from, to)) {
        return false;
    }
    if (!QFile::remove(from) && isNameTaken(from)) {
        QFile::remove(to);
        return false;
    }
    return true;
}

/// Fails where `to` exists. Whatever happens, the content is found whole under one of the names.
bool moveFile(const QString& from, const QString& to)
{
    const WideString source = systemName(from);
    const WideString destination = systemName(to);
    if (source.empty() || destination.empty()) {
        return false;
    }
    if (MoveFileExW(source.c_str(), destination.c_str(), 0)) {
        return true;
    }
    return GetLastError() == ERROR_NOT_SAME_DEVICE && moveToOtherDisk(from, to);
}

} // namespace

bool VelorFile::replaceFile(const QString& target, const QString& replacement, const QString& backup)
{
    if (!QFileInfo::exists(replacement) || isSameFile(target, replacement)) {
        return false;
    }
    const bool targetExisted = QFileInfo::exists(target);
    if (targetExisted) {
        // Making room for the backup would delete the very content that is to be kept.
        if (isSameFile(backup, target) || isSameFile(backup, replacement)) {
            return false;
        }
        QFile::remove(backup);
        if (!moveFile(target, backup)) {
            QFile::remove(replacement);
            return false;
        }
    }
    const bool isMoved = moveFile(replacement, target);
    if (isMoved && QFileInfo::exists(target)) {
        if (targetExisted) {
            QFile::remove(backup);
        }
        return true;
    }
    if (isMoved) {
        QFile::remove(target); // A link that leads nowhere from here.
    }
    if (targetExisted) {
        moveFile(backup, target);
    }
    QFile::remove(replacement);
    return false;
}
