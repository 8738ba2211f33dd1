#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

/// What the user asked for.
struct CommandLine
{
    /// The words of the command line, the program's own name in front. Raises UsageError for a command line
    /// that makes no sense.
    static CommandLine parse(const QList<QString>& words);

    static QString helpText();

    QString folder;
    QString archive;
    QString logFolder; ///< the archive's own folder unless the user named one
    QList<QString> excludes;
    QList<QString> storeExtensions;
    bool isQuiet = false;
    bool isHelpWanted = false; ///< if so, the rest is empty

    QString manifest() const { return archive + QStringLiteral(".xxh64"); }
};
