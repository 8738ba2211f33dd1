#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QFileInfo>
#include <QtCore/QList>
#include <QtCore/QString>

/// What a folder holds, links followed. Names are relative to it; folders and files are in their order.
struct FolderSurvey
{
    struct File
    {
        QString name;
        QString entry; ///< in the archive: folders are in lower case, both separators are slashes
        QString path;
        qint64 size = 0;
        QDateTime modified;
    };

    /// Files whose name matches one of `excludes`, and `ownFiles`, which the program itself writes, do not
    /// count. Raises Failure if something with content cannot be read or packed.
    FolderSurvey(const QString& folder, const QList<QString>& excludes, const QList<QFileInfo>& ownFiles);

    QList<QString> folders;
    QList<File> files;
    qint64 bytes = 0;
    QList<QString> excluded;
    QList<QString> leftOut; ///< what has no content: pipes, devices, dangling links and links in circles
};
