#include "CommandLine.h"

#include "Failure.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QFileInfo>

namespace {

struct Parser : QCommandLineParser
{
    Parser()
    {
        setApplicationDescription(QStringLiteral(
            "Packs a folder into a zip archive and writes a manifest beside it: ARCHIVE.xxh64 has the XXH64\n"
            "digest of each packed file, for 'xxhsum -c' in the folder. Folder names are in lower case in\n"
            "the archive. Hidden files and names without a full stop are not packed; the log names them."));
        addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("the folder to pack"));
        addPositionalArgument(QStringLiteral("ARCHIVE"),
                              QStringLiteral("the zip file; one that is there is replaced"));
        addOptions({help, exclude, store, logDir, quiet});
    }

    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help.")};
    QCommandLineOption exclude{
        QStringLiteral("exclude"),
        QStringLiteral("Leave out files whose name matches this wildcard; may be repeated."),
        QStringLiteral("PATTERN")};
    QCommandLineOption store{QStringLiteral("store"),
                             QStringLiteral("Do not compress files with this extension; may be repeated. The "
                                            "first takes the place of gif, jpeg, jpg and png."),
                             QStringLiteral("EXT")};
    QCommandLineOption logDir{QStringLiteral("log-dir"),
                              QStringLiteral("Write the log there instead of beside the archive."),
                              QStringLiteral("DIR")};
    QCommandLineOption quiet{QStringLiteral("quiet"), QStringLiteral("Print nothing but errors.")};
};

} // namespace

CommandLine CommandLine::parse(const QList<QString>& words)
{
    Parser parser;
    if (!parser.parse(words)) {
        throw UsageError(parser.errorText());
    }
    CommandLine result;
    result.isHelpWanted = parser.isSet(parser.help);
    if (result.isHelpWanted) {
        return result;
    }
    const QList<QString> names = parser.positionalArguments();
    if (names.size() != 2) {
        throw UsageError(QStringLiteral("one FOLDER and one ARCHIVE are needed"));
    }
    result.folder = names[0];
    result.archive = names[1];
    result.logFolder = parser.isSet(parser.logDir) ? parser.value(parser.logDir) : QFileInfo(names[1]).path();
    result.excludes = parser.values(parser.exclude);
    result.storeExtensions = parser.values(parser.store);
    result.isQuiet = parser.isSet(parser.quiet);
    return result;
}

QString CommandLine::helpText() { return Parser().helpText(); }
