#pragma once

#include <QtCore/QFileInfo>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QStringList>

/// What a folder holds, links followed. Names are relative to it.
struct FolderSurvey
{
    struct File
    {
        QString name;
        QFileInfo info; ///< Size and time as the survey found them.
    };

    /// Files whose name matches one of `excludes`, and `ownFiles`, which the program itself writes, do not
    /// count. Raises Failure if something with content cannot be read or packed.
    FolderSurvey(const QString& folder, const QStringList& excludes, const QList<QFileInfo>& ownFiles);

    QStringList folders;
    QMap<QString, File> files; ///< By the name in the archive: folders in lower case, between slashes.
    qint64 bytes = 0;
    QStringList excluded;
    QStringList leftOut; ///< What has no content: pipes, devices, dangling links and links in circles.

private:
    void addFile(const QString& name, const QFileInfo& info);
};
