#include "VelorFile.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace {

/// Two symbolic links to one file are two files here, since a link itself is what is moved and deleted.
bool isSameFile(const QString& path, const QString& otherPath)
{
    const QFileInfo file(path);
    const QFileInfo other(otherPath);
    const bool hasLink = file.isSymLink() || other.isSymLink();
    return file.absoluteFilePath() == other.absoluteFilePath() ||
           (file.exists() && !hasLink && file == other);
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
        if (!QFile::rename(target, backup)) {
            QFile::remove(replacement);
            return false;
        }
    }
    if (QFile::rename(replacement, target) && QFileInfo::exists(target)) {
        if (targetExisted) {
            QFile::remove(backup);
        }
        return true;
    }
    if (targetExisted) {
        QFile::rename(backup, target);
    }
    QFile::remove(replacement);
    return false;
}
