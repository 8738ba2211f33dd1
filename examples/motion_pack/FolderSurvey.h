#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QString>

/// What packing a folder will take and what it will leave out, seen before the packing.
struct FolderSurvey
{
    struct File
    {
        QString name; ///< relative to the folder
        qint64 size = 0;
        QDateTime modified;
    };

    /// A name and why it is left out.
    struct LeftOut
    {
        QString name;
        const char* reason = "";
        bool isWanted = false; ///< by an exclusion pattern of the user
    };

    /// Looks at `folder`, where `ownFiles`, if they are there from an earlier time, do not count. Raises
    /// Failure if some part of it cannot be read, or if two of its files would have one name in the archive.
    static FolderSurvey of(const QString& folder, const QList<QString>& excludes,
                           const QList<QString>& ownFiles);

    qint64 bytes() const;

    QList<QString> folders;
    QList<File> files; ///< in the order of packing
    QList<LeftOut> leftOut;
};
